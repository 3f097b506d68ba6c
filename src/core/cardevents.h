// What the kernel tells about the card, and whose the card is. No widgets, no I/O.
#pragma once

#include "core/unitevents.h"

// The event that the kernel told last: the last of those that wait, else the one that is being taken (`now`),
// else the one before. None: it told nothing yet, or long ago.
std::optional<UnitEvent> lastCardEvent(const PendingEvents &pending, eMainStates now, eMainStates before);

// What a batch of its messages makes. `told`: the card's state at the end of the batch, `believed`: at its
// start. A card that was ours and was pulled and put back within one batch may be another one, and no file on
// it is open any more: that is a removal and an insertion.
std::vector<UnitEvent> cardNews(std::optional<UnitEvent> told, std::optional<UnitEvent> believed,
                                bool sawRemoval, bool isOurs);

// Gone: a mount that still shows is the one of the card that was pulled. Awaited: the next one is taken.
enum class CardHold { Gone, Awaited, Taken };

CardHold afterRemoval(CardHold before, bool mountShows);
CardHold afterLook(CardHold before, bool mountShows); // for a card that is waited for
