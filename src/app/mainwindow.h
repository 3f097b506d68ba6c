// The one window of the unit. Glue by theme: each block below names the source file that has its bodies;
// decisions are plain functions elsewhere. GUI thread.
#pragma once

#include "app/cardevents.h"
#include "app/mainstatemachine.h"
#include "app/sleeper.h"
#include "storage/eventlog.h"
#include "storage/inspectionlog.h"
#include "system/messagelog.h"

#include <QElapsedTimer>
#include <QImage>
#include <QListWidgetItem>
#include <QMainWindow>

#include <array>
#include <memory>

class QFileSystemWatcher;
class QModelIndex;
class QTimer;
class editorScene;
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
    static constexpr quint16 kLongestPostPlay = 6000;    // ms
    quint16 elapsedTimePostGstreamerPlayExpired() const; // since the start, at most kLongestPostPlay
    void clearLiveVideoLabel();

    // --- mw_system.cpp ---
    void ActivateMSDC(bool activate); // offers the card to a USB host, or takes it back

    // Shows raw encoder counts for the rest of the run when the card asks for it; returns 1.
    int enableRawEncoderDisplay();

    // --- toolsmenu_actions.cpp ---

    // The fitted reel and the mini module out of the service file, with the dialog where it is missing or
    // asked for; returns 0.
    int ReadSystemImagerConfigurationFile();

    // --- mainstatemachine.cpp ---
    void ChangeMainState(eMainStates next); // stores the state and runs its action at once
    void MainStateMachine();
    eMainStates mainState() const { return g_MainState; }

signals:
    void initShutdownTimer();
    void resetAutoShutdownTimer();
    void BusyIndicator(bool on);
    void ProcessSystemShutdown();
    void SDCardRemoved();
    void RecordingEnds(); // before the film is closed, unless its card was pulled

public slots:
    void onProcessSystemShutdown();               // mw_system.cpp
    void onClearPictureEditorButtons();           // mainwindow.cpp
    void onBusyIndicator(bool on);                // mainwindow.cpp
    void doNextFrame();                           // liveview.cpp
    void systemCheck();                           // mw_system.cpp
    void setSystemDateTime(QString dateTime);     // toolsmenu_actions.cpp
    void popUpExpired();                          // mainwindow.cpp
    void shutdownTimerExpired();                  // mainwindow.cpp
    void genericDelayTimerExpired();              // mainwindow.cpp
    void onRecordAudioTimerExpired();             // mw_voicenote.cpp
    void onLogfileChanged(const QString &path);   // mw_messagelog.cpp
    void onDirectoryChanged(const QString &path); // mw_messagelog.cpp

    // The buttons, connected by name: zoom and LED in liveview.cpp, tools in toolsmenu.cpp and
    // toolsmenu_actions.cpp, the damage catalog in mw_damagecatelog.cpp, the editor's in mw_editor.cpp, the
    // others in buttonrouting.cpp.
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
    void hideWhatIsNotLive();
    void createTimers();
    void startMediaFramework();

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
    void enterUsbActive();
    void enterUsbDisconnected();
    void hideOtherScreens(); // all but live view, whatever was shown
    void shutDown();
    void powerOff();

    // --- mw_events.cpp: card, USB host and power key, one event at a time ---
    void announce(UnitEvent event); // takes it now, or as soon as no action and no question is on the stack
    void takeEvents();
    void take(UnitEvent event);
    void takeCardEvent(eMainStates state);
    void closeDialogs();
    bool usbHostIsAttached() const;
    void checkUsbHost();

    // --- mw_messagelog.cpp: the kernel's messages ---
    void watchMessageLog();
    void readMessageLog();
    messagelog::Card believedCard() const;
    void announceCard(const messagelog::Batch &batch);

    // --- mw_filesystem.cpp: card states, stills ---
    void enterSDCardInserted();
    void enterSDCardRemoved();
    void enterSDCardCorrupt();
    void showCardButtons(bool cardIsThere, eMainStates state);
    void takeCard(eMainStates previous);
    void offerUpgrade(eMainStates previous);
    void endCardEvent(eMainStates event, eMainStates previous);
    void enterLiveSavingStill();
    void enterCaptureWindowEntry();
    void enterCaptureWindowExit();
    void savePicture();
    void logCapture(eLogFileOperation operation, const QString &name); // at the meter count
    void showCurrentFolder();
    bool confirm(const char *picture); // asks with a picture; blocks until answered, no when the card goes
    void tellCardLost();

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
    void tellLostSound();       // the microphone's picture, for a moment
    void followNetworkStream(); // switched off when the pipeline gave it up

    // --- mw_damagecatelog.cpp: findings noted in the live picture ---
    void noteDamage(const QString &description); // empty: takes the shown one off

    // --- mw_editor.cpp: the picture editor ---
    void createEditorScene();
    void enterPlaybackEditImage();
    void enterPlaybackEditAddCircle();
    void enterPlaybackEditAddArrow();
    void enterPlaybackEditAddText();
    void enterPlaybackEditColor();
    void enterPlaybackEditDeleteItem();
    void enterPlaybackEditSaveImage();
    void enterPlaybackEditSaveImageExit();
    void showTool(int mode);       // an eMode: its button's picture active, the others not
    void setEditing(bool enabled); // off while the pop-up of a save is shown
    bool saveEditedImage();        // false: nothing was written, the drawing stays
    void leaveEditor();            // asks for unsaved edits, then back to the file
    void closeEditor();            // at once, whatever is in it; nothing to do when it is not open

    // --- buttonrouting.cpp ---
    void route(eEventLogOperation operation, const char *text, eMainStates next); // log, then change
    void enterCaptureModeChange();
    void tellCardFullInLiveView();
    void playOrPauseNote();
    void startOrStopNote();
    void ProcessBackRequest();

    // --- mw_browser.cpp: pages of thumbnails, the selected file ---
    void enterEnterPlaybackThumbnails();
    void enterPlaybackThumbnailsPreviousPage();
    void enterPlaybackThumbnailsNextPage();
    void enterPlaybackThumbnailsSelectable();
    void enterPlaybackPreviousSelectedThumbnail();
    void enterPlaybackNextSelectedThumbnail();
    void enterPlaybackNothingSaved();
    void setUpThumbnailList();
    void turnPage(int step);
    void DisplayThumbnails();
    bool getThumbnailImage(const QString &path); // a film's first frame into tmpQimage; a unit path
    void selectNeighbour(int step, eEventLogOperation operation, const char *text);
    void displaySelectedThumbnail();
    void showSelectedFileScreen();
    void displaySelectedFilm();
    void displaySelectedPicture();
    void placePicture(const QRect &place);
    void hideFileButtons();
    void showLiveTopBar(bool shown);
    void leaveBrowser();

    // --- mw_playback.cpp: films and voice notes ---
    void enterPlaybackMovieQueued();
    void enterPlaybackMoviePlaying();
    void enterPlaybackMovieResumePlaying();
    void enterPlaybackMoviePaused();
    void enterPlaybackSnapshotAudioQueued();
    void enterPlaybackSnapshotAudioPlaying();
    void enterPlaybackSnapshotAudioPaused();
    void setPlaybackButtonsEnabled(bool enabled);
    void stopPlayback(); // whatever plays; the card is offered to a USB host again
    void showProgress(int percent);
    void endProgress();
    void showFilmFrame();
    void followFilm(); // at every frame
    void followNote();
    void leaveFilm();
    void leaveNote();

    // --- mw_voicenote.cpp ---
    void enterPlaybackSnapshotRecordingAudio();
    void enterPlaybackSnapshotTerminateRecordingAudio();
    void showNoteButtons();
    void setNoteRecordingButtonsEnabled(bool enabled);
    void endNoteRecording();

    // --- mw_files.cpp: deleting and renaming ---
    void enterFileDeleteImage();
    void enterFileDeleteAudio();
    void enterPlaybackRenameFile();
    void logFileOperation(eLogFileOperation operation, const QString &file, const QString &text);
    void DeleteFile(bool deletePicture, bool deleteAudio);
    void RenameFile();
    void renameSelected(const QString &name);
    void countPages();

    // --- mainstatemachine.cpp ---
    void restoreMainState(eMainStates state); // back to a state without running its action again

    // --- toolsmenu.cpp: the tools page and its settings ---
    void enterToolsMenu();
    void enterToolsMenuExit();
    void hideToolsPage();
    void chooseLivePipelineMode(); // live view or stream, for the next build
    void initToolsMenu();
    void UpdateMenuSystemInformation();
    void updateMainMenuSDCardInfo();
    void showClock();
    void showAutoShutdown();
    void showLanguage();
    void showUnitOfMeasure();
    void showHotspot();

    // --- toolsmenu_actions.cpp ---
    void showCameraHead();

    std::unique_ptr<Ui::MainWindow> ui;
    editorScene *mainScene = nullptr; // child of the window
    QString m_editedName;             // of the picture that the pop-up tells; empty: named when it is written
    QTimer *imageTimer = nullptr;
    QTimer *systemCheckTimer = nullptr;
    QTimer *popUpTimer = nullptr;
    QTimer *shutdownTimer = nullptr;
    QTimer *recordAudioTimer = nullptr;
    QTimer *genericDelayTimer = nullptr;
    QTimer *toolsClockTimer = nullptr; // runs while the tools page is shown
    QFileSystemWatcher *messagelogWatcher = nullptr;
    QElapsedTimer elapsedTime; // running time of a recording
    QElapsedTimer elapsedTimePostGstreamerPlaying;
    QImage tmpQimage;                                // the picture last shown
    std::array<QListWidgetItem, 12> g_ListItemArray; // of one page; the list only borrows them
    qint32 g_selectedItemFileIndex = 0;              // in g_FileListing
    qint32 nFrame = 0;
    eMainStates g_MainState = eStateLive;
    eMainStates g_prevMainState = eStateLive;
    params *m_pParams = nullptr; // not owned
    qint16 m_i2cRetries = 0;     // meter readings failed in a row
    qint32 nSystemCheck = 0;     // calls of systemCheck() that reached their end
    PendingEvents m_events;
    int m_actionDepth = 0; // entry actions, and events let through by them, on the stack
    messagelog::Batch m_logBatch;
    bool m_isShuttingDown = false;
    bool m_isReady = false; // the line of announceReady() was printed
    Sleeper delay;
};
