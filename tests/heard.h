// What every test hears: a warning of Qt, GLib or GStreamer that nobody expects makes the running test fail.
#pragma once

#include <QObject>

// The base of every test class.
class HeardTest : public QObject
{
    Q_OBJECT

private slots:
    void init(); // before each test function
};
