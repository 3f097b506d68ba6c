#include "media/gst_videoinput.h"
#include "media/videoinputparts.h"

using namespace videoinput;

bool g_gst_bTimeDateState = false;

namespace {

char g_gst_currDamageCatelogText[1024] = "";
char g_gst_currMeterCount[16] = "";

// The element's text is markup: what the user typed is shown as it stands.
void setOverlayText(GstElement *overlay, const char *text)
{
    const GTextOwner escaped(g_markup_escape_text(text, -1));
    g_object_set(overlay, "text", escaped.get(), nullptr);
}

} // namespace

void setTextOverlays()
{
    struct Overlay
    {
        const char *name;
        GstElement *struct_VideoInputPipeline::*handle;
        const char *font;
        int deltax;
        int deltay;
        const char *text; // null: a clock
    };
    // "LCDtimedateStamp" has its small d.
    static const std::array overlays = {
        Overlay{"LCDdamageCatelog", &struct_VideoInputPipeline::LCDdamageCatelog, "Sans 12", 2, 554,
                g_gst_currDamageCatelogText},
        Overlay{"damageCatelog", &struct_VideoInputPipeline::damageCatelog, "Sans 12", 2, 554,
                g_gst_currDamageCatelogText},
        Overlay{"meterCount", &struct_VideoInputPipeline::meterCount, "Sans 14", 2, 2, g_gst_currMeterCount},
        Overlay{"LCDtimedateStamp", &struct_VideoInputPipeline::LCDtimeDateStamp, "Sans 12", 568, 4, nullptr},
        Overlay{"timeDateStamp", &struct_VideoInputPipeline::timeDateStamp, "Sans 12", 568, 4, nullptr},
    };
    constexpr int kHorizontalByPosition = 4;
    constexpr int kVerticalByPosition = 3;
    for (const Overlay &overlay : overlays) {
        GstElement *element = g_gst_Pipeline.*overlay.handle = lookUp(overlay.name);
        if (!element)
            continue;
        g_object_set(element, "font-desc", overlay.font, "halignment", kHorizontalByPosition, "valignment",
                     kVerticalByPosition, "xpos", 0.0, "ypos", 0.0, "deltax", overlay.deltax, "deltay",
                     overlay.deltay, nullptr);
        if (overlay.text)
            setOverlayText(element, overlay.text);
        else
            g_object_set(element, "time-format", "%H:%M %d.%m.%Y", "silent", !g_gst_bTimeDateState, nullptr);
    }
}

void gst_UpdateVideoDamageCatelog(const char *text, int length)
{
    for (GstElement *overlay : {g_gst_Pipeline.LCDdamageCatelog, g_gst_Pipeline.damageCatelog}) {
        if (!overlay)
            continue;
        copyText(g_gst_currDamageCatelogText, text, length);
        g_object_set(overlay, "silent", length == 0, nullptr);
        if (length == 0)
            return;
        setOverlayText(overlay, g_gst_currDamageCatelogText);
    }
}

void gst_BeginWithDamageText(const char *text, int length)
{
    copyText(g_gst_currDamageCatelogText, text, length);
}

void gst_UpdateVideoMeterCount(const char *text, int length)
{
    const QByteArray shown = g_gst_currMeterCount;
    copyText(g_gst_currMeterCount, text, length);
    if (g_gst_Pipeline.meterCount && shown != g_gst_currMeterCount) // a text that is set is drawn anew
        setOverlayText(g_gst_Pipeline.meterCount, g_gst_currMeterCount);
}

void gst_EnableDateTimeOverlay(int on)
{
    g_gst_bTimeDateState = on != 0;
}
