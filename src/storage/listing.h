// The listing of the current inspection folder. GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

#include <array>

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

// Rebuilt by ReadDirectory, never patched; only the first nFilescurrRootDirectory entries count.
extern std::array<sSnakeFileInfo, kMostFiles> g_FileListing;

// Lists the folder's pictures and films into g_FileListing, oldest first (equal times: by name), at most
// 10000: name filters without regard to case, hidden and empty files left out. The next number counts all of
// them.
void ReadDirectory(const UnitPath &folder);

// Where the file stands in g_FileListing; -1: nowhere.
int indexInListing(const QString &fileName);
