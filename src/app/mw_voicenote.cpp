// Recording the voice note of a picture.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/runningtime.h"
#include "media/gst_audiorecord.h"
#include "platform/command.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"

#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <QtEndian>

namespace {

constexpr qint64 kWavHeader = 44; // bytes: a file without sound
constexpr qint64 kRiffHead = 8;   // bytes, which the size in it leaves out

HostPath noteFile()
{
    return unit::path(inCurrentFolder(g_SavedFSInfo.currSelectedAudioFile));
}

// The header tells the file's size, which is written last.
bool isClosed(const HostPath &note)
{
    QFile file(note);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = file.read(kRiffHead);
    return head.size() == kRiffHead &&
           qFromLittleEndian<quint32>(head.constData() + 4) + kRiffHead == file.size();
}

} // namespace

// A note can be played with the microphone off, too.
void MainWindow::showNoteButton()
{
    const bool annotated = g_FileListing[size_t(g_selectedItemFileIndex)].annotated;
    ui->btn_menu_ThumbnailAnnotateRecordPlayPause->setIcon(
        graphicIcon(annotated ? "btn_play.png" : "btn_capture_active.png"));
}

void MainWindow::enterPlaybackSnapshotRecordingAudio()
{
    if (!mayCapture(eStatePlaybackSnapshot))
        return;
    ActivateMSDC(false);
    StartAudioRecording(QFile::encodeName(noteFile()).constData());
    elapsedTime.start();
    recordAudioTimer->start();
    ui->btn_menu_ThumbnailAnnotateRecordPlayPause->setIcon(graphicIcon("btn_stop.png"));
    ui->lbl_VideoLengthIndicator->setText(QStringLiteral("00:00:00"));
    if (g_GstreamerAudioRecordPipelineState != eGSTStateRecordingAudio)
        ChangeMainState(eStatePlaybackSnapshotTerminateRecordingAudio); // a unit without a microphone
}

void MainWindow::onRecordAudioTimerExpired()
{
    const bool failed = g_GstreamerAudioRecordPipelineState == eGSTStateError;
    if (g_MainState == eStatePlaybackSnapshotRecordingAudio && (failed || isDiskFull()))
        announce(UnitEvent::NoteEnds);
    ui->lbl_VideoLengthIndicator->setText(runningTimeText(elapsedTime.elapsed()));
}

void MainWindow::enterPlaybackSnapshotTerminateRecordingAudio()
{
    recordAudioTimer->stop();
    const bool isWhole = endNoteRecording();
    if (isDiskFull() || !isWhole)
        tellCardTakesNothing();
    ActivateMSDC(true);
    showNoteButton();
    ChangeMainState(eStatePlaybackSnapshot);
}

// Closes the file; the picture has its note from now on, so that a second touch plays it. False: the card did
// not take all of it.
bool MainWindow::endNoteRecording()
{
    gst_StopAudioRecording();
    command::run(QStringLiteral("sync"));
    const bool hasSound = QFileInfo(noteFile()).size() > kWavHeader;
    if (!hasSound)
        QFile::remove(noteFile());
    g_FileListing[size_t(g_selectedItemFileIndex)].annotated = hasSound ? 1 : 0;
    return !hasSound || isClosed(noteFile());
}
