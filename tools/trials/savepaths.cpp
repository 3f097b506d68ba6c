// The real window, told by lines of standard input to save something, and telling what the screen made of it:
// "saved" or "refused". tools/hurt lets the file calls on the way fail, or be the last ones.
//   savepaths           the unit's folder is the first line of its output
//   savepaths --films N after each of N films its threads, descriptors and kB of memory
#include "app/screen.h"

#include "film/avirepair.h"
#include "storage/capturefiles.h"
#include "storage/dcim.h"
#include "storage/eventlog.h"
#include "storage/inspectionlog.h"

#include <QGraphicsView>

#include <iostream>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatience = 20000; // ms
constexpr QPoint kCapture(40, 485), kBack(40, 559), kThumbnails = kBack, kNote(40, 189), kEdit(40, 263);

class Hand : public Screen
{
public:
    Hand()
    {
        waitForCard();
        QObject::connect(&m_eye, &QTimer::timeout, &window, [this] {
            if (auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                m_wasTold = true;
                box->reject();
            }
        });
        m_eye.start(5);
    }

    bool still()
    {
        backToLive();
        settings().CaptureMode = eStillImageCapture;
        touch(kCapture);
        const bool isShown = comes(eStateCaptureWindowEntry, eStateLive);
        if (isShown)
            window.popUpExpired();
        return comes(eStateLive) && isShown;
    }

    bool startFilm()
    {
        backToLive();
        settings().CaptureMode = eVideoCapture;
        touch(kCapture);
        return comes(eStateLiveSavingMovie, eStateLive);
    }

    // A film that something has ended meanwhile has told why.
    bool endFilm()
    {
        if (window.mainState() == eStateLiveSavingMovie)
            touch(kCapture);
        return comes(eStateLive) && !m_wasTold;
    }

    bool openPicture()
    {
        backToLive();
        touch(kThumbnails);
        select(0);
        return window.mainState() == eStatePlaybackSnapshot;
    }

    bool note()
    {
        touch(kNote);
        QTest::qWait(300);
        touch(kNote);
        return comes(eStatePlaybackSnapshot) && !m_wasTold && window.screenFacts().isAnnotated;
    }

    bool copy()
    {
        touch(kEdit);
        if (!comes(eStatePlaybackEditImage))
            return false;
        touch(40, 115);
        QWidget *surface = find<QGraphicsView>("gv_MainView")->viewport();
        QTest::mousePress(surface, Qt::LeftButton, {}, {100, 100});
        QTest::mouseMove(surface, {200, 200});
        QTest::mouseRelease(surface, Qt::LeftButton, {}, {200, 200});
        touch(40, 411);
        if (comes(eStatePlaybackEditSaveImage, eStatePlaybackEditImage))
            window.popUpExpired();
        const bool isSaved = comes(eStatePlaybackEditImage) && !m_wasTold;
        touch(kBack); // the question whether to save is answered with no
        return comes(eStatePlaybackSnapshot) && isSaved;
    }

    bool writeSettings()
    {
        settings().UnitofMeasure = settings().UnitofMeasure ? 0 : 1;
        params::getInstance()->WriteGlobalSystemSettingsFile(false);
        return true;
    }

    // What is to be told of the next action.
    void forgetBoxes() { m_wasTold = false; }

    // Leaves the unit as a start finds it: what was cut off is mended.
    bool mend()
    {
        completeCurrentFolder();
        mendEventLog();
        for (const QString &name : QDir(unit::path(g_SavedFSInfo.currRootDirectory)).entryList({u"*.avi"_s}))
            avirepair::repair(unit::path(inCurrentFolder(name)));
        return true;
    }

private:
    void backToLive()
    {
        for (int i = 0; i < 3 && window.mainState() != eStateLive; ++i)
            touch(kBack);
    }

    // False: it does not come, or `instead` does after it could have come.
    bool comes(eMainStates wanted, eMainStates instead = eStateSentinel)
    {
        const auto isThere = [&] {
            const eMainStates state = window.mainState();
            return !QApplication::activeModalWidget() && (state == wanted || (state == instead && m_wasTold));
        };
        return QTest::qWaitFor(isThere, kPatience) && window.mainState() == wanted;
    }

    QTimer m_eye;
    bool m_wasTold = false;
};

struct Path
{
    const char *name;
    bool (*save)(Hand &hand);
};

constexpr std::array kPaths = {
    Path{"still", [](Hand &hand) { return hand.still(); }},
    Path{"film-start", [](Hand &hand) { return hand.startFilm(); }},
    Path{"film-end", [](Hand &hand) { return hand.endFilm(); }},
    Path{"open", [](Hand &hand) { return hand.openPicture(); }},
    Path{"note", [](Hand &hand) { return hand.note(); }},
    Path{"copy", [](Hand &hand) { return hand.copy(); }},
    Path{"settings", [](Hand &hand) { return hand.writeSettings(); }},
    Path{"event",
         [](Hand &) {
             UpdateEventLog(eEventImageCapture, u"A touch"_s);
             return true;
         }},
    Path{"row",
         [](Hand &) {
             // No row is like the one before, also of a program that was killed.
             const QString damage = u"Crack %1"_s.arg(QDateTime::currentMSecsSinceEpoch());
             UpdateLogFiles(eDamageCatelogChange, 123, u"TUBX0001.jpg"_s, damage);
             return true;
         }},
    Path{"rename",
         [](Hand &) {
             return capturefiles::rename(g_SavedFSInfo.currRootDirectory, u"OLD.jpg"_s, u"NEW"_s, true)
                 .capture;
         }},
    Path{"mend", [](Hand &hand) { return hand.mend(); }},
};

// The application prints lines of its own.
void tell(const QString &answer)
{
    std::cout << "answer: " << qPrintable(answer) << std::endl;
}

int takeOrders()
{
    Hand hand;
    tell(unit::root());
    for (std::string order; std::getline(std::cin, order);) {
        const auto path = std::find_if(kPaths.begin(), kPaths.end(),
                                       [&](const Path &known) { return order == known.name; });
        if (path == kPaths.end())
            return 2;
        hand.forgetBoxes();
        tell(path->save(hand) ? u"saved"_s : u"refused"_s);
    }
    return 0;
}

int memory()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("VmRSS:") + 6, 20).simplified().split(' ')[0].toInt();
}

int makeFilms(int count)
{
    Hand hand;
    for (int i = 0; i < count; ++i) {
        const bool isMade = hand.startFilm() && hand.endFilm() && Screen::pictureRuns();
        tell(u"%1 %2 %3"_s.arg(isMade ? entriesIn(u"/proc/self/task"_s) : -1)
                 .arg(entriesIn(u"/proc/self/fd"_s))
                 .arg(memory()));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const TestUnit folder;
    params::resetForTests();
    UnitApplication application(argc, argv);
    return argc == 3 && qstrcmp(argv[1], "--films") == 0 ? makeFilms(QByteArray(argv[2]).toInt())
                                                         : takeOrders();
}
