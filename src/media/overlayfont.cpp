#include "media/overlayfont.h"

#include <fontconfig/fontconfig.h>

void fixOverlayFont()
{
    static constexpr char rule[] =
        "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>"
        "<match target=\"pattern\"><test name=\"family\"><string>Sans</string></test>"
        "<edit name=\"family\" mode=\"prepend\" binding=\"strong\">"
        "<string>Liberation Sans</string></edit></match></fontconfig>";
    // Before the system's rules, which give the name away.
    FcConfig *config = FcConfigCreate();
    FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8 *>(rule), FcTrue);
    FcConfigParseAndLoad(config, nullptr, FcTrue);
    FcConfigBuildFonts(config);
    FcConfigSetCurrent(config);
    FcConfigDestroy(config);
}
