#include "app/cardevents.h"

#include <algorithm>
#include <iterator>

namespace {

using enum CardRemovalResult;

struct Row
{
    eMainStates state;
    ScreenKind screen;
    CardRemovalResult removal;
};

// In enumeration order. States whose action only passes through (a still being saved, a page being turned)
// never wait: should one be found, its action is still at work and it is restored.
constexpr Row kRows[] = {
    {eStateLive, ScreenKind::Live, Restore},
    {eStateLiveZoomLevelIncrease, ScreenKind::Live, Restore},
    {eStateLiveZoomLevelDecrease, ScreenKind::Live, Restore},
    {eStateLiveLEDIncrease, ScreenKind::Live, Restore},
    {eStateLiveLEDDecrease, ScreenKind::Live, Restore},
    {eStateLiveDamageCatelog, ScreenKind::Live, Restore},
    {eStateCaptureModeChange, ScreenKind::Live, Restore},
    {eStateLiveSavingStill, ScreenKind::Live, Restore},
    {eStateLiveSavingMovieQueued, ScreenKind::Recording, EndRecording},
    {eStateLiveSavingMovie, ScreenKind::Recording, EndRecording},
    {eStateCaptureWindowEntry, ScreenKind::Live, Restore},
    {eStateCaptureWindowExit, ScreenKind::Live, Restore},
    {eStateEditorCaptureWindowEntry, ScreenKind::Other, Restore},
    {eStateEditorCaptureWindowExit, ScreenKind::Other, Restore},
    {eStateLiveTerminateSavingMovie, ScreenKind::Recording, Restore},
    {eStateEnterPlaybackThumbnails, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackThumbnailsPreviousPage, ScreenKind::Browser, Restore},
    {eStatePlaybackThumbnailsNextPage, ScreenKind::Browser, Restore},
    {eStatePlaybackThumbnailsSelectable, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackPreviousSelectedThumbnail, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackNextSelectedThumbnail, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackNothingSaved, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackSnapshot, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditImage, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditAddCircle, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditAddArrow, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditAddText, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditColor, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditSaveImage, ScreenKind::Browser, NothingSaved},
    {eStatePlaybackEditSaveImageExit, ScreenKind::Browser, Restore},
    {eStatePlaybackEditDeleteItem, ScreenKind::Browser, NothingSaved},
    {eStateDamageCatelogEntry, ScreenKind::Live, Restore},
    {eStateDamageCatelogConfirm, ScreenKind::Live, Restore},
    {eStateDamageCatelogCancel, ScreenKind::Live, Restore},
    {eStatePlaybackSnapshotRecordingAudio, ScreenKind::Recording, EndVoiceNote},
    {eStatePlaybackSnapshotTerminateRecordingAudio, ScreenKind::Recording, Restore},
    {eStatePlaybackSnapshotAudioQueued, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackSnapshotAudioPlaying, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackSnapshotAudioPaused, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackMovieQueued, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackMoviePlaying, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackMovieResumePlaying, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackMoviePaused, ScreenKind::Browser, EndPlayback},
    {eStatePlaybackRenameFile, ScreenKind::Browser, NothingSaved},
    {eStateVideoInputPipelineFailure, ScreenKind::Failure, Restore},
    {eStateUsbActive, ScreenKind::Usb, Restore},
    {eStateUsbDisconnected, ScreenKind::Usb, Restore},
    {eStateToolsMenu, ScreenKind::Tools, Restore},
    {eStateToolsMenuExit, ScreenKind::Tools, Restore},
    {eStateToolsSetDate, ScreenKind::Tools, Restore},
    {eStateFirmwareUpdate, ScreenKind::Tools, Restore},
    {eStateFileDeleteImage, ScreenKind::Browser, NothingSaved},
    {eStateFileDeleteAudio, ScreenKind::Browser, NothingSaved},
    {eStateSDCardInserted, ScreenKind::Other, Restore},
    {eStateSDCardRemoved, ScreenKind::Other, Restore},
    {eStateSDCardCorrupt, ScreenKind::Other, Restore},
    {eStateSentinel, ScreenKind::Other, Restore},
};
static_assert(std::size(kRows) == eStates + 1);
static_assert([] {
    for (int i = 0; i <= eStates; ++i) {
        if (kRows[i].state != i)
            return false;
    }
    return true;
}());

bool isAboutCard(UnitEvent event)
{
    return event == UnitEvent::CardInserted || event == UnitEvent::CardRemoved ||
           event == UnitEvent::CardCorrupt;
}

} // namespace

CardRemovalResult afterRemoval(eMainStates previous)
{
    return kRows[previous].removal;
}

ScreenKind screenOf(eMainStates state)
{
    return kRows[state].screen;
}

CardButtons cardButtons(bool cardIsThere, eMainStates state)
{
    if (!cardIsThere)
        return {};
    switch (screenOf(state)) {
    case ScreenKind::Recording: // the capture button ends it
        return {true, false, false, true};
    case ScreenKind::Failure: // no picture to take, and the next check would bring the failure back over a
                              // page
        return {false, false, false, true};
    default:
        return {true, true, true, true};
    }
}

bool holdsCard(eMainStates state)
{
    switch (state) {
    case eStatePlaybackSnapshotAudioPlaying:
    case eStatePlaybackSnapshotAudioPaused:
    case eStatePlaybackMoviePlaying:
    case eStatePlaybackMovieResumePlaying:
    case eStatePlaybackMoviePaused:
        return true;
    default:
        return screenOf(state) == ScreenKind::Recording;
    }
}

bool mayAskForUpgrade(eMainStates previous)
{
    switch (screenOf(previous)) {
    case ScreenKind::Live:
    case ScreenKind::Tools:
    case ScreenKind::Failure:
        return true;
    case ScreenKind::Browser: // a card that was pulled there left the empty page
        return previous == eStatePlaybackNothingSaved;
    default:
        return false;
    }
}

void PendingEvents::add(UnitEvent event)
{
    if (!m_events.empty() && m_events.back() == UnitEvent::Shutdown)
        return;
    switch (event) {
    case UnitEvent::Shutdown:
        m_events.clear();
        break;
    case UnitEvent::CardRemoved:
        std::erase_if(m_events, isAboutCard);
        break;
    case UnitEvent::UsbChanged:
        std::erase(m_events, event);
        break;
    default:
        std::erase_if(m_events, [](UnitEvent pending) {
            return isAboutCard(pending) && pending != UnitEvent::CardRemoved;
        });
        break;
    }
    m_events.push_back(event);
}

std::optional<UnitEvent> PendingEvents::lastCardEvent() const
{
    const auto last = std::find_if(m_events.rbegin(), m_events.rend(), isAboutCard);
    return last == m_events.rend() ? std::nullopt : std::optional(*last);
}
