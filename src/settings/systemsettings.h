// The record of settings and shared run-time state that every room reads and writes on the GUI thread.
#pragma once

#include "core/settingvalues.h"
#include "platform/unit.h"

#include <QColor>
#include <QString>

#include <array>

enum eCaptureModes { eStillImageCapture, eVideoCapture };

enum eBatteryStatus {
    eBattery100,
    eBattery80,
    eBattery60,
    eBattery40,
    eBattery20,
    eBatteryEmpty,
    eBatteryError,
    eBatteryExternalSupply,
    eBatteryTemperatureWarning,
    eBatteryCriticalTemperature
};

// The seven values that survive a restart; the settings file carries them in this order.
struct PersistentSettings
{
    quint8 bDateTimeStamp = 0;
    qint8 AutoShutdownIdx = 0; // index into AutoShutdownOptions
    quint8 LCDBacklightValue = 0;
    quint8 bWIFIHotSpotActive = 0;
    quint8 LanguageIdx = 0; // eLanguages
    qint8 bMicrophoneActive = 0;
    quint8 UnitofMeasure = 0; // eUnitofMeasure
};

struct _GlobalSystemSettings : PersistentSettings
{
    qint32 selectedItemFileIndex = 0;
    qint8 LEDIntensityStep = 0;                                   // 0..10
    quint8 ZoomLevel = 0;                                         // 0..10
    std::array<quint32, 4> AutoShutdownOptions = {0, 10, 20, 30}; // minutes, 0: never
    quint8 bNetworkStreaming = 0;
    QString WIFIHotSpotSSID;
    QString WIFIHotSpotPW;
    QString WIFIipAddr;
    QString WIFImacAddress;
    QString WIFIConnectedSSID;
    QString LanguageAbbreviation;
    UnitPath damageCatelog_filename;
    QString keyboardMap_filename; // resource
    eImagerTypes HWImagerConfiguration = eMinimodule_10m;
    bool MiniModulePresent = false;
    eImagerTypes ImagerType = eMinimodule_10m;
    std::array<QString, eImagerTypeEnd> ImagerTypeDescription = {
        QStringLiteral("mini Module"), QStringLiteral("KM-A/KM-B - 65m"), QStringLiteral("KM-A/KM-B - 30m"),
        QStringLiteral("---")};
    // Brightness by step; row 0 for the reel heads, row 1 for the mini module. Uneven on purpose: equal
    // steps for the eye.
    std::array<std::array<qint8, 11>, 2> LEDIntensitySteps = {
        {{0, 7, 12, 17, 22, 27, 32, 37, 42, 54, 60}, {0, 7, 9, 11, 13, 15, 17, 19, 21, 23, 30}}};
    eCaptureModes CaptureMode = eStillImageCapture;
    qint16 MeterCount = 0;   // centimetres; negative: the last poll failed
    quint16 MeterOffset = 0; // centimetres
    eBatteryStatus BatteryStatus = eBattery100;
    bool bExternalSupplyConnected = false;
    QString EncoderBoardFWVersion;
    quint8 EncoderBoardFWVersionByte = 0;
    bool ReadRawEncoderValues = false;
    QColor currEditorColor = Qt::red;
    QString KernelInfo;
    bool MSDC_ModuleInstalled = false;
    qint16 BatteryADCReading = 0;
    bool bDamageCatelogAnnotationActive = false;
    qint16 currDamageCatelogMeterCount = 0;
    bool bPictureEdited = false;
    quint64 lastMessageLogLocation = 0; // bytes of /var/log/messages already looked at
    quint64 lastEventLogLocation = 0;
};
