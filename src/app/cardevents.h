// What the events of the unit do to each of its states (docs/events.md), and the order in which they are
// taken. No widgets.
#pragma once

#include "app/mainstatemachine.h"

#include <optional>
#include <vector>

// What becomes of a state when the card is pulled.
enum class CardRemovalResult {
    Restore,      // goes on as it was; its action is not run again
    EndRecording, // film ended, the corrupt-card picture, live view
    EndVoiceNote, // note ended, the corrupt-card picture, nothing saved
    EndPlayback,  // film or note stopped, nothing saved
    NothingSaved, // nothing saved
};
CardRemovalResult afterRemoval(eMainStates previous);

// What the screen of a state is about.
enum class ScreenKind { Live, Recording, Browser, Tools, Usb, Failure, Other };
ScreenKind screenOf(eMainStates state);

// Which of the buttons that need a card can be touched on the screen of `state`.
struct CardButtons
{
    bool capture;
    bool captureMode;
    bool thumbnails;
    bool toolsPage; // folders, format, unmount

    bool operator==(const CardButtons &) const = default;
};
CardButtons cardButtons(bool cardIsThere, eMainStates state);

// True while a file of the card is open or about to be: nothing else may use the card, no host may get it.
bool holdsCard(eMainStates state);

// True when the question for an upgrade may come up: not into a recording, a note or a film.
bool mayAskForUpgrade(eMainStates previous);

enum class UnitEvent { CardInserted, CardRemoved, CardCorrupt, UsbChanged, Shutdown };

// Events that wait until no action and no question is on the stack. What a later one makes pointless is
// folded: only the last card's state counts, but a removal before it is kept; a shutdown ends everything
// else.
class PendingEvents
{
public:
    void add(UnitEvent event);
    bool isEmpty() const { return m_events.empty(); }
    UnitEvent first() const { return m_events.front(); }
    void removeFirst() { m_events.erase(m_events.begin()); }
    std::optional<UnitEvent> lastCardEvent() const;

private:
    std::vector<UnitEvent> m_events;
};
