#include "storage/dcim.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"
#include "storage/inspectionlog.h"
#include "storage/listing.h"
#include "storage/position.h"

#include <QDir>

namespace {

void syncCard()
{
    command::run(QStringLiteral("sync"));
}

bool exists(const UnitPath &folder)
{
    return QDir(unit::path(folder)).exists();
}

void make(const UnitPath &folder)
{
    QDir().mkdir(unit::path(folder)); // one level; a failure shows when something is written there
}

// Takes off what writes that were cut off left in the current folder.
void mend()
{
    for (const QString &folder : {QString(), QStringLiteral(".thumbs"), QStringLiteral(".html_assets")})
        savefile::removeLeftovers(inCurrentFolder(folder));
    mendInspectionLog();
    syncCard();
}

// Gives the current folder what belongs into an inspection's; what is there stays.
void equip(const UnitPath &folder)
{
    make(inCurrentFolder(QStringLiteral(".thumbs")));
    createHTMLAssets();
    createLogHTMLlog(folder);
    mend();
}

} // namespace

void CreateDCIMStructure(const UnitPath &folder)
{
    make(kDcimFolder);
    make(kBaseFolder);
    g_SavedFSInfo.currRootDirectory = folder.isEmpty() ? folderOfTheDay() : folder;
    const UnitPath &current = g_SavedFSInfo.currRootDirectory;
    if (!exists(current) || !exists(inCurrentFolder(QStringLiteral(".html_assets")))) {
        make(current);
        equip(folder);
    } else {
        mend();
    }
}

bool completeCurrentFolder()
{
    const UnitPath &current = g_SavedFSInfo.currRootDirectory;
    make(kDcimFolder);
    make(kBaseFolder);
    if (!exists(kBaseFolder) || !current.isBelow(kBaseFolder) || !QDir().mkpath(unit::path(current)))
        return false;
    equip(current == folderOfTheDay() ? UnitPath() : current);
    return true;
}

bool restoreCurrentFolder()
{
    const UnitPath folder = g_SavedFSInfo.currRootDirectory;
    if (folder.isEmpty())
        return false;
    if (exists(folder))
        return true;
    if (!completeCurrentFolder())
        return false;
    ReadDirectory(folder); // its numbers begin anew
    return true;
}

bool removeDir(const UnitPath &dirName)
{
    const QDir folder(unit::path(dirName));
    if (folder.exists()) {
        const QFileInfoList entries = folder.entryInfoList(
            QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden | QDir::System, QDir::DirsFirst);
        for (const QFileInfo &entry : entries) {
            const UnitPath unitPath = dirName / entry.fileName();
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
