// The one settings object: the record, its file, and what the unit tells about itself. GUI thread only.
#pragma once

#include "settings/languages.h"
#include "settings/systemsettings.h"

#include <QXmlStreamReader>

class params
{
public:
    // The first call makes the instance and reads the unit: files, encoder board, commands. Never destroyed.
    static params *getInstance();

    // The next getInstance() reads the unit anew, which may be another one. Whoever holds the instance keeps
    // it.
    static void resetForTests();

    // The record; callers read and write its fields directly.
    _GlobalSystemSettings &getParams() { return g_GlobalSystemSettings; }

    // Settings file -> record. A missing, foreign or far too large file leaves the record as it was.
    void ReadSystemSettingsConfig();

    // Record -> settings file, whole or not at all; `factory` writes the factory values instead and leaves
    // the record alone. A failure is a debug line; the record keeps its values for this run.
    void WriteGlobalSystemSettingsFile(bool factory);

    // Sets the abbreviation and the two file names of the language; a value that is no language keeps the
    // abbreviation. Neither stores LanguageIdx nor saves.
    void SetLanguage(eLanguages language);

    void GetKernelInformation(); // fills KernelInfo from "uname -a"
    void initMessageLog();       // remembers where the kernel log ends now
    void initEventLog();         // remembers where the event log ends now

    // Board (params_board.cpp)
    void applyBacklight() const;        // the stored level to the display; none stored leaves it as it is
    void ReadBatteryPotential();        // fills BatteryADCReading and BatteryStatus
    void selectActiveCameraInterface(); // fills ImagerType, tells the board the count algorithm

    // Wireless network (params_wifi.cpp); each runs child processes and waits for them
    void GetWIFIHotspotPW();
    void SetWIFIHotspotPW(const QString &oldText, const QString &newText);
    void GetWifiStatus();
    void configureWifi();
    void toggleWifiMode();

private:
    params() = default;
    void readUnit();
    void readFirmwareVersion();

    _GlobalSystemSettings g_GlobalSystemSettings;
    QXmlStreamReader reader; // while the settings file is read
    bool m_hasReadUnit = false;

    static params *m_pInstance;
};
