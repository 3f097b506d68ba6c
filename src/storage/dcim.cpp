#include "storage/dcim.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"
#include "storage/capturefiles.h"
#include "storage/inspectionlog.h"

#include <QDate>
#include <QDir>
#include <QSet>

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

std::array<sSnakeFileInfo, kMostFiles> g_FileListing;
tSavedFSInfo g_SavedFSInfo;

namespace {

constexpr int kNumberedNameLength = 12; // TUBX0007.jpg
constexpr int kNumberStart = 4;
constexpr int kNumberLength = 4;
constexpr int kShownCharacters = 18;

void syncCard()
{
    command::run(QStringLiteral("sync"));
}

bool exists(const QString &folder)
{
    return QDir(unit::path(folder)).exists();
}

void make(const QString &folder)
{
    QDir().mkdir(unit::path(folder)); // one level; a failure shows when something is written there
}

// Takes off what writes that were cut off left in the current folder.
void mend()
{
    savefile::removeLeftovers(g_SavedFSInfo.currRootDirectory);
    mendInspectionLog();
    syncCard();
}

// Gives the current folder what belongs into an inspection's; what is there stays.
void equip(const QString &folder)
{
    make(inCurrentFolder(QStringLiteral(".thumbs")));
    createHTMLAssets();
    createLogHTMLlog(folder);
    mend();
}

bool isListed(const QString &name)
{
    for (const char *suffix : {".jpg", ".jpeg", ".avi"}) {
        if (name.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

struct FoundFile
{
    QString name;
    timespec modified;
};

struct FolderContent
{
    std::vector<FoundFile> files; // listed ones, not empty
    QSet<QString> notes;          // names of voice notes
};

FolderContent readFolder(const QString &folder)
{
    FolderContent content;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(
        ::opendir(QFile::encodeName(unit::path(folder)).constData()), ::closedir);
    if (!directory)
        return content;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): a directory of our own
    while (const dirent *entry = ::readdir(directory.get())) {
        if (entry->d_name[0] == '.')
            continue;
        const QString name = QFile::decodeName(entry->d_name);
        if (name.endsWith(QLatin1String(".wav")))
            content.notes.insert(name);
        if (!isListed(name))
            continue;
        struct stat info = {};
        if (::fstatat(::dirfd(directory.get()), entry->d_name, &info, 0) == 0 && S_ISREG(info.st_mode) &&
            info.st_size > 0)
            content.files.push_back({name, info.st_mtim});
    }
    return content;
}

bool isOlder(const FoundFile &a, const FoundFile &b)
{
    if (a.modified.tv_sec != b.modified.tv_sec)
        return a.modified.tv_sec < b.modified.tv_sec;
    if (a.modified.tv_nsec != b.modified.tv_nsec)
        return a.modified.tv_nsec < b.modified.tv_nsec;
    return a.name < b.name; // the card's stamps are two seconds apart: ties are common
}

// A voice note counts: whatever took its name would get it, and take it along when it is deleted.
bool isTaken(const QString &fileName)
{
    return QFileInfo::exists(unit::path(inCurrentFolder(fileName))) ||
           QFileInfo::exists(unit::path(inCurrentFolder(capturefiles::noteOf(fileName))));
}

int numberOf(const QString &name)
{
    return name.size() == kNumberedNameLength ? name.mid(kNumberStart, kNumberLength).toInt() : 0;
}

} // namespace

QString folderOfTheDay()
{
    return kBaseFolder + QLatin1Char('/') + QDate::currentDate().toString(QStringLiteral("ddMMyyyy"));
}

bool completeCurrentFolder()
{
    const QString &current = g_SavedFSInfo.currRootDirectory;
    make(kDcimFolder);
    make(kBaseFolder);
    if (!exists(kBaseFolder) || !current.startsWith(kBaseFolder + QLatin1Char('/')) ||
        !QDir().mkpath(unit::path(current)))
        return false;
    equip(current == folderOfTheDay() ? QString() : current);
    return true;
}

void CreateDCIMStructure(const QString &folder)
{
    make(kDcimFolder);
    make(kBaseFolder);
    g_SavedFSInfo.currRootDirectory = folder.isEmpty() ? folderOfTheDay() : folder;
    const QString &current = g_SavedFSInfo.currRootDirectory;
    if (!exists(current) || !exists(inCurrentFolder(QStringLiteral(".html_assets")))) {
        make(current);
        equip(folder);
    } else {
        mend();
    }
}

bool restoreCurrentFolder()
{
    const QString folder = g_SavedFSInfo.currRootDirectory;
    if (folder.isEmpty())
        return false;
    if (exists(folder))
        return true;
    if (!completeCurrentFolder())
        return false;
    ReadDirectory(folder); // its numbers begin anew
    return true;
}

void ReadDirectory(const QString &folder)
{
    FolderContent content = readFolder(folder);
    std::sort(content.files.begin(), content.files.end(), isOlder);
    int highest = 0;
    for (const FoundFile &file : content.files)
        highest = std::max(highest, numberOf(file.name));
    const auto count = std::min<size_t>(content.files.size(), kMostFiles);
    for (size_t i = 0; i < count; ++i) {
        sSnakeFileInfo &entry = g_FileListing[i];
        entry.fileName = content.files[i].name;
        entry.isVideo = entry.fileName.contains(QLatin1String(".avi")) ? 1 : 0;
        const QString note =
            entry.fileName.left(entry.fileName.lastIndexOf(QLatin1Char('.'))) + QLatin1String(".wav");
        entry.annotated = !entry.isVideo && content.notes.contains(note) ? 1 : 0;
        entry.deletePending = 0;
    }
    g_SavedFSInfo.nFilescurrRootDirectory = static_cast<qint16>(count);
    g_SavedFSInfo.currDCIMIndex = static_cast<qint16>(highest + 1);
}

bool removeDir(const QString &dirName)
{
    const QDir folder(unit::path(dirName));
    if (folder.exists()) {
        const QFileInfoList entries = folder.entryInfoList(
            QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden | QDir::System, QDir::DirsFirst);
        for (const QFileInfo &entry : entries) {
            const QString unitPath = dirName + QLatin1Char('/') + entry.fileName();
            const bool removed =
                entry.isDir() && !entry.isSymLink() ? removeDir(unitPath) : QFile::remove(entry.filePath());
            if (!removed)
                return false;
        }
        if (!QDir().rmdir(folder.path()))
            return false;
    }
    syncCard();
    return true;
}

QString captureName(int index, const QString &extension)
{
    return QStringLiteral("%1%2%3").arg(QStringLiteral("TUBX"),
                                        QStringLiteral("%1").arg(index, 4, 10, QLatin1Char('0')), extension);
}

QString freeCaptureName(const QString &extension)
{
    qint16 &index = g_SavedFSInfo.currDCIMIndex;
    while (isTaken(captureName(index, extension)))
        ++index;
    return captureName(index, extension);
}

QString editedName(const QString &fileName, const QTime &time)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    QString extension = fileName.mid(dot);
    if (extension.compare(QLatin1String(".avi"), Qt::CaseInsensitive) == 0)
        extension = QStringLiteral(".jpg");
    return fileName.left(dot) + QLatin1Char('_') + time.toString(QStringLiteral("hhmmss")) + extension;
}

QString freeEditedName(const QString &fileName, QTime time)
{
    while (isTaken(editedName(fileName, time)))
        time = time.addSecs(1);
    return editedName(fileName, time);
}

int indexInListing(const QString &fileName)
{
    const auto end = g_FileListing.cbegin() + g_SavedFSInfo.nFilescurrRootDirectory;
    const auto found = std::find_if(g_FileListing.cbegin(), end,
                                    [&](const sSnakeFileInfo &entry) { return entry.fileName == fileName; });
    return found == end ? -1 : int(found - g_FileListing.cbegin());
}

QString shownFolder(const QString &folder)
{
    return folder.mid(kDcimFolder.size()).right(kShownCharacters);
}

QString inCurrentFolder(const QString &fileName)
{
    return g_SavedFSInfo.currRootDirectory + QLatin1Char('/') + fileName;
}
