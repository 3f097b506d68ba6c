// A film that may be cut off: scanned and repaired in place.
#include "film/avirepair.h"
#include "fuzz.h"

FUZZ(input)
{
    static const FuzzUnit unit({QString()});
    const HostPath film = unit::path(u"/film.avi"_unit);
    FuzzUnit::put(u"/film.avi"_unit, input);
    const bool wasCutOff = avirepair::isCutOff(film);
    const bool isRepaired = avirepair::repair(film);
    require(!isRepaired || (wasCutOff && !avirepair::isCutOff(film) && !avirepair::repair(film)));
    require(isRepaired || FuzzUnit::content(u"/film.avi"_unit) == input);
}
