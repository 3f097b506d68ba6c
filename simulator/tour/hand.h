// A person in front of the unit: touches, waits, looks. The script runs on a thread of its own, so that it
// goes on while the window stands in a dialog; everything that touches a widget is done on the GUI thread.
#pragma once

#include <QImage>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

class Hand
{
public:
    // `unitTool`: simulator/unit; `unitFolder`: the unit that the application runs on; `pictures`: folder for
    // the screenshots, which must be there.
    Hand(QWidget &window, const QString &unitTool, const QString &unitFolder, const QString &pictures);

    // A touch on the visible button, label or list of that name: in the open dialog when it has one, else in
    // the window. Waits until it is there and enabled; a screen that never comes ends the program with
    // status 1.
    void touch(const char *name);
    void touchItem(const char *list, int row);           // the row of a list
    void drag(const char *view, QPoint from, QPoint to); // a finger's way over a view

    void waitFor(const char *what, const std::function<bool()> &condition); // asked on the GUI thread
    void waitForScreen(const char *name);                                   // until it is visible
    bool sees(const char *name) const;                                      // GUI thread
    void pause(int milliseconds);

    void unit(const QStringList &command);                          // simulator/unit COMMAND
    void putOnCard(const QString &file, const QByteArray &content); // FILE below the card's mount point
    void look(const char *picture);                                 // leaves PICTURE.jpg
    void typeText(const QString &text);                             // on the open keyboard, letter by letter

private:
    void onGui(const std::function<void()> &action) const;      // and waits for it
    void startOnGui(const std::function<void()> &action) const; // does not wait: it may open a dialog
    QWidget *find(const char *name) const;                      // GUI thread; null when it cannot be touched
    QImage screen() const;                                      // GUI thread

    QWidget &m_window;
    QString m_unitTool;
    QString m_unitFolder;
    QString m_pictures;
};
