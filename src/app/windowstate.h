// What the window remembers from one call to the next. GUI thread.
#pragma once

#include "app/sleeper.h"
#include "app/touchguard.h"
#include "core/cardevents.h"
#include "core/screens.h"
#include "system/messagelog.h"

#include <QElapsedTimer>
#include <QImage>
#include <QListWidgetItem>
#include <QMainWindow>

#include <array>
#include <memory>
#include <vector>

class QFileSystemWatcher;
class QTimer;
class editorScene;
class params;
namespace Ui {
class MainWindow;
}

struct WindowState
{
    WindowState();
    ~WindowState();
    Q_DISABLE_COPY_MOVE(WindowState)

    std::unique_ptr<Ui::MainWindow> ui;
    editorScene *mainScene = nullptr; // child of the window
    QTimer *imageTimer = nullptr, *systemCheckTimer = nullptr, *popUpTimer = nullptr;
    QTimer *shutdownTimer = nullptr, *recordAudioTimer = nullptr, *genericDelayTimer = nullptr;
    QTimer *toolsClockTimer = nullptr; // runs while the tools page is shown
    QFileSystemWatcher *messagelogWatcher = nullptr;
    QElapsedTimer elapsedTime; // running time of a recording
    QElapsedTimer elapsedTimePostGstreamerPlaying;
    QImage tmpQimage;                                // the picture last shown
    std::array<QListWidgetItem, 12> g_ListItemArray; // of one page; the list only borrows them
    qint32 g_selectedItemFileIndex = 0;              // in g_FileListing
    qint32 nFrame = 0;
    eMainStates g_MainState = eStateLive, g_prevMainState = eStateLive;
    params *m_pParams = nullptr; // not owned
    qint16 m_i2cRetries = 0;     // meter readings failed in a row
    qint32 nSystemCheck = 0;     // calls of systemCheck() that reached their end
    Sleeper delay;
    TouchGuard *m_touches = nullptr; // child of the window
    messagelog::Batch m_logBatch;
    QString m_editedName; // of the picture that the pop-up tells; empty: named when it is written
    CardHold m_card = CardHold::Awaited;
    bool m_isShuttingDown = false;
    bool m_isReady = false; // announceReady() has printed its line

    struct Waiting
    {
        PendingEvents events;
        int questions = 0; // dialogs on the stack
        int actions = 0;   // entry actions, and events let through by them, on the stack
    } m_waiting;

    // What the screen's rules ask for besides state, settings and listing.
    struct Shown
    {
        ScreenKind screen = ScreenKind::Live;
        bool isBusy = false;
        bool hasPicture = false;
        bool fileIsReadable = false;
        bool isCatalogOpen = false;
        bool batteryIsCritical = false;
    } m_shown;
    struct ScreenWidget
    {
        QWidget *widget;
        const WidgetRule *rule;
    };
    std::vector<ScreenWidget> m_screenWidgets;

    enum class Film { None, Awaited, Runs }; // it is one of the card from its first picture on
    Film m_film = Film::None;
    QElapsedTimer m_awaitedSince; // a still's or a film's first picture
};
