// The least that shows the live picture: a bare window with one label, and the pipeline of the application's
// live view. Says "ready" with its first painted frame, as the application does.
// Usage: barewindow UNIT_FOLDER
#include "media/boardelements.h"
#include "media/framecopy.h"
#include "media/gst_includes.h"
#include "media/videoinputlayout.h"
#include "platform/unit.h"

#include <QApplication>
#include <QLabel>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <vector>

namespace {

constexpr int kFrameInterval = 40; // ms

std::vector<quint8> g_frame(kFrameBytes); // written by the streaming thread, as in the application
std::atomic<bool> g_frameReady = false;

GstFlowReturn takeFrame(GstAppSink *appsink, gpointer)
{
    if (copyNextFrame(appsink, g_frame.data()))
        g_frameReady = true;
    return GST_FLOW_OK;
}

class Label : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QLabel::paintEvent(event);
        if (m_isReady || pixmap().isNull())
            return;
        m_isReady = true;
        std::puts("ready");
        std::fflush(stdout);
    }

private:
    bool m_isReady = false;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("Usage: barewindow UNIT_FOLDER\n", stderr);
        return 2;
    }
    unit::setRoot(QString::fromLocal8Bit(argv[1]));
    QApplication application(argc, argv);
    gst_init(nullptr, nullptr);
    GstElement *pipeline =
        gst_parse_launch(videoInputLaunch(eGSTStateLiveVideo, boardElements()).toUtf8().constData(), nullptr);
    GstElement *appsink = gst_bin_get_by_name(GST_BIN(pipeline), "appsink");
    g_object_set(appsink, "emit-signals", TRUE, nullptr);
    g_signal_connect(appsink, "new-sample", G_CALLBACK(takeFrame), nullptr);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);

    QWidget window;
    window.setFixedSize(800, 600);
    Label label(&window);
    label.setGeometry(80, 24, kFrameWidth, kFrameHeight);
    QTimer pump;
    QObject::connect(&pump, &QTimer::timeout, &label, [&label] {
        if (g_frameReady)
            label.setPixmap(
                QPixmap::fromImage(QImage(g_frame.data(), kFrameWidth, kFrameHeight, QImage::Format_RGB16)));
    });
    pump.setTimerType(Qt::PreciseTimer);
    pump.start(kFrameInterval);
    window.show();
    const int status = QApplication::exec();
    gst_element_set_state(pipeline, GST_STATE_NULL);
    return status;
}
