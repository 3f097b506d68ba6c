#include "storage/upgradesteps.h"

#include "platform/savefile.h"
#include "platform/unit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>

namespace {

using upgradesteps::Command;
using upgradesteps::Step;

constexpr qsizetype kLongestText = 1 << 20;
constexpr qsizetype kLongestLine = 4096;

struct Word
{
    const char *word;
    Command command;
};
// Looked for in this order, anywhere in the first field. The second spelling is the format's own.
constexpr std::array kWords = {Word{"ADD", Command::Copy}, Word{"OVERRIGHT", Command::Copy},
                               Word{"DELETE", Command::Delete}, Word{"MKDIR", Command::MakeFolder},
                               Word{"RMDIR", Command::RemoveFolder}};

const Word *commandIn(const QString &field)
{
    for (const Word &word : kWords) {
        if (field.contains(QLatin1String(word.word)))
            return &word;
    }
    return nullptr;
}

// True when what `unitPath` names lies below `top`, both after following every link but the last name's own.
bool liesBelow(const UnitPath &unitPath, const UnitPath &top)
{
    const QFileInfo target(unit::path(unitPath));
    const QString name = target.fileName();
    if (!unitPath.text().startsWith(QLatin1Char('/')) || name.isEmpty() || name == QLatin1String(".") ||
        name == QLatin1String(".."))
        return false;
    const QString folder = QFileInfo(target.path()).canonicalFilePath();
    const QString root = QFileInfo(unit::path(top)).canonicalFilePath();
    const QString inside = root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/');
    return !folder.isEmpty() && !root.isEmpty() && (folder == root || folder.startsWith(inside));
}

UnitPath withoutEndSlashes(const UnitPath &folder)
{
    QString path = folder.text();
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return UnitPath(path);
}

} // namespace

namespace upgradesteps {

std::vector<Step> read(const QByteArray &text)
{
    std::vector<Step> steps;
    if (text.size() > kLongestText)
        return steps;
    for (const QByteArray &line : text.split('\n')) {
        if (line.size() > kLongestLine || line.contains('\0')) // the system would take half a name
            continue;
        const QStringList fields = QString::fromUtf8(line).split(QLatin1Char(','));
        const Word *word = commandIn(fields[0]);
        if (word && fields.size() >= 3)
            steps.push_back({word->command, fields[1].trimmed(), UnitPath(fields[2].trimmed())});
    }
    return steps;
}

bool carryOut(const Step &step, const UnitPath &workFolder)
{
    const bool isOfFile = step.command == Command::Copy || step.command == Command::Delete;
    const UnitPath target = isOfFile ? step.folder / step.fileName : withoutEndSlashes(step.folder);
    if (!liesBelow(target, u"/"_unit))
        return false;
    switch (step.command) {
    case Command::Copy: {
        const UnitPath source = workFolder / step.fileName;
        return liesBelow(source, workFolder) && savefile::copy(source, target);
    }
    case Command::Delete:
        return QFile::remove(unit::path(target));
    case Command::MakeFolder:
        return QDir().mkdir(unit::path(target));
    case Command::RemoveFolder:
        return QDir().rmdir(unit::path(target));
    }
    return false;
}

} // namespace upgradesteps
