#include "media/filmstart.h"
#include "media/filmsync.h"
#include "media/gst_videoinput.h"
#include "media/soundpackets.h"
#include "media/videoinputparts.h"

#include <QLoggingCategory>

#include <optional>
#include <sys/stat.h>
#include <utility>

char g_gst_MicrophoneActive = 1;

namespace {

Q_LOGGING_CATEGORY(log, "tubix.media")

constexpr guint kSoundLimitMs = 3000; // from the build to the first sound

char g_gst_VideoFileName[1024] = "";

guint g_soundTimeout = 0; // a source on the default main context; 0: none

std::optional<FilmSync> g_filmSync;           // of the film that is being recorded
std::shared_ptr<const FilmStart> g_filmStart; // of one with sound
bool g_hasLostSound = false;                  // a film began anew without its microphone; not told yet
std::atomic<bool> g_filmHasPicture = false;   // streaming thread
bool g_filmFileFailed = false;

// Marks the moment in which the muxer gets the film's first picture.
void watchForFirstPicture()
{
    const GstOwner<GstElement> muxer(videoinput::lookUp("mux"));
    const GstOwner<GstPad> pictures(gst_element_get_static_pad(muxer.get(), "video_0"));
    gst_pad_add_probe(
        pictures.get(), GST_PAD_PROBE_TYPE_BUFFER,
        [](GstPad *, GstPadProbeInfo *, gpointer) {
            g_filmHasPicture = true;
            return GST_PAD_PROBE_REMOVE;
        },
        nullptr, nullptr);
}

gboolean soundIsDue(gpointer)
{
    g_soundTimeout = 0;
    if (videoinput::isWithoutSoundYet())
        videoinput::beginAnewWithoutSound();
    return G_SOURCE_REMOVE;
}

} // namespace

void videoinput::forgetLastFilm()
{
    g_filmHasPicture = false;
}

// A film that has something in it is never written anew, whoever asks for the layout.
bool videoinput::wouldOverwriteFilm()
{
    const bool records = g_gst_VideoPipelineMode == eGSTStateRecordingWithAudio ||
                         g_gst_VideoPipelineMode == eGSTStateRecordingWithoutAudio;
    struct stat info = {};
    return records && ::stat(g_gst_VideoFileName, &info) == 0 && info.st_size > 0;
}

void videoinput::openFilm()
{
    g_gst_Pipeline.videosavesink = lookUp("avifilename");
    g_object_set(g_gst_Pipeline.videosavesink, "location", g_gst_VideoFileName, nullptr);
    // The muxer hands on a hundred small pieces a second, and a slow card takes its time for each write.
    // What waits for its 64 KB when the power goes is a tenth of a second.
    gst_util_set_object_arg(G_OBJECT(g_gst_Pipeline.videosavesink), "buffer-mode", "full");
    g_filmSync.emplace(g_gst_VideoFileName);
    watchForFirstPicture();
}

void videoinput::startWithSound()
{
    const GstOwner<GstElement> muxer(lookUp("mux"));
    releaseSoundPackets(muxer.get());
    g_object_set(g_gst_Pipeline.videosavesink, "enable-last-sample", FALSE, nullptr); // it keeps none of them
    g_filmStart = startTogether(g_gst_Pipeline.videomuxQueue, g_gst_Pipeline.audiomuxQueue);
    g_soundTimeout = g_timeout_add(kSoundLimitMs, soundIsDue, nullptr);
}

void videoinput::releaseFilm()
{
    if (g_soundTimeout)
        g_source_remove(std::exchange(g_soundTimeout, 0));
    g_filmSync.reset();
    g_filmStart.reset();
}

void videoinput::markSoundLost()
{
    g_hasLostSound = true;
}

bool videoinput::isWithoutSoundYet()
{
    return g_filmStart && !g_filmStart->hasSound && !isEnding();
}

// A microphone that cannot be opened, or opens and gives nothing, costs a film its sound: there is nothing in
// the film yet, and it begins anew.
void videoinput::beginAnewWithoutSound()
{
    qCWarning(log) << "no sound from the microphone, the film goes on without";
    markSoundLost();
    g_gst_VideoPipelineMode = eGSTStateRecordingWithoutAudio;
    tearDownAndRebuild();
}

void videoinput::blameFilmFile(GstObject *source)
{
    g_filmFileFailed = g_filmFileFailed || source == GST_OBJECT(g_gst_Pipeline.videosavesink);
}

bool gst_FilmHasPicture()
{
    return g_filmHasPicture;
}

bool gst_FilmFileFailed()
{
    return g_filmFileFailed;
}

void gst_StartRecordingAVIFile(const char *path, int length)
{
    if (g_gst_MicrophoneActive) {
        g_print("******************************\n**** RECORDING WITH AUDIO "
                "****\n******************************\n");
        g_gst_VideoPipelineMode = eGSTStateRecordingWithAudio;
    } else {
        g_print("*******************************\n*** RECORDING WITHOUT AUDIO ***\n"
                "*******************************\n");
        g_gst_VideoPipelineMode = eGSTStateRecordingWithoutAudio;
    }
    g_hasLostSound = false;
    g_filmFileFailed = false;
    videoinput::copyText(g_gst_VideoFileName, path, length);
    gst_SendVideoInputPipelineEOS(false);
}

bool gst_TakeLostSound()
{
    return std::exchange(g_hasLostSound, false);
}

void gst_EnableAudioRecording(int on)
{
    g_gst_MicrophoneActive = static_cast<char>(on);
}
