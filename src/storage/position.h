// Where the user is on the card: the current inspection folder and what is selected in it. GUI thread. All
// paths are unit paths.
#pragma once

#include <QString>

inline const QString kDcimFolder = QStringLiteral("/media/mmcblk1p1/DCIM");
inline const QString kBaseFolder = QStringLiteral("/media/mmcblk1p1/DCIM/100TUBIX");

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

extern tSavedFSInfo g_SavedFSInfo;

// Where a day's pictures go when nobody chose a folder.
QString folderOfTheDay();

// The unit path of a file in the current folder.
QString inCurrentFolder(const QString &fileName);

// The folder as the top bar shows it: below DCIM, at most the last 18 characters.
QString shownFolder(const QString &folder);
