// What the pipe camera reads from the unit's folder with every picture.
#pragma once

#include <string>

#include <sys/types.h>

// A small file that is read over and over: the descriptor stays open until the file is replaced.
class WatchedFile
{
public:
    explicit WatchedFile(std::string path) : m_path(std::move(path)) {}
    ~WatchedFile();
    WatchedFile(const WatchedFile &) = delete;
    WatchedFile &operator=(const WatchedFile &) = delete;

    // Reads up to `size` bytes from the start; the number of bytes, 0 when there is no such regular file.
    size_t read(char *bytes, size_t size);
    // True while a regular file of that name is there.
    bool exists() const;

private:
    void close();

    std::string m_path;
    int m_fd = -1;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

// The unit's folder by its capture device's file, DIR/dev/video0.
std::string unitFolder(const std::string &device);

// One unit as its camera knows it. Used by one streaming thread at a time.
class UnitFiles
{
public:
    // `device`: the capture device's file, DIR/dev/video0; the unit's folder is DIR.
    explicit UnitFiles(const std::string &device);

    // False when the capture device has vanished.
    bool cameraPresent() const { return m_camera.exists(); }
    // Reads everything anew; what cannot be read keeps its last value.
    void update();

    int meterCount() const { return m_meterCount; } // centimetres
    double light() const;                           // of the camera's LEDs, 0 to 1
    bool headAttached() const { return m_equaliserLocked || m_decoderLocked; }

private:
    WatchedFile m_camera;
    WatchedFile m_board;
    WatchedFile m_led;
    WatchedFile m_decoder;
    int m_meterCount = 0;
    int m_brightness = 0;
    bool m_equaliserLocked = true;
    bool m_decoderLocked = true;
};
