// Sleeping on the calling thread, for whoever has to wait.
#pragma once

#include <QThread>

class Sleeper : public QThread
{
public:
    ~Sleeper() override = default;
    static void usleep(unsigned long microseconds) { QThread::usleep(microseconds); }
    static void msleep(unsigned long milliseconds) { QThread::msleep(milliseconds); }
    static void sleep(unsigned long seconds) { QThread::msleep(seconds * s_second); }

    // A second in sleep() from here on, in ms. The file system of a test is mounted at once.
    static void setSecondForTests(unsigned long milliseconds) { s_second = milliseconds; }

private:
    static inline unsigned long s_second = 1000;
};
