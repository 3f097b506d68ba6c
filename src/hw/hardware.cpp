#include "hw/hardware.h"

#include "platform/attribute.h"

#include <cstdlib>

namespace {

const UnitPath kLcdBrightness = u"/sys/class/backlight/backlight_lcdgrp.26/brightness"_unit;
const UnitPath kDecoderRegister =
    u"/sys/devices/soc0/soc.1/2100000.aips-bus/21a8000.i2c/i2c-2/2-0020/adv7180_reg"_unit;
const UnitPath kUsbState = u"/sys/class/extcon/ci_hdrc.0/state"_unit;

// The board's extcon text carries the host-cable value as its 29th character.
constexpr int kUsbHostIndex = 28;

} // namespace

void SetLCDBrightness(char value)
{
    // Plain char is unsigned on ARM and signed on a desk: a level is at most 7, and what is negative stays
    // so.
    attribute::write(kLcdBrightness, QByteArray::number(static_cast<signed char>(value)));
}

quint8 getADV7180Status()
{
    if (!attribute::selectRegister(kDecoderRegister, "10"))
        return 0;
    const auto text = attribute::read(kDecoderRegister, 4);
    if (!text)
        return 0;
    return static_cast<quint8>(std::strtol(text->constData(), nullptr, 0) & 0xff);
}

bool USBHostDeviceAttached()
{
    const auto text = attribute::read(kUsbState, kUsbHostIndex + 1);
    return text && text->size() > kUsbHostIndex && text->at(kUsbHostIndex) == '1';
}
