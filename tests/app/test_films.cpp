#include "app/screen.h"

#include "film/avirepair.h"
#include "film/filmlimit.h"
#include "storage/inspectionlog.h"

#include <QDialog>
#include <QDirIterator>
#include <QFileInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

// Arguments of a process of this program that is going to be killed, and of one that repairs what it left.
constexpr char kRecordOnly[] = "--record";
constexpr char kRepairOnly[] = "--repair"; // and the film

QByteArray output(const QString &program, const QStringList &arguments)
{
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.start(program, arguments);
    tool.waitForFinished(60000);
    return tool.readAll();
}

double duration(const QString &film, const QString &stream)
{
    return output(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-select_streams"_s, stream, u"-show_entries"_s,
                                 u"stream=duration"_s, u"-of"_s, u"csv=p=0"_s, film})
        .trimmed()
        .toDouble();
}

void startFilm(Screen &screen)
{
    screen.waitForCard();
    screen.touch(40, 337); // video mode
    screen.touch(40, 485);
}

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

qsizetype entriesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
}

int recordUntilKilled()
{
    Screen screen;
    startFilm(screen);
    return QApplication::exec();
}

} // namespace

class TestFilms : public QObject
{
    Q_OBJECT

private slots:
    void aKilledProgramsFilmIsWholeAfterTheNextStart()
    {
        const QTemporaryDir place;
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, place.path());
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kRecordOnly)});
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(firstFilmBelow(place.path())).size() > 3000000, 60000);
        ::kill(pid_t(program.processId()), SIGKILL);
        QVERIFY(program.waitForFinished());
        const QString film = firstFilmBelow(place.path());
        QVERIFY(avirepair::isCutOff(film));
        QCOMPARE(duration(film, u"v:0"_s), 0.0);

        QProcess again;
        again.setProcessEnvironment(environment);
        again.start(QStringLiteral(TUBIX_BINARY), {u"--root"_s, film.section(u"/media/"_s, 0, 0)});
        const QString thumbnail = QFileInfo(film).path() + u"/.thumbs/TUBX0001.jpg"_s;
        QTRY_VERIFY_WITH_TIMEOUT(!QImage(thumbnail).isNull(), 30000);
        again.terminate();
        QVERIFY(again.waitForFinished());

        QVERIFY(!avirepair::isCutOff(film));
        const double pictures = duration(film, u"v:0"_s);
        QVERIFY2(pictures > 2, qPrintable(QString::number(pictures)));
        QVERIFY(std::abs(duration(film, u"a:0"_s) - pictures) < 1); // what was on its way is lost
        QCOMPARE(output(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, film, u"-f"_s, u"null"_s, u"-"_s}),
                 QByteArray());
    }

    void aLongFilmGoesOnUnderTheNextNumber()
    {
        Screen screen;
        filmlimit::setForTests(1500000);
        startFilm(screen);
        const QString first = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        const QString second = unit::path(inCurrentFolder(u"TUBX0002.avi"_s));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(second).size() > 0, 60000);
        filmlimit::setForTests(0);
        const QDateTime closed = QFileInfo(first).lastModified();
        QVERIFY(!screen.button("btn_menu_Tools")->isEnabled());
        QVERIFY(screen.text("lbl_VideoLengthIndicator") >= u"00:00:01"_s); // runs on
        QTRY_VERIFY(QFileInfo(second).size() > 1000000);
        const QDateTime stopped = QDateTime::currentDateTime();
        stopFilm(screen);
        const double gap = double(closed.msecsTo(stopped)) / 1000 - duration(second, u"v:0"_s);
        QVERIFY2(gap < 1, qPrintable(QString::number(gap)));
        for (const QString &film : {first, second})
            QVERIFY(!avirepair::isCutOff(film) && duration(film, u"v:0"_s) > 0.5);
        QVERIFY(QFileInfo::exists(unit::path(inCurrentFolder(u".thumbs/TUBX0001.jpg"_s))));
        const QString thumbnail = unit::path(inCurrentFolder(u".thumbs/TUBX0002.jpg"_s));
        QVERIFY(QFileInfo::exists(thumbnail));
        const QByteArray log = screen.folder.content(screen.logFile(u".txt"_s));
        const qsizetype rows[] = {log.indexOf("|-- TUBX0001.avi"), log.indexOf("--| TUBX0001.avi"),
                                  log.indexOf("|-- TUBX0002.avi"), log.indexOf("--| TUBX0002.avi")};
        QVERIFY(rows[0] >= 0 && std::is_sorted(std::begin(rows), std::end(rows)));
        QVERIFY(QFile::resize(thumbnail, 0)); // a card pulled too soon
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY(!screen.button("btn_menu_Capture")->isEnabled());
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY(!QImage(thumbnail).isNull());
    }

    void aFullCardEndsTheFilmInOrder()
    {
        Screen screen;
        startFilm(screen);
        const QString film = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:02"_s);
        bool told = false;
        QTimer answer;
        QObject::connect(&answer, &QTimer::timeout, [&] {
            if (auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                told = !avirepair::isCutOff(film);
                QTest::mouseClick(box->findChild<QPushButton *>(u"btn_Cancel"_s), Qt::LeftButton);
            }
        });
        answer.start(100);
        screen.folder.control({u"card"_s, u"full"_s});
        QTRY_VERIFY_WITH_TIMEOUT(told, 20000);
        QTRY_VERIFY(g_gst_Pipeline.videocrop);
        QVERIFY(duration(film, u"v:0"_s) > 1);
        QVERIFY(QFileInfo::exists(unit::path(inCurrentFolder(u".thumbs/TUBX0001.jpg"_s))));
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
    }

    void aLostCameraEndsTheFilmInOrder()
    {
        Screen screen;
        startFilm(screen);
        const QString film = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:02"_s);
        screen.folder.control({u"camera"_s, u"lost"_s});
        QTRY_COMPARE_WITH_TIMEOUT(g_gst_VideoPipelineMode, eGSTStateError, 20000);
        QVERIFY(!avirepair::isCutOff(film));
        QVERIFY(duration(film, u"v:0"_s) > 1);
        QVERIFY(screen.folder.content(screen.logFile(u".txt"_s)).contains("--| TUBX0001.avi"));
        auto *label = screen.window.findChild<QLabel *>(u"labelInputVideo"_s);
        const QImage critical(u":/MyGraphicResources/graphics/critical_system_error_bg.png"_s);
        QTRY_COMPARE(label->grab().toImage().pixelColor(360, 288), critical.pixelColor(360, 288));
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    }

    void theStreamComesBackAfterAFilmAndIsSwitchedOffWhenItCannot()
    {
        Screen screen;
        quint8 &streaming = params::getInstance()->getParams().bNetworkStreaming;
        streaming = 1;
        g_gst_VideoPipelineMode = eGSTStateStreaming;
        startFilm(screen);
        QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:01"_s);
        stopFilm(screen);
        QVERIFY(g_gst_Pipeline.videoStreamSink);
        QVERIFY(streaming);
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);

        gst_SetNetworkStreamingIPAddress("");
        gst_VideoInputPipeline(0);
        QTRY_VERIFY(!streaming);
        QTRY_VERIFY(g_gst_Pipeline.videocrop);
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
    }

    void filmAfterFilmLeavesNothingBehind()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        qsizetype threads = 0, descriptors = 0;
        for (int i = 0; i < 6; ++i) {
            gst_EnableAudioRecording(i % 2);
            screen.touch(40, 485);
            QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:01"_s);
            stopFilm(screen);
            const int before = nBuffers;
            QTRY_VERIFY(nBuffers > before + 3);
            if (i < 3) {
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
        return avirepair::repair(QFile::decodeName(argv[2])) ? 0 : 1;
    if (argc == 2 && qstrcmp(argv[1], kRecordOnly) == 0) {
        const TestUnit folder;
        params::resetForTests();
        UnitApplication application(argc, argv);
        return recordUntilKilled();
    }
    return runAppTest<TestFilms>(argc, argv);
}
#include "test_films.moc"
