#include "core/unitevents.h"

#include <algorithm>

namespace {

bool isAboutCard(UnitEvent event)
{
    return event == UnitEvent::CardInserted || event == UnitEvent::CardMounted ||
           event == UnitEvent::CardRemoved || event == UnitEvent::CardCorrupt;
}

bool isToldByKernel(UnitEvent event)
{
    return isAboutCard(event) && event != UnitEvent::CardMounted;
}

} // namespace

bool isWriting(eMainStates state)
{
    return factsOf(state).removal == Removal::EndRecording ||
           factsOf(state).removal == Removal::EndVoiceNote ||
           state == eStatePlaybackSnapshotTerminateRecordingAudio;
}

bool mayAskForUpgrade(ScreenKind screen)
{
    switch (screen) {
    case ScreenKind::Live:
    case ScreenKind::Tools:
    case ScreenKind::Failure:
    case ScreenKind::NothingSaved: // a card that was pulled in the browser left the empty page
        return true;
    default:
        return false;
    }
}

bool closesDialogs(UnitEvent event, ScreenKind screen, eMainStates state, bool actionIsAtWork)
{
    // At its end a film is closed before anything is told.
    const bool passesThrough = actionIsAtWork && (factsOf(state).removal == Removal::Restore ||
                                                  state == eStateLiveTerminateSavingMovie);
    switch (event) {
    case UnitEvent::Shutdown:
    case UnitEvent::FilmEnds:
        return true;
    case UnitEvent::UsbChanged:
        return !passesThrough;
    case UnitEvent::CardRemoved:
        return !passesThrough && screen != ScreenKind::Tools;
    default:
        return false;
    }
}

void PendingEvents::add(UnitEvent event)
{
    if (!m_events.empty() && m_events.back() == UnitEvent::Shutdown)
        return;
    if (event == UnitEvent::Shutdown)
        m_events.clear();
    else if (event == UnitEvent::CardRemoved)
        std::erase_if(m_events, isAboutCard);
    else if (isAboutCard(event))
        std::erase_if(m_events, [](UnitEvent pending) {
            return isAboutCard(pending) && pending != UnitEvent::CardRemoved;
        });
    else
        std::erase(m_events, event);
    m_events.push_back(event);
}

bool PendingEvents::contains(UnitEvent event) const
{
    return std::ranges::find(m_events, event) != m_events.end();
}

UnitEvent PendingEvents::takeFirst()
{
    const UnitEvent event = m_events.front();
    m_events.erase(m_events.begin());
    return event;
}

std::optional<UnitEvent> PendingEvents::lastCardEvent() const
{
    const auto last = std::find_if(m_events.rbegin(), m_events.rend(), isToldByKernel);
    return last == m_events.rend() ? std::nullopt : std::optional(*last);
}
