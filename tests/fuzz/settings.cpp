// The settings file: what was read is written and read again as the same.
#include "fuzz.h"
#include "settings/settingsfile.h"

#include <QXmlStreamReader>

FUZZ(input)
{
    const auto parsed = [](const QByteArray &content) {
        QXmlStreamReader reader(content);
        PersistentSettings settings = settingsfile::factorySettings();
        settingsfile::parse(reader, settings);
        return settings;
    };
    const QByteArray written = settingsfile::format(parsed(input.left(settingsfile::kLargestFile)));
    require(settingsfile::format(parsed(written)) == written);
}
