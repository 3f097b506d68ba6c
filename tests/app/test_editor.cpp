#include "app/screen.h"

#include <QGraphicsTextItem>
#include <QGraphicsView>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect kPicture(80, 0, 720, 600); // on the window

const QColor kGround(70, 80, 90);

bool isNear(const QColor &a, const QColor &b)
{
    return std::abs(a.red() - b.red()) < 40 && std::abs(a.green() - b.green()) < 40 &&
           std::abs(a.blue() - b.blue()) < 40;
}

// Alike but for what the encoder does to edges of colour.
bool areAlike(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return false;
    const QImage smallA = a.scaled(a.size() / 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage smallB = b.scaled(a.size() / 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (int y = 0; y < smallA.height(); ++y) {
        for (int x = 0; x < smallA.width(); ++x) {
            if (!isNear(smallA.pixelColor(x, y), smallB.pixelColor(x, y)))
                return false;
        }
    }
    return true;
}

// The window with a picture of the card in the editor, and a film behind it in the folder.
struct Editor : Screen
{
    Editor()
    {
        waitForCard();
        QImage ground(720, 600, QImage::Format_RGB32);
        ground.fill(kGround);
        ground.save(unit::path(inCurrentFolder(u"TUBX0001.jpg"_s)));
        static const QByteArray film = output(
            "ffmpeg -v error -f lavfi -i color=gray:size=720x576:rate=25:duration=1 -c:v mjpeg -f avi -", {});
        const UnitPath name = inCurrentFolder(u"TUBX0002.avi"_s);
        folder.put(name, film);
        QFile file(unit::path(name));
        if (file.open(QIODevice::ReadWrite))
            file.setFileTime(QDateTime::currentDateTime().addDays(1), QFileDevice::FileModificationTime);
        file.close();
        browse();
        select(0);
        open();
    }

    void browse() { touch(40, 559); }

    void open() { touch(40, 263); }
    void back() { touch(40, 559); }

    QGraphicsView *view() const { return find<QGraphicsView>("gv_MainView"); }
    bool isOpen() const { return view()->isVisible(); }
    QImage shown() { return window.grab(kPicture).toImage(); }

    void drag(const QPoint &from, const QPoint &to)
    {
        QWidget *surface = view()->viewport();
        QTest::mousePress(surface, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, surface->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(surface, &move);
        QTest::mouseRelease(surface, Qt::LeftButton, {}, to);
    }
    void drawCircle()
    {
        touch(40, 115);
        drag({100, 100}, {200, 200});
    }

    // Touches `buttons` of the dialogs that come while `action` runs, in their order; true when that is all
    // they ask.
    template <typename Action> bool answer(QStringList buttons, Action action)
    {
        bool isAsExpected = true;
        QTimer finger;
        QObject::connect(&finger, &QTimer::timeout, &window, [&] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog)
                return;
            if (auto *list = dialog->findChild<QListWidget *>())
                list->setCurrentRow(0);
            isAsExpected = isAsExpected && !buttons.isEmpty();
            if (isAsExpected)
                touchIn(dialog, buttons.takeFirst());
            else
                dialog->close();
        });
        finger.start(10);
        action();
        return isAsExpected && buttons.isEmpty();
    }

    QStringList pictures() const
    {
        return QDir(unit::path(g_SavedFSInfo.currRootDirectory))
            .entryList({u"*.jpg"_s}, QDir::Files, QDir::Name);
    }
    QImage saved() const // the only copy
    {
        const QStringList copies = pictures().filter(u"_"_s);
        return copies.size() == 1 ? QImage(unit::path(inCurrentFolder(copies.first()))) : QImage();
    }
    void save()
    {
        touch(40, 411);
        QTRY_VERIFY(button("btn_menu_ThumbnailImageEditSave")->isEnabled());
    }
};

} // namespace

class TestEditor : public HeardTest
{
    Q_OBJECT

private slots:
    void aMarkedPictureIsSavedBesideItsSource()
    {
        Editor editor;
        QCOMPARE(editor.shown().pixelColor(360, 300), kGround);
        editor.touch(40, 41);
        editor.drag({300, 300}, {500, 300});
        editor.drawCircle();
        const QImage shown = editor.shown();
        QCOMPARE(shown.pixelColor(400, 300), QColor(Qt::red)); // no offset between finger, view and scene
        editor.touch(40, 411);
        QVERIFY(!editor.button("btn_menu_ThumbnailImageEditSave")->isEnabled()); // while it is told
        const QString told = editor.text("lbl_saving_filename");
        editor.drag({100, 400}, {600, 400});
        QTRY_VERIFY(editor.button("btn_menu_ThumbnailImageEditSave")->isEnabled());
        QCOMPARE(editor.pictures(), QStringList({u"TUBX0001.jpg"_s, told}));
        QVERIFY(QRegularExpression(u"^TUBX0001_[0-9]{6}\\.jpg$"_s).match(told).hasMatch());
        const QImage saved = editor.saved();
        QVERIFY(areAlike(saved, shown));
        // The source is back, and a second copy is a file of its own.
        QCOMPARE(editor.shown().pixelColor(400, 300), kGround);
        QVERIFY(editor.isOpen());
        editor.drawCircle();
        editor.save();
        QCOMPARE(editor.pictures().size(), 3);
        QCOMPARE(g_SavedFSInfo.nFilescurrRootDirectory, qint16(4));
        QCOMPARE(g_SavedFSInfo.NumberOfThumbnailPages, qint16(1));
        QStringList numbers;
        for (const QString &event : editor.events().filter(u",Thumbnail Image Edit "_s))
            numbers << event.section(u',', 0, 0);
        QCOMPARE(numbers.mid(numbers.size() - 5), QStringList({u"26"_s, u"27"_s, u"30"_s, u"27"_s, u"30"_s}));
    }

    void backAsksOnlyForUnsavedMarks()
    {
        Editor editor;
        editor.back();
        QVERIFY(!editor.isOpen());
        editor.open();
        editor.drawCircle();
        editor.drag({150, 150}, {160, 160});
        editor.touch(40, 485); // the only one is deleted: nothing to ask for
        editor.back();
        QVERIFY(!editor.isOpen());
        editor.open();
        editor.drawCircle();
        QVERIFY(editor.answer({u"btn_Cancel"_s}, [&] { editor.back(); }));
        QVERIFY(!editor.isOpen());
        QCOMPARE(editor.pictures().size(), 1);
        editor.open();
        editor.drawCircle();
        QVERIFY(editor.answer({u"btn_Confirm"_s}, [&] { editor.back(); }));
        QVERIFY(!editor.isOpen());
        QVERIFY(isNear(editor.saved().pixelColor(150, 100), Qt::red));
        QCOMPARE(editor.pictures().size(), 2);
        // The pop-up of a still, from which another screen has come in between, opens no editor.
        editor.back();
        editor.back();
        editor.window.ChangeMainState(eStateCaptureWindowEntry);
        editor.window.ChangeMainState(eStateUsbActive);
        QTRY_VERIFY(editor.button("btn_menu_Capture")->parentWidget()->isEnabled());
        QVERIFY(!editor.isOpen());
    }

    void aFilmsFrameIsSavedAsAPictureWithItsBand()
    {
        Editor editor;
        editor.back();
        editor.back();
        editor.select(1);
        editor.open();
        editor.drawCircle();
        const QImage shown = editor.shown();
        QCOMPARE(shown.pixelColor(150, 100 + 24), QColor(Qt::red));
        editor.save();
        QVERIFY(editor.pictures().last().startsWith(u"TUBX0002_"_s));
        const QImage saved = editor.saved();
        QCOMPARE(saved.size(), QSize(720, 600));
        const QImage band(u":/MyGraphicResources/graphics/quenvale_brand_base_image.png"_s);
        QVERIFY(areAlike(saved.copy(0, 0, 720, 24), band.copy(0, 0, 720, 24)));
        QVERIFY(areAlike(saved.copy(0, 24, 720, 576), shown.copy(0, 24, 720, 576)));
        editor.back();
        QVERIFY(!editor.isOpen());
        QVERIFY(editor.button("btn_menu_ThumbnailVideoPlayPause")->isVisible());
    }

    void toolsTakeColourAndWordsFromTheirDialogs()
    {
        Editor editor;
        editor.drawCircle();
        editor.touch(40, 41); // the arrow stays in the hand
        QVERIFY(editor.answer({u"btn_ColorPicker_Lime"_s, u"btn_Confirm"_s}, [&] { editor.touch(40, 263); }));
        editor.drag({300, 300}, {500, 300});
        const QImage shown = editor.shown();
        QCOMPARE(shown.pixelColor(400, 300), QColor(Qt::green));
        QCOMPARE(shown.pixelColor(150, 100), QColor(Qt::red)); // only new items take a new colour
        QVERIFY(editor.answer({u"btn_Confirm"_s}, [&] { editor.touch(40, 263); }));
        QVERIFY(!Screen::settings().currEditorColor.isValid());
        editor.touch(40, 41);
        editor.drag({300, 400}, {500, 400});
        QCOMPARE(editor.shown().pixelColor(400, 400), QColor(Qt::green));
        editor.touch(40, 41); // the arrow: laid down by the next tool, also when that gives nothing
        for (const QString &nothing : {u"Cancel"_s, u"RemovedDamageNotation"_s})
            QVERIFY(editor.answer({u"btn_DamageCatelog_"_s + nothing}, [&] { editor.touch(40, 189); }));
        Screen::settings().bPictureEdited = false;
        editor.drag({100, 500}, {200, 500});
        QVERIFY(!Screen::settings().bPictureEdited);
        QVERIFY(editor.answer({u"btn_DamageCatelog_Confirm"_s}, [&] { editor.touch(40, 189); }));
        editor.drag({100, 300}, {100, 300});
        auto *label = qgraphicsitem_cast<QGraphicsTextItem *>(editor.view()->itemAt(110, 310));
        QVERIFY(label);
        QCOMPARE(label->toPlainText(), u"Foreign body, free"_s);
    }

    void onAFullCardTheDrawingStays()
    {
        Editor editor;
        editor.drawCircle();
        editor.folder.control({u"card"_s, u"full"_s});
        QVERIFY(editor.answer({u"btn_Cancel"_s}, [&] { editor.touch(40, 411); }));
        QVERIFY(editor.button("btn_menu_ThumbnailImageEditSave")->isEnabled());
        QVERIFY(editor.answer({u"btn_Confirm"_s, u"btn_Cancel"_s}, [&] { editor.back(); }));
        QVERIFY(editor.isOpen());
        QCOMPARE(editor.shown().pixelColor(150, 100), QColor(Qt::red));
        editor.folder.put(u"/.simulator/filler"_s, "0"); // room again
        QVERIFY(editor.answer({u"btn_Confirm"_s}, [&] { editor.back(); }));
        QVERIFY(!editor.isOpen());
        QVERIFY(isNear(editor.saved().pixelColor(150, 100), Qt::red));
    }

    void aPulledCardEndsTheEditor()
    {
        Editor editor;
        // While the user draws, picks a colour, saves, and is asked; a dialog returns by itself.
        for (const int button : {0, 263, 411, 559}) {
            editor.drawCircle();
            const auto pull = [&] { editor.folder.control({u"card"_s, u"remove"_s}); };
            if (button == 263 || button == 559)
                whenOpen([&](QDialog *) { pull(); });
            if (button != 0)
                editor.touch(40, button);
            if (button == 0 || button == 411)
                pull();
            QTRY_COMPARE_WITH_TIMEOUT(editor.window.mainState(), eStatePlaybackNothingSaved, 20000);
            QVERIFY(!editor.isOpen());
            QVERIFY(!Screen::settings().bPictureEdited);
            editor.back();
            QVERIFY(editor.button("btn_menu_zoom_plus")->isVisible());
            editor.insertCard();
            editor.browse();
            editor.select(0);
            editor.open();
            QVERIFY(editor.button("btn_menu_ThumbnailImageEditSave")->isEnabled());
            QCOMPARE(editor.shown().pixelColor(150, 100), kGround);
            QCOMPARE(editor.pictures().size(), 1);
        }
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestEditor>(argc, argv);
}
#include "test_editor.moc"
