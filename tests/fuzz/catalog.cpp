// A damage catalog that somebody wrote: entries are read, added and taken out, and the others stay.
#include "fuzz.h"
#include "settings/damagecatelogfile.h"

FUZZ(input)
{
    static const FuzzUnit unit({QString()});
    const UnitPath catalog = u"/catalog.txt"_unit;
    FuzzUnit::put(catalog, input);
    const auto before = damagecatelog::entries(catalog);
    require(before && damagecatelog::append(catalog, QStringLiteral("Crack")));
    require(FuzzUnit::content(catalog) == input + "Crack\n");
    for (const QString &entry : before->mid(0, 4)) {
        const qsizetype size = FuzzUnit::content(catalog).size();
        require(damagecatelog::removeFirst(catalog, entry) == (FuzzUnit::content(catalog).size() < size));
    }
}
