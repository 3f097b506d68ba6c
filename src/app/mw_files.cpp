// Deleting and renaming the selected file.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "core/pages.h"
#include "dialogs/keyboardwidget.h"
#include "platform/command.h"
#include "settings/params.h"
#include "storage/capturefiles.h"
#include "storage/inspectionlog.h"
#include "storage/listing.h"
#include "storage/position.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.app")

// Names of files are typed on the English keyboard, whatever the language.
const QString kNameKeyboard = QStringLiteral(":/keyboardwidget/keyboard_en.xml");

// At the meter count.
void logFileOperation(eLogFileOperation operation, const QString &file, const QString &text)
{
    UpdateLogFiles(operation, static_cast<unsigned short>(params::getInstance()->getParams().MeterCount),
                   file, text);
}

} // namespace

void MainWindow::enterFileDeleteImage()
{
    stopPlayback();
    DeleteFile(true, true);
    displaySelectedThumbnail();
}

void MainWindow::enterFileDeleteAudio()
{
    stopPlayback();
    DeleteFile(false, true);
    displaySelectedThumbnail();
}

void MainWindow::enterPlaybackRenameFile()
{
    stopPlayback();
    RenameFile();
}

void MainWindow::DeleteFile(bool deletePicture, bool deleteAudio)
{
    if (!deletePicture && !deleteAudio) {
        qCDebug(log) << "No file delete arguments passed to funtion";
        return;
    }
    if (!confirm(deletePicture ? "confirmation_trashcan_picture.png" : "confirmation_trashcan_audio.png"))
        return;
    const UnitPath folder = g_SavedFSInfo.currRootDirectory;
    const QString file = g_SavedFSInfo.currSelectedFile;
    if (deletePicture && !capturefiles::remove(folder, file))
        return; // it is still there, and so is its note
    if (deleteAudio)
        capturefiles::removeNote(folder, file);
    command::run(QStringLiteral("sync"));
    ReadDirectory(folder);
    // Always the picture's name, even when only its note went.
    logFileOperation(eFileDelete, file, QString());
    if (g_selectedItemFileIndex != 0 && g_selectedItemFileIndex == g_SavedFSInfo.nFilescurrRootDirectory)
        --g_selectedItemFileIndex;
    countPages();
}

void MainWindow::countPages()
{
    g_SavedFSInfo.currThumbnailPage = qint16(pageOf(g_selectedItemFileIndex));
    g_SavedFSInfo.NumberOfThumbnailPages = qint16(pageCount(g_SavedFSInfo.nFilescurrRootDirectory));
}

void MainWindow::RenameFile()
{
    ActivateMSDC(false);
    const QString file = g_SavedFSInfo.currSelectedFile;
    keyboardWidget keyboard(capturefiles::baseOf(file), kNameKeyboard, true, this);
    keyboard.init(this);
    ask(keyboard);
    renameSelected(capturefiles::usableName(keyboard.returnableText, capturefiles::extensionOf(file)));
    displaySelectedThumbnail();
    ActivateMSDC(true);
}

// `name` empty: the user gave none, or one that no file can have.
void MainWindow::renameSelected(const QString &name)
{
    const QString file = g_SavedFSInfo.currSelectedFile;
    if (name.isEmpty() || name == capturefiles::baseOf(file))
        return;
    const bool annotated = g_FileListing[size_t(g_selectedItemFileIndex)].annotated;
    const QString renamed = name + capturefiles::extensionOf(file);
    const capturefiles::Renamed done =
        capturefiles::rename(g_SavedFSInfo.currRootDirectory, file, name, annotated);
    // The row tells what was asked for, also when the name was taken and both files stay.
    logFileOperation(eFileRename, file, file + QLatin1String(" -> ") + renamed);
    if (done.note) {
        logFileOperation(eFileRename, file,
                         capturefiles::noteOf(file) + QLatin1String(" -> ") + capturefiles::noteOf(renamed));
    }
    command::run(QStringLiteral("sync"));
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    // Files of the same second are ordered by name: the renamed one may have moved.
    if (const int index = indexInListing(done.capture ? renamed : file); index >= 0)
        g_selectedItemFileIndex = index;
    countPages();
}
