// What happens to the unit from outside and from its own clocks (docs/events.md), and the order in which it
// is taken. No widgets.
#pragma once

#include "core/states.h"

#include <optional>
#include <vector>

enum class UnitEvent {
    CardInserted, // told by the kernel; its mount follows
    CardMounted,  // a card that was waited for shows in the mount table
    CardRemoved,
    CardCorrupt,
    UsbChanged,
    CameraLost,
    FilmEnds, // cannot be written, or the card is full
    NoteEnds,
    PlaybackOver,
    PopUpOver,
    DelayOver,
    Shutdown,
};

// True for a film or a voice note that is being written.
bool isWriting(eMainStates state);

// True when the question for an upgrade may come up over this screen: not into a recording, a note or a film.
bool mayAskForUpgrade(ScreenKind screen);

// True when the event ends what the dialog was opened for, so that nobody answers it any more. What an action
// on its way through tells ("the card is lost") stays until it is seen, and so does what stands on the tools
// page when only the card goes.
bool closesDialogs(UnitEvent event, ScreenKind screen, eMainStates state, bool actionIsAtWork);

// Events that wait until no action and no question is on the stack. What a later one makes pointless is
// folded: only the last card's state counts, but a removal before it is kept; a shutdown ends everything
// else.
class PendingEvents
{
public:
    void add(UnitEvent event);
    bool isEmpty() const { return m_events.empty(); }
    UnitEvent first() const { return m_events.front(); }
    bool contains(UnitEvent event) const;
    UnitEvent takeFirst();
    std::optional<UnitEvent> lastCardEvent() const; // of those that the kernel tells

private:
    std::vector<UnitEvent> m_events;
};
