#include "storage/position.h"

#include <QDate>

tSavedFSInfo g_SavedFSInfo;

namespace {
constexpr int kShownCharacters = 18;
}

QString folderOfTheDay()
{
    return kBaseFolder + QLatin1Char('/') + QDate::currentDate().toString(QStringLiteral("ddMMyyyy"));
}

QString inCurrentFolder(const QString &fileName)
{
    return g_SavedFSInfo.currRootDirectory + QLatin1Char('/') + fileName;
}

QString shownFolder(const QString &folder)
{
    return folder.mid(kDcimFolder.size()).right(kShownCharacters);
}
