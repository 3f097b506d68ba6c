// What the unit shows as saved is saved, whole, and of this moment: in a world that is slower and rougher.
#include "app/screen.h"

#include "../../simulator/camera/colourchart.h"

using namespace Qt::StringLiterals;

namespace {

QString filmFile()
{
    return unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
}

// Answers every box, and counts them.
class Boxes
{
public:
    explicit Boxes(MainWindow &window)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &window, [this] {
            if (auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                ++m_count;
                box->reject();
            }
        });
        m_timer.start(20);
    }
    int count() const { return m_count; }

private:
    QTimer m_timer;
    int m_count = 0;
};

} // namespace

class TestTruth : public HeardTest
{
    Q_OBJECT

    // Exactly one start and one end, and the film is whole.
    static void hasOneWholeFilm(const Screen &screen)
    {
        QCOMPARE(screen.log().count("|-- TUBX"), 1);
        QCOMPARE(screen.log().count("--| TUBX0001.avi"), 1);
        QVERIFY(QFileInfo(filmFile()).size() > 0);
        QCOMPARE(faultsOf(filmFile()), QByteArray());
    }

private slots:
    // A short film's bytes are all written at its end.
    void aFilmWhoseEndCannotBeWrittenIsNotCalledSaved_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("a card that takes nothing more") << u"EIO"_s;
        QTest::newRow("one write that fails") << u"ENOSPC once"_s;
    }

    void aFilmWhoseEndCannotBeWrittenIsNotCalledSaved()
    {
        QFETCH(const QString, fault);
        Screen screen;
        const Boxes boxes(screen.window);
        screen.startFilm();
        QTRY_COMPARE_WITH_TIMEOUT(screen.window.mainState(), eStateLiveSavingMovie, 30000);
        if (fault.endsWith(u"once"_s))
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(filmFile()).size() > 0, 30000); // its header is written
        screen.folder.control(u"card error %1"_s.arg(fault).split(u' '));
        screen.touch(40, 485);
        QTRY_COMPARE_WITH_TIMEOUT(boxes.count(), 1, 30000);
        screen.folder.control("card error none"_L1);
        QTRY_COMPARE_WITH_TIMEOUT(screen.window.mainState(), eStateLive, 30000);
    }

    // The buffer still holds the pipe when the chart stands before a camera that takes its time.
    void aStillWaitsForThePictureOfItsMoment()
    {
        Screen screen;
        screen.folder.control("camera pipe"_L1);
        screen.waitForCard();
        screen.touch(40, 411);
        QTRY_COMPARE(screen.window.mainState(), eStateToolsMenu);
        screen.folder.control({u"camera"_s, u"chart"_s});
        screen.folder.control({u"camera"_s, u"delay"_s, u"0.8"_s});
        screen.touch(40, 559);
        QTRY_COMPARE(screen.window.mainState(), eStateLive);
        QVERIFY(screen.isVisible("lbl_BusyIcon"));
        QCOMPARE(screen.find<QLabel>("labelInputVideo")->grab().toImage().pixelColor(360, 288),
                 QColor(Qt::black));
        screen.touch(40, 485);
        QVERIFY(!exists(inCurrentFolder(u"TUBX0001.jpg"_s)));
        QTRY_VERIFY(exists(inCurrentFolder(u"TUBX0001.jpg"_s)));
        const QImage still(unit::path(inCurrentFolder(u"TUBX0001.jpg"_s)));
        const QColor red = still.pixelColor(pipecam::patchX(6), pipecam::patchY(6) + 24); // below the band
        QVERIFY2(red.red() > 220 && red.green() < 40, qPrintable(red.name()));
    }

    void aCaptureHasAPlaceOrIsNone()
    {
        Screen screen;
        screen.waitForCard();
        const QString folder = unit::path(g_SavedFSInfo.currRootDirectory);
        QVERIFY(QDir().rename(folder, folder + u" at the office"_s));
        screen.touch(40, 485); // the folder is made again
        QTRY_VERIFY(exists(inCurrentFolder(u"TUBX0001.jpg"_s)));
        QVERIFY(screen.log(".html").contains("TUBX0001.jpg"));
        QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
        // The mount goes, without a word: what is left is a folder of the unit's own.
        QProcess::execute(unit::path(u"/usr/bin/umount"_unit), {u"/media/mmcblk1p1"_s});
        const Boxes boxes(screen.window);
        screen.touch(40, 485);
        QTRY_COMPARE(boxes.count(), 1);
        screen.settings().CaptureMode = eVideoCapture;
        screen.touch(40, 485);
        QTRY_COMPARE(boxes.count(), 2);
        QCOMPARE(screen.window.mainState(), eStateLive);
        QVERIFY(QDir(unit::path(u"/media/mmcblk1p1"_unit)).isEmpty());
        QCOMPARE(int(g_SavedFSInfo.currDCIMIndex), 2);
    }

    void aCardThatMountsLateIsTaken()
    {
        Screen screen;
        screen.waitForCard();
        screen.removeCard();
        screen.folder.control({u"card"_s, u"delay"_s, u"2"_s});
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY(!screen.settings().MSDC_ModuleInstalled &&
                    !screen.button("btn_menu_Capture")->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(screen.button("btn_menu_Capture")->isEnabled(), 20000);
        QVERIFY(exists(g_SavedFSInfo.currRootDirectory));
    }

    void aFilmEndedBeforeItsFirstPictureIsAFilm()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"camera"_s, u"delay"_s, u"0.8"_s});
        screen.startFilm();
        screen.touch(40, 485); // nothing has come yet
        QVERIFY(screen.log().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(screen.window.mainState(), eStateLive, 20000);
        hasOneWholeFilm(screen);
    }

    void whateverEndsTheProgramEndsTheFilm()
    {
        Screen screen;
        screen.startFilm();
        screen.waitForFilmAt("00:00:01");
        screen.window.closeOpenRecords();
        hasOneWholeFilm(screen);
    }

    // Stop is touched in the moment in which the card is found full.
    void aFullCardEndsTheFilmOnce()
    {
        Screen screen;
        screen.startFilm();
        screen.waitForFilmAt("00:00:02");
        const Boxes boxes(screen.window);
        const qint64 size = QFileInfo(filmFile()).size();
        screen.folder.control({u"card"_s, u"full"_s});
        screen.touch(40, 485);
        QTRY_COMPARE(screen.window.mainState(), eStateLive);
        QVERIFY(screen.pictureRuns());
        QCOMPARE(boxes.count(), 1);
        QVERIFY(QFileInfo(filmFile()).size() >= size);
        hasOneWholeFilm(screen);
    }

    // Chosen in one film, left behind, not burnt into the next.
    void aFilmCarriesTheDamageThatTheScreenShows()
    {
        Screen screen;
        screen.startFilm();
        screen.waitForFilmAt("00:00:01");
        whenOpen([](QDialog *catalog) {
            catalog->findChild<QListWidget *>()->setCurrentRow(2);
            touchIn(catalog, u"btn_DamageCatelog_Confirm"_s);
        });
        screen.button("btn_DamageCatelog")->click();
        QVERIFY(!screen.text("lbl_DamageCatelogText").isEmpty());
        screen.touch(40, 485);
        QTRY_COMPARE(screen.window.mainState(), eStateLive);
        screen.folder.control({u"meter"_s, u"9.00"_s});
        QTRY_VERIFY(screen.text("lbl_DamageCatelogText").isEmpty());
        QVERIFY(screen.pictureRuns());
        screen.touch(40, 485);
        QTRY_COMPARE(screen.window.mainState(), eStateLiveSavingMovie);
        gchar *text = nullptr;
        g_object_get(g_gst_Pipeline.damageCatelog, "text", &text, nullptr);
        QCOMPARE(QByteArray(text), QByteArray());
        g_free(text);
    }

    void aPowerOffThatFailsGivesTheUnitBack()
    {
        Screen screen;
        screen.folder.control({u"command"_s, u"poweroff"_s, u"fail"_s});
        screen.startFilm();
        screen.waitForFilmAt("00:00:01");
        for (int tries = 1; tries <= 2; ++tries) {
            screen.window.onProcessSystemShutdown();
            QTRY_COMPARE(screen.commands().count("poweroff"), tries);
            QTRY_COMPARE(screen.window.mainState(), eStateLive);
            QVERIFY(screen.pictureRuns());
        }
        hasOneWholeFilm(screen);
        screen.settings().CaptureMode = eStillImageCapture;
        screen.touch(40, 485);
        QTRY_VERIFY(exists(inCurrentFolder(u"TUBX0002.jpg"_s)));
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestTruth>(argc, argv);
}
#include "test_truth.moc"
