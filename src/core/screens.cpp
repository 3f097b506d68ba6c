#include "core/screens.h"

#include <array>

namespace {

using Facts = const ScreenFacts &;

constexpr bool on(Facts f, ScreenKind screen)
{
    return f.screen == screen;
}

bool anyLive(Facts f) // with the column of the live buttons
{
    return on(f, ScreenKind::Live) || on(f, ScreenKind::Recording) || on(f, ScreenKind::Failure);
}

bool picture(Facts f)
{
    return on(f, ScreenKind::Live) || on(f, ScreenKind::Recording);
}

bool browserColumn(Facts f)
{
    return on(f, ScreenKind::Thumbnails) || on(f, ScreenKind::File) || on(f, ScreenKind::NothingSaved);
}

bool thumbnails(Facts f)
{
    return on(f, ScreenKind::Thumbnails);
}

bool file(Facts f)
{
    return on(f, ScreenKind::File);
}

bool editor(Facts f)
{
    return on(f, ScreenKind::Editor);
}

bool tools(Facts f)
{
    return on(f, ScreenKind::Tools);
}

bool recording(Facts f)
{
    return on(f, ScreenKind::Recording);
}

bool noteIsRecorded(Facts f)
{
    return f.state == eStatePlaybackSnapshotRecordingAudio ||
           f.state == eStatePlaybackSnapshotTerminateRecordingAudio;
}

// What the top bar tells about live view gives way to the progress bar where one file is shown. The invisible
// button over the cable length goes with it: nobody zeroes a meter that is not shown.
bool topBar(Facts f)
{
    return !on(f, ScreenKind::File) && !on(f, ScreenKind::Editor);
}

bool cableLength(Facts f)
{
    return topBar(f) && !on(f, ScreenKind::Tools);
}

// Without a card there is no folder to tell.
bool folderOrFile(Facts f)
{
    switch (f.screen) {
    case ScreenKind::Live:
    case ScreenKind::Recording:
        return f.hasCard;
    case ScreenKind::Thumbnails:
    case ScreenKind::File:
    case ScreenKind::Failure: // empty
        return true;
    default:
        return false;
    }
}

// The live picture where we paint it, and every picture that takes its place.
bool pictureLabel(Facts f)
{
    switch (f.screen) {
    case ScreenKind::Live:
        return f.guiDraws;
    case ScreenKind::Thumbnails:
    case ScreenKind::Tools:
        return false;
    default:
        return true;
    }
}

bool busy(Facts f)
{
    return f.isBusy || (picture(f) && !f.hasPicture);
}

// A film or note that runs, is paused or about to start.
bool plays(Facts f)
{
    return file(f) && factsOf(f.state).card == CardUse::Ours && !noteIsRecorded(f) && !f.goesOut;
}

// The pop-up with name and picture of what is being saved.
bool savingIsTold(Facts f)
{
    return (on(f, ScreenKind::Live) && f.state == eStateCaptureWindowEntry) ||
           (editor(f) && f.state == eStatePlaybackEditSaveImage);
}

bool fileOfPlay(Facts f) // a file that plays is neither deleted, renamed nor marked
{
    return factsOf(f.state).frame != FrameJob::PlayFilm && !noteIsRecorded(f);
}

// With a failed camera there is no picture to take, and the next check would bring the failure back over a
// page. A film is ended before anything else is done with the card.
bool capture(Facts f)
{
    return f.hasCard && !on(f, ScreenKind::Failure) && !f.isCatalogOpen;
}

bool modeOrPages(Facts f)
{
    return f.hasCard && !on(f, ScreenKind::Failure) && !recording(f);
}

bool card(Facts f)
{
    return f.hasCard;
}

bool lightAndZoom(Facts f)
{
    return !f.isCatalogOpen;
}

bool never(Facts)
{
    return false;
}

bool miniModule(Facts f)
{
    return f.hasMiniModule;
}

bool notWhileNoteIsRecorded(Facts f)
{
    return !noteIsRecorded(f);
}

constexpr std::array kRules = {
    WidgetRule{
        "frm_LiveMenuButtons_Left", anyLive,
        [](Facts f) { return f.state != eStateCaptureWindowEntry && f.state != eStateLiveSavingStill; }},
    WidgetRule{"btn_menu_LED_plus", nullptr, lightAndZoom},
    WidgetRule{"btn_menu_LED_minus", nullptr, lightAndZoom},
    WidgetRule{"btn_menu_zoom_plus", nullptr, lightAndZoom},
    WidgetRule{"btn_menu_zoom_minus", nullptr, lightAndZoom},
    WidgetRule{"btn_menu_CaptureModeSelect", nullptr, modeOrPages},
    WidgetRule{"btn_menu_Tools", nullptr, [](Facts f) { return !recording(f); }},
    WidgetRule{"btn_menu_Capture", nullptr, capture},
    WidgetRule{"btn_menu_Thumbnails", nullptr, [](Facts f) { return modeOrPages(f) && !f.isCatalogOpen; }},
    WidgetRule{"btn_DamageCatelog", recording, nullptr},
    WidgetRule{"frm_VideoLengthIndicator", [](Facts f) { return recording(f) || noteIsRecorded(f); },
               nullptr},
    WidgetRule{"frm_saving_information", savingIsTold, nullptr},
    WidgetRule{"lbl_DamageCatelogText", picture, nullptr},
    WidgetRule{"labelInputVideo", pictureLabel, nullptr},
    WidgetRule{"lbl_BusyIcon", busy, nullptr},

    WidgetRule{"lbl_CurrentFilenameandPath", folderOrFile, nullptr},
    WidgetRule{"lbl_BatteryIndicator", topBar, nullptr},
    WidgetRule{"lbl_WiFiIndicator", topBar, nullptr},
    WidgetRule{"lbl_ZoomLevelIndicator", topBar, nullptr},
    WidgetRule{"lbl_ZoomLevel", topBar, nullptr},
    WidgetRule{"lbl_LEDLevelIndicator", topBar, nullptr},
    WidgetRule{"lbl_LEDLevel", topBar, nullptr},
    WidgetRule{"lbl_CableLengthIndicator", cableLength, nullptr},
    WidgetRule{"lbl_CableLength", cableLength, nullptr},
    WidgetRule{"btn_tools_Reset_Meter_Counter", topBar, [](Facts f) { return !on(f, ScreenKind::Failure); }},
    WidgetRule{"pb_PlaybackIndicator", plays, nullptr},

    WidgetRule{"frm_ThumbnailViewer", thumbnails, nullptr},
    WidgetRule{"listW_ThumbnailViewer", thumbnails, nullptr},
    WidgetRule{"frm_ThumbnailMenuButtons_left", browserColumn, [](Facts f) { return !f.goesOut; }},
    WidgetRule{"btn_menu_ThumbnailPreviousPage", thumbnails, [](Facts f) { return f.page > 1; }},
    WidgetRule{"btn_menu_ThumbnailNextPage", thumbnails, [](Facts f) { return f.page < f.pages; }},
    WidgetRule{"btn_menu_ThumbnailPrevious", file, notWhileNoteIsRecorded},
    WidgetRule{"btn_menu_ThumbnailNext", file, notWhileNoteIsRecorded},
    WidgetRule{"btn_menu_ThumbnailBack", browserColumn, notWhileNoteIsRecorded},
    WidgetRule{"btn_menu_ThumbnailVideoPlayPause", [](Facts f) { return file(f) && f.isVideo; }, nullptr},
    WidgetRule{"btn_menu_ThumbnailAnnotateRecordPlayPause", [](Facts f) { return file(f) && !f.isVideo; },
               [](Facts f) { return f.isAnnotated || f.hasMicrophone || noteIsRecorded(f); }},
    WidgetRule{"btn_menu_ThumbnailDeleteAudio",
               [](Facts f) { return file(f) && !f.isVideo && f.isAnnotated; }, notWhileNoteIsRecorded},
    WidgetRule{"btn_menu_ThumbnailDeleteImage", file,
               [](Facts f) { return fileOfPlay(f) && f.state != eStatePlaybackMoviePaused; }},
    WidgetRule{"btn_menu_ThumbnailFileRename", file,
               [](Facts f) { return fileOfPlay(f) && f.state != eStatePlaybackMoviePaused; }},
    // A film's frame that stands can be marked.
    WidgetRule{"btn_menu_ThumbnailEditImage", file, [](Facts f) { return fileOfPlay(f) && f.isReadable; }},

    WidgetRule{"gv_MainView", editor, nullptr},
    WidgetRule{"frm_ThumbnailImageEditButtons", editor, [](Facts f) { return !savingIsTold(f); }},

    WidgetRule{"frm_ToolsMenuButtons", tools, nullptr},
    WidgetRule{"btn_menu_BackButton", tools, nullptr},
    WidgetRule{"btn_menu_FolderOptions", nullptr, card},
    WidgetRule{"btn_tools_Format_Media", nullptr, card},
    WidgetRule{"btn_menu_UnmountMedia", nullptr, card},
    WidgetRule{"btn_tools_Select_Camera_Type", miniModule, nullptr},
    WidgetRule{"lbl_menu_Camera_Type_lineOne", miniModule, nullptr},
    WidgetRule{"lbl_menu_Camera_Type_lineTwo", miniModule, nullptr},
    WidgetRule{"btn_tools_WiFI_Settings", never, nullptr},
    WidgetRule{"lbl_menu_Wifi_Info", never, nullptr},
    WidgetRule{"pb_Waiting", never, nullptr},
};

} // namespace

std::span<const WidgetRule> widgetRules()
{
    return kRules;
}
