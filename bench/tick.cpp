// One frame of live view, from the frame in the buffer to the painted label, against the bare drawing of the
// same cut-out of the same frame. The camera stands, so that its threads do not count: what the pump does for
// a frame of this moment is asked for by hand.
#include "benchwindow.h"

#include "app/picturelabel.h"
#include "media/zoom.h"

#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

void tick(benchmark::State &state, const BenchWindow &window, quint8 zoomLevel)
{
    const QImage frame(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    int painted = 0;
    auto *label = window->findChild<PictureLabel *>(QStringLiteral("labelInputVideo"));
    const auto connection =
        QObject::connect(label, &PictureLabel::framePainted, label, [&painted] { ++painted; });
    for (auto _ : state) {
        label->showFrame(frame, zoom::liveCrop(zoomLevel));
        QCoreApplication::sendPostedEvents(&*window, QEvent::UpdateRequest);
    }
    QObject::disconnect(connection);
    if (painted != state.iterations())
        state.SkipWithError("not every tick painted its frame");
}

void drawImage(benchmark::State &state, quint8 zoomLevel)
{
    const QImage frame(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    QImage target(kFrameWidth, kFrameHeight, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter painter(&target);
        painter.drawImage(target.rect(), frame, zoom::liveCrop(zoomLevel));
        painter.end();
        benchmark::DoNotOptimize(target.bits());
    }
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    BenchWindow window(argc, argv);
    window.standStill();
    // The painter works on several threads: all of the process counts.
    for (const quint8 level : {quint8(0), zoom::kLargestStep}) {
        const std::string size = '/' + std::to_string(level);
        benchmark::RegisterBenchmark(("ours" + size).c_str(), tick, std::cref(window), level)
            ->MeasureProcessCPUTime();
        benchmark::RegisterBenchmark(("peer" + size).c_str(), drawImage, level)->MeasureProcessCPUTime();
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
