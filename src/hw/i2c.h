// The encoder board: an SMBus slave that counts the cable, watches the battery and knows the camera head.
// GUI thread; every call opens and closes the bus device.
#pragma once

#include <cstddef>
#include <linux/i2c.h>

inline constexpr int kEncoderBoardBus = 4;
inline constexpr int kEncoderBoardAddress = 103; // 7 bits: 0x67

// One byte each; a 16-bit quantity is a high byte followed by a low byte, read high first.
enum eTWIRegisters {
    twiMasterBusy,
    twiFWVersion,
    twiBatteryReadingHighByte,
    twiBatteryReadingLowByte,
    twiMeterCountHighByte,
    twiMeterCountLowByte,
    twiMeterCountAlgorithm,
    twiBlackWhiteMode,
    twiEncoderCountHighByte,
    twiEncoderCountLowByte,
    twiEqualizerLock,
    twiBatteryTempHighByte,
    twiBatteryTempLowByte,
    twiCable60Meter,
    twiExternalSupplyPresent,
    twiEND
};

// Opens "/dev/i2c/BUS" or, failing that, "/dev/i2c-BUS"; `filename` gets the path tried (at most `size`
// bytes). Returns a descriptor or a negative value; says why on standard error unless `quiet`.
int open_i2c_dev(int i2cbus, char *filename, size_t size, int quiet);

// One SMBus transfer; 0 or minus errno. A plain file in place of the bus device stands for the board: a byte
// transfer then reads or writes the byte at offset `command`.
int i2c_smbus_access(int fd, char read_write, unsigned char command, int size, i2c_smbus_data *data);

int i2c_smbus_read_byte_data(int fd, unsigned char command);                       // 0..255 or minus errno
int i2c_smbus_write_byte_data(int fd, unsigned char command, unsigned char value); // 0 or minus errno

// A register of the slave at `address`: 0..255; -1 no bus, -64 no such slave, -128 three failed reads.
int i2c_read(int address, int reg);

// Two registers as one signed value, high byte first; negative when one of the reads failed.
short i2c_read_word(int address, int highByte, int lowByte);

// 0; -1 no bus, minus errno no such slave, -2 three failed writes.
int i2c_write(int address, int reg, int value);
