// The browser on the real window: pages, one file at full size, films, voice notes, deleting, renaming.
#include "app/picturelabel.h"
#include "app/screen.h"

#include "dialogs/keyboardwidget.h"
#include "media/gst_audioplayback.h"
#include "media/gst_audiorecord.h"
#include "media/gst_videoplayback.h"
#include "storage/capturenames.h"

#include <QBuffer>
#include <QDeadlineTimer>
#include <QProgressBar>
#include <QSignalSpy>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

// Where the finger goes.
constexpr QPoint kNext(40, 115); // page or file
constexpr QPoint kPlay(40, 189);
constexpr QPoint kRename(40, 337);
constexpr QPoint kDeleteNote(40, 411);
constexpr QPoint kDelete(40, 485);
constexpr QPoint kBack(40, 559);
constexpr QPoint kThumbnails = kBack;

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
    void addFilm(const QString &name, const QString &seconds)
    {
        const QString file = hostPath(u"made.avi"_s);
        QCOMPARE(output("ffmpeg -v error -f lavfi -i testsrc=size=720x576:rate=25:duration=%1 -f lavfi -i "
                        "sine=duration=%1 -c:a libmp3lame -pix_fmt yuvj420p -c:v mjpeg %2",
                        {seconds, file}),
                 QByteArray());
        const QByteArray film = folder.content(inCurrentFolder(u"made.avi"_s));
        QFile::remove(file);
        add(name, film);
    }

    QString hostPath(const QString &name) const { return unit::path(inCurrentFolder(name)); }
    bool isThere(const QString &name) const { return QFile::exists(hostPath(name)); }

    QStringList page() const
    {
        QStringList names;
        for (const QListWidgetItem *item :
             window.findChild<QListWidget *>()->findItems(u"*"_s, Qt::MatchWildcard))
            names << item->text();
        return names;
    }

    QImage icon(int index) const
    {
        return window.findChild<QListWidget *>()->item(index)->icon().pixmap(128, 96).toImage();
    }

    // What the person looks at, grabbed.
    QImage shown() const { return find<QLabel>("labelInputVideo")->grab().toImage(); }
    int progress() const { return find<QProgressBar>("pb_PlaybackIndicator")->value(); }
    QString title() const { return text("lbl_CurrentFilenameandPath"); }

    // Answers the next question: the button of that name is touched.
    void answer(const char *buttonName)
    {
        whenOpen([name = QString::fromLatin1(buttonName)](QDialog *question) { touchIn(question, name); });
    }

    // Types into the keyboard that comes up next, and confirms.
    void answerWithName(const QString &name)
    {
        whenOpen<keyboardWidget>([name](keyboardWidget *keyboard) {
            keyboard->returnableText = name;
            keyboard->close();
        });
    }

    QStringList logLines() const
    {
        QStringList lines;
        for (const QByteArray &line : log().split('\n'))
            lines << QString::fromUtf8(line).mid(18); // after meter and time
        return lines;
    }

private:
    int m_added = 0;
};

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

} // namespace

class TestBrowser : public HeardTest
{
    Q_OBJECT

private slots:
    void pagesHoldTwelve()
    {
        Browser screen;
        for (const auto &[files, pages, onSecond] :
             {std::tuple(1, u"1/1"_s, 1), {12, u"1/1"_s, 12}, {13, u"1/2"_s, 1}, {30, u"1/3"_s, 12}}) {
            screen.addPictures(files);
            screen.touch(kThumbnails);
            QCOMPARE(screen.title(), pages);
            QCOMPARE(screen.page().size(), std::min(files, 12));
            QVERIFY(!screen.isTouchable("btn_menu_ThumbnailPreviousPage"));
            QCOMPARE(screen.isTouchable("btn_menu_ThumbnailNextPage"), files > 12);
            screen.touch(kNext);
            QCOMPARE(screen.page().size(), onSecond);
            screen.touch(kBack);
        }
        QCOMPARE(screen.events().count(u"13,Next thumbnail page button clicked"_s), 2);
    }

    void behindAPulledCardLiveViewNamesNoFolder()
    {
        Browser screen;
        screen.addPictures(1);
        screen.touch(kThumbnails);
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isVisible("frm_ThumbnailViewer"), 15000);
        screen.touch(kBack);
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
        QVERIFY(!screen.isVisible("lbl_CurrentFilenameandPath"));
    }

    void everyKindOfFileIsShownOrMarkedAsBad()
    {
        Browser screen;
        screen.add(u"TUBX0001.jpg"_s, picture(Qt::red));
        screen.add(u"TUBX0001.wav"_s, "note");
        screen.addFilm(u"TUBX0002.avi"_s, u"1"_s);
        screen.add(u"TUBX0003.jpg"_s, "no picture");
        screen.add(u"TUBX0003.wav"_s, "note");
        screen.add(u"TUBX0004.avi"_s, "no film");
        screen.add(u"TUBX0005.jpg"_s, hugePicture());
        screen.add(u"TUBX0012.AVI"_s, "listed as a picture");
        screen.add(u"\u4e80\u88c2.jpg"_s, picture(Qt::blue));
        screen.touch(kThumbnails);
        QCOMPARE(screen.page(),
                 (QStringList{u"TUBX0001.jpg"_s, u"TUBX0002.avi"_s, u"TUBX0003.jpg"_s, u"TUBX0004.avi"_s,
                              u"TUBX0005.jpg"_s, u"TUBX0012.AVI"_s, u"\u4e80\u88c2.jpg"_s}));
        QVERIFY(screen.icon(2) != screen.icon(4)); // one of the two bad pictures has a note
        // The ground of the list lets half of what is under it through.
        QCOMPARE(screen.window.grab().toImage().pixelColor(152, 146), QColor(88, 90, 92));
        screen.select(0);
        QCOMPARE(screen.title().right(13), u"/TUBX0001.jpg"_s);
        QCOMPARE(screen.title().size(), 21);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteAudio"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailVideoPlayPause"));
        screen.touch(kNext); // the film
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailAnnotateRecordPlayPause"));
        QVERIFY(!screen.isVisible("btn_menu_ThumbnailDeleteAudio"));
        const QImage film = screen.shown();
        screen.touch(kNext); // the bad picture: shown as such, not to be edited
        QVERIFY(screen.shown() != film);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        screen.touch(kNext); // the bad film: never with another's picture
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        QVERIFY(screen.shown() != film);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        screen.touch(kNext); // what nobody can read is not edited after a note, either
        screen.touch(kPlay);
        screen.touch(kPlay);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailFileRename"));
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailEditImage"));
        for (int i = 0; i < 5; ++i)
            screen.touch(kNext);
        QCOMPARE(screen.shown().pixelColor(360, 300).blue(), 254); // the last one stays
        QCOMPARE(screen.events().filter(u"12,Next thumbnail"_s).size(), 6);
    }

    void aFilmPlaysPausesAndEnds()
    {
        Browser screen;
        screen.addFilm(u"100% #1 a&b.avi"_s, u"3"_s);
        screen.touch(kThumbnails);
        screen.select(0);
        const QImage still = screen.shown();
        screen.touch(kPlay);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailDeleteImage"));
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > 5, 20000);
        QVERIFY(screen.shown() != still);
        waitForNextFilmFrame(); // that the pump has not shown
        QSignalSpy painted(screen.window.findChild<PictureLabel *>(), &PictureLabel::framePainted);
        screen.touch(kPlay);
        QCOMPARE(g_GstreamerVideoPlaybackPipelineState, eGSTStatePaused);
        const QByteArray standing = filmFrame();
        QTRY_VERIFY(!painted.isEmpty()); // what the editor would get is what is seen
        QCOMPARE(filmFrame(), standing);
        const int paused = screen.progress();
        screen.touch(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > paused, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerVideoPlaybackPipelineState, eGSTStateReady, 20000);
        QTRY_VERIFY(!screen.isVisible("pb_PlaybackIndicator"));
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteImage"));
        QVERIFY(!g_gst_PlaybackPipeline.playbin2);
        QCOMPARE(screen.events().filter(u"17,Thumbnail Video/Play/Pause button clicked - "_s).size(), 3);
    }

    void nothingOfAFilmStaysBehind()
    {
        Browser screen;
        screen.addFilm(u"TUBX0001.avi"_s, u"1"_s);
        screen.touch(kThumbnails);
        screen.select(0);
        qsizetype threadsBefore = 0, descriptorsBefore = 0;
        for (int round = 0; round < 4; ++round) {
            screen.touch(kPlay);
            QTRY_VERIFY_WITH_TIMEOUT(g_FilmFrameReady, 20000);
            screen.touch(kNext); // the same file: nothing happens, it plays on
            QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerVideoPlaybackPipelineState, eGSTStateReady, 20000);
            QTRY_VERIFY(!screen.isVisible("pb_PlaybackIndicator"));
            if (round == 0) {
                threadsBefore = entriesIn(u"/proc/self/task"_s);
                descriptorsBefore = entriesIn(u"/proc/self/fd"_s);
            }
        }
        QTRY_VERIFY(entriesIn(u"/proc/self/task"_s) <= threadsBefore);
        QVERIFY(entriesIn(u"/proc/self/fd"_s) <= descriptorsBefore);
    }

    void aFilmThatCannotBePlayedLeadsBack()
    {
        Browser screen;
        screen.add(u"TUBX0001.avi"_s, "no film");
        screen.touch(kThumbnails);
        screen.select(0);
        screen.touch(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isVisible("pb_PlaybackIndicator"), 20000);
        QVERIFY(!g_gst_PlaybackPipeline.playbin2);
        screen.touch(kBack);
        QVERIFY(screen.isVisible("lbl_BusyIcon"));
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailVideoPlayPause"));
        screen.find<QTimer>("genericDelayTimer")->start(0); // the six seconds after a film
        QTRY_VERIFY(screen.isVisible("frm_ThumbnailViewer"));
        screen.touch(kBack);
        QVERIFY(screen.isVisible("frm_LiveMenuButtons_Left"));
    }

    void aNoteIsSpokenHeardAndDeletedAlone()
    {
        Browser screen;
        screen.addPictures(2);
        screen.touch(kThumbnails);
        screen.select(1);
        screen.touch(kPlay);
        QVERIFY(!screen.isTouchable("btn_menu_ThumbnailBack"));
        QTRY_VERIFY_WITH_TIMEOUT(screen.text("lbl_VideoLengthIndicator") >= u"00:00:02"_s, 20000);
        screen.touch(kPlay);
        QCOMPARE(g_GstreamerAudioRecordPipelineState, eGSTStateNull);
        QVERIFY(screen.isTouchable("btn_menu_ThumbnailDeleteAudio"));
        QVERIFY(duration(screen.hostPath(u"TUBX0002.wav"_s), "a:0") > 1.5);
        // A second touch plays it, and never records over it.
        const QByteArray note = screen.folder.content(inCurrentFolder(u"TUBX0002.wav"_s));
        screen.touch(kPlay);
        QTRY_VERIFY_WITH_TIMEOUT(screen.progress() > 10, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(g_GstreamerAudioPlaybackPipelineState, eGSTStateReady, 20000);
        QCOMPARE(screen.folder.content(inCurrentFolder(u"TUBX0002.wav"_s)), note);
        screen.answer("btn_Confirm");
        screen.touch(kDeleteNote);
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
        screen.touch(kThumbnails);
        screen.touch(kNext);
        screen.select(0);
        for (const bool confirmed : {false, true}) {
            screen.answer(confirmed ? "btn_Confirm" : "btn_Cancel");
            screen.touch(kDelete);
            QCOMPARE(screen.isThere(u"TUBX0013.jpg"_s), !confirmed);
            QCOMPARE(screen.isThere(u"TUBX0013.wav"_s), !confirmed);
        }
        QCOMPARE(screen.title().right(12), u"TUBX0012.jpg"_s);
        screen.touch(kBack);
        QCOMPARE(screen.title(), u"1/1"_s);
    }

    void aNewNameIsLoggedAndShown()
    {
        Browser screen;
        screen.addPictures(2);
        screen.add(u"TUBX0001.wav"_s, "note");
        screen.touch(kThumbnails);
        screen.select(0);
        for (const QString &none : {u"../harm"_s, QString()}) {
            screen.answerWithName(none);
            screen.touch(kRename);
        }
        QCOMPARE(screen.logLines().filter(u"[*]"_s).size(), 0);
        screen.answerWithName(u"100%1 \u4e80\u88c2"_s);
        screen.touch(kRename);
        QCOMPARE(screen.logLines().filter(u"[*]"_s),
                 (QStringList{u"[*] TUBX0001.jpg -> 100%1 \u4e80\u88c2.jpg"_s,
                              u"[*] TUBX0001.wav -> 100%1 \u4e80\u88c2.wav"_s}));
        QVERIFY(screen.isThere(u"100%1 \u4e80\u88c2.wav"_s));
        QVERIFY(screen.title().endsWith(u"100%1 \u4e80\u88c2.jpg"_s));
        QVERIFY(Screen::settings().MSDC_ModuleInstalled);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestBrowser>(argc, argv);
}
#include "test_browser.moc"
