// What the settings object learns from the encoder board.
#include "settings/params.h"

#include "hw/hardware.h"
#include "hw/i2c.h"
#include "settings/battery.h"

namespace {

constexpr quint8 kDecoderLocked = 0x01;

int readRegister(eTWIRegisters reg)
{
    return i2c_read(kEncoderBoardAddress, reg);
}

} // namespace

void params::readFirmwareVersion()
{
    const quint8 version = static_cast<quint8>(readRegister(twiFWVersion));
    g_GlobalSystemSettings.EncoderBoardFWVersionByte = version;
    // A version below 0x10 keeps its trailing point ("a.").
    g_GlobalSystemSettings.EncoderBoardFWVersion = QString::number(version, 16).insert(1, QLatin1Char('.'));
}

void params::applyBacklight() const
{
    // Without a settings file the level is 0, and a dark screen could not be set up again.
    if (g_GlobalSystemSettings.LCDBacklightValue > 0)
        SetLCDBrightness(static_cast<char>(g_GlobalSystemSettings.LCDBacklightValue));
}

void params::ReadBatteryPotential()
{
    const qint16 reading =
        i2c_read_word(kEncoderBoardAddress, twiBatteryReadingHighByte, twiBatteryReadingLowByte);
    g_GlobalSystemSettings.BatteryADCReading = reading;
    if (g_GlobalSystemSettings.EncoderBoardFWVersionByte <= battery::kLastFirmwareWithoutTemperature) {
        g_GlobalSystemSettings.BatteryStatus = battery::gradeOldFirmware(reading);
        return;
    }
    const qint16 temperature =
        i2c_read_word(kEncoderBoardAddress, twiBatteryTempHighByte, twiBatteryTempLowByte);
    const int externalSupply = readRegister(twiExternalSupplyPresent);
    g_GlobalSystemSettings.BatteryStatus = battery::grade(reading, temperature, externalSupply);
    g_GlobalSystemSettings.bExternalSupplyConnected = externalSupply == 1;
}

void params::selectActiveCameraInterface()
{
    // Only the low eight bits count: without a board both read as set, and the head is taken for the long
    // reel.
    const auto equalizerLock = static_cast<quint8>(readRegister(twiEqualizerLock));
    const auto longReel = static_cast<quint8>(readRegister(twiCable60Meter));
    eImagerTypes head = longReel ? e60meter : e30meter;
    if (!equalizerLock) {
        if (!(getADV7180Status() & kDecoderLocked)) {
            g_GlobalSystemSettings.ImagerType = eNoImagerAttached;
            return;
        }
        head = eMinimodule_10m;
    }
    i2c_write(kEncoderBoardAddress, twiMeterCountAlgorithm, head);
    g_GlobalSystemSettings.ImagerType = head;
}
