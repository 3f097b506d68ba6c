#include "app/screen.h"

#include "film/avirepair.h"
#include "film/filmlimit.h"

#include <QDirIterator>
#include <QFileInfo>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

// Arguments of a process of this program that is going to be killed, and of one that repairs what it left.
constexpr char kRecordOnly[] = "--record";
constexpr char kRepairOnly[] = "--repair"; // and the film

QString firstFilmBelow(const QString &folder)
{
    QDirIterator files(folder, {u"TUBX0001.avi"_s}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    return files.hasNext() ? files.next() : QString();
}

void stopFilm(Screen &screen)
{
    screen.touch(40, 485);
    QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
}

int recordUntilKilled()
{
    Screen screen;
    screen.startFilm();
    return QApplication::exec();
}

} // namespace

class TestFilms : public HeardTest
{
    Q_OBJECT

private slots:
    void aKilledProgramsFilmIsWholeAfterTheNextStart()
    {
        const QTemporaryDir place;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, place.path());
        QProcess program, again;
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kRecordOnly)});
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(firstFilmBelow(place.path())).size() > 1500000, 60000);
        ::kill(pid_t(program.processId()), SIGKILL);
        QVERIFY(program.waitForFinished());
        const QString film = firstFilmBelow(place.path());
        unit::setRoot(u"/"_s);
        QVERIFY(avirepair::isCutOff(onHost(film)));

        again.setProcessEnvironment(environment);
        again.start(QStringLiteral(TUBIX_BINARY), {u"--root"_s, film.section(u"/media/"_s, 0, 0)});
        const QString thumbnail = QFileInfo(film).path() + u"/.thumbs/TUBX0001.jpg"_s;
        QTRY_VERIFY_WITH_TIMEOUT(!QImage(thumbnail).isNull(), 30000);
        again.terminate();
        QVERIFY(again.waitForFinished());

        QVERIFY(!avirepair::isCutOff(onHost(film)));
        const double pictures = duration(film, "v:0");
        QVERIFY2(pictures > 1, qPrintable(QString::number(pictures)));
        QVERIFY(std::abs(duration(film, "a:0") - pictures) < 1); // what was on its way is lost
        QCOMPARE(faultsOf(film), QByteArray());
    }

    void aLongFilmGoesOnUnderTheNextNumber()
    {
        Screen screen;
        filmlimit::setForTests(800000);
        screen.startFilm();
        const HostPath first = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        const HostPath second = unit::path(inCurrentFolder(u"TUBX0002.avi"_s));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(second).size() > 0, 60000);
        filmlimit::setForTests(0);
        QVERIFY(!screen.button("btn_menu_Tools")->isEnabled());
        QVERIFY(screen.text("lbl_VideoLengthIndicator") >= u"00:00:01"_s); // runs on
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(second).size() > 500000, 60000);
        stopFilm(screen);
        qsizetype row = -1;
        const QByteArray log = screen.log();
        for (const char *number : {"1", "2"}) {
            const QString name = u"TUBX000"_s + QLatin1String(number);
            const HostPath film = unit::path(inCurrentFolder(name + u".avi"_s));
            QVERIFY(!avirepair::isCutOff(film) && duration(film, "v:0") > 0.5);
            QVERIFY(exists(inCurrentFolder(u".thumbs/"_s + name + u".jpg"_s)));
            for (const char *sign : {"|-- ", "--| "}) {
                const qsizetype next = log.indexOf(sign + name.toLatin1());
                QVERIFY(next > row);
                row = next;
            }
        }
        const HostPath thumbnail = unit::path(inCurrentFolder(u".thumbs/TUBX0002.jpg"_s));
        QVERIFY(QFile::resize(thumbnail, 0)); // a card pulled too soon
        screen.removeCard();
        screen.insertCard();
        QTRY_VERIFY(!QImage(thumbnail).isNull());
    }

    void aFilmEndsInOrder_data()
    {
        QTest::addColumn<QStringList>("event");
        QTest::newRow("full card") << QStringList{u"card"_s, u"full"_s};
        QTest::newRow("lost camera") << QStringList{u"camera"_s, u"lost"_s};
    }
    void aFilmEndsInOrder()
    {
        QFETCH(const QStringList, event);
        const bool isFull = event.last() == u"full"_s;
        Screen screen;
        screen.startFilm();
        const HostPath film = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        screen.waitForFilmAt("00:00:02");
        bool told = false;
        if (isFull) {
            whenOpen([&](QDialog *box) {
                told = !avirepair::isCutOff(film);
                touchIn(box, u"btn_Cancel"_s);
            });
        }
        screen.folder.control(event);
        QTRY_VERIFY_WITH_TIMEOUT(isFull ? told : g_gst_VideoPipelineMode == eGSTStateError, 20000);
        QVERIFY(!avirepair::isCutOff(film));
        QVERIFY(duration(film, "v:0") > 1);
        if (isFull) {
            QVERIFY(exists(inCurrentFolder(u".thumbs/TUBX0001.jpg"_s)));
            QVERIFY(Screen::pictureRuns());
        } else {
            QVERIFY(screen.log().contains("--| TUBX0001.avi"));
            QTRY_VERIFY(screen.shows("critical_system_error_bg.png"));
            g_gst_VideoPipelineMode = eGSTStateLiveVideo;
        }
    }

    void filmAfterFilmLeavesNothingBehind()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        qsizetype threads = 0, descriptors = 0;
        for (int i = 0; i < 4; ++i) {
            gst_EnableAudioRecording(i % 2);
            screen.touch(40, 485);
            screen.waitForFilmAt("00:00:01");
            stopFilm(screen);
            QVERIFY(Screen::pictureRuns());
            if (i < 2) {
                threads = std::max(threads, entriesIn(u"/proc/self/task"_s));
                descriptors = std::max(descriptors, entriesIn(u"/proc/self/fd"_s));
            }
        }
        QTRY_VERIFY(entriesIn(u"/proc/self/task"_s) <= threads);
        QTRY_VERIFY(entriesIn(u"/proc/self/fd"_s) <= descriptors);
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], kRepairOnly) == 0)
        return avirepair::repair(onHost(QFile::decodeName(argv[2]))) ? 0 : 1;
    if (argc == 2 && qstrcmp(argv[1], kRecordOnly) == 0) {
        const TestUnit folder;
        params::resetForTests();
        UnitApplication application(argc, argv);
        return recordUntilKilled();
    }
    return runAppTest<TestFilms>(argc, argv);
}
#include "test_films.moc"
