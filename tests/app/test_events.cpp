// What card, USB host, power key and battery do to every screen (docs/events.md).
#include "app/screen.h"

#include "app/picturelabel.h"
#include "storage/sdcard.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <set>
#include <vector>

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
        m_timer.start(5);
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
            target.startsWith(unit::path(u"/.simulator/card"_unit)))
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

bool isQuiet(const MainWindow &window, eMainStates state)
{
    return QTest::qWaitFor([&] { return window.mainState() == state && !QApplication::activeModalWidget(); },
                           20000);
}

// A touch on the capture button still leaves a picture on the card.
void captureWorks(Screen &screen)
{
    QVERIFY(isQuiet(screen.window, eStateLive));
    QVERIFY(Screen::pictureRuns());
    Screen::settings().CaptureMode = eStillImageCapture;
    const QDir folder(unit::path(g_SavedFSInfo.currRootDirectory));
    const qsizetype before = folder.entryList({u"TUBX*.jpg"_s}).size();
    screen.touch(40, 485);
    QTRY_COMPARE(folder.entryList({u"TUBX*.jpg"_s}).size(), before + 1);
    QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
}

void appendToLog(const QByteArray &text)
{
    QFile log(unit::path(u"/var/log/messages"_unit));
    QVERIFY(log.open(QIODevice::Append));
    log.write(text);
}

} // namespace

// A card pulled in these leaves another screen: they have a file of it open, or show what lies on it.
const std::set<int> kEnded = {8,  9,  14, 15, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27,
                              28, 30, 34, 36, 37, 38, 39, 40, 41, 42, 43, 51, 52};

class TestEvents : public HeardTest
{
    Q_OBJECT

private slots:
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
            const bool records = factsOf(before).screen == ScreenKind::Recording;
            const eMainStates after = !kEnded.contains(before) ? before
                                      : records                ? eStateLive
                                                               : eStatePlaybackNothingSaved;
            QCOMPARE(stateName(screen.window.mainState()), stateName(after));
            QVERIFY2(shownButtons(screen) == CardButtons{}, stateName(before));
            QVERIFY2(openOnCard().isEmpty(), stateName(before));
        }
        QCOMPARE(no.mostAtOnce(), 1);
    }

    void aCardPulledFromAFilmIsFreeBeforeItIsTold()
    {
        Screen screen;
        screen.startFilm();
        QTRY_VERIFY(!openOnCard().isEmpty());
        QStringList open{u"not told"_s};
        whenOpen([&](QDialog *told) {
            open = openOnCard();
            told->reject();
        });
        screen.removeCard();
        QTRY_COMPARE(open, QStringList());
        QVERIFY(isQuiet(screen.window, eStateLive));
        QVERIFY(shownButtons(screen) == CardButtons{});
        QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
        screen.insertCard();
        QVERIFY((shownButtons(screen) == CardButtons{true, true, true, true}));
        captureWorks(screen);
    }

    // Cut off by an event, the pop-up of a still would leave the buttons beside it dead.
    void aPopUpGetsTheRestOfItsTime()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 485);
        appendToLog("mmc1: card b368 removed\n");
        screen.window.onLogfileChanged(unit::path(u"/var/log/messages"_unit));
        QVERIFY(shownButtons(screen) == CardButtons{});
        QCOMPARE(screen.window.mainState(), eStateCaptureWindowEntry);
        QTRY_COMPARE(screen.window.mainState(), eStateLive);
        QVERIFY(screen.isTouchable("btn_menu_zoom_plus"));
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
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isEnabled(), 60000);
        QVERIFY(painted > 0);
        QVERIFY(isQuiet(screen.window, eStateLive));
    }

    void aReplacedLogIsFollowed()
    {
        Screen screen;
        screen.waitForCard();
        const QString log = unit::path(u"/var/log/messages"_unit);
        QVERIFY(QFile::rename(log, log + u".0"_s));
        screen.folder.put(u"/var/log/messages"_s, "rotated\n");
        QTRY_COMPARE(Screen::settings().lastMessageLogLocation, quint64(8));
        screen.removeCard();
        screen.folder.put(u"/var/log/messages"_s, ""); // cut in place
        QTRY_COMPARE(Screen::settings().lastMessageLogLocation, quint64(0));
        screen.insertCard();
        QCOMPARE(screen.commands().count("modprobe g_mass_storage file=/dev/mmcblk1p1 removable=y"), 2);
    }

    void aHostTakesTheScreenFromTheBrowser()
    {
        Screen screen;
        screen.waitForCard();
        captureWorks(screen);
        screen.touch(40, 559);
        QTRY_COMPARE(screen.window.mainState(), eStatePlaybackThumbnailsSelectable);
        screen.attachHost();
        QCOMPARE(screen.window.mainState(), eStateUsbActive);
        QVERIFY(!screen.button("btn_menu_ThumbnailBack")->isVisible());
        // Gone again, perhaps without a word: the card is checked before it is written to.
        screen.attachHost(false);
        QVERIFY(screen.commands().contains("mount -t tubix4card /dev/mmcblk1p1 /media/mmcblk1p1\n"));
        captureWorks(screen);
        screen.attachHost();
        // Pulled under the host: nobody is left to wait for.
        screen.folder.control({u"card"_s, u"remove"_s});
        QVERIFY(isQuiet(screen.window, eStateLive));
        QVERIFY(Screen::pictureRuns());
        QVERIFY(shownButtons(screen) == CardButtons{});
        screen.attachHost(false);
        screen.insertCard();
        captureWorks(screen);
    }

    void thePowerKeyEndsAFilmWholeAndOnce()
    {
        Screen screen;
        screen.startFilm();
        screen.waitForFilmAt("00:00:01");
        bool asked = false;
        QTimer::singleShot(0, &screen.window, [&] { // in the middle of a question
            asked = QApplication::activeModalWidget();
            for (int i = 0; i < 3; ++i) // a key that is held repeats
                screen.window.onProcessSystemShutdown();
        });
        screen.button("btn_DamageCatelog")->click();
        QVERIFY(asked);
        QTRY_COMPARE_WITH_TIMEOUT(screen.commands().count("poweroff"), 1, 20000);
        QCOMPARE(screen.events().filter(u"2,Shutdown power switch pressed"_s).size(), 1);
        QVERIFY(screen.log().contains("--| TUBX0001.avi"));
        QVERIFY(openOnCard().isEmpty());
        const HostPath film = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        QVERIFY(duration(film, "v:0") > 0.8);
        QCOMPARE(faultsOf(film), QByteArray());
    }

    void aLostCameraLeavesNoDeadEnd()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"camera"_s, u"lost"_s});
        QTRY_COMPARE(screen.window.mainState(), eStateVideoInputPipelineFailure);
        QVERIFY(screen.shows("critical_system_error_bg.png"));
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
        screen.folder.put(u"/tmp/tubix4_update.txt"_s, "MKDIR,,/home/root/newdir\n");
        const UnitPath archive = kDcimFolder / u"TUBIX4UPDT504"_s;
        QCOMPARE(
            output("tar -C %1 -cf %2 tubix4_update.txt", {unit::path(u"/tmp"_unit), unit::path(archive)}),
            QByteArray());
        screen.removeCard();
        bool asked = false;
        whenOpen([&](QDialog *box) {
            asked = !g_gst_Pipeline.pipeline;
            touchIn(box, confirmed ? u"btn_Confirm"_s : u"btn_Cancel"_s);
        });
        screen.insertCard();
        QVERIFY(isQuiet(screen.window, eStateLive));
        QVERIFY(asked);
        QCOMPARE(exists(u"/home/root/newdir"_s), confirmed);
        QCOMPARE(exists(archive), !confirmed);
        QCOMPARE(screen.commands().count("poweroff"), confirmed ? 1 : 0);
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
            const QStringList events[] = {{u"card"_s, u"insert"_s},
                                          {u"card"_s, u"remove"_s},
                                          {u"card"_s, u"corrupt"_s},
                                          {u"usb"_s, u"attach"_s},
                                          {u"usb"_s, u"detach"_s}};
            for (int i = 0; i < 50; ++i) {
                if (random.bounded(3) == 0)
                    screen.touch(40, 41 + 74 * random.bounded(8));
                else
                    screen.folder.control(events[random.bounded(int(std::size(events)))]);
                for (int turns = random.bounded(20); turns > 0; --turns) // more or less of it is taken
                    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            }
            screen.folder.control({u"usb"_s, u"detach"_s});
            screen.folder.control({u"card"_s, u"remove"_s});
            QTRY_VERIFY_WITH_TIMEOUT(shownButtons(screen) == CardButtons{}, 30000);
            // Whatever page it is, the button at the bottom left leads back.
            for (int i = 0; i < 10 && screen.window.mainState() != eStateLive; ++i) {
                screen.touch(40, 559);
                (void)QTest::qWaitFor([&] { return screen.window.mainState() == eStateLive; }, 500);
            }
            QVERIFY2(isQuiet(screen.window, eStateLive), stateName(screen.window.mainState()));
            QVERIFY(no.mostAtOnce() <= 1);
            screen.folder.control({u"card"_s, u"insert"_s});
            QTRY_VERIFY_WITH_TIMEOUT(Screen::settings().MSDC_ModuleInstalled, 20000);
        }
        captureWorks(screen);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestEvents>(argc, argv);
}
#include "test_events.moc"
