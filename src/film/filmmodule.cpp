#include "film/filmmodule.h"

#include <opencv2/videoio.hpp>

#include <string>

namespace {

constexpr double kMostPixels = 16 << 20; // held three times on the way
// The reader looks for a picture to the end of what it is given, minutes in a large file that has none. What
// lies behind the film's first 2 MB is not shown to it.
constexpr char kStartOf[] = "subfile,,start,0,end,2097152,,:file:";

} // namespace

extern "C" __attribute__((visibility("default"))) bool
tubixFilmFirstFrame(const char *path, FilmFrameTaker take, void *context) noexcept
try {
    // This back end alone: the one for images takes TUBX0001.avi for a numbered series.
    cv::VideoCapture film(std::string(kStartOf) + path, cv::CAP_FFMPEG);
    cv::Mat frame;
    if (!film.isOpened() ||
        film.get(cv::CAP_PROP_FRAME_WIDTH) * film.get(cv::CAP_PROP_FRAME_HEIGHT) > kMostPixels ||
        !film.read(frame) || frame.empty())
        return false;
    take(context, frame.data, frame.cols, frame.rows, static_cast<long>(frame.step));
    return true;
} catch (...) {
    return false;
}
