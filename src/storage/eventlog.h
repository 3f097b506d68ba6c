// The service log on the unit: every user action and power event, one comma-separated line each. GUI thread.
#pragma once

#include <QString>

enum eEventLogOperation {
    eEventBoot = 1,
    eEventShutDown,
    eEventshutdownTimerExpired,
    eEventImageCapture,
    eEventEnterToolsMenu,
    eEventToolsMenuExit,
    eEventCaptureModeChange,
    eEventZoomPlus,
    eEventZoomMinus,
    eEventThumbnails,
    eEventPrevThumbnail,
    eEventNextThumbnail,
    eEventNextThumbnailPage,
    eEventPrevThumbnailPage,
    eEventThumbnailBack,
    eEventThumbnailViewer,
    eEventThumbnailVideoPlayPause,
    eEventThumbnailAnnotateRecordPlayPause,
    eEventThumbnailDeleteImage,
    eEventThumbnailDeleteAudio,
    eEventThumbnailFileRename,
    eEventLedPlus,
    eEventLedMinus,
    eEventThumbnailEditImage,
    eEventThumbnailImageEditBack,
    eEventThumbnailImageEditArrow,
    eEventThumbnailImageEditCircle,
    eEventThumbnailImageEditText,
    eEventThumbnailImageEditDeleteItem,
    eEventThumbnailImageEditSave,
    eEventThumbnailImageEditColor,
    eEventUnmountMedia,
    eEventSetDate,
    eEventSetTime,
    eEventDateTimeStamp,
    eEventAutoOnOff,
    eEventLCDBacklight,
    eEventSetLanguage,
    eEventWiFIHotspot,
    eEventNetworkStreaming,
    eEventFolderOptions,
    eEventSelectCameraType,
    eEventSetUnitOfMeasure,
    eEventMicrophoneOnOff,
    eEventFormatMedia,
    eEventResetMeterCounter,
    eEventResetDamageCatelog,
    eEventExitApplication,
    eEventDamageCatelogChange
};

// Appends "yyyy-MM-dd/hh:mm:ss,CODE,TEXT" with the text trimmed, by one write at the end of the file. A log
// that cannot be opened is a debug line, and the event is lost.
void UpdateEventLog(eEventLogOperation operation, const QString &text);

// At start: takes off the half line that a power cut may have left.
void mendEventLog();
