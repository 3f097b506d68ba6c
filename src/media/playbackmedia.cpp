#include "media/playbackmedia.h"

#include <algorithm>

GstElement *roleElement(const QString &fragment, const char *name)
{
    GError *rawError = nullptr;
    GstElement *element = gst_parse_bin_from_description(fragment.toUtf8().constData(), TRUE, &rawError);
    const GErrorOwner error(rawError);
    if (!element) {
        g_printerr("tubix4: cannot make '%s' (%s): %s\n", name, qUtf8Printable(fragment),
                   error ? error->message : "no element");
        return nullptr;
    }
    gst_element_set_name(element, name);
    return element;
}

void printMediaFault(GstMessage *message)
{
    GError *rawError = nullptr;
    gchar *rawDetail = nullptr;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
        gst_message_parse_error(message, &rawError, &rawDetail);
    else
        gst_message_parse_warning(message, &rawError, &rawDetail);
    const GErrorOwner error(rawError);
    const GTextOwner detail(rawDetail);
    const GTextOwner element(gst_object_get_path_string(GST_MESSAGE_SRC(message)));
    g_printerr("ERROR: from element %s: %s\n", element.get(), error->message);
    if (detail)
        g_printerr("Additional debug info:\n%s\n", detail.get());
}

void printStateChange(const char *who, GstMessage *message)
{
    GstState from = GST_STATE_NULL;
    GstState to = GST_STATE_NULL;
    gst_message_parse_state_changed(message, &from, &to, nullptr);
    const GTextOwner element(gst_object_get_name(GST_MESSAGE_SRC(message)));
    g_print("%s: [%s]: %s -> %s\n", who, element.get(), gst_element_state_get_name(from),
            gst_element_state_get_name(to));
}

quint8 percentPlayed(qint64 position, quint64 length)
{
    if (position <= 0 || length == 0)
        return 0;
    return static_cast<quint8>(std::min(double(position) / double(length) * 100.0, 100.0));
}
