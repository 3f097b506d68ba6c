// A touch belongs to the screen on which it was made. GUI thread.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

// Installed on the application: drops a press, with its release, that was made on a screen which is gone or
// while an action kept the unit busy. On a screen that stays every press counts, twenty a second.
class TouchGuard : public QObject
{
public:
    explicit TouchGuard(QObject *parent);

    void screenChanged(); // another screen is up; a dialog that comes or goes is seen without being told
    void actionEnded();   // what was touched meanwhile comes in now
    void close();         // from here on no touch counts
    void open();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void settle();

    QTimer m_settling; // runs until all has come in that was touched before
    QElapsedTimer m_sinceScreen;
    bool m_isNewScreen = false;
    bool m_isClosed = false;
    bool m_isDropping = false; // the press was dropped: so is what follows, up to its release
};
