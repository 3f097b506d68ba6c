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

bool exists(const QString &path)
{
    return QFileInfo::exists(unit::path(path));
}

QString nameOf(const QString &path)
{
    return path.section(QLatin1Char('/'), -1);
}

QString parentOf(const QString &path)
{
    return path.section(QLatin1Char('/'), 0, -2);
}

struct Move
{
    QString from;
    QString to;
};

} // namespace

bool isInspectionFolder(const QString &path)
{
    return path.startsWith(kBaseFolder + QLatin1Char('/')) && QDir::cleanPath(path) == path;
}

QString folderName(const QString &typed)
{
    return capturefiles::usableName(typed, QLatin1String(kLongestEnding));
}

QString makeInspectionFolder(const QString &parent, const QString &typed)
{
    const QString name = folderName(typed);
    if (name.isEmpty())
        return {};
    // The base folder may be gone with a format; the folder above it is there as long as the card is.
    QDir().mkdir(unit::path(kBaseFolder));
    const QString folder = (isInspectionFolder(parent) ? parent : kBaseFolder) + QLatin1Char('/') + name;
    return QDir().mkdir(unit::path(folder)) ? folder : QString();
}

QString renameInspectionFolder(const QString &folder, const QString &typed)
{
    const QString name = folderName(typed);
    const QString renamed = parentOf(folder) + QLatin1Char('/') + name;
    if (!isInspectionFolder(folder) || name.isEmpty() || exists(renamed))
        return {};
    std::vector<Move> moves;
    for (const char *extension : {".html", ".txt"}) {
        const QString log = folder + QLatin1Char('/') + nameOf(folder) + QLatin1String(extension);
        if (exists(log))
            moves.push_back({log, folder + QLatin1Char('/') + name + QLatin1String(extension)});
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

QString followRename(const QString &path, const QString &folder, const QString &renamed)
{
    const bool moves = path == folder || path.startsWith(folder + QLatin1Char('/'));
    return moves ? renamed + path.mid(folder.size()) : path;
}
