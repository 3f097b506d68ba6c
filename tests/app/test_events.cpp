// What card, USB host, power key and battery do to every screen (docs/events.md).
#include "app/screen.h"

#include "app/picturelabel.h"
#include "core/unitevents.h"
#include "storage/sdcard.h"

#include <QDialog>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTimer>

#include <set>

using namespace Qt::StringLiterals;

namespace {

// Answers every question with no, and counts them; tells when two stand at once.
class Cancelling
{
public:
    explicit Cancelling(MainWindow &window)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &window, [this] {
            int open = 0;
            for (QWidget *widget : QApplication::topLevelWidgets())
                open += qobject_cast<QDialog *>(widget) && widget->isVisible();
            m_mostAtOnce = std::max(m_mostAtOnce, open);
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                ++m_answered;
                dialog->reject();
            }
        });
        m_timer.start(50);
    }
    int answered() const { return m_answered; }
    int mostAtOnce() const { return m_mostAtOnce; }

private:
    QTimer m_timer;
    int m_answered = 0;
    int m_mostAtOnce = 0;
};

// Files of this process below the card's folder, wherever it lies now.
QStringList openOnCard()
{
    QStringList files;
    for (const QFileInfo &entry : QDir(u"/proc/self/fd"_s).entryInfoList(QDir::Files | QDir::System)) {
        const QString target = entry.symLinkTarget();
        if (target.startsWith(unit::path(kCardMountPoint)) ||
            target.startsWith(unit::path(u"/.simulator/card"_s)))
            files << target;
    }
    return files;
}

// Which of the buttons that need a card can be touched.
struct CardButtons
{
    bool capture = false;
    bool captureMode = false;
    bool thumbnails = false;
    bool toolsPage = false; // folders, format, unmount

    bool operator==(const CardButtons &) const = default;
};

CardButtons shownButtons(const Screen &screen)
{
    const auto on = [&](const char *name) { return screen.button(name)->isEnabled(); };
    return {on("btn_menu_Capture"), on("btn_menu_CaptureModeSelect"), on("btn_menu_Thumbnails"),
            on("btn_menu_FolderOptions") && on("btn_tools_Format_Media") && on("btn_menu_UnmountMedia")};
}

bool pictureRuns()
{
    const int before = nBuffers;
    return QTest::qWaitFor([&] { return nBuffers > before + 3; }, 10000);
}

bool isQuiet(const MainWindow &window, eMainStates state)
{
    return QTest::qWaitFor([&] { return window.mainState() == state && !QApplication::activeModalWidget(); },
                           20000);
}

// A touch on the capture button still leaves a picture on the card.
void captureWorks(Screen &screen)
{
    QVERIFY(isQuiet(screen.window, eStateLive));
    QVERIFY(pictureRuns());
    params::getInstance()->getParams().CaptureMode = eStillImageCapture;
    const QDir folder(unit::path(g_SavedFSInfo.currRootDirectory));
    const qsizetype before = folder.entryList({u"TUBX*.jpg"_s}).size();
    screen.touch(40, 485);
    QTRY_COMPARE(folder.entryList({u"TUBX*.jpg"_s}).size(), before + 1);
    QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
}

void appendToLog(const QByteArray &text)
{
    QFile log(unit::path(u"/var/log/messages"_s));
    QVERIFY(log.open(QIODevice::Append));
    log.write(text);
}

} // namespace

class TestEvents : public QObject
{
    Q_OBJECT

private slots:
    // Independent of the table's own form: what has a file of the card open never goes on without it.
    void noStateGoesOnWithAnOpenFile()
    {
        std::set<int> ends;
        for (int state = 0; state <= eStates; ++state) {
            if (factsOf(eMainStates(state)).removal != Removal::Restore)
                ends.insert(state);
        }
        const std::set<int> told = {8,  9,  14, 15, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27,
                                    28, 30, 34, 36, 37, 38, 39, 40, 41, 42, 43, 51, 52};
        QVERIFY(ends == told);
    }

    void whatALaterEventMakesPointlessIsFolded_data()
    {
        using enum UnitEvent;
        using Events = QList<int>;
        QTest::addColumn<Events>("events");
        QTest::addColumn<Events>("taken");
        const auto row = [](const char *name, std::initializer_list<UnitEvent> events,
                            std::initializer_list<UnitEvent> taken) {
            Events in, out;
            for (const UnitEvent event : events)
                in << int(event);
            for (const UnitEvent event : taken)
                out << int(event);
            QTest::newRow(name) << in << out;
        };
        row("swapped", {CardRemoved, CardInserted}, {CardRemoved, CardInserted});
        row("in and out", {CardInserted, CardRemoved}, {CardRemoved});
        row("loose contact", {CardRemoved, CardInserted, CardRemoved, CardCorrupt, CardInserted},
            {CardRemoved, CardInserted});
        row("one question", {CardCorrupt, CardCorrupt}, {CardCorrupt});
        row("cable shaken", {UsbChanged, CardRemoved, UsbChanged}, {CardRemoved, UsbChanged});
        row("the end is the end", {CardRemoved, Shutdown, CardInserted, Shutdown}, {Shutdown});
    }
    void whatALaterEventMakesPointlessIsFolded()
    {
        QFETCH(const QList<int>, events);
        PendingEvents pending;
        for (const int event : events)
            pending.add(UnitEvent(event));
        QList<int> taken;
        while (!pending.isEmpty())
            taken << int(pending.takeFirst());
        QTEST(taken, "taken");
    }

    void aCardIsPulledInEveryState()
    {
        Screen screen;
        screen.waitForCard();
        captureWorks(screen);
        const Cancelling no(screen.window);
        for (int state = 0; state <= eStates; ++state) {
            screen.window.ChangeMainState(eMainStates(state));
            QVERIFY(QTest::qWaitFor([] { return !QApplication::activeModalWidget(); }, 10000));
            const eMainStates before = screen.window.mainState(); // an action may have gone on by itself
            screen.window.ChangeMainState(eStateSDCardRemoved);
            const eMainStates after = screen.window.mainState();
            switch (factsOf(before).removal) {
            case Removal::Restore:
                QCOMPARE(stateName(after), stateName(before));
                break;
            case Removal::EndRecording:
                QCOMPARE(after, eStateLive);
                break;
            default:
                QCOMPARE(stateName(after), stateName(eStatePlaybackNothingSaved));
                break;
            }
            QVERIFY2(shownButtons(screen) == CardButtons{}, stateName(before));
            QVERIFY2(openOnCard().isEmpty(), stateName(before));
        }
        QCOMPARE(no.mostAtOnce(), 1);
    }

    void aCardPulledFromAFilmIsFreeAtOnce()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        screen.touch(40, 485);
        QTRY_VERIFY(!openOnCard().isEmpty());
        const Cancelling no(screen.window);
        QElapsedTimer clock;
        clock.start();
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(openOnCard().isEmpty(), 10000);
        qInfo() << "nothing open on the card after" << clock.elapsed() << "ms";
        QVERIFY(clock.elapsed() < 5000);
        QVERIFY(isQuiet(screen.window, eStateLive));
        QTRY_VERIFY(no.answered() > 0);
        QVERIFY(shownButtons(screen) == CardButtons{});
        QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled, 20000);
        QVERIFY((shownButtons(screen) == CardButtons{true, true, true, true}));
        captureWorks(screen);
    }

    // The log tells a partition again and again, or an insertion comes while a film is being recorded.
    void aPartitionLineInAFilmChangesNoButton()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        screen.touch(40, 485);
        QTRY_COMPARE(screen.window.mainState(), eStateLiveSavingMovie);
        appendToLog(" mmcblk1: p1\n");
        QVERIFY(QTest::qWaitFor([&] { return screen.window.mainState() == eStateLiveSavingMovie; }));
        QTRY_VERIFY(quint64(QFileInfo(unit::path(u"/var/log/messages"_s)).size()) ==
                    params::getInstance()->getParams().lastMessageLogLocation);
        QVERIFY(isQuiet(screen.window, eStateLiveSavingMovie));
        // No host gets the card while the film is written to it.
        QCOMPARE(screen.folder.content(u"/var/log/commands"_s).count("modprobe"), 1);
        QVERIFY((shownButtons(screen) == CardButtons{true, false, false, true}));
        screen.touch(40, 485);
        QVERIFY((shownButtons(screen) == CardButtons{true, true, true, true}));
    }

    // While the question for a damaged card stands, the card goes and comes: no second question, everything
    // works afterwards.
    void questionsDoNotPileUp()
    {
        Screen screen;
        screen.waitForCard();
        std::optional<Cancelling> no;
        QTimer hands; // at work while the question stands
        connect(&hands, &QTimer::timeout, &screen.window, [&] {
            if (no || !QApplication::activeModalWidget())
                return;
            screen.folder.control({u"card"_s, u"remove"_s});
            screen.folder.control({u"card"_s, u"insert"_s});
            no.emplace(screen.window);
        });
        hands.start(50);
        screen.folder.control({u"card"_s, u"corrupt"_s});
        QTRY_VERIFY_WITH_TIMEOUT(no, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled &&
                                     screen.window.mainState() == eStateLive,
                                 20000);
        QVERIFY(no->mostAtOnce() <= 1);
        captureWorks(screen);
    }

    void aFloodOfMessagesLeavesThePictureItsTurn()
    {
        Screen screen;
        screen.waitForCard();
        auto *label = screen.window.findChild<PictureLabel *>(u"labelInputVideo"_s);
        int painted = 0;
        connect(label, &PictureLabel::framePainted, &screen.window, [&] { ++painted; });
        QByteArray flood;
        for (int i = 0; i < 100000; ++i)
            flood += "Nov 25 01:00:00 tubix4-001 kernel: [ 1234.5678] usb 1-1: reset high-speed USB device\n";
        flood += QByteArray(1 << 20, 'x') + '\n';
        appendToLog(flood + "mmc1: card b368 removed\n");
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isEnabled(), 30000);
        qInfo() << "flood read in" << clock.elapsed() << "ms," << painted << "frames painted";
        QVERIFY(painted > 0);
        QVERIFY(isQuiet(screen.window, eStateLive));
    }

    void aReplacedLogIsFollowed()
    {
        Screen screen;
        screen.waitForCard();
        const QString log = unit::path(u"/var/log/messages"_s);
        QVERIFY(QFile::rename(log, log + u".0"_s));
        screen.folder.put(u"/var/log/messages"_s, "rotated\n");
        QTRY_COMPARE(params::getInstance()->getParams().lastMessageLogLocation, quint64(8));
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isEnabled(), 15000);
        screen.folder.put(u"/var/log/messages"_s, ""); // cut in place
        QTRY_COMPARE(params::getInstance()->getParams().lastMessageLogLocation, quint64(0));
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY_WITH_TIMEOUT(screen.button("btn_menu_Capture")->isEnabled(), 15000);
    }

    void aHostTakesTheScreenFromTheBrowser()
    {
        Screen screen;
        screen.waitForCard();
        captureWorks(screen);
        screen.touch(40, 559);
        QTRY_COMPARE(screen.window.mainState(), eStatePlaybackThumbnailsSelectable);
        screen.folder.control({u"usb"_s, u"attach"_s});
        QTRY_COMPARE_WITH_TIMEOUT(screen.window.mainState(), eStateUsbActive, 10000);
        QVERIFY(!screen.button("btn_menu_ThumbnailBack")->isVisible());
        // Pulled under the host: nobody is left to wait for.
        screen.folder.control({u"card"_s, u"remove"_s});
        QVERIFY(isQuiet(screen.window, eStateLive));
        QVERIFY(pictureRuns());
        QVERIFY(shownButtons(screen) == CardButtons{});
        screen.folder.control({u"usb"_s, u"detach"_s});
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled, 20000);
        captureWorks(screen);
    }

    void thePowerKeyEndsAFilmWholeAndOnce()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        screen.touch(40, 485);
        QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:01"_s);
        bool asked = false;
        QTimer::singleShot(0, &screen.window, [&] { // in the middle of a question
            asked = QApplication::activeModalWidget();
            for (int i = 0; i < 3; ++i) // a key that is held repeats
                screen.window.onProcessSystemShutdown();
        });
        screen.button("btn_DamageCatelog")->click();
        QVERIFY(asked);
        const auto powerOffs = [&] {
            return screen.folder.content(u"/var/log/commands"_s).count("poweroff");
        };
        QTRY_COMPARE_WITH_TIMEOUT(powerOffs(), 1, 20000);
        QCOMPARE(screen.events().filter(u"2,Shutdown power switch pressed"_s).size(), 1);
        QVERIFY(screen.folder.content(screen.logFile(u".txt"_s)).contains("--| TUBX0001.avi"));
        QVERIFY(openOnCard().isEmpty());
        QProcess tool;
        tool.start(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_entries"_s, u"format=duration"_s, u"-of"_s,
                                  u"csv=p=0"_s, unit::path(inCurrentFolder(u"TUBX0001.avi"_s))});
        QVERIFY(tool.waitForFinished());
        QVERIFY(tool.readAllStandardOutput().toDouble() > 0.8);
        QCOMPARE(tool.readAllStandardError(), QByteArray());
    }

    void aLostCameraLeavesNoDeadEnd()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"camera"_s, u"lost"_s});
        QTRY_COMPARE(screen.window.mainState(), eStateVideoInputPipelineFailure);
        QVERIFY((shownButtons(screen) == CardButtons{false, false, false, true}));
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT((shownButtons(screen) == CardButtons{}), 15000);
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY_WITH_TIMEOUT((shownButtons(screen) == CardButtons{false, false, false, true}), 15000);
        QVERIFY(isQuiet(screen.window, eStateVideoInputPipelineFailure));
        // The tools page is the way out.
        screen.folder.control({u"camera"_s, u"back"_s});
        screen.touch(40, 411);
        QTRY_VERIFY(screen.button("btn_menu_BackButton")->isVisible());
        screen.touch(40, 559);
        QVERIFY((shownButtons(screen) == CardButtons{true, true, true, true}));
        captureWorks(screen);
    }

    void anUpgradeIsOfferedAndCarriedOut_data()
    {
        QTest::addColumn<bool>("confirmed");
        QTest::newRow("confirmed") << true;
        QTest::newRow("declined") << false;
    }
    void anUpgradeIsOfferedAndCarriedOut()
    {
        QFETCH(const bool, confirmed);
        Screen screen;
        screen.waitForCard();
        QTemporaryDir made;
        QFile instructions(made.filePath(u"tubix4_update.txt"_s));
        QVERIFY(instructions.open(QIODevice::WriteOnly));
        instructions.write("MKDIR,,/home/root/newdir\n");
        instructions.close();
        const QString archive = unit::path(kDcimFolder + u"/TUBIX4UPDT504"_s);
        QCOMPARE(
            QProcess::execute(u"tar"_s, {u"-C"_s, made.path(), u"-cf"_s, archive, u"tubix4_update.txt"_s}),
            0);
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isEnabled(), 15000);
        int questions = 0;
        QTimer answer;
        connect(&answer, &QTimer::timeout, &screen.window, [&] {
            QWidget *box = QApplication::activeModalWidget();
            if (!box)
                return;
            ++questions;
            QVERIFY(!g_gst_Pipeline.pipeline);
            box->findChild<QPushButton *>(confirmed ? u"btn_Confirm"_s : u"btn_Cancel"_s)->click();
        });
        answer.start(100);
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled, 20000);
        QVERIFY(isQuiet(screen.window, eStateLive));
        QCOMPARE(questions, 1);
        QCOMPARE(QFileInfo(unit::path(u"/home/root/newdir"_s)).isDir(), confirmed);
        QCOMPARE(QFileInfo::exists(archive), !confirmed);
        QCOMPARE(screen.folder.content(u"/var/log/commands"_s).count("poweroff"), confirmed ? 1 : 0);
        captureWorks(screen);
    }

    void fiftyEventsLeaveAWorkingUnit()
    {
        Screen screen;
        screen.waitForCard();
        captureWorks(screen);
        QRandomGenerator random(4711);
        {
            const Cancelling no(screen.window);
            const QList<QStringList> events = {{u"card"_s, u"insert"_s},
                                               {u"card"_s, u"remove"_s},
                                               {u"card"_s, u"corrupt"_s},
                                               {u"usb"_s, u"attach"_s},
                                               {u"usb"_s, u"detach"_s}};
            for (int i = 0; i < 50; ++i) {
                if (random.bounded(3) == 0)
                    screen.touch(40, 41 + 74 * random.bounded(8));
                else
                    screen.folder.control(events[random.bounded(events.size())]);
                QTest::qWait(random.bounded(400));
            }
            screen.folder.control({u"usb"_s, u"detach"_s});
            screen.folder.control({u"card"_s, u"remove"_s});
            QTRY_VERIFY_WITH_TIMEOUT(shownButtons(screen) == CardButtons{}, 30000);
            // Whatever page it is, the button at the bottom left leads back.
            for (int i = 0; i < 10 && screen.window.mainState() != eStateLive; ++i) {
                screen.touch(40, 559);
                QTest::qWait(500);
            }
            QVERIFY2(isQuiet(screen.window, eStateLive), stateName(screen.window.mainState()));
            QVERIFY(no.mostAtOnce() <= 1);
            screen.folder.control({u"card"_s, u"insert"_s});
            QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled, 20000);
        }
        captureWorks(screen);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestEvents>(argc, argv);
}
#include "test_events.moc"
