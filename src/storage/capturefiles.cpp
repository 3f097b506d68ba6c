#include "storage/capturefiles.h"

#include "platform/movefile.h"
#include "platform/unit.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace capturefiles {

namespace {

constexpr qsizetype kNoteExtension = 4; // ".wav"
constexpr qsizetype kLongestName = 255;

bool isFilm(const QString &fileName)
{
    return fileName.contains(QLatin1String(".avi"));
}

bool isThere(const UnitPath &folder, const QString &fileName)
{
    return QFileInfo::exists(unit::path(folder / fileName));
}

bool hasPictureOfSameName(const UnitPath &folder, const QString &film)
{
    for (const char *extension : {".jpg", ".jpeg", ".JPG", ".JPEG"}) {
        if (isThere(folder, baseOf(film) + QLatin1String(extension)))
            return true;
    }
    return false;
}

bool isForbidden(QChar character)
{
    return character.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|\x7f").contains(character);
}

// Names of devices on the customer's computer, with or without something behind a dot: no program there could
// open such a file or delete it.
bool isDevice(const QString &name)
{
    static const QRegularExpression device(
        QStringLiteral("^(con|prn|aux|nul|conin\\$|conout\\$|(com|lpt)[1-9\u00b9\u00b2\u00b3]) *(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    return device.match(name).hasMatch();
}

// Without the blanks around it, and without the dots at its end: computers drop those and then miss the file.
QString withoutEnds(QString name)
{
    name = name.trimmed();
    while (name.endsWith(QLatin1Char('.')))
        name = name.chopped(1).trimmed();
    return name;
}

} // namespace

QString baseOf(const QString &fileName)
{
    return fileName.left(fileName.lastIndexOf(QLatin1Char('.')));
}

QString extensionOf(const QString &fileName)
{
    return fileName.mid(fileName.lastIndexOf(QLatin1Char('.')));
}

QString noteOf(const QString &fileName)
{
    return baseOf(fileName) + QLatin1String(".wav");
}

QString storedThumbnailOf(const QString &fileName)
{
    return QLatin1String(".thumbs/") + baseOf(fileName) + QLatin1String(".jpg");
}

bool remove(const UnitPath &folder, const QString &fileName)
{
    QFile::remove(unit::path(folder / fileName));
    const bool gone = !isThere(folder, fileName);
    if (gone && isFilm(fileName))
        QFile::remove(unit::path(folder / storedThumbnailOf(fileName)));
    return gone;
}

void removeNote(const UnitPath &folder, const QString &fileName)
{
    if (!isFilm(fileName) || !hasPictureOfSameName(folder, fileName))
        QFile::remove(unit::path(folder / noteOf(fileName)));
}

QString usableName(const QString &typed, const QString &extension)
{
    const QString name = withoutEnds(typed);
    const qsizetype bytes = name.toUtf8().size() + std::max(extension.toUtf8().size(), kNoteExtension);
    const bool usable = !name.isEmpty() && !name.startsWith(QLatin1Char('.')) && bytes <= kLongestName &&
                        !isDevice(name) && std::none_of(name.begin(), name.end(), isForbidden);
    return usable ? name : QString();
}

Renamed rename(const UnitPath &folder, const QString &fileName, const QString &name, bool withNote)
{
    const QString renamed = name + extensionOf(fileName);
    if (!isFilm(fileName) && isThere(folder, noteOf(renamed)))
        return {}; // the picture would take over a note that is not its own
    if (!moveFile(folder / fileName, folder / renamed))
        return {};
    if (withNote && !moveFile(folder / noteOf(fileName), folder / noteOf(renamed))) {
        moveFile(folder / renamed, folder / fileName);
        return {};
    }
    if (isFilm(fileName))
        moveFile(folder / storedThumbnailOf(fileName), folder / storedThumbnailOf(renamed));
    return {true, withNote};
}

} // namespace capturefiles
