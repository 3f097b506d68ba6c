// Where the user is on the card: the current inspection folder and what is selected in it. GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

inline const UnitPath kDcimFolder = u"/media/mmcblk1p1/DCIM"_unit;
inline const UnitPath kBaseFolder = u"/media/mmcblk1p1/DCIM/100TUBIX"_unit;

struct sSavedFSInfo
{
    UnitPath currRootDirectory; // the current inspection folder
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
UnitPath folderOfTheDay();

// A file in the current folder.
UnitPath inCurrentFolder(const QString &fileName);

// A folder or a file as the top bar shows it: below DCIM, at most the last 18 characters.
QString shownPath(const UnitPath &path);
