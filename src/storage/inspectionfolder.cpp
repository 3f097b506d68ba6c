#include "storage/inspectionfolder.h"

#include "platform/command.h"
#include "platform/movefile.h"
#include "platform/unit.h"
#include "storage/capturefiles.h"
#include "storage/position.h"

#include <QDir>
#include <QFileInfo>

#include <vector>

namespace {

// What comes to the folder's name at the most: its page while it is replaced.
constexpr char kLongestEnding[] = ".html.tubix-new";

bool exists(const UnitPath &path)
{
    return QFileInfo::exists(unit::path(path));
}

struct Move
{
    UnitPath from;
    UnitPath to;
};

} // namespace

bool isInspectionFolder(const UnitPath &path)
{
    return path.isBelow(kBaseFolder) && QDir::cleanPath(path.text()) == path.text();
}

QString folderName(const QString &typed)
{
    return capturefiles::usableName(typed, QLatin1String(kLongestEnding));
}

UnitPath makeInspectionFolder(const UnitPath &parent, const QString &typed)
{
    const QString name = folderName(typed);
    if (name.isEmpty())
        return {};
    // The base folder may be gone with a format; the folder above it is there as long as the card is.
    QDir().mkdir(unit::path(kBaseFolder));
    const UnitPath folder = (isInspectionFolder(parent) ? parent : kBaseFolder) / name;
    return QDir().mkdir(unit::path(folder)) ? folder : UnitPath();
}

UnitPath renameInspectionFolder(const UnitPath &folder, const QString &typed)
{
    const QString name = folderName(typed);
    const UnitPath renamed = folder.parent() / name;
    if (!isInspectionFolder(folder) || name.isEmpty() || exists(renamed))
        return {};
    std::vector<Move> moves;
    for (const char *extension : {".html", ".txt"}) {
        const UnitPath log = folder / (folder.name() + QLatin1String(extension));
        if (exists(log))
            moves.push_back({log, folder / (name + QLatin1String(extension))});
    }
    moves.push_back({folder, renamed});
    for (auto next = moves.cbegin(); next != moves.cend(); ++next) {
        if (moveFile(next->from, next->to))
            continue;
        while (next != moves.cbegin()) {
            --next;
            moveFile(next->to, next->from);
        }
        return {};
    }
    command::run(QStringLiteral("sync"));
    g_SavedFSInfo.currRootDirectory = followRename(g_SavedFSInfo.currRootDirectory, folder, renamed);
    return renamed;
}

UnitPath followRename(const UnitPath &path, const UnitPath &folder, const UnitPath &renamed)
{
    const bool moves = path == folder || path.isBelow(folder);
    return moves ? UnitPath(renamed.text() + path.text().mid(folder.text().size())) : path;
}
