#include "media/viewers.h"

#include <QtGlobal>

#include <gio/gio.h>

#include <map>
#include <mutex>
#include <sys/socket.h>
#include <vector>

namespace {

constexpr gint64 kPicturesBehind = 5; // of a viewer, 0.2 s
constexpr size_t kMostViewers = 8;
constexpr gint kBytesUnderWay = 256 * 1024; // in the kernel: more would hide for long that a viewer is slow
constexpr quint64 kPicturesALook = 125;     // five seconds
constexpr quint64 kFewest = 5;              // of them, for one that stays

struct Viewer
{
    quint64 taken = 0; // bytes, until the look before
    bool isNew = true; // came since
};

// The server's thread tells who comes and goes, the streaming thread looks at them.
struct Viewers
{
    GstElement *server; // not owned: it owns this
    std::mutex mutex;
    std::map<GSocket *, Viewer> list;
    quint64 pictures = 0; // since the look before
    quint64 bytes = 0;
};

struct SocketRelease
{
    void operator()(GSocket *socket) const { g_object_unref(socket); }
};
using SocketOwner = std::unique_ptr<GSocket, SocketRelease>;

Viewers &viewersOf(gpointer data)
{
    return *static_cast<Viewers *>(data);
}

void letGo(GstElement *server, GSocket *viewer)
{
    g_signal_emit_by_name(server, "remove", viewer);
}

void viewerComes(GstElement *server, GSocket *viewer, gpointer data)
{
    Viewers &viewers = viewersOf(data);
    g_socket_set_option(viewer, SOL_SOCKET, SO_SNDBUF, kBytesUnderWay, nullptr);
    bool isOneTooMany = false;
    {
        const std::lock_guard lock(viewers.mutex);
        viewers.list[viewer] = {};
        isOneTooMany = viewers.list.size() > kMostViewers;
    }
    if (isOneTooMany)
        letGo(server, viewer);
}

void viewerGoes(GstElement *, GSocket *viewer, gint, gpointer data)
{
    Viewers &viewers = viewersOf(data);
    const std::lock_guard lock(viewers.mutex);
    viewers.list.erase(viewer);
}

quint64 bytesTaken(GstElement *server, GSocket *viewer)
{
    GstStructure *figures = nullptr;
    guint64 bytes = 0;
    g_signal_emit_by_name(server, "get-stats", viewer, &figures);
    if (figures) {
        gst_structure_get_uint64(figures, "bytes-sent", &bytes);
        gst_structure_free(figures);
    }
    return bytes;
}

std::vector<SocketOwner> presentViewers(Viewers &viewers)
{
    const std::lock_guard lock(viewers.mutex);
    std::vector<SocketOwner> present;
    for (const auto &[viewer, figures] : viewers.list)
        present.emplace_back(G_SOCKET(g_object_ref(viewer)));
    return present;
}

// True when a viewer that was here at the look before has taken less than `least` bytes since.
bool isTooSlow(Viewers &viewers, GSocket *socket, quint64 taken, quint64 least)
{
    const std::lock_guard lock(viewers.mutex);
    const auto found = viewers.list.find(socket);
    if (found == viewers.list.end())
        return false;
    Viewer &viewer = found->second;
    const bool isSlow = !viewer.isNew && taken < viewer.taken + least;
    viewer = {taken, false};
    return isSlow;
}

// On the streaming thread.
GstPadProbeReturn pictureComes(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    Viewers &viewers = viewersOf(data);
    viewers.bytes += gst_buffer_get_size(gst_pad_probe_info_get_buffer(info));
    if (++viewers.pictures < kPicturesALook)
        return GST_PAD_PROBE_OK;
    const quint64 least = viewers.bytes / kPicturesALook * kFewest;
    for (const SocketOwner &viewer : presentViewers(viewers)) {
        if (isTooSlow(viewers, viewer.get(), bytesTaken(viewers.server, viewer.get()), least))
            letGo(viewers.server, viewer.get());
    }
    viewers.pictures = 0;
    viewers.bytes = 0;
    return GST_PAD_PROBE_OK;
}

} // namespace

void limitViewers(GstElement *server)
{
    gst_util_set_object_arg(G_OBJECT(server), "unit-format", "buffers");
    gst_util_set_object_arg(G_OBJECT(server), "recover-policy", "latest");
    g_object_set(server, "units-soft-max", kPicturesBehind, nullptr);
    auto *viewers = new Viewers;
    viewers->server = server;
    g_object_set_data_full(G_OBJECT(server), "viewers", viewers,
                           [](gpointer data) { delete static_cast<Viewers *>(data); });
    g_signal_connect(server, "client-added", G_CALLBACK(viewerComes), viewers);
    g_signal_connect(server, "client-removed", G_CALLBACK(viewerGoes), viewers);
    const GstOwner<GstPad> pad(gst_element_get_static_pad(server, "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, pictureComes, viewers, nullptr);
}
