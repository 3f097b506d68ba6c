#include "settings/settingsfile.h"

#include <QCoreApplication>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <array>

namespace {

struct Entry
{
    const char *name;
    void (*set)(PersistentSettings &, qint16);
    int (*get)(const PersistentSettings &);
};

// Narrowed like the field, without a range check: a strange value is used as it stands.
template <auto Field> void store(PersistentSettings &settings, qint16 value)
{
    using T = std::remove_reference_t<decltype(settings.*Field)>;
    settings.*Field = static_cast<T>(value);
}

template <auto Field> int load(const PersistentSettings &settings)
{
    return settings.*Field;
}

template <auto Field> constexpr Entry entry(const char *name)
{
    return {name, store<Field>, load<Field>};
}

constexpr std::array kEntries = {
    entry<&PersistentSettings::bDateTimeStamp>("bDateTimeStamp"),
    entry<&PersistentSettings::AutoShutdownIdx>("AutoShutdownIdx"),
    entry<&PersistentSettings::LCDBacklightValue>("LCDBacklightValue"),
    entry<&PersistentSettings::bWIFIHotSpotActive>("bWIFIHotSpotActive"),
    entry<&PersistentSettings::LanguageIdx>("LanguageIdx"),
    Entry{"bMicrophoneActive", store<&PersistentSettings::bMicrophoneActive>,
          [](const PersistentSettings &settings) { return settings.bMicrophoneActive ? 1 : 0; }},
    entry<&PersistentSettings::UnitofMeasure>("UnitofMeasure"),
};

} // namespace

namespace settingsfile {

PersistentSettings factorySettings()
{
    return {.bDateTimeStamp = 1,
            .AutoShutdownIdx = 2,
            .LCDBacklightValue = 7,
            .bWIFIHotSpotActive = 1,
            .LanguageIdx = 0,
            .bMicrophoneActive = 1,
            .UnitofMeasure = 0};
}

namespace {

void readComponents(QXmlStreamReader &reader, PersistentSettings &settings)
{
    while (reader.readNextStartElement()) {
        const auto known = std::find_if(kEntries.begin(), kEntries.end(), [&](const Entry &candidate) {
            return reader.name() == QLatin1String(candidate.name);
        });
        if (known == kEntries.end()) {
            reader.skipCurrentElement();
            continue;
        }
        // A number that broke off with the file is no number: "1" may have been the start of "12".
        const qint16 value = reader.readElementText(QXmlStreamReader::SkipChildElements).toShort();
        if (!reader.hasError())
            known->set(settings, value);
    }
}

void readSettingsElement(QXmlStreamReader &reader, PersistentSettings &settings)
{
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("settings"))
            readComponents(reader, settings);
        else
            reader.skipCurrentElement();
    }
}

} // namespace

bool parse(QXmlStreamReader &reader, PersistentSettings &settings)
{
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            reader.raiseError(QStringLiteral("Document type declaration in the settings file"));
            return false;
        case QXmlStreamReader::StartElement:
            if (reader.name() != QLatin1String("systemsettings")) {
                reader.raiseError(QCoreApplication::translate("params", "Not a systemsettings file"));
                return false;
            }
            readSettingsElement(reader, settings);
            break;
        default:
            break;
        }
    }
    return true;
}

QByteArray format(const PersistentSettings &settings)
{
    QByteArray content;
    QXmlStreamWriter writer(&content);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(4);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("systemsettings"));
    writer.writeStartElement(QStringLiteral("settings"));
    for (const Entry &each : kEntries)
        writer.writeTextElement(QString::fromLatin1(each.name), QString::number(each.get(settings)));
    writer.writeEndElement();
    writer.writeEndDocument();
    return content;
}

} // namespace settingsfile
