#include "settings/params.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"
#include "settings/settingsfile.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.settings")

const UnitPath kSettingsFile = u"/home/root/tubix4_app/globlsystemsettings_default.xml"_unit;
const UnitPath kMessageLog = u"/var/log/messages"_unit;
const UnitPath kEventLog = u"/home/root/tubix4_app/eventlog.csv"_unit;

// The kernel's own part of the unit's "uname -a" line.
constexpr int kKernelStart = 17;
constexpr int kKernelLength = 16;

quint64 sizeOf(const UnitPath &unitPath)
{
    return quint64(QFileInfo(unit::path(unitPath)).size());
}

} // namespace

params *params::m_pInstance = nullptr;

params *params::getInstance()
{
    if (!m_pInstance)
        m_pInstance = new params;
    if (!std::exchange(m_pInstance->m_hasReadUnit, true))
        m_pInstance->readUnit();
    return m_pInstance;
}

void params::resetForTests()
{
    if (!m_pInstance)
        return;
    m_pInstance->g_GlobalSystemSettings = {};
    m_pInstance->m_hasReadUnit = false;
}

// The pass phrase and the addresses are the last: they take child processes, and need nothing of the rest.
void params::readUnit()
{
    ReadSystemSettingsConfig();
    SetLanguage(static_cast<eLanguages>(g_GlobalSystemSettings.LanguageIdx));
    readFirmwareVersion();
    GetWIFIHotspotPW();
    GetWifiStatus();
}

void params::ReadSystemSettingsConfig()
{
    QString error;
    const auto content = savefile::read(kSettingsFile, settingsfile::kLargestFile, &error);
    if (!content) {
        qCDebug(log) << error;
        return;
    }
    reader.clear();
    reader.addData(*content);
    settingsfile::parse(reader, g_GlobalSystemSettings);
    if (reader.hasError())
        qCDebug(log) << reader.errorString();
    reader.clear();
}

void params::WriteGlobalSystemSettingsFile(bool factory)
{
    QString error;
    if (!savefile::writeThrough(
            kSettingsFile,
            settingsfile::format(factory ? settingsfile::factorySettings()
                                         : static_cast<const PersistentSettings &>(g_GlobalSystemSettings)),
            &error))
        qCDebug(log) << error;
}

void params::SetLanguage(eLanguages language)
{
    if (const QString abbreviation = languageAbbreviation(language); !abbreviation.isEmpty())
        g_GlobalSystemSettings.LanguageAbbreviation = abbreviation;
    g_GlobalSystemSettings.keyboardMap_filename =
        keyboardLayoutResource(g_GlobalSystemSettings.LanguageAbbreviation);
    g_GlobalSystemSettings.damageCatelog_filename =
        damageCatelogFile(g_GlobalSystemSettings.LanguageAbbreviation);
}

void params::GetKernelInformation()
{
    QByteArray output = command::run(QStringLiteral("uname"), {QStringLiteral("-a")}).standardOutput;
    if (const qsizetype end = output.indexOf('\0'); end >= 0)
        output.truncate(end);
    g_GlobalSystemSettings.KernelInfo = QString::fromLocal8Bit(output).mid(kKernelStart, kKernelLength);
}

void params::initMessageLog()
{
    g_GlobalSystemSettings.lastMessageLogLocation = sizeOf(kMessageLog);
}

void params::initEventLog()
{
    g_GlobalSystemSettings.lastEventLogLocation = sizeOf(kEventLog);
    qCDebug(log) << "eventlog last location" << g_GlobalSystemSettings.lastEventLogLocation;
}
