#include "route.h"

#include "hand.h"

#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "settings/params.h"

namespace {

void live(Hand &hand)
{
    hand.waitFor("the camera picture", [] { return bool(g_InputFrameReady); });
    hand.waitFor("the card", [] { return params::getInstance()->getParams().MSDC_ModuleInstalled; });
    hand.unit({QStringLiteral("meter"), QStringLiteral("4.25")});
    for (int i = 0; i < 4; ++i)
        hand.touch("btn_menu_LED_plus");
    hand.look("live");
    for (int i = 0; i < 3; ++i)
        hand.touch("btn_menu_zoom_plus");
    hand.look("zoom");
    for (int i = 0; i < 3; ++i)
        hand.touch("btn_menu_zoom_minus");
}

// Stills along the pipe, each with the picture that the screen shows of it.
void stills(Hand &hand)
{
    for (const char *metres : {"0.80", "2.35", "4.90", "7.15", "9.60"}) {
        hand.unit({QStringLiteral("meter"), QLatin1String(metres)});
        hand.pause(600);
        hand.touch("btn_menu_Capture");
        hand.waitForScreen("frm_saving_information");
    }
    hand.look("captured");
    hand.waitForScreen("btn_menu_CaptureModeSelect");
}

constexpr int kFilmMs = 6000; // five seconds of film, however long the microphone takes to open

// The first film carries a damage from the catalog.
void films(Hand &hand)
{
    hand.touch("btn_menu_CaptureModeSelect");
    hand.unit({QStringLiteral("meter"), QStringLiteral("3.00")});
    hand.pause(600); // the meter is read five times a second
    hand.touch("btn_menu_Capture");
    hand.touch("btn_DamageCatelog");
    hand.waitForScreen("listW_DamageCatelog");
    hand.touchItem("listW_DamageCatelog", 2);
    hand.look("damage-catalog");
    hand.touch("btn_DamageCatelog_Confirm");
    hand.pause(kFilmMs);
    hand.look("recording");
    hand.touch("btn_menu_Capture");
    hand.waitForScreen("btn_menu_Thumbnails");
    hand.unit({QStringLiteral("meter"), QStringLiteral("6.00")});
    hand.pause(600);
    hand.touch("btn_menu_Capture");
    hand.pause(kFilmMs);
    hand.touch("btn_menu_Capture");
    hand.waitForScreen("btn_menu_Thumbnails");
    hand.touch("btn_menu_CaptureModeSelect");
}

void browser(Hand &hand)
{
    hand.touch("btn_menu_Thumbnails");
    hand.waitForScreen("listW_ThumbnailViewer");
    hand.touchItem("listW_ThumbnailViewer", 1);
    hand.waitForScreen("btn_menu_ThumbnailAnnotateRecordPlayPause");
    hand.touch("btn_menu_ThumbnailAnnotateRecordPlayPause");
    hand.pause(3200);
    hand.look("voice-note");
    hand.touch("btn_menu_ThumbnailAnnotateRecordPlayPause");
    hand.waitForScreen("btn_menu_ThumbnailDeleteAudio");
    hand.look("picture");
    hand.touch("btn_menu_ThumbnailFileRename");
    hand.waitForScreen("gridLayoutWidget");
    hand.look("rename");
    hand.touch("btn_Cancel");
    hand.touch("btn_menu_ThumbnailDeleteImage");
    hand.waitForScreen("btn_Confirm");
    hand.look("delete");
    hand.touch("btn_Cancel");
    hand.touch("btn_menu_ThumbnailBack");
    hand.waitForScreen("listW_ThumbnailViewer");
    hand.look("thumbnails");
    hand.touchItem("listW_ThumbnailViewer", 5);
    hand.touch("btn_menu_ThumbnailVideoPlayPause");
    hand.waitFor("the film", [] { return g_PercentPlayback > 40; });
    hand.look("film");
    hand.touch("btn_menu_ThumbnailBack");
    hand.waitForScreen("listW_ThumbnailViewer");
    hand.touch("btn_menu_ThumbnailBack");
    hand.waitForScreen("btn_menu_Capture");
}

// An arrow, a circle and a word on the second still.
void editor(Hand &hand)
{
    hand.touch("btn_menu_Thumbnails");
    hand.touchItem("listW_ThumbnailViewer", 1);
    hand.touch("btn_menu_ThumbnailEditImage");
    hand.touch("btn_menu_ThumbnailImageEditColor");
    hand.touch("btn_ColorPicker_Yellow");
    hand.look("color-picker");
    hand.touch("btn_Confirm");
    hand.touch("btn_menu_ThumbnailImageEditArrow");
    hand.drag("gv_MainView", {380, 420}, {500, 250});
    hand.touch("btn_menu_ThumbnailImageEditCircle");
    hand.drag("gv_MainView", {480, 60}, {700, 280});
    hand.touch("btn_menu_ThumbnailImageEditText");
    hand.touchItem("listW_DamageCatelog", 7);
    hand.touch("btn_DamageCatelog_Confirm");
    hand.drag("gv_MainView", {260, 430}, {260, 430});
    hand.look("editor");
    hand.touch("btn_menu_ThumbnailImageEditSave");
    hand.waitForScreen("frm_saving_information");
    hand.waitForScreen("btn_menu_ThumbnailImageEditBack");
    hand.touch("btn_menu_ThumbnailImageEditBack");
    hand.touch("btn_menu_ThumbnailBack");
    hand.waitForScreen("listW_ThumbnailViewer");
    hand.touch("btn_menu_ThumbnailBack");
    hand.waitForScreen("btn_menu_Capture");
}

void tools(Hand &hand)
{
    hand.touch("btn_menu_Tools");
    hand.waitForScreen("btn_menu_BackButton");
    hand.look("tools");
    hand.touch("btn_tools_SetTime");
    hand.waitForScreen("btn_settime_cancel");
    hand.look("set-time");
    hand.touch("btn_settime_cancel");
    hand.touch("btn_tools_SetDate");
    hand.waitForScreen("btn_setdate_cancel");
    hand.look("set-date");
    hand.touch("btn_setdate_cancel");
    hand.touch("btn_menu_FolderOptions");
    hand.waitForScreen("tView_Folders");
    hand.look("folders");
    hand.touch("btn_NewFolder");
    hand.typeText(QStringLiteral("elmstreet"));
    hand.look("new-folder");
    hand.touch("btn_Cancel");
    hand.waitForScreen("tView_Folders");
    hand.touch("btn_Cancel");
    hand.touch("btn_tools_Format_Media");
    hand.waitForScreen("lbl_MainIcon");
    hand.look("format");
    hand.touch("btn_Cancel");
    hand.touch("btn_menu_BackButton");
    hand.waitForScreen("btn_menu_Capture");
}

// What comes from outside, the last of it the end.
void events(Hand &hand)
{
    hand.unit({QStringLiteral("usb"), QStringLiteral("attach")});
    hand.waitFor("the USB screen", [&hand] { return !hand.sees("frm_LiveMenuButtons_Left"); });
    hand.look("usb");
    hand.unit({QStringLiteral("usb"), QStringLiteral("detach")});
    hand.waitForScreen("btn_menu_Capture");
    hand.unit({QStringLiteral("card"), QStringLiteral("corrupt")});
    hand.waitForScreen("lbl_MainIcon");
    hand.look("card-corrupt");
    hand.touch("btn_Confirm");
    hand.waitForScreen("btn_menu_Tools");
    hand.putOnCard(QStringLiteral("DCIM/TUBIX4UPDT504"), "an upgrade that nobody confirms");
    hand.unit({QStringLiteral("card"), QStringLiteral("remove")});
    hand.waitFor("the card's removal",
                 [] { return !params::getInstance()->getParams().MSDC_ModuleInstalled; });
    hand.unit({QStringLiteral("card"), QStringLiteral("insert")});
    hand.waitForScreen("lbl_MainIcon");
    hand.look("upgrade");
    hand.touch("btn_Cancel");
    hand.waitForScreen("btn_menu_Capture");
    hand.unit({QStringLiteral("battery"), QStringLiteral("20")});
    hand.pause(4000);
    hand.look("battery-low");
    hand.unit({QStringLiteral("camera"), QStringLiteral("lost")});
    hand.waitFor("the lost camera", [] { return g_gst_VideoPipelineMode == eGSTStateError; });
    hand.look("camera-lost");
    hand.unit({QStringLiteral("camera"), QStringLiteral("back")});
    hand.touch("btn_menu_Tools"); // leaving the page builds the picture anew
    hand.touch("btn_menu_BackButton");
    hand.waitForScreen("btn_menu_Capture");
    hand.unit({QStringLiteral("battery"), QStringLiteral("empty")});
    hand.waitFor("the empty battery", [&hand] { return !hand.sees("frm_LiveMenuButtons_Left"); });
    hand.look("battery-empty");
}

} // namespace

void goThroughTheScreens(Hand &hand)
{
    live(hand);
    stills(hand);
    films(hand);
    browser(hand);
    editor(hand);
    tools(hand);
    events(hand);
}
