// The instruction file of an upgrade, carried out: nothing beside the unit changes.
#include "fuzz.h"
#include "storage/upgradesteps.h"

FUZZ(input)
{
    static const FuzzUnit unit({QStringLiteral("/home/root/tmp"), QStringLiteral("/etc")});
    const UnitPath work = u"/home/root/tmp"_unit;
    QDir().mkpath(unit::path(work));
    FuzzUnit::put(work / QStringLiteral("x"), "content");
    std::vector<upgradesteps::Step> steps = upgradesteps::read(input);
    steps.resize(std::min<size_t>(steps.size(), 8)); // each is synced
    for (const upgradesteps::Step &step : steps)
        upgradesteps::carryOut(step, work);
    require(unit.isAlone());
}
