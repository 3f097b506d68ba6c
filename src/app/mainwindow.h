// The one window of the unit. Glue by theme: each block below names the source file that has its bodies;
// decisions are plain functions elsewhere. GUI thread.
#pragma once

#include "app/mainstatemachine.h"
#include "app/sleeper.h"
#include "storage/inspectionlog.h"

#include <QElapsedTimer>
#include <QImage>
#include <QMainWindow>

#include <memory>

class QFileSystemWatcher;
class QModelIndex;
class QTimer;
class params;
namespace Ui {
class MainWindow;
}

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // --- mainwindow.cpp: construction, start-up, timers ---
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override; // stops no pipeline, writes no file

    void init(); // the device start-up; once, before the window is shown

    void setGenericDelayTimer(quint16 ms);
    void startGenericDelayTimer();
    void startPostGstreamerPlayTimer();
    quint16 elapsedTimePostGstreamerPlayExpired() const; // milliseconds since the start, at most 6000
    void clearLiveVideoLabel();

    // --- mw_system.cpp ---
    void ActivateMSDC(bool activate); // offers the card to a USB host, or takes it back

    // Shows raw encoder counts for the rest of the run when the card asks for it; returns 1.
    int enableRawEncoderDisplay();

    // --- mainstatemachine.cpp ---
    void ChangeMainState(eMainStates next); // stores the state and runs its action at once
    void MainStateMachine();

signals:
    void initShutdownTimer();
    void resetAutoShutdownTimer();
    void BusyIndicator(bool on);
    void ProcessSystemShutdown();
    void SDCardRemoved();

public slots:
    void onProcessSystemShutdown();               // mw_system.cpp
    void onClearPictureEditorButtons();           // mainwindow.cpp
    void onBusyIndicator(bool on);                // mainwindow.cpp
    void doNextFrame();                           // liveview.cpp
    void systemCheck();                           // mw_system.cpp
    void setSystemDateTime(QString dateTime);     // openslots.cpp
    void popUpExpired();                          // mainwindow.cpp
    void shutdownTimerExpired();                  // mainwindow.cpp
    void genericDelayTimerExpired();              // mainwindow.cpp
    void onRecordAudioTimerExpired();             // openslots.cpp
    void onLogfileChanged(const QString &path);   // mw_system.cpp
    void onDirectoryChanged(const QString &path); // mw_system.cpp

    // The buttons, connected by name: zoom and LED in liveview.cpp, tools in toolsmenu.cpp, the others in
    // buttonrouting.cpp (those whose screens are not built: openslots.cpp).
    void on_btn_menu_CaptureModeSelect_clicked();
    void on_btn_menu_Tools_clicked();
    void on_btn_menu_BackButton_clicked();
    void on_btn_menu_Capture_clicked();
    void on_btn_menu_zoom_minus_clicked();
    void on_btn_menu_Thumbnails_clicked();
    void on_btn_menu_ThumbnailNext_clicked();
    void on_btn_menu_ThumbnailPrevious_clicked();
    void on_btn_menu_ThumbnailNextPage_clicked();
    void on_btn_menu_ThumbnailPreviousPage_clicked();
    void on_btn_menu_ThumbnailBack_clicked();
    void on_listW_ThumbnailViewer_clicked(const QModelIndex &);
    void on_btn_menu_ThumbnailVideoPlayPause_clicked();
    void on_btn_menu_ThumbnailDeleteImage_clicked();
    void on_btn_menu_ThumbnailDeleteAudio_clicked();
    void on_btn_menu_LED_plus_clicked();
    void on_btn_menu_LED_minus_clicked();
    void on_btn_menu_ThumbnailFileRename_clicked();
    void on_btn_menu_zoom_plus_clicked();
    void on_btn_menu_FolderOptions_clicked();
    void on_btn_menu_ThumbnailAnnotateRecordPlayPause_clicked();
    void on_btn_DamageCatelog_clicked();
    void on_btn_tools_SetDate_clicked();
    void on_btn_tools_SetTime_clicked();
    void on_btn_tools_DateTimeStamp_clicked();
    void on_btn_menu_ThumbnailEditImage_clicked();
    void on_btn_menu_ThumbnailImageEditBack_clicked();
    void on_btn_menu_ThumbnailImageEditArrow_clicked();
    void on_btn_menu_ThumbnailImageEditCircle_clicked();
    void on_btn_menu_ThumbnailImageEditDeleteItem_clicked();
    void on_btn_menu_ThumbnailImageEditSave_clicked();
    void on_btn_tools_Auto_On_Off_clicked();
    void on_btn_tools_LCD_Backlight_clicked();
    void on_btn_tools_Set_Language_clicked();
    void on_btn_tools_WiFI_Hotspot_On_Off_clicked();
    void on_btn_tools_WiFI_Settings_clicked();
    void on_btn_tools_Select_Camera_Type_clicked();
    void on_btn_tools_Set_UnitofMeasure_clicked();
    void on_btn_tools_Microphone_On_Off_clicked();
    void on_btn_tools_Format_Media_clicked();
    void on_btn_menu_ThumbnailImageEditText_clicked();
    void on_btn_tools_Network_Streaming_On_Off_clicked();
    void on_btn_tools_Reset_Meter_Counter_clicked();
    void on_btn_tools_Reset_Damage_Catelog_clicked();
    void on_btn_menu_ThumbnailImageEditColor_clicked();
    void on_btn_tools_ExitApplication_clicked();
    void on_btn_menu_UnmountMedia_clicked();

private:
    friend struct MainStateTable; // names the entry actions below

    // --- mainwindow.cpp ---
    void setCardButtonsEnabled(bool enabled);
    void hideWhatIsNotLive();
    void createTimers();
    void startMediaFramework();
    void watchMessageLog();

    // --- liveview.cpp: live picture, zoom, light ---
    void showLivePicture(); // ends every way into live view and every rebuild of a live layout
    void announceReady();   // tells once that the camera picture is on the screen
    void drawLiveFrame();
    void changeZoom(int step);
    void changeLight(int step);
    void SetImagerLEDBrightness(qint8 value);
    void enterVideoInputPipelineFailure();

    // --- mw_system.cpp: the 200 ms check ---
    void showCableLength();
    void endDamageNote();
    void showBattery();
    void showCriticalBattery(const char *picture);
    void checkUsbHost();
    void enterUsbActive();
    void enterUsbDisconnected();

    // --- mw_filesystem.cpp: card states, stills ---
    void enterSDCardInserted();
    void enterSDCardRemoved();
    void enterSDCardCorrupt();
    void enterLiveSavingStill();
    void enterCaptureWindowEntry();
    void enterCaptureWindowExit();
    void savePicture();
    void logCapture(eLogFileOperation operation, const QString &name); // at the meter count
    void showCurrentFolder();
    bool confirm(const char *picture); // asks with a picture; blocks until answered

    // --- mw_recording.cpp: films ---
    void enterLiveSavingMovieQueued();
    void enterLiveSavingMovie();
    void enterLiveTerminateSavingMovie();
    void setRecordingButtonsEnabled(bool enabled);
    void startFilm();
    void continueInNextFilm(); // the one that runs is as long as a card's file may be
    void followRecording();    // running time, size, and room on the card, at every frame
    void saveFilmThumbnail(const QString &name);
    void repairFilms(); // those of the current folder whose writing was cut off
    void showRecordingEnded();
    void endRecordingWithoutCard();
    void followNetworkStream(); // switched off when the pipeline gave it up

    // --- buttonrouting.cpp ---
    void enterCaptureModeChange();
    void tellCardFullInLiveView();

    // --- mainstatemachine.cpp ---
    void restoreMainState(eMainStates state); // back to a state without running its action again

    // --- toolsmenu.cpp ---
    void UpdateMenuSystemInformation();
    void updateMainMenuSDCardInfo();

    std::unique_ptr<Ui::MainWindow> ui;
    QTimer *imageTimer = nullptr;
    QTimer *systemCheckTimer = nullptr;
    QTimer *popUpTimer = nullptr;
    QTimer *shutdownTimer = nullptr;
    QTimer *recordAudioTimer = nullptr;
    QTimer *genericDelayTimer = nullptr;
    QFileSystemWatcher *messagelogWatcher = nullptr;
    QElapsedTimer elapsedTime; // running time of a recording
    QElapsedTimer elapsedTimePostGstreamerPlaying;
    QImage tmpQimage; // the picture last shown
    qint32 nFrame = 0;
    eMainStates g_MainState = eStateLive;
    eMainStates g_prevMainState = eStateLive;
    params *m_pParams = nullptr; // not owned
    qint16 m_i2cRetries = 0;     // meter readings failed in a row
    qint32 nSystemCheck = 0;     // calls of systemCheck() that reached their end
    bool m_isReady = false;      // the line of announceReady() was printed
    Sleeper delay;
};
