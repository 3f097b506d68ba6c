// The browser on the real window: pages, one file at full size, films, voice notes, deleting, renaming.
#include "app/picturelabel.h"
#include "app/screen.h"

#include "dialogs/keyboardwidget.h"
#include "media/gst_audioplayback.h"
#include "media/gst_audiorecord.h"
#include "media/gst_videoplayback.h"

#include <QBuffer>
#include <QDeadlineTimer>
#include <QListWidget>
#include <QProcess>
#include <QProgressBar>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// Where the finger goes.
constexpr QPoint kFirstSlot(40, 41);   // previous page or file
constexpr QPoint kSecondSlot(40, 115); // next page or file
constexpr QPoint kPlay(40, 189);
constexpr QPoint kRename(40, 337);
constexpr QPoint kDeleteNote(40, 411);
constexpr QPoint kDelete(40, 485);
constexpr QPoint kBack(40, 559);
constexpr QPoint kThumbnails = kBack;

void ffmpeg(const QStringList &arguments)
{
    QCOMPARE(QProcess::execute(u"ffmpeg"_s, QStringList{u"-v"_s, u"error"_s, u"-y"_s} + arguments), 0);
}

QByteArray picture(Qt::GlobalColor colour)
{
    QImage image(720, 600, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG");
    return bytes;
}

// A small file whose header promises 900 megapixels.
QByteArray hugePicture()
{
    QByteArray bytes = picture(Qt::red);
    bytes.replace(bytes.indexOf("\xff\xc0") + 5, 4, "\x75\x30\x75\x30");
    return bytes;
}

int descriptors()
{
    return int(QDir(u"/proc/self/fd"_s).count());
}

int threads()
{
    return int(QDir(u"/proc/self/task"_s).count());
}

// The real window with its card in, and what a test puts on the card.
class Browser : public Screen
{
public:
    Browser() { waitForCard(); }

    void add(const QString &name, const QByteArray &content)
    {
        folder.put(inCurrentFolder(name), content);
        // A second apart, so that the order is the order of adding.
        QFile file(hostPath(name));
        if (file.open(QIODevice::ReadWrite)) {
            file.setFileTime(QDateTime::fromSecsSinceEpoch(1'700'000'000 + m_added++),
                             QFileDevice::FileModificationTime);
        }
    }

    void addPictures(int count)
    {
        for (int i = 1; i <= count; ++i)
            add(captureName(i, u".jpg"_s), picture(Qt::red));
    }

    // A film of colour bars, `seconds` long, as the unit records them.
    void addFilm(const QString &name, const QString &seconds, bool withSound)
    {
        const QString file = hostPath(u"made.avi"_s);
        QStringList arguments{u"-f"_s, u"lavfi"_s, u"-i"_s,
                              u"testsrc=size=720x576:rate=25:duration="_s + seconds};
        if (withSound)
            arguments +=
                {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration="_s + seconds, u"-c:a"_s, u"libmp3lame"_s};
        ffmpeg(arguments + QStringList{u"-pix_fmt"_s, u"yuvj420p"_s, u"-c:v"_s, u"mjpeg"_s, file});
        const QByteArray film = folder.content(inCurrentFolder(u"made.avi"_s));
        QFile::remove(file);
        add(name, film);
    }

    QString hostPath(const QString &name) const { return unit::path(inCurrentFolder(name)); }
    bool isThere(const QString &name) const { return QFile::exists(hostPath(name)); }

    void touchAt(QPoint place) { touch(place.x(), place.y()); }

    // The thumbnail number `index` of the page.
    void select(int index)
    {
        auto *list = window.findChild<QListWidget *>();
        QVERIFY(list->isVisible());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->item(index)).center());
    }

    QStringList page() const
    {
        QStringList names;
        const auto *list = window.findChild<QListWidget *>();
        for (int i = 0; i < list->count(); ++i)
            names << list->item(i)->text();
        return names;
    }

    QImage icon(int index) const
    {
        return window.findChild<QListWidget *>()->item(index)->icon().pixmap(128, 96).toImage();
    }

    // What the person looks at, grabbed.
    QImage shown() const { return window.findChild<QLabel *>(u"labelInputVideo"_s)->grab().toImage(); }

    bool isVisible(const char *name) const
    {
        return window.findChild<QWidget *>(QString::fromLatin1(name))->isVisible();
    }
    bool isTouchable(const char *name) const { return isVisible(name) && button(name)->isEnabled(); }

    int progress() const { return window.findChild<QProgressBar *>(u"pb_PlaybackIndicator"_s)->value(); }

    // Answers the next question: the button of that name is touched.
    void answer(const char *buttonName)
    {
        QTimer::singleShot(0, &window, [name = QString::fromLatin1(buttonName)] {
            QTest::mouseClick(QApplication::activeModalWidget()->findChild<QPushButton *>(name),
                              Qt::LeftButton);
        });
    }

    // Types into the keyboard that comes up next, and confirms.
    void answerWithName(const QString &name)
    {
        QTimer::singleShot(0, &window, [name] {
            auto *keyboard = qobject_cast<keyboardWidget *>(QApplication::activeModalWidget());
            QVERIFY(keyboard);
            keyboard->returnableText = name;
            keyboard->close();
        });
    }

    QStringList logLines() const
    {
        QStringList lines;
        for (const QByteArray &line : folder.content(logFile(u".txt"_s)).split('\n'))
            lines << QString::fromUtf8(line).mid(18); // after meter and time
        return lines;
    }

    QStringList files(const QString &pattern) const
    {
        return QDir(unit::path(g_SavedFSInfo.currRootDirectory)).entryList({pattern});
    }
    QStringList captures() const { return files(u"*.jpg"_s) + files(u"*.avi"_s); }

    // The six seconds after a film.
    void skipWait()
    {
        auto *wait = window.findChild<QTimer *>(u"genericDelayTimer"_s);
        if (wait->isActive())
            wait->start(0);
        QCoreApplication::processEvents();
    }

private:
    int m_added = 0;
};

// Answers every question by itself: keyboards with one of twenty names, pictures with yes or no.
class Answers : public QTimer
{
public:
    explicit Answers(QRandomGenerator &dice)
    {
        callOnTimeout([&dice] {
            QWidget *question = QApplication::activeModalWidget();
            if (auto *keyboard = qobject_cast<keyboardWidget *>(question)) {
                keyboard->returnableText = u"Name %1"_s.arg(dice.bounded(20));
                keyboard->close();
            } else if (question) {
                const char *button = dice.bounded(4) == 0 ? "btn_Confirm" : "btn_Cancel";
                question->findChild<QPushButton *>(QLatin1String(button))->click();
            }
        });
        start(5);
    }
};

// TUBIX_TOUCHES asks for a longer walk than a test run has time for.
const int kRandomTouches = std::max(300, qEnvironmentVariableIntValue("TUBIX_TOUCHES"));

QByteArray filmFrame()
{
    return QByteArray(reinterpret_cast<const char *>(g_pcFrameBuffer[g_fbOutIdx]), kFrameBytes);
}

// Without a turn of the event loop.
void waitForNextFilmFrame()
{
    const QByteArray shown = filmFrame();
    for (const QDeadlineTimer limit(5000); filmFrame() == shown && !limit.hasExpired();)
        QThread::yieldCurrentThread();
}

void touchSomething(Browser &screen, QRandomGenerator &dice)
{
    constexpr std::array buttons = {"btn_menu_Thumbnails",
                                    "btn_menu_ThumbnailNext",
                                    "btn_menu_ThumbnailPrevious",
                                    "btn_menu_ThumbnailNextPage",
                                    "btn_menu_ThumbnailPreviousPage",
                                    "btn_menu_ThumbnailBack",
                                    "btn_menu_ThumbnailVideoPlayPause",
                                    "btn_menu_ThumbnailDeleteImage",
                                    "btn_menu_ThumbnailFileRename",
                                    "btn_menu_ThumbnailAnnotateRecordPlayPause"};
    const int files = int(screen.page().size());
    const char *button = buttons[size_t(dice.bounded(int(buttons.size())))];
    if (screen.isVisible("listW_ThumbnailViewer") && files > 0 && dice.bounded(2) == 0)
        screen.select(dice.bounded(files));
    else if (screen.isTouchable(button))
        QTest::mouseClick(screen.button(button), Qt::LeftButton);
    QTest::qWait(dice.bounded(8));
    screen.skipWait();
}

} // namespace

class TestBrowser : public QObject
{
    Q_OBJECT

private slots:
    void pagesHoldTwelve()
    {
        struct Row
        {
            int files;
            const char *label;
            int onFirst;
            int onSecond;
        };
        Browser screen;
        for (const Row &row :
             {Row{1, "1/1", 1, 1}, Row{12, "1/1", 12, 12}, Row{13, "1/2", 12, 1}, Row{30, "1/3", 12, 12}}) {
            screen.addPictures(row.files);
            screen.touchAt(kThumbnails);
            QCOMPARE(screen.text("lbl_CurrentFilenameandPath"), QLatin1String(row.label));
            QCOMPARE(screen.page().size(), row.onFirst);
            QVERIFY(!screen.isTouchable("btn_menu_ThumbnailPreviousPage"));
            QCOMPARE(screen.isTouchable("btn_menu_ThumbnailNextPage"), row.files > 12);
            screen.touchAt(kSecondSlot);
            QCOMPARE(screen.page().size(), row.onSecond);
            screen.touchAt(kBack);
        }
        QCOMPARE(screen.events().count(u"13,Next thumbnail page button clicked"_s), 2);
    }

    void anEmptyFolderSaysSoAndLeadsBack()
    {
        Browser screen;
        screen.add(u"TUBX0001.jpg"_s, {}); // nothing in it: not listed
        screen.touchAt(kThumbnails);
        QVERIFY(!screen.isVisible("frm_ThumbnailViewer"));
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailBack"));
        screen.touchAt(kBack);
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
        QTRY_VERIFY_WITH_TIMEOUT(screen.isVisible("labelInputVideo"), 5000);
        QVERIFY(g_gst_Pipeline.pipeline);
    }

    void behindAPulledCardLiveViewNamesNoFolder()
    {
        Browser screen;
        screen.addPictures(1);
        screen.touchAt(kThumbnails);
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isVisible("frm_ThumbnailViewer"), 15000);
        screen.touchAt(kBack);
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
        QVERIFY(!screen.isVisible("lbl_CurrentFilenameandPath"));
    }

    void everyKindOfFileIsShownOrMarkedAsBad()
    {
        Browser screen;
        screen.add(u"TUBX0001.jpg"_s, picture(Qt::red));
        screen.add(u"TUBX0001.wav"_s, "note");
        screen.addFilm(u"TUBX0002.avi"_s, u"1"_s, false);
        screen.add(u"TUBX0003.jpg"_s, "no picture");
        screen.add(u"TUBX0003.wav"_s, "note");
        screen.add(u"TUBX0004.avi"_s, "no film");
        screen.add(u"TUBX0005.jpg"_s, hugePicture());
        screen.add(u"TUBX0012.AVI"_s, "listed as a picture");
        screen.add(u"\u4e80\u88c2.jpg"_s, picture(Qt::blue));
        screen.touchAt(kThumbnails);
        QCOMPARE(screen.page(),
                 (QStringList{u"TUBX0001.jpg"_s, u"TUBX0002.avi"_s, u"TUBX0003.jpg"_s, u"TUBX0004.avi"_s,
                              u"TUBX0005.jpg"_s, u"TUBX0012.AVI"_s, u"\u4e80\u88c2.jpg"_s}));
        QVERIFY(screen.icon(2) != screen.icon(4)); // one of the two bad pictures has a note
        // The ground of the list lets half of what is under it through.
        QCOMPARE(screen.window.grab().toImage().pixelColor(152, 146), QColor(88, 90, 92));
        screen.select(0);
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath").right(13), u"/TUBX0001.jpg"_s);
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath").size(), 21);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteAudio"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailVideoPlayPause"));
        screen.touchAt(kSecondSlot); // the film
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailAnnotateRecordPlayPause"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailDeleteAudio"));
        const QImage film = screen.shown();
        screen.touchAt(kSecondSlot); // the bad picture: shown as such, not to be edited
        QVERIFY(screen.shown() != film);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        screen.touchAt(kSecondSlot); // the bad film: never with another's picture
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        QVERIFY(screen.shown() != film);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        screen.touchAt(kSecondSlot); // what nobody can read is not edited after a note, either
        screen.touchAt(kPlay);
        screen.touchAt(kPlay);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailFileRename"));
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        for (int i = 0; i < 5; ++i)
            screen.touchAt(kSecondSlot);
        QCOMPARE(screen.shown().pixelColor(360, 300).blue(), 254); // the last one stays
        QCOMPARE(screen.events().filter(u"12,Next thumbnail"_s).size(), 6);
    }

    void aPictureWithoutNoteAndMicrophoneCannotBeAnnotated()
    {
        Browser screen;
        screen.addPictures(1);
        params::getInstance()->getParams().bMicrophoneActive = 0;
        screen.touchAt(kThumbnails);
        screen.select(0);
        QVERIFY(screen.isVisible("btn_menu_ThumbnailAnnotateRecordPlayPause"));
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailAnnotateRecordPlayPause"));
    }

    void aFilmPlaysPausesAndEnds_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withSound");
        QTest::newRow("with sound") << u"TUBX0001.avi"_s << true;
        QTest::newRow("silent, with signs in its name") << u"100% #1 a&b.avi"_s << false;
    }
    void aFilmPlaysPausesAndEnds()
    {
        QFETCH(const QString, name);
        QFETCH(const bool, withSound);
        Browser screen;
        screen.addFilm(name, u"3"_s, withSound);
        screen.touchAt(kThumbnails);
        screen.select(0);
        const QImage still = screen.shown();
        screen.touchAt(kPlay);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailDeleteImage"));
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > 20, 10000);
        QVERIFY(screen.shown() != still);
        waitForNextFilmFrame(); // that the pump has not shown
        QSignalSpy painted(screen.window.findChild<PictureLabel *>(), &PictureLabel::framePainted);
        screen.touchAt(kPlay);
        QCOMPARE(g_GstreamerVideoPlaybackPipelineState, eGSTStatePaused);
        const QByteArray standing = filmFrame();
        QTRY_VERIFY(!painted.isEmpty()); // what the editor would get is what is seen
        QCOMPARE(filmFrame(), standing);
        const int paused = screen.progress();
        screen.touchAt(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > paused, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerVideoPlaybackPipelineState, eGSTStateReady, 15000);
        QTRY_VERIFY(!screen.isVisible("pb_PlaybackIndicator"));
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteImage"));
        QVERIFY(!g_gst_PlaybackPipeline.playbin2);
        QCOMPARE(screen.events().filter(u"17,Thumbnail Video/Play/Pause button clicked - "_s).size(), 3);
    }

    void nothingOfAFilmStaysBehind()
    {
        Browser screen;
        screen.addFilm(u"TUBX0001.avi"_s, u"2"_s, true);
        screen.touchAt(kThumbnails);
        screen.select(0);
        int threadsBefore = 0;
        int descriptorsBefore = 0;
        for (int round = 0; round < 4; ++round) {
            screen.touchAt(kPlay);
            QTRY_VERIFY_WITH_TIMEOUT(g_FilmFrameReady, 10000);
            screen.touchAt(kSecondSlot); // the same file: nothing happens, it plays on
            QCOMPARE(g_GstreamerVideoPlaybackPipelineState, eGSTStatePlaying);
            QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerVideoPlaybackPipelineState, eGSTStateReady, 15000);
            QTRY_VERIFY(!screen.isVisible("pb_PlaybackIndicator"));
            if (round == 0) {
                threadsBefore = threads();
                descriptorsBefore = descriptors();
            }
        }
        QTRY_VERIFY(threads() <= threadsBefore);
        QVERIFY(descriptors() <= descriptorsBefore);
    }

    void aFilmThatCannotBePlayedLeadsBack()
    {
        Browser screen;
        screen.add(u"TUBX0001.avi"_s, "no film");
        screen.touchAt(kThumbnails);
        screen.select(0);
        screen.touchAt(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isVisible("pb_PlaybackIndicator"), 10000);
        QVERIFY(!g_gst_PlaybackPipeline.playbin2);
        screen.touchAt(kBack);
        QVERIFY(screen.isVisible("lbl_BusyIcon"));
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        QTRY_VERIFY_WITH_TIMEOUT(screen.isVisible("frm_ThumbnailViewer"), 9000);
        screen.touchAt(kBack);
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
    }

    void aNoteIsSpokenHeardAndDeletedAlone()
    {
        Browser screen;
        screen.addPictures(2);
        screen.touchAt(kThumbnails);
        screen.select(1);
        screen.touchAt(kPlay);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailBack"));
        QTRY_COMPARE_WITH_TIMEOUT(screen.text("lbl_VideoLengthIndicator"), u"00:00:02"_s, 10000);
        screen.touchAt(kPlay);
        QCOMPARE(g_GstreamerAudioRecordPipelineState, eGSTStateNull);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteAudio"));
        QProcess tool;
        tool.start(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_entries"_s, u"format=duration"_s, u"-of"_s,
                                  u"csv=p=0"_s, screen.hostPath(u"TUBX0002.wav"_s)});
        QVERIFY(tool.waitForFinished());
        QVERIFY(tool.readAllStandardOutput().toDouble() > 1.5);
        // A second touch plays it, and never records over it.
        const QByteArray note = screen.folder.content(inCurrentFolder(u"TUBX0002.wav"_s));
        screen.touchAt(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > 10, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerAudioPlaybackPipelineState, eGSTStateReady, 15000);
        QCOMPARE(screen.folder.content(inCurrentFolder(u"TUBX0002.wav"_s)), note);
        screen.answer("btn_Confirm");
        screen.touchAt(kDeleteNote);
        QVERIFY(!screen.isThere(u"TUBX0002.wav"_s));
        QVERIFY(screen.isThere(u"TUBX0002.jpg"_s));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailDeleteAudio"));
        QVERIFY(screen.logLines().contains(u"[X] TUBX0002.jpg"_s));
        QVERIFY(screen.events().contains(
            u"18,Thumbnail Annotate/Record/Play/Pause button clicked - terminate recording audio"_s));
    }

    void theLastOfThirteenIsDeletedWithItsNote()
    {
        Browser screen;
        screen.addPictures(13);
        screen.add(u"TUBX0013.wav"_s, "note");
        screen.touchAt(kThumbnails);
        screen.touchAt(kSecondSlot);
        screen.select(0);
        screen.answer("btn_Cancel");
        screen.touchAt(kDelete);
        QVERIFY(screen.isThere(u"TUBX0013.jpg"_s));
        screen.answer("btn_Confirm");
        screen.touchAt(kDelete);
        QVERIFY(!screen.isThere(u"TUBX0013.jpg"_s));
        QVERIFY(!screen.isThere(u"TUBX0013.wav"_s));
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath").right(12), u"TUBX0012.jpg"_s);
        screen.touchAt(kBack);
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath"), u"1/1"_s);
    }

    void aNewNameIsLoggedAndShown()
    {
        Browser screen;
        screen.addPictures(2);
        screen.add(u"TUBX0001.wav"_s, "note");
        screen.touchAt(kThumbnails);
        screen.select(0);
        screen.answerWithName(u"../harm"_s);
        screen.touchAt(kRename);
        screen.answerWithName(QString());
        screen.touchAt(kRename);
        QCOMPARE(screen.logLines().filter(u"[*]"_s).size(), 0);
        screen.answerWithName(u"100%1 \u4e80\u88c2"_s);
        screen.touchAt(kRename);
        QCOMPARE(screen.logLines().filter(u"[*]"_s),
                 (QStringList{u"[*] TUBX0001.jpg -> 100%1 \u4e80\u88c2.jpg"_s,
                              u"[*] TUBX0001.wav -> 100%1 \u4e80\u88c2.wav"_s}));
        QVERIFY(screen.isThere(u"100%1 \u4e80\u88c2.wav"_s));
        QVERIFY(screen.text("lbl_CurrentFilenameandPath").endsWith(u"100%1 \u4e80\u88c2.jpg"_s));
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteAudio"));
        QVERIFY(params::getInstance()->getParams().MSDC_ModuleInstalled);
    }

    void aFilmTakesItsStoredThumbnailAlong()
    {
        Browser screen;
        screen.addFilm(u"TUBX0001.avi"_s, u"1"_s, false);
        screen.add(u".thumbs/TUBX0001.jpg"_s, picture(Qt::green));
        screen.add(u"TUBX0001.jpg"_s, picture(Qt::red));
        screen.add(u"TUBX0001.wav"_s, "the picture's note");
        screen.touchAt(kThumbnails);
        screen.select(0);
        screen.answerWithName(u"Collar"_s);
        screen.touchAt(kRename);
        QVERIFY(screen.isThere(u"Collar.avi"_s));
        QVERIFY(screen.isThere(u".thumbs/Collar.jpg"_s));
        screen.answer("btn_Confirm");
        screen.touchAt(kDelete);
        QVERIFY(!screen.isThere(u"Collar.avi"_s));
        QVERIFY(!screen.isThere(u".thumbs/Collar.jpg"_s));
        QVERIFY(screen.isThere(u"TUBX0001.wav"_s));
    }

    // A fixed sequence of touches on the buttons of the browser, questions and keyboards answered as they
    // come: no dead end, and at the end folder, listing and log tell the same.
    void hundredsOfTouchesLeaveFilesListingAndLogAgreeing()
    {
        Browser screen;
        screen.addPictures(14);
        for (const char *name : {"A.avi", "B.avi"})
            screen.addFilm(QLatin1String(name), u"1"_s, true);
        screen.add(u"bad.avi"_s, "no film");
        const QStringList before = screen.captures();
        QRandomGenerator dice(20261115);
        Answers answers(dice);
        for (int i = 0; i < kRandomTouches; ++i)
            touchSomething(screen, dice);
        // Whatever screen it is, Back leads to live view.
        if (g_GstreamerAudioRecordPipelineState == eGSTStateRecordingAudio)
            screen.touchAt(kPlay);
        for (int i = 0; i < 4 && !screen.isVisible("frm_LiveMenuButtons_Left"); ++i) {
            if (g_GstreamerVideoPlaybackPipelineState == eGSTStatePlaying)
                screen.touchAt(kPlay); // a resumed film takes no Back
            screen.touchAt(kBack);
            screen.skipWait();
        }
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
        ReadDirectory(g_SavedFSInfo.currRootDirectory);
        const QStringList after = screen.captures();
        QCOMPARE(int(after.size()), int(g_SavedFSInfo.nFilescurrRootDirectory));
        // Every name that is there follows from the names before by the log's renames and deletions.
        QSet<QString> told(before.begin(), before.end());
        for (const QString &line : screen.logLines()) {
            const QString names = line.mid(4);
            if (line.startsWith(u"[*] "_s) && !told.contains(names.section(u" -> "_s, 1))) {
                if (told.remove(names.section(u" -> "_s, 0, 0)))
                    told.insert(names.section(u" -> "_s, 1));
            } else if (line.startsWith(u"[X] "_s)) {
                told.remove(names);
            }
        }
        QCOMPARE(QSet<QString>(after.begin(), after.end()), told);
        for (const QString &note : screen.files(u"*.wav"_s))
            QVERIFY2(after.contains(note.chopped(4) + u".jpg"_s), qUtf8Printable(note));
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestBrowser>(argc, argv);
}
#include "test_browser.moc"
