#include "core/cardevents.h"

namespace {

std::optional<UnitEvent> eventOf(eMainStates state)
{
    switch (state) {
    case eStateSDCardInserted:
        return UnitEvent::CardInserted;
    case eStateSDCardRemoved:
        return UnitEvent::CardRemoved;
    case eStateSDCardCorrupt:
        return UnitEvent::CardCorrupt;
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<UnitEvent> lastCardEvent(const PendingEvents &pending, eMainStates now, eMainStates before)
{
    if (const auto waiting = pending.lastCardEvent())
        return waiting;
    const auto taken = eventOf(now);
    return taken ? taken : eventOf(before);
}

std::vector<UnitEvent> cardNews(std::optional<UnitEvent> told, std::optional<UnitEvent> believed,
                                bool sawRemoval, bool isOurs)
{
    std::vector<UnitEvent> news;
    const bool wasSwapped = sawRemoval && isOurs && told != UnitEvent::CardRemoved;
    if (wasSwapped)
        news.push_back(UnitEvent::CardRemoved);
    if (told && (wasSwapped || told != believed))
        news.push_back(*told);
    return news;
}

CardHold afterRemoval(CardHold before, bool mountShows)
{
    return before == CardHold::Taken && mountShows ? CardHold::Gone : CardHold::Awaited;
}

CardHold afterLook(CardHold before, bool mountShows)
{
    return before == CardHold::Gone && !mountShows ? CardHold::Awaited : before;
}
