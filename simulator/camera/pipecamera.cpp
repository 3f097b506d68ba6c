// pipecamera: the simulated unit's capture device as a GStreamer element. Live, PAL size, 25 pictures a
// second, in step with the pipeline's clock; what it shows follows the unit's meter count, LED brightness and
// camera head.
#include "pipepicture.h"
#include "unitfiles.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include <gst/base/gstpushsrc.h>
#include <gst/gst.h>
#include <gst/video/gstvideometa.h>
#include <gst/video/gstvideopool.h>
#include <gst/video/video.h>

GST_DEBUG_CATEGORY_STATIC(pipecamera_debug);
#define GST_CAT_DEFAULT pipecamera_debug

namespace {

constexpr GstClockTime kFrame = GST_SECOND / 25;
constexpr guint64 kWaiting = 2; // pictures that may be fetched late before one is dropped

constexpr char kCaps[] = "video/x-raw, format=(string)I420, width=(int)720, height=(int)576, "
                         "framerate=(fraction)25/1, pixel-aspect-ratio=(fraction)1/1, "
                         "interlace-mode=(string)progressive";

// What lives from start to stop, besides the clock's wait that another thread may break off.
struct Capture
{
    explicit Capture(const std::string &device) : files(device) {}

    UnitFiles files;
    pipecam::Picture picture;
    double position = -1; // of the camera in the pipe, millimetres
    double sway = 0;      // how much the cable shakes the camera, 0 to 1
    guint64 next = 0;     // number of the next picture since the pipeline's start
};

struct PipeCamera
{
    GstPushSrc parent;

    std::string *device;               // guarded by the object's lock
    std::unique_ptr<Capture> *capture; // start() to stop(), used by the streaming thread
    GstVideoInfo info;                 // of the caps
    GstClockID wait;                   // guarded by the object's lock: what the streaming thread waits for
    bool flushing;                     // guarded by the object's lock
};

struct PipeCameraClass
{
    GstPushSrcClass parent_class;
};

enum { PROP_DEVICE = 1 };

G_DEFINE_TYPE(PipeCamera, pipe_camera, GST_TYPE_PUSH_SRC)

PipeCamera *self(gpointer object)
{
    return reinterpret_cast<PipeCamera *>(object);
}

std::string deviceName(PipeCamera *camera)
{
    GST_OBJECT_LOCK(camera);
    std::string name = *camera->device;
    GST_OBJECT_UNLOCK(camera);
    return name;
}

void setProperty(GObject *object, guint id, const GValue *value, GParamSpec *parameter)
{
    if (id != PROP_DEVICE) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, parameter);
        return;
    }
    const gchar *name = g_value_get_string(value);
    GST_OBJECT_LOCK(object);
    *self(object)->device = name ? name : "";
    GST_OBJECT_UNLOCK(object);
}

void getProperty(GObject *object, guint id, GValue *value, GParamSpec *parameter)
{
    if (id != PROP_DEVICE) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, parameter);
        return;
    }
    g_value_set_string(value, deviceName(self(object)).c_str());
}

gboolean start(GstBaseSrc *source)
{
    PipeCamera *camera = self(source);
    const std::string device = deviceName(camera);
    auto capture = std::make_unique<Capture>(device);
    if (!capture->files.cameraPresent()) {
        GST_ELEMENT_ERROR(camera, RESOURCE, NOT_FOUND,
                          ("Cannot find the capture device '%s'.", device.c_str()),
                          ("it must be a regular file in the dev folder of a simulated unit"));
        return FALSE;
    }
    *camera->capture = std::move(capture);
    return TRUE;
}

gboolean stop(GstBaseSrc *source)
{
    self(source)->capture->reset();
    return TRUE;
}

gboolean setCaps(GstBaseSrc *source, GstCaps *caps)
{
    return gst_video_info_from_caps(&self(source)->info, caps);
}

gboolean decideAllocation(GstBaseSrc *source, GstQuery *query)
{
    GstBufferPool *pool = nullptr;
    guint size = static_cast<guint>(GST_VIDEO_INFO_SIZE(&self(source)->info));
    guint least = 0, most = 0;
    const bool offered = gst_query_get_n_allocation_pools(query) > 0;
    if (offered) {
        guint wanted = 0;
        gst_query_parse_nth_allocation_pool(query, 0, &pool, &wanted, &least, &most);
        size = std::max(size, wanted);
    }
    if (!pool)
        pool = gst_video_buffer_pool_new();
    GstCaps *caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstStructure *config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, size, least, most);
    if (gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr))
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    gst_buffer_pool_set_config(pool, config);
    if (offered)
        gst_query_set_nth_allocation_pool(query, 0, pool, size, least, most);
    else
        gst_query_add_allocation_pool(query, pool, size, least, most);
    gst_object_unref(pool);
    return GST_BASE_SRC_CLASS(pipe_camera_parent_class)->decide_allocation(source, query);
}

// A picture is handed on when it is complete, and a few may wait, as in a capture driver's buffers.
gboolean query(GstBaseSrc *source, GstQuery *query)
{
    if (GST_QUERY_TYPE(query) != GST_QUERY_LATENCY)
        return GST_BASE_SRC_CLASS(pipe_camera_parent_class)->query(source, query);
    gst_query_set_latency(query, TRUE, kFrame, (1 + kWaiting) * kFrame);
    return TRUE;
}

gboolean unlock(GstBaseSrc *source)
{
    PipeCamera *camera = self(source);
    GST_OBJECT_LOCK(camera);
    camera->flushing = true;
    if (camera->wait)
        gst_clock_id_unschedule(camera->wait);
    GST_OBJECT_UNLOCK(camera);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc *source)
{
    PipeCamera *camera = self(source);
    GST_OBJECT_LOCK(camera);
    camera->flushing = false;
    GST_OBJECT_UNLOCK(camera);
    return TRUE;
}

// Waits for the next full 40 ms of the pipeline's running time. When the pipeline is too far behind, pictures
// are left out. Gives the picture's time.
GstFlowReturn waitForFrame(PipeCamera *camera, guint64 &next, GstClockTime &time)
{
    GST_OBJECT_LOCK(camera);
    GstClock *clock = GST_ELEMENT_CLOCK(camera);
    if (camera->flushing || !clock) {
        GST_OBJECT_UNLOCK(camera);
        return GST_FLOW_FLUSHING;
    }
    const GstClockTime base = GST_ELEMENT(camera)->base_time;
    const GstClockTime now = gst_clock_get_time(clock);
    const GstClockTime running = now > base ? now - base : 0;
    const guint64 current = running / kFrame;
    next = std::max(next, current > kWaiting ? current - kWaiting : 0);
    time = next * kFrame;
    GstClockID id = gst_clock_new_single_shot_id(clock, base + time);
    camera->wait = id;
    GST_OBJECT_UNLOCK(camera);

    const GstClockReturn result = gst_clock_id_wait(id, nullptr);

    GST_OBJECT_LOCK(camera);
    camera->wait = nullptr;
    GST_OBJECT_UNLOCK(camera);
    gst_clock_id_unref(id);
    if (result == GST_CLOCK_UNSCHEDULED)
        return GST_FLOW_FLUSHING;
    ++next;
    return GST_FLOW_OK;
}

// The meter counts whole centimetres and is pushed in jerks; the camera glides after it.
void follow(Capture &capture)
{
    const double target = capture.files.meterCount() * 10.0;
    const double way = target - capture.position;
    if (capture.position < 0 || std::abs(way) > 1500 || std::abs(way) < 0.1)
        capture.position = target;
    else
        capture.position += way * 0.22;
    const double shake = std::abs(way) > 2 ? 1 : 0;
    capture.sway += (shake - capture.sway) * 0.06;
}

void paint(Capture &capture, GstVideoFrame &frame, GstClockTime time)
{
    const pipecam::Canvas canvas = {static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                                    static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1)),
                                    static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 2)),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 2)};
    capture.files.update();
    follow(capture);
    if (capture.files.headAttached()) {
        capture.picture.draw(canvas, capture.position, capture.files.light(),
                             static_cast<double>(time) / static_cast<double>(GST_SECOND), capture.sway);
    } else {
        pipecam::Picture::drawNoSignal(canvas);
    }
}

GstFlowReturn fill(GstPushSrc *source, GstBuffer *buffer)
{
    PipeCamera *camera = self(source);
    Capture &capture = **camera->capture;
    GstClockTime time = 0;
    if (const GstFlowReturn result = waitForFrame(camera, capture.next, time); result != GST_FLOW_OK)
        return result;
    if (!capture.files.cameraPresent()) {
        GST_ELEMENT_ERROR(camera, RESOURCE, READ,
                          ("The capture device '%s' has gone.", deviceName(camera).c_str()), (nullptr));
        return GST_FLOW_ERROR;
    }
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &camera->info, buffer, GST_MAP_WRITE)) {
        GST_ELEMENT_ERROR(camera, RESOURCE, WRITE, ("Cannot write a picture."), (nullptr));
        return GST_FLOW_ERROR;
    }
    paint(capture, frame, time);
    gst_video_frame_unmap(&frame);
    GST_BUFFER_PTS(buffer) = time;
    GST_BUFFER_DTS(buffer) = time; // sinks go by it where it is set, and the base class would set the present
    GST_BUFFER_DURATION(buffer) = kFrame;
    GST_BUFFER_OFFSET(buffer) = capture.next - 1;
    GST_BUFFER_OFFSET_END(buffer) = capture.next;
    return GST_FLOW_OK;
}

void finalize(GObject *object)
{
    delete self(object)->capture;
    delete self(object)->device;
    G_OBJECT_CLASS(pipe_camera_parent_class)->finalize(object);
}

void pipe_camera_class_init(PipeCameraClass *type)
{
    GObjectClass *object = G_OBJECT_CLASS(type);
    object->set_property = setProperty;
    object->get_property = getProperty;
    object->finalize = finalize;
    g_object_class_install_property(
        object, PROP_DEVICE,
        g_param_spec_string(
            "device", "Device", "The capture device's file in a simulated unit's dev folder", "",
            static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY)));

    GstElementClass *element = GST_ELEMENT_CLASS(type);
    gst_element_class_set_static_metadata(element, "Pipe camera", "Source/Video",
                                          "The inside of a pipe as a simulated unit's camera sees it",
                                          "The tubix4 developers");
    static GstStaticPadTemplate sourcePad =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(kCaps));
    gst_element_class_add_static_pad_template(element, &sourcePad);

    GstBaseSrcClass *source = GST_BASE_SRC_CLASS(type);
    source->start = start;
    source->stop = stop;
    source->set_caps = setCaps;
    source->decide_allocation = decideAllocation;
    source->query = query;
    source->unlock = unlock;
    source->unlock_stop = unlockStop;
    GST_PUSH_SRC_CLASS(type)->fill = fill;
}

void pipe_camera_init(PipeCamera *camera)
{
    camera->device = new std::string;
    camera->capture = new std::unique_ptr<Capture>;
    camera->wait = nullptr;
    camera->flushing = false;
    gst_video_info_init(&camera->info);
    gst_base_src_set_live(GST_BASE_SRC(camera), TRUE);
    gst_base_src_set_format(GST_BASE_SRC(camera), GST_FORMAT_TIME);
    gst_base_src_set_do_timestamp(GST_BASE_SRC(camera), TRUE);
}

gboolean pluginInit(GstPlugin *plugin)
{
    GST_DEBUG_CATEGORY_INIT(pipecamera_debug, "pipecamera", 0, "camera of the simulated unit");
    return gst_element_register(plugin, "pipecamera", GST_RANK_NONE, pipe_camera_get_type());
}

} // namespace

#define PACKAGE "tubix4"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, pipecamera, "The camera of the simulated unit",
                  pluginInit, "1.0", "Proprietary", "tubix4", "tubix4")
