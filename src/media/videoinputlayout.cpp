#include "media/videoinputlayout.h"

namespace {

const QString kTexts = QStringLiteral(
    "textoverlay name=damageCatelog ! textoverlay name=meterCount ! clockoverlay name=timeDateStamp");

// Frames for the GUI. Late ones are dropped, so that a busy GUI never makes a queue grow. I420 goes through
// the converter as it is: the copy into the frame buffer converts it in less time.
QString framesForGui(const ElementRoles &roles)
{
    return roles.converter + QStringLiteral(" ! video/x-raw, format={RGB16, I420}, width=720, height=576 ! "
                                            "appsink name=appsink max-buffers=1 drop=true");
}

// A camera of another size fills the frame, as on the screen; one of this size is passed on as it is.
QString scaled(const QString &name = QString())
{
    return QStringLiteral("videoscale add-borders=false%1 ! video/x-raw, width=720, height=576").arg(name);
}

QString encoder(const ElementRoles &roles)
{
    return roles.jpegEncoder + QStringLiteral(" name=jpegencode");
}

QString muxQueue(const QString &name)
{
    return QStringLiteral("queue name=%1 max-size-buffers=600 max-size-bytes=0 max-size-time=0 ! mux. ")
        .arg(name);
}

// camera - queue - crop - scale - tee +- queue - display
//                                     +- queue - converter - appsink
//
// Where the GUI draws, it magnifies (the live picture, a film's while it is recorded, a still), each from the
// whole frame. The crop is the display's there and stands before it alone: in the frames, it would show a
// live picture magnified twice, and Record would jump back to once.
QString liveLaunch(const ElementRoles &roles)
{
    const QString crop = QStringLiteral("videocrop name=videocrop ! ");
    const bool isDrawn = displayDraws(roles);
    return withProperties(roles.camera, QStringLiteral("do-timestamp=true")) + QStringLiteral(" ! queue ! ") +
           (isDrawn ? crop : QString()) + scaled(QStringLiteral(" name=videoscale")) +
           QStringLiteral(" ! tee name=videooutTee ! queue ! ") + (isDrawn ? QString() : crop) +
           withProperties(roles.display, QStringLiteral("name=videosink")) +
           QStringLiteral(" videooutTee. ! queue ! ") + framesForGui(roles);
}

// camera - scale - tee +- queue - converter - appsink
//                      +- queue - rate 15/s - texts - JPEG - queue -+- AVI mux - file
//                  microphone - convert - resample - MP3 - queue ---+
QString recordingWithAudioLaunch(const ElementRoles &roles)
{
    const QString source = withProperties(withProperties(roles.camera, QStringLiteral("do-timestamp=true")),
                                          roles.cameraQueueOption);
    return source + QStringLiteral(" ! ") + scaled() +
           QStringLiteral(" ! tee name=maintee ! queue name=ipucsc_queue ! ") + framesForGui(roles) +
           QStringLiteral(" maintee. ! queue name=videorate_queue ! videorate ! "
                          "video/x-raw,framerate=15/1 ! ") +
           kTexts + QStringLiteral(" ! ") + encoder(roles) + QStringLiteral(" ! ") +
           muxQueue(QStringLiteral("videomux_queue")) +
           withProperties(roles.microphone, QStringLiteral("do-timestamp=true")) +
           QStringLiteral(" ! audioconvert ! audioresample ! ") + roles.mp3Encoder + QStringLiteral(" ! ") +
           muxQueue(QStringLiteral("audiomux_queue")) +
           QStringLiteral("avimux name=mux ! filesink sync=true name=avifilename ");
}

// camera - scale - tee +- queue - converter - appsink
//                      +- queue - rate 25/s - texts - leaky queue - JPEG - queue - AVI mux - file
QString recordingWithoutAudioLaunch(const ElementRoles &roles)
{
    return roles.camera + QStringLiteral(" ! ") + scaled() +
           QStringLiteral(" ! tee name=maintee ! queue ! ") + framesForGui(roles) +
           QStringLiteral(" maintee. ! queue ! videorate ! video/x-raw,framerate=25/1 ! ") + kTexts +
           QStringLiteral(" ! queue leaky=2 ! ") + encoder(roles) +
           QStringLiteral(" ! queue ! avimux name=mux ! filesink name=avifilename ");
}

// camera - scale - tee +- queue - converter - appsink
//                      +- queue - display
//                      +- queue - texts - JPEG - queue - TCP server
QString streamingLaunch(const ElementRoles &roles)
{
    return withProperties(roles.camera, QStringLiteral("do-timestamp=true")) + QStringLiteral(" ! ") +
           scaled() + QStringLiteral(" ! tee name=maintee ! queue ! ") + framesForGui(roles) +
           QStringLiteral(" maintee. ! queue ! ") +
           withProperties(roles.display, QStringLiteral("name=videosink")) +
           QStringLiteral(" maintee. ! queue ! ") + kTexts + QStringLiteral(" ! ") + encoder(roles) +
           QStringLiteral(" ! queue ! tcpserversink name=tcpserver");
}

} // namespace

eGstreamerState layoutForMode(eGstreamerState mode)
{
    switch (mode) {
    case eGSTStateRecordingWithAudio:
    case eGSTStateRecordingWithoutAudio:
    case eGSTStateStreaming:
        return mode;
    default:
        return eGSTStateLiveVideo;
    }
}

QString videoInputLaunch(eGstreamerState layout, const ElementRoles &roles)
{
    switch (layout) {
    case eGSTStateRecordingWithAudio:
        return recordingWithAudioLaunch(roles);
    case eGSTStateRecordingWithoutAudio:
        return recordingWithoutAudioLaunch(roles);
    case eGSTStateStreaming:
        return streamingLaunch(roles);
    default:
        return liveLaunch(roles);
    }
}
