#include "film/filmmodule.h"

#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

namespace {

constexpr double kMostPixels = 16 << 20; // held four times on the way
constexpr int kPatience = 1000;          // ms, to open a film, and to its first picture

} // namespace

extern "C" __attribute__((visibility("default"))) bool
tubixFilmFirstFrame(const char *path, FilmFrameTaker take, void *context) noexcept
try {
    // This back end alone: the one for images takes TUBX0001.avi for a numbered series.
    cv::VideoCapture film(
        path, cv::CAP_FFMPEG,
        {cv::CAP_PROP_OPEN_TIMEOUT_MSEC, kPatience, cv::CAP_PROP_READ_TIMEOUT_MSEC, kPatience});
    cv::Mat frame;
    if (!film.isOpened() ||
        film.get(cv::CAP_PROP_FRAME_WIDTH) * film.get(cv::CAP_PROP_FRAME_HEIGHT) > kMostPixels ||
        !film.read(frame) || frame.empty())
        return false;
    cv::Mat rgb;
    cv::cvtColor(frame, rgb, cv::COLOR_BGR2RGB);
    take(context, rgb.data, rgb.cols, rgb.rows, static_cast<long>(rgb.step));
    return true;
} catch (...) {
    return false;
}
