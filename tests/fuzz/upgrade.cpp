// The instruction file of an upgrade, carried out: nothing beside the unit changes.
#include "fuzz.h"
#include "storage/upgradesteps.h"

FUZZ(input)
{
    static const FuzzUnit unit({QStringLiteral("/home/root/tmp"), QStringLiteral("/etc")});
    const UnitPath work = u"/home/root/tmp"_unit;
    QDir().mkpath(unit::path(work));
    FuzzUnit::put(work / QStringLiteral("x"), "content");
    for (const upgradesteps::Step &step : upgradesteps::read(input))
        upgradesteps::carryOut(step, work);
    require(unit.isAlone());
}
