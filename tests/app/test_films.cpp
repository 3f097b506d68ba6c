#include "app/screen.h"

#include "film/avirepair.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr char kRecordOnly[] = "--record"; // argument of a process of this program that is going to be killed

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
};

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], kRecordOnly) == 0) {
        fixPixels();
        debounce application(argc, argv);
        fixLook();
        const TestUnit folder;
        params::resetForTests();
        application.init();
        return recordUntilKilled();
    }
    return runAppTest<TestFilms>(argc, argv);
}
#include "test_films.moc"
