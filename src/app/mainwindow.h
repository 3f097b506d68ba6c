// The one window of the unit. Glue by theme: each block below names the source file that has its bodies;
// decisions are plain functions elsewhere, and what it remembers is in windowstate.h. GUI thread.
#pragma once

#include "app/windowstate.h"
#include "storage/eventlog.h"
#include "storage/inspectionlog.h"

class QDialog;
class QModelIndex;

class MainWindow : public QMainWindow, private WindowState
{
    Q_OBJECT

public:
    // --- mainwindow.cpp: construction, start-up, timers ---
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override; // stops no pipeline, writes no file
    void init();            // the device start-up; once, before the window is shown
    void setGenericDelayTimer(quint16 ms);
    void startGenericDelayTimer();
    void startPostGstreamerPlayTimer();
    static constexpr quint16 kLongestPostPlay = 6000;    // ms
    quint16 elapsedTimePostGstreamerPlayExpired() const; // since the start, at most kLongestPostPlay
    void clearLiveVideoLabel();
    // --- mw_system.cpp ---
    void ask(QDialog &dialog);        // runs it; events wait (mw_events.cpp)
    void ActivateMSDC(bool activate); // offers the card to a USB host, or takes it back
    int enableRawEncoderDisplay();    // for the rest of the run, when the card asks for it; returns 1
    // --- mw_toolsactions.cpp ---
    // The fitted reel and the mini module out of the service file, with the dialog where it is missing or
    // asked for; returns 0.
    int ReadSystemImagerConfigurationFile();
    // --- mw_states.cpp ---
    void ChangeMainState(eMainStates next); // stores the state and runs its action at once
    void MainStateMachine();
    eMainStates mainState() const { return g_MainState; }
    ScreenFacts screenFacts() const; // what the screen shows now follows from these alone
    // --- mw_recording.cpp ---
    void closeOpenRecords(); // a film or note that is being written is closed, with its row; whatever ends us

signals:
    void initShutdownTimer();
    void resetAutoShutdownTimer();
    void BusyIndicator(bool on);
    void ProcessSystemShutdown();
    void SDCardRemoved();

public slots:
    void onProcessSystemShutdown();                  // mw_system.cpp
    void onClearPictureEditorButtons();              // mainwindow.cpp
    void onBusyIndicator(bool on);                   // mainwindow.cpp
    void doNextFrame();                              // mw_liveview.cpp
    void systemCheck();                              // mw_system.cpp
    void setSystemDateTime(const QString &dateTime); // mw_toolsactions.cpp
    void popUpExpired();                             // mainwindow.cpp
    void shutdownTimerExpired();                     // mainwindow.cpp
    void genericDelayTimerExpired();                 // mainwindow.cpp
    void onRecordAudioTimerExpired();                // mw_voicenote.cpp
    void onLogfileChanged(const QString &path);      // mw_messagelog.cpp
    void onDirectoryChanged(const QString &path);    // mw_messagelog.cpp
    // The buttons, connected by name. The order of signals and slots is kept for whoever connects by number.
    void on_btn_menu_CaptureModeSelect_clicked();                // mw_buttons.cpp
    void on_btn_menu_Tools_clicked();                            // mw_toolsmenu.cpp
    void on_btn_menu_BackButton_clicked();                       // mw_toolsmenu.cpp
    void on_btn_menu_Capture_clicked();                          // mw_buttons.cpp
    void on_btn_menu_zoom_minus_clicked();                       // mw_liveview.cpp
    void on_btn_menu_Thumbnails_clicked();                       // mw_buttons.cpp
    void on_btn_menu_ThumbnailNext_clicked();                    // mw_buttons.cpp
    void on_btn_menu_ThumbnailPrevious_clicked();                // mw_buttons.cpp
    void on_btn_menu_ThumbnailNextPage_clicked();                // mw_buttons.cpp
    void on_btn_menu_ThumbnailPreviousPage_clicked();            // mw_buttons.cpp
    void on_btn_menu_ThumbnailBack_clicked();                    // mw_buttons.cpp
    void on_listW_ThumbnailViewer_clicked(const QModelIndex &);  // mw_buttons.cpp
    void on_btn_menu_ThumbnailVideoPlayPause_clicked();          // mw_buttons.cpp
    void on_btn_menu_ThumbnailDeleteImage_clicked();             // mw_buttons.cpp
    void on_btn_menu_ThumbnailDeleteAudio_clicked();             // mw_buttons.cpp
    void on_btn_menu_LED_plus_clicked();                         // mw_liveview.cpp
    void on_btn_menu_LED_minus_clicked();                        // mw_liveview.cpp
    void on_btn_menu_ThumbnailFileRename_clicked();              // mw_buttons.cpp
    void on_btn_menu_zoom_plus_clicked();                        // mw_liveview.cpp
    void on_btn_menu_FolderOptions_clicked();                    // mw_toolsactions.cpp
    void on_btn_menu_ThumbnailAnnotateRecordPlayPause_clicked(); // mw_buttons.cpp
    void on_btn_DamageCatelog_clicked();                         // mw_damagecatelog.cpp
    void on_btn_tools_SetDate_clicked();                         // mw_toolsactions.cpp
    void on_btn_tools_SetTime_clicked();                         // mw_toolsactions.cpp
    void on_btn_tools_DateTimeStamp_clicked();                   // mw_toolsmenu.cpp
    void on_btn_menu_ThumbnailEditImage_clicked();               // mw_editor.cpp
    void on_btn_menu_ThumbnailImageEditBack_clicked();           // mw_editor.cpp
    void on_btn_menu_ThumbnailImageEditArrow_clicked();          // mw_editor.cpp
    void on_btn_menu_ThumbnailImageEditCircle_clicked();         // mw_editor.cpp
    void on_btn_menu_ThumbnailImageEditDeleteItem_clicked();     // mw_editor.cpp
    void on_btn_menu_ThumbnailImageEditSave_clicked();           // mw_editor.cpp
    void on_btn_tools_Auto_On_Off_clicked();                     // mw_toolsmenu.cpp
    void on_btn_tools_LCD_Backlight_clicked();                   // mw_toolsmenu.cpp
    void on_btn_tools_Set_Language_clicked();                    // mw_toolsmenu.cpp
    void on_btn_tools_WiFI_Hotspot_On_Off_clicked();             // mw_toolsmenu.cpp
    void on_btn_tools_WiFI_Settings_clicked();                   // mw_toolsactions.cpp
    void on_btn_tools_Select_Camera_Type_clicked();              // mw_toolsactions.cpp
    void on_btn_tools_Set_UnitofMeasure_clicked();               // mw_toolsmenu.cpp
    void on_btn_tools_Microphone_On_Off_clicked();               // mw_toolsmenu.cpp
    void on_btn_tools_Format_Media_clicked();                    // mw_toolsactions.cpp
    void on_btn_menu_ThumbnailImageEditText_clicked();           // mw_editor.cpp
    void on_btn_tools_Network_Streaming_On_Off_clicked();        // mw_toolsmenu.cpp
    void on_btn_tools_Reset_Meter_Counter_clicked();             // mw_toolsactions.cpp
    void on_btn_tools_Reset_Damage_Catelog_clicked();            // mw_toolsactions.cpp
    void on_btn_menu_ThumbnailImageEditColor_clicked();          // mw_editor.cpp
    void on_btn_tools_ExitApplication_clicked();                 // mw_toolsactions.cpp
    void on_btn_menu_UnmountMedia_clicked();                     // mw_toolsactions.cpp

private:
#define TUBIX_MARK(...)
#define TUBIX_ENTER(state, action, ...) void action();
    TUBIX_STATES(TUBIX_MARK, TUBIX_ENTER) // the entry actions, each in the file of its screen
#undef TUBIX_MARK
#undef TUBIX_ENTER

    // --- mainwindow.cpp ---
    void createTimers();
    void startMediaFramework();
    void endDelay(); // of the wait after a film

    // --- mw_liveview.cpp: live picture, zoom, light ---
    void buildLivePicture(); // of live view or stream; until its first frame no picture is shown
    void showLivePicture();  // ends every way into live view and every rebuild of a live layout
    void announceReady();    // once: the camera picture is on the screen
    void followPicture();
    void showNoPicture(); // black, with the busy sign, until a frame of the pipeline that runs has come
    void changeZoom(int step);
    void changeLight(int step);
    void SetImagerLEDBrightness(qint8 value);

    // --- mw_system.cpp: the 200 ms check ---
    void followDisplay();
    void showCableLength();
    void showBattery();
    void showCriticalBattery(const char *picture);
    void shutDown();
    bool powerOff(); // false: the unit stays on

    // --- mw_events.cpp: card, USB host and power key, one event at a time ---
    void announce(UnitEvent event); // takes it now, or as soon as no action and no question is on the stack
    void takeEvents();
    void take(UnitEvent event);
    void takeMountedCard();
    bool endsScreen(UnitEvent event) const;
    void tellDialogs();
    void closeDialogs();
    bool usbHostIsAttached() const;
    void checkUsbHost();
    void lookForMount(); // of a card that was told of, or that shows up

    // --- mw_messagelog.cpp: the kernel's messages ---
    void watchMessageLog();
    void readMessageLog();

    // --- mw_filesystem.cpp: card states, stills ---
    void takeCard();      // looks whether it is mounted; then it is ours: folders, upgrade, host
    void refreshFolder(); // the current folder gets what it lacks, and is listed
    void offerUpgrade();
    void endCardEvent(eMainStates event, eMainStates previous);
    bool mayCapture(eMainStates state);
    void awaitStill();
    void savePicture();
    void logCapture(eLogFileOperation operation, const QString &name,
                    const QTime &time = QTime::currentTime()); // at the meter count
    void showCurrentFolder();
    bool confirm(const char *picture); // blocks until answered; no when the card goes
    void tell(const char *picture);
    void tellCardLost();         // what was being written is gone
    void tellCardTakesNothing(); // full, or cannot be written: the picture that fits

    // --- mw_recording.cpp: films ---
    void startFilm();
    void awaitFilm();     // its first picture, or the end of our patience
    void noteFilmStart(); // from here on it is a film on the card
    void endFilm();
    bool closeFilm(); // its end is on the card, and its row
    void dropFilm();
    void giveUpFilm();
    void endRecordingWithoutCard();
    void backToLiveView();
    void continueInNextFilm(); // the one that runs is as long as a card's file may be
    void followRecording();    // running time, size, and room on the card, at every frame
    void saveFilmThumbnail(const QString &name);
    void repairFilms();         // those of the current folder whose writing was cut off
    void followNetworkStream(); // switched off when the pipeline gave it up

    // --- mw_damagecatelog.cpp: findings noted in the live picture ---
    void noteDamage(const QString &description); // empty: takes the shown one off

    // --- mw_editor.cpp: the picture editor ---
    void createEditorScene();
    void showTool(int mode); // an eMode: its button's picture active, the others not
    bool saveEditedImage();  // false: nothing was written, the drawing stays
    void leaveEditor();      // asks for unsaved edits, then back to the file
    void closeEditor();      // at once, whatever is in it

    // --- mw_buttons.cpp ---
    void route(eEventLogOperation operation, const char *text, eMainStates next); // log, then change
    void tellCardFullInLiveView();
    void ProcessBackRequest();

    // --- mw_browser.cpp: pages of thumbnails, the selected file ---
    void turnPage(int step);
    void DisplayThumbnails();
    bool getThumbnailImage(const UnitPath &path); // a film's first frame into tmpQimage
    void selectNeighbour(int step, eEventLogOperation operation, const char *text);
    void displaySelectedThumbnail();
    void displaySelectedFilm();
    void displaySelectedPicture();
    void placePicture(const QRect &place);
    void leaveBrowser();

    // --- mw_playback.cpp: films and voice notes ---
    void stopPlayback(); // whatever plays; the card is offered to a USB host again
    void endProgress();
    void showFilmFrame();
    void followFilm(); // at every frame
    void followNote();
    void endPlayback(); // of what has come to its end, or failed
    void leaveFilm();
    void leaveNote();

    // --- mw_voicenote.cpp ---
    void showNoteButton();
    bool endNoteRecording();

    // --- mw_files.cpp: deleting and renaming ---
    void DeleteFile(bool deletePicture, bool deleteAudio);
    void RenameFile();
    void renameSelected(const QString &name);
    void countPages();

    // --- mw_states.cpp ---
    void restoreMainState(eMainStates state); // back to a state without running its action again
    void showScreen(); // the only place that shows, hides, enables and disables what the rules name

    // --- mw_toolsmenu.cpp, mw_toolsactions.cpp: the tools page ---
    void chooseLivePipelineMode(); // live view or stream, for the next build
    void initToolsMenu();
    void UpdateMenuSystemInformation();
    void updateMainMenuSDCardInfo();
    void showClock();
    void showHotspot();
    void showCameraHead();
};
