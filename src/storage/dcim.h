// The card's folder tree, the listing of the current inspection folder, and where the user is in it. GUI
// thread. All paths are unit paths.
#pragma once

#include <QString>
#include <QTime>

#include <array>

inline const QString kDcimFolder = QStringLiteral("/media/mmcblk1p1/DCIM");
inline const QString kBaseFolder = QStringLiteral("/media/mmcblk1p1/DCIM/100TUBIX");
inline constexpr int kMostFiles = 10000;

struct sSnakeFileInfo
{
    QString fileName;
    QString unicodeFileName;
    qint8 isVideo = 0;
    qint16 dateStamp = 0;
    qint16 timeStamp = 0;
    qint32 fNum = 0;
    qint32 audioClipLength = 0;
    qint8 annotated = 0; // a voice note lies beside the picture
    qint8 deletePending = 0;
};

struct sSavedFSInfo
{
    QString currRootDirectory; // the current inspection folder
    qint16 nFilescurrRootDirectory = 0;
    qint16 currThumbnailPage = 0;
    qint16 currThumbnailIndex = 0;
    qint16 NumberOfThumbnailPages = 0;
    qint16 currDCIMIndex = 0; // the number that the next capture takes
    QString currFileName;     // file last captured
    QString currSelectedFile;
    QString currSelectedAudioFile;
    QString currLogFile;
};
typedef sSavedFSInfo tSavedFSInfo;

// Rebuilt by ReadDirectory, never patched; only the first nFilescurrRootDirectory entries count.
extern std::array<sSnakeFileInfo, kMostFiles> g_FileListing;
extern tSavedFSInfo g_SavedFSInfo;

// Where a day's pictures go when nobody chose a folder.
QString folderOfTheDay();

// Makes sure that the tree for `folder` is there (empty: today's folder) and makes it the current one; what a
// cut write left torn in its logs is mended. A card that takes nothing leaves the tree incomplete, silently.
void CreateDCIMStructure(const QString &folder);

// For a card that comes back from a host or from outside: makes the current folder again, with those above it
// up to the base folder, and gives it what it lacks (thumbnails, the log's page and pictures). False when it
// is not there afterwards.
bool completeCurrentFolder();

// Before a capture: true when the current folder is there, made again when somebody took it away. A page that
// was taken out of it stays out.
bool restoreCurrentFolder();

// Lists the folder's pictures and films into g_FileListing, oldest first (equal times: by name), at most
// 10000: name filters without regard to case, hidden and empty files left out. The next number counts all of
// them.
void ReadDirectory(const QString &folder);

// Deletes the folder with everything in it; a link is deleted, not followed. False at the first failure. A
// folder that is not there is fine.
bool removeDir(const QString &dirName);

// "TUBX0007" + extension: the name of capture number `index`.
QString captureName(int index, const QString &extension);

// The name for the next capture: moves currDCIMIndex on to the first number of which there is neither file
// nor voice note (a number beyond four digits is not found again by the listing).
QString freeCaptureName(const QString &extension);

// The name of the edited copy of a file: "_hhmmss" before its extension. A film's copy is a picture.
QString editedName(const QString &fileName, const QTime &time);

// That name for the first second from `time` on of which the current folder has neither file nor voice note.
QString freeEditedName(const QString &fileName, QTime time);

// Where the file stands in g_FileListing; -1: nowhere.
int indexInListing(const QString &fileName);

// The folder as the top bar shows it: below DCIM, at most the last 18 characters.
QString shownFolder(const QString &folder);

// The browser's pages: files to a page, page of a file (from 1), number of pages (1 for an empty folder).
inline constexpr int kFilesOnPage = 12;
inline int pageOf(int fileIndex)
{
    return fileIndex / kFilesOnPage + 1;
}
inline int pageCount(int files)
{
    return (files - 1) / kFilesOnPage + 1;
}

// The unit path of a file in the current folder.
QString inCurrentFolder(const QString &fileName);
