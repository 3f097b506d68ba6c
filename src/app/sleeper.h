// Sleeping on the calling thread, for whoever has to wait.
#pragma once

#include <QThread>

class Sleeper : public QThread
{
public:
    ~Sleeper() override = default;
    static void usleep(unsigned long microseconds) { QThread::usleep(microseconds); }
    static void msleep(unsigned long milliseconds) { QThread::msleep(milliseconds); }
    static void sleep(unsigned long seconds) { QThread::sleep(seconds); }
};
