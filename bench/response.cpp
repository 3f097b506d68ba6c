// What a finger feels: touches the real window for a while and tells how long its event loop stood still at
// most, how long the answers took and what became of the camera's frames. Usage: response
// live|recording|paging|broken SECONDS [FOLDER]   FOLDER: host folder with the files of the pages
#include "benchwindow.h"

#include "app/picturelabel.h"
#include "core/pages.h"
#include "core/runningtime.h"

#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Moment = Clock::time_point;

namespace {

constexpr auto kFrameInterval = 40ms;
constexpr auto kBetweenTouches = 200ms;
constexpr auto kLongestAnswer = 10s;

struct Situation
{
    const char *name;
    const char *there; // button
    const char *back;
    int steps;          // so many touches there, so many back
    const char *answer; // the label whose text answers each
};

constexpr Situation kSituations[] = {
    {"live", "btn_menu_zoom_plus", "btn_menu_zoom_minus", 10, "lbl_ZoomLevel"},
    {"recording", "btn_menu_zoom_plus", "btn_menu_zoom_minus", 10, "lbl_ZoomLevel"},
    {"paging", "btn_menu_ThumbnailNextPage", "btn_menu_ThumbnailPreviousPage", 100,
     "lbl_CurrentFilenameandPath"},
    {"broken", "btn_menu_ThumbnailNextPage", "btn_menu_ThumbnailPreviousPage", 1,
     "lbl_CurrentFilenameandPath"},
};

double milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

// Touches and looks from a thread of its own: neither a finger nor the camera waits for the event loop.
class Finger : public QObject
{
public:
    Finger(const MainWindow &window, const Situation &situation)
        : m_window(window.windowHandle()), m_situation(situation),
          m_label(window.findChild<QLabel *>(QString::fromLatin1(situation.answer))), m_text(m_label->text()),
          m_picture(window.findChild<PictureLabel *>(QStringLiteral("labelInputVideo")))
    {
        for (const char *name : {situation.there, situation.back}) {
            const auto *button = window.findChild<QPushButton *>(QString::fromLatin1(name));
            m_places.push_back(button->mapTo(&window, button->rect().center()));
        }
        m_label->installEventFilter(this);
        m_picture->installEventFilter(this);
        connect(m_picture, &PictureLabel::framePainted, this, [this] {
            m_painted.push_back({m_newest, Clock::now()});
        });
        connect(&m_heartbeat, &QTimer::timeout, this, &Finger::beat);
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.start(1);
        m_thread = std::thread([this] { observe(); });
    }

    // The figures as JSON; false when a touch got no answer.
    bool tell()
    {
        m_isOver = true;
        m_thread.join();
        if (m_isMute || m_answers.empty())
            return false;
        std::sort(m_answers.begin(), m_answers.end());
        const auto rank = size_t(std::ceil(0.99 * double(m_answers.size()))) - 1;
        const auto [late, unpainted] = lateAndUnpainted();
        std::printf(
            "{\"gap\": %.2f, \"answer\": %.2f, \"slowest\": %.2f, \"touches\": %zu, \"received\": %zu, "
            "\"late\": %d, \"unpainted\": %d}\n",
            milliseconds(m_gap), milliseconds(m_answers[rank]), milliseconds(m_answers.back()),
            m_answers.size(), m_came.size(), late, unpainted);
        return true;
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        if (watched == m_picture) {
            m_newest = nBuffers; // the buffer is the camera's, too: what is painted now is its newest frame
        } else if (m_label->text() != m_text) {
            m_text = m_label->text();
            // Comes in behind the painting of the whole window, which then is on its way to the screen.
            QMetaObject::invokeMethod(this, &Finger::takeAnswer, Qt::QueuedConnection);
        }
        return false;
    }

private:
    struct Shown
    {
        qint32 frame;
        Moment painted;
    };

    void beat()
    {
        const Moment now = Clock::now();
        if (m_lastBeat != Moment())
            m_gap = std::max(m_gap, now - m_lastBeat);
        m_lastBeat = now;
    }

    void takeAnswer()
    {
        const Moment now = Clock::now();
        m_answers.push_back(now - m_touched.load());
        // Not in step with the camera or the pump.
        m_next = now + kBetweenTouches + std::chrono::milliseconds(m_answers.size() * 7 % 40);
        m_touched = Moment();
    }

    void observe()
    {
        while (!m_isOver) {
            const Moment now = Clock::now();
            for (const qint32 frames = nBuffers; m_before + qint32(m_came.size()) < frames;)
                m_came.push_back(now);
            const Moment touched = m_touched;
            if (touched == Moment() && now >= m_next.load())
                touch(now);
            else if (touched != Moment() && now - touched > kLongestAnswer)
                m_isMute = true;
            std::this_thread::sleep_for(1ms);
        }
    }

    void touch(Moment now)
    {
        const bool isBack = m_touches++ / m_situation.steps % 2 == 1;
        const QPointF place = m_places[isBack];
        m_touched = now;
        for (const auto &[type, buttons] : {std::pair(QEvent::MouseButtonPress, Qt::LeftButton),
                                            std::pair(QEvent::MouseButtonRelease, Qt::NoButton)}) {
            QCoreApplication::postEvent(
                m_window, new QMouseEvent(type, place, place, Qt::LeftButton, buttons, Qt::NoModifier));
        }
    }

    // The frames of the last moment are left out: they may be painted yet.
    std::pair<int, int> lateAndUnpainted() const
    {
        int late = 0;
        int unpainted = 0;
        auto shown = m_painted.begin();
        for (size_t i = 0; i + 3 < m_came.size(); ++i) {
            const qint32 frame = m_before + 1 + qint32(i);
            shown =
                std::find_if(shown, m_painted.end(), [frame](const Shown &s) { return s.frame >= frame; });
            if (shown == m_painted.end() || shown->frame > frame)
                ++unpainted;
            else if (shown->painted - m_came[i] > kFrameInterval)
                ++late;
        }
        return {late, unpainted};
    }

    QWindow *m_window;
    Situation m_situation;
    QLabel *m_label;
    QString m_text; // of the last answer
    PictureLabel *m_picture;
    qint32 m_newest = 0;
    std::vector<QPointF> m_places;
    QTimer m_heartbeat;
    Moment m_lastBeat;
    Clock::duration m_gap{};
    std::vector<Clock::duration> m_answers;
    std::vector<Shown> m_painted;
    std::atomic<Moment> m_touched; // null: no touch waits for its answer
    std::atomic<Moment> m_next;
    const qint32 m_before = nBuffers;
    int m_touches = 0;                  // this and what follows: the thread's
    std::vector<Moment> m_came;         // each frame
    std::atomic<bool> m_isMute = false; // a touch got no answer
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

void click(const MainWindow &window, const char *button)
{
    window.findChild<QPushButton *>(QString::fromLatin1(button))->click();
}

template <typename Done> void waitFor(Done isDone)
{
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// The application's own loop would close the window at its end.
void lookOn(int time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// The card comes about a second after the start; until then it cannot be used.
void waitForCard(const BenchWindow &window)
{
    waitFor([button = window->findChild<QPushButton *>(QStringLiteral("btn_menu_Thumbnails"))] {
        return button->isVisible() && button->isEnabled();
    });
}

void startFilm(const BenchWindow &window)
{
    window.unit().control(QLatin1StringView("card slow 50"));
    click(*window, "btn_menu_CaptureModeSelect");
    click(*window, "btn_menu_Capture");
    waitFor([length = window->findChild<QLabel *>(QStringLiteral("lbl_VideoLengthIndicator"))] {
        return length->isVisible() && length->text() != runningTimeText(0);
    });
}

bool enterBrowser(const BenchWindow &window, const char *folder)
{
    if (!window.copyIntoCurrentFolder(QString::fromLocal8Bit(folder)))
        return false;
    click(*window, "btn_menu_Thumbnails");
    return window->findChild<QListWidget *>(QStringLiteral("listW_ThumbnailViewer"))->count() == kFilesOnPage;
}

} // namespace

int main(int argc, char **argv)
{
    const auto *const situation =
        std::find_if(std::begin(kSituations), std::end(kSituations), [&](const auto &s) {
            return argc > 2 && QLatin1StringView(s.name) == QLatin1StringView(argv[1]);
        });
    if (situation == std::end(kSituations) || argc > 4) {
        std::fputs("Usage: response live|recording|paging|broken SECONDS [FOLDER]\n", stderr);
        return 2;
    }
    const BenchWindow window(argc, argv);
    waitForCard(window);
    if (argc == 4 && !enterBrowser(window, argv[3]))
        return 1;
    if (QLatin1StringView(situation->name) == QLatin1StringView("recording"))
        startFilm(window);
    lookOn(2000); // what the way here has left to do is done first
    Finger finger(*window, *situation);
    lookOn(std::atoi(argv[2]) * 1000);
    return finger.tell() ? 0 : 1;
}
