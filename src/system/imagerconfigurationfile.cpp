#include "system/imagerconfigurationfile.h"

#include "platform/savefile.h"
#include "platform/unit.h"

#include <QFileInfo>

namespace {

constexpr qint64 kLargestFile = 64LL * 1024;

} // namespace

namespace imagerconfigurationfile {

UnitPath path()
{
    return u"/home/root/tubix4_app/systemimagerconfiguration.txt"_unit;
}

UnitPath trigger()
{
    return u"/media/mmcblk1p1/DCIM/__IMAGERCONFIG__"_unit;
}

bool exists()
{
    return QFileInfo::exists(unit::path(path()));
}

bool isAskedFor()
{
    return QFileInfo::exists(unit::path(trigger()));
}

bool write(bool reelOf30m, bool miniModule)
{
    return savefile::write(path(), QByteArray("ImagerConfiguration, ") + (reelOf30m ? "30" : "60") +
                                       "\nMiniModulePresent, " + (miniModule ? "1" : "0") + '\n');
}

bool read(Fitted &fitted)
{
    const auto text = savefile::read(path(), kLargestFile);
    if (text)
        parse(*text, fitted);
    return text.has_value();
}

void parse(const QByteArray &text, Fitted &fitted)
{
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> parts = line.split(',');
        if (parts.size() < 2)
            continue;
        if (parts[0].contains("ImagerConfiguration"))
            fitted.reel = parts[1].contains("30") ? e30meter : e60meter;
        if (parts[0].contains("MiniModulePresent"))
            fitted.hasMiniModule = !parts[1].contains("0");
    }
}

} // namespace imagerconfigurationfile
