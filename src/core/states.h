// The states of the unit: what each is called, does on entry, shows, and means for card and buttons. One
// table, no widgets. A state with an action is a line ENTER, one that only marks a mode a line MARK.
#pragma once

// What a state shows. The visible and the enabled widgets of each are in screens.cpp.
enum class ScreenKind {
    AsBefore, // a state that passes, or a dialog over what was there
    Live,
    Recording,
    Thumbnails,
    File, // one picture or film at full size
    Editor,
    NothingSaved,
    Tools,
    Usb,
    Failure, // no camera
    Battery, // the unit is about to go off; no state of its own
};

// What becomes of a state when its card is pulled.
enum class Removal {
    Restore,      // goes on as it was; its action is not run again
    EndRecording, // film ended, the corrupt-card picture, live view
    EndVoiceNote, // note ended, the corrupt-card picture, nothing saved
    EndPlayback,  // film or note stopped, nothing saved
    NothingSaved, // nothing saved
};

// Where Back leads. Resuming a film, and colour and saving in the editor, ignore it: another button leaves
// them.
enum class Back { Nowhere, LiveView, Thumbnails, LeaveNote, LeaveFilm, LeaveEditor };

// What a frame of the picture pump (40 ms) is for.
enum class FrameJob {
    None,
    Live,
    AwaitStill, // the picture that a touch asked for, until it has come
    AwaitFilm,  // the film's first picture
    Recording,
    PlayNote,
    PlayFilm,
};

// Who works on the card. While a file of it is open, or about to be, no host and no other work may get it.
enum class CardUse { Free, Ours };

// In the order of the enumeration, which is that of the debug output and of the service staff's notes.
// clang-format off
#define TUBIX_STATES(MARK, ENTER)                                                                              \
    /*    state                                         entry action                                 screen        removed       Back          frame       card */ \
    MARK (eStateLive,                                                                                Live,         Restore,      Nowhere,      Live,       Free) \
    MARK (eStateLiveZoomLevelIncrease,                                                               Live,         Restore,      Nowhere,      None,       Free) \
    MARK (eStateLiveZoomLevelDecrease,                                                               Live,         Restore,      Nowhere,      None,       Free) \
    MARK (eStateLiveLEDIncrease,                                                                     Live,         Restore,      Nowhere,      None,       Free) \
    MARK (eStateLiveLEDDecrease,                                                                     Live,         Restore,      Nowhere,      None,       Free) \
    MARK (eStateLiveDamageCatelog,                                                                   Live,         Restore,      Nowhere,      None,       Free) \
    ENTER(eStateCaptureModeChange,                       enterCaptureModeChange,                      Live,         Restore,      Nowhere,      Live,       Free) \
    ENTER(eStateLiveSavingStill,                         enterLiveSavingStill,                        Live,         Restore,      Nowhere,      AwaitStill, Free) \
    ENTER(eStateLiveSavingMovieQueued,                   enterLiveSavingMovieQueued,                  Recording,    EndRecording, Nowhere,      AwaitFilm,  Ours) \
    ENTER(eStateLiveSavingMovie,                         enterLiveSavingMovie,                        Recording,    EndRecording, Nowhere,      Recording,  Ours) \
    ENTER(eStateCaptureWindowEntry,                      enterCaptureWindowEntry,                     Live,         Restore,      Nowhere,      None,       Free) \
    ENTER(eStateCaptureWindowExit,                       enterCaptureWindowExit,                      Live,         Restore,      Nowhere,      None,       Free) \
    MARK (eStateEditorCaptureWindowEntry,                                                            AsBefore,     Restore,      Nowhere,      None,       Free) \
    MARK (eStateEditorCaptureWindowExit,                                                             AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStateLiveTerminateSavingMovie,                enterLiveTerminateSavingMovie,               Recording,    EndRecording, Nowhere,      AwaitFilm,  Ours) \
    ENTER(eStateEnterPlaybackThumbnails,                 enterEnterPlaybackThumbnails,                AsBefore,     NothingSaved, Nowhere,      None,       Free) \
    ENTER(eStatePlaybackThumbnailsPreviousPage,          enterPlaybackThumbnailsPreviousPage,         Thumbnails,   Restore,      Nowhere,      None,       Free) \
    ENTER(eStatePlaybackThumbnailsNextPage,              enterPlaybackThumbnailsNextPage,             Thumbnails,   Restore,      Nowhere,      None,       Free) \
    ENTER(eStatePlaybackThumbnailsSelectable,            enterPlaybackThumbnailsSelectable,           Thumbnails,   NothingSaved, LiveView,     None,       Free) \
    ENTER(eStatePlaybackPreviousSelectedThumbnail,       enterPlaybackPreviousSelectedThumbnail,      File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStatePlaybackNextSelectedThumbnail,           enterPlaybackNextSelectedThumbnail,          File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStatePlaybackNothingSaved,                    enterPlaybackNothingSaved,                   NothingSaved, NothingSaved, LiveView,     None,       Free) \
    MARK (eStatePlaybackSnapshot,                                                                    File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStatePlaybackEditImage,                       enterPlaybackEditImage,                      Editor,       NothingSaved, LeaveEditor,  None,       Free) \
    ENTER(eStatePlaybackEditAddCircle,                   enterPlaybackEditAddCircle,                  Editor,       NothingSaved, LeaveEditor,  None,       Free) \
    ENTER(eStatePlaybackEditAddArrow,                    enterPlaybackEditAddArrow,                   Editor,       NothingSaved, LeaveEditor,  None,       Free) \
    ENTER(eStatePlaybackEditAddText,                     enterPlaybackEditAddText,                    Editor,       NothingSaved, LeaveEditor,  None,       Free) \
    ENTER(eStatePlaybackEditColor,                       enterPlaybackEditColor,                      Editor,       NothingSaved, Nowhere,      None,       Free) \
    ENTER(eStatePlaybackEditSaveImage,                   enterPlaybackEditSaveImage,                  Editor,       NothingSaved, Nowhere,      None,       Free) \
    ENTER(eStatePlaybackEditSaveImageExit,               enterPlaybackEditSaveImageExit,              AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStatePlaybackEditDeleteItem,                  enterPlaybackEditDeleteItem,                 Editor,       NothingSaved, LeaveEditor,  None,       Free) \
    MARK (eStateDamageCatelogEntry,                                                                  AsBefore,     Restore,      Nowhere,      None,       Free) \
    MARK (eStateDamageCatelogConfirm,                                                                AsBefore,     Restore,      Nowhere,      None,       Free) \
    MARK (eStateDamageCatelogCancel,                                                                 AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStatePlaybackSnapshotRecordingAudio,          enterPlaybackSnapshotRecordingAudio,         File,         EndVoiceNote, Nowhere,      None,       Ours) \
    ENTER(eStatePlaybackSnapshotTerminateRecordingAudio, enterPlaybackSnapshotTerminateRecordingAudio, File,        Restore,      Nowhere,      None,       Ours) \
    ENTER(eStatePlaybackSnapshotAudioQueued,             enterPlaybackSnapshotAudioQueued,            File,         EndPlayback,  LeaveNote,    None,       Free) \
    ENTER(eStatePlaybackSnapshotAudioPlaying,            enterPlaybackSnapshotAudioPlaying,           File,         EndPlayback,  LeaveNote,    PlayNote,   Ours) \
    ENTER(eStatePlaybackSnapshotAudioPaused,             enterPlaybackSnapshotAudioPaused,            File,         EndPlayback,  LeaveNote,    None,       Ours) \
    ENTER(eStatePlaybackMovieQueued,                     enterPlaybackMovieQueued,                    File,         EndPlayback,  LeaveFilm,    None,       Free) \
    ENTER(eStatePlaybackMoviePlaying,                    enterPlaybackMoviePlaying,                   File,         EndPlayback,  LeaveFilm,    PlayFilm,   Ours) \
    ENTER(eStatePlaybackMovieResumePlaying,              enterPlaybackMovieResumePlaying,             File,         EndPlayback,  Nowhere,      PlayFilm,   Ours) \
    ENTER(eStatePlaybackMoviePaused,                     enterPlaybackMoviePaused,                    File,         EndPlayback,  LeaveFilm,    None,       Ours) \
    ENTER(eStatePlaybackRenameFile,                      enterPlaybackRenameFile,                     File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStateVideoInputPipelineFailure,               enterVideoInputPipelineFailure,              Failure,      Restore,      Nowhere,      None,       Free) \
    ENTER(eStateUsbActive,                               enterUsbActive,                              Usb,          Restore,      Nowhere,      None,       Free) \
    ENTER(eStateUsbDisconnected,                         enterUsbDisconnected,                        Usb,          Restore,      Nowhere,      None,       Free) \
    ENTER(eStateToolsMenu,                               enterToolsMenu,                              Tools,        Restore,      Nowhere,      None,       Free) \
    ENTER(eStateToolsMenuExit,                           enterToolsMenuExit,                          Tools,        Restore,      Nowhere,      None,       Free) \
    MARK (eStateToolsSetDate,                                                                        AsBefore,     Restore,      Nowhere,      None,       Free) \
    MARK (eStateFirmwareUpdate,                                                                      AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStateFileDeleteImage,                         enterFileDeleteImage,                        File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStateFileDeleteAudio,                         enterFileDeleteAudio,                        File,         NothingSaved, Thumbnails,   None,       Free) \
    ENTER(eStateSDCardInserted,                          enterSDCardInserted,                         AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStateSDCardRemoved,                           enterSDCardRemoved,                          AsBefore,     Restore,      Nowhere,      None,       Free) \
    ENTER(eStateSDCardCorrupt,                           enterSDCardCorrupt,                          AsBefore,     Restore,      Nowhere,      None,       Free) \
    MARK (eStateSentinel,                                                                            AsBefore,     Restore,      Nowhere,      None,       Free)
// clang-format on

enum eMainStates {
#define TUBIX_MARK(state, ...) state,
#define TUBIX_ENTER(state, ...) state,
    TUBIX_STATES(TUBIX_MARK, TUBIX_ENTER)
#undef TUBIX_MARK
#undef TUBIX_ENTER
        eStates = eStateSentinel
};

// What a state is, but for its action.
struct StateFacts
{
    const char *name; // the enumerator's, for the log
    ScreenKind screen;
    Removal removal;
    Back back;
    FrameJob frame;
    CardUse card;
};
const StateFacts &factsOf(eMainStates state);

inline const char *stateName(eMainStates state)
{
    return factsOf(state).name;
}
