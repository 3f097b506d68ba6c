#include "storage/position.h"

#include <QDate>

tSavedFSInfo g_SavedFSInfo;

namespace {
constexpr int kShownCharacters = 18;
}

UnitPath folderOfTheDay()
{
    return kBaseFolder / QDate::currentDate().toString(QStringLiteral("ddMMyyyy"));
}

UnitPath inCurrentFolder(const QString &fileName)
{
    return g_SavedFSInfo.currRootDirectory / fileName;
}

QString shownPath(const UnitPath &path)
{
    return path.text().mid(kDcimFolder.text().size()).right(kShownCharacters);
}
