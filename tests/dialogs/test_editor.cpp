#include "testunit.h"

#include "dialogs/colorpicker.h"
#include "dialogs/editorscene.h"
#include "dialogs/editorshapes.h"
#include "settings/params.h"

#include <QGraphicsItemGroup>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

const QColor kGround(60, 70, 80);

// A scene with a picture under a finger.
struct Surface
{
    Surface()
    {
        params::getInstance()->getParams().bPictureEdited = false;
        scene.setSceneRect(0, 0, 720, 576);
        QPixmap picture(720, 576);
        picture.fill(kGround);
        scene.setPicture(picture);
        view.setFrameShape(QFrame::NoFrame);
        view.setFixedSize(720, 576);
        view.setScene(&scene);
        view.show();
    }

    // Sent by hand: QTest takes the point (0, 0) for the middle.
    void send(QEvent::Type type, const QPoint &at)
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButton down = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, view.viewport()->mapToGlobal(at), button, down, Qt::NoModifier);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }
    void press(const QPoint &at) { send(QEvent::MouseButtonPress, at); }
    void move(const QPoint &to) { send(QEvent::MouseMove, to); }
    void release(const QPoint &at) { send(QEvent::MouseButtonRelease, at); }
    void drag(const QPoint &from, const QPoint &to)
    {
        press(from);
        move((from + to) / 2);
        move(to);
        release(to);
    }
    template <typename Item> QList<Item *> all() const
    {
        QList<Item *> found;
        for (QGraphicsItem *item : scene.items(Qt::AscendingOrder)) {
            if (auto *wanted = qgraphicsitem_cast<Item *>(item); wanted && !item->parentItem())
                found << wanted;
        }
        return found;
    }
    bool isEdited() const { return params::getInstance()->getParams().bPictureEdited; }

    editorScene scene{nullptr};
    QGraphicsView view;
};

} // namespace

class TestEditor : public QObject
{
    Q_OBJECT

private slots:
    void anArrowsHeadPointsAlongTheDrag_data()
    {
        QTest::addColumn<QPoint>("to");
        const QPoint from(300, 300);
        for (int x = -1; x <= 1; ++x) {
            for (int y = -1; y <= 1; ++y) {
                if (x != 0 || y != 0)
                    QTest::addRow("%d, %d", x, y) << from + QPoint(x, y) * 100;
            }
        }
    }
    void anArrowsHeadPointsAlongTheDrag()
    {
        QFETCH(const QPoint, to);
        const QPoint from(300, 300);
        Surface surface;
        QSignalSpy finished(&surface.scene, &editorScene::ClearPictureEditorButtons);
        surface.scene.setColor(Qt::yellow);
        surface.scene.setMode(eInsertLine);
        surface.drag(from, to);
        QCOMPARE(finished.size(), 1);
        QVERIFY(surface.isEdited());
        QCOMPARE(surface.scene.mode(), eMoveItem);
        const auto arrows = surface.all<QGraphicsItemGroup>();
        QCOMPARE(arrows.size(), 1);
        const auto parts = arrows[0]->childItems();
        QCOMPARE(parts.size(), 2);
        auto *line = qgraphicsitem_cast<QGraphicsLineItem *>(parts[0]);
        auto *head = qgraphicsitem_cast<QGraphicsPolygonItem *>(parts[1]);
        QCOMPARE(line->line(), QLineF(from, to));
        QCOMPARE(head->brush(), QBrush(Qt::yellow));
        QCOMPARE(head->polygon()[0], QPointF(to));
        const QPointF back = (head->polygon()[1] + head->polygon()[2]) / 2 - to; // from the tip to its base
        const QLineF shaft(to, from);
        QVERIFY(std::abs(std::hypot(back.x(), back.y()) - 10 * std::cos(3.14 / 6)) < 0.1);
        QVERIFY(QLineF(QPointF(), back).angleTo(QLineF(QPointF(), shaft.p2() - shaft.p1())) < 1 ||
                QLineF(QPointF(), back).angleTo(QLineF(QPointF(), shaft.p2() - shaft.p1())) > 359);
    }

    void theHeadsCornersFollowTheShortPi()
    {
        const QPolygonF head = editorshapes::arrowHead(QLineF(0, 0, 100, 0)); // angle 6.28
        QCOMPARE(head[1], QPointF(100 - 10 * std::sin(6.28 + 3.14 / 3), -10 * std::cos(6.28 + 3.14 / 3)));
        QCOMPARE(head[2], QPointF(100 - 10 * std::sin(6.28 + 3.14 - 3.14 / 3),
                                  -10 * std::cos(6.28 + 3.14 - 3.14 / 3)));
    }

    void aTapPlacesNoArrowAndKeepsTheTool()
    {
        Surface surface;
        surface.scene.setMode(eInsertLine);
        surface.drag({200, 200}, {200, 200});
        QCOMPARE(surface.scene.mode(), eInsertLine);
        QVERIFY(!surface.scene.hasItems());
        QVERIFY(!surface.isEdited());
        QCOMPARE(surface.scene.items().size(), 1); // the picture
        // A press soon after another comes as a double click.
        surface.send(QEvent::MouseButtonDblClick, {200, 200});
        surface.move({300, 200});
        surface.release({300, 200});
        QCOMPARE(surface.all<QGraphicsItemGroup>().size(), 1);
    }

    void aCircleTakesItsSizeFromTheDrag_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRectF>("rectangle");
        QTest::newRow("down right") << QPoint(100, 100) << QPoint(180, 160) << QRectF(100, 100, 80, 60);
        QTest::newRow("up left") << QPoint(300, 300) << QPoint(220, 240) << QRectF(300, 300, -80, -60);
        QTest::newRow("down left") << QPoint(300, 300) << QPoint(220, 320) << QRectF(300, 300, -80, 20);
        QTest::newRow("up right") << QPoint(300, 300) << QPoint(310, 280) << QRectF(300, 300, 10, -20);
        QTest::newRow("tap") << QPoint(300, 300) << QPoint(300, 300) << QRectF(300, 300, 20, 20);
        QTest::newRow("flat") << QPoint(300, 300) << QPoint(500, 319) << QRectF(300, 300, 20, 20);
        QTest::newRow("at the origin") << QPoint(0, 0) << QPoint(200, 200) << QRectF(0, 0, 20, 20);
    }
    void aCircleTakesItsSizeFromTheDrag()
    {
        QFETCH(const QPoint, from);
        QFETCH(const QPoint, to);
        Surface surface;
        surface.scene.setMode(eInsertCircle);
        surface.drag(from, to);
        const auto circles = surface.all<QGraphicsEllipseItem>();
        QCOMPARE(circles.size(), 1);
        QTEST(circles[0]->rect(), "rectangle");
        QCOMPARE(circles[0]->pen().color(), QColor(Qt::red));
        QVERIFY(surface.isEdited());
        QCOMPARE(surface.scene.mode(), eMoveItem);
    }

    void aLabelStaysOnThePicture()
    {
        Surface surface;
        const QString note = u"root "_s.repeated(80);
        surface.scene.setColor(Qt::white);
        surface.scene.setText(note);
        surface.scene.setMode(eInsertText);
        surface.press({400, 100});
        QVERIFY(surface.isEdited()); // finished at the press
        surface.release({400, 100});
        surface.scene.setText(u"Blockage"_s);
        surface.scene.setMode(eInsertText);
        surface.drag({100, 400}, {100, 400});
        surface.scene.setText(QString());
        surface.scene.setMode(eInsertText);
        surface.drag({200, 500}, {200, 500});
        const auto labels = surface.all<QGraphicsTextItem>();
        QCOMPARE(labels.size(), 2);
        QCOMPARE(labels[0]->toPlainText(), note);
        QCOMPARE(labels[0]->pos(), QPointF(400, 100));
        QVERIFY(labels[0]->sceneBoundingRect().right() <= 720.5);
        QCOMPARE(labels[0]->font().pointSize(), 14);
        QVERIFY(labels[1]->boundingRect().height() < 40); // one line
    }

    void oneItemForEachToolThenItemsMove()
    {
        Surface surface;
        surface.scene.setMode(eInsertCircle);
        surface.drag({100, 100}, {200, 200});
        surface.drag({150, 150}, {250, 170});
        const auto circles = surface.all<QGraphicsEllipseItem>();
        QCOMPARE(circles.size(), 1);
        QCOMPARE(circles[0]->pos(), QPointF(100, 20));
        surface.drag({5, 570}, {105, 570}); // the picture stays
        QCOMPARE(surface.all<QGraphicsPixmapItem>()[0]->pos(), QPointF());
        QVERIFY(surface.scene.selectedItems().isEmpty());
    }

    void anItemDrawnOverAnotherLeavesItAlone()
    {
        Surface surface;
        surface.scene.setMode(eInsertCircle);
        surface.drag({100, 100}, {300, 300});
        surface.scene.setMode(eInsertLine);
        surface.drag({150, 150}, {250, 250});
        QCOMPARE(surface.all<QGraphicsEllipseItem>()[0]->pos(), QPointF());
        QVERIFY(surface.scene.selectedItems().isEmpty());
        surface.scene.deleteSelectedItem();
        QCOMPARE(surface.all<QGraphicsItemGroup>().size(), 1);
        surface.drag({170, 230}, {170, 230}); // in the arrow's rectangle, beside its shaft: the circle
        surface.scene.deleteSelectedItem();
        QCOMPARE(surface.all<QGraphicsEllipseItem>().size(), 0);
        surface.drag({206, 200}, {206, 200});
        surface.scene.deleteSelectedItem();
        QVERIFY(!surface.scene.hasItems());
        QCOMPARE(surface.scene.items().size(), 1);
    }

    void whatIsInTheHandGoesWithTheScene()
    {
        Surface surface;
        for (const eMode mode : {eInsertLine, eInsertCircle}) {
            surface.scene.setMode(mode);
            surface.press({100, 100});
            surface.move({200, 150});
            surface.scene.clear();
            QVERIFY(surface.scene.items().isEmpty());
            surface.move({250, 250});
            surface.release({250, 250});
            QVERIFY(surface.scene.items().isEmpty());
            surface.scene.setMode(mode);
            surface.press({100, 100});
            surface.move({200, 150});
            surface.scene.setMode(eInsertText); // another tool in the middle of a drag
            surface.release({250, 250});
            QVERIFY(surface.scene.items().isEmpty());
            QCOMPARE(surface.scene.mode(), eInsertText);
        }
        QVERIFY(!surface.isEdited());
    }

    void aStrayEventKeepsTheTool()
    {
        Surface surface;
        for (const eMode mode : {eInsertLine, eInsertCircle, eInsertText}) {
            surface.scene.setText(u"x"_s);
            surface.scene.setMode(mode);
            surface.move({50, 50});
            surface.release({50, 50});
            QTest::mouseClick(surface.view.viewport(), Qt::RightButton, {}, {60, 60});
            QCOMPARE(surface.scene.mode(), mode);
            QVERIFY(!surface.scene.hasItems());
        }
    }

    void onlyNewItemsTakeANewColour()
    {
        Surface surface;
        const auto drawn = [&surface] { return surface.all<QGraphicsEllipseItem>().last()->pen().color(); };
        for (const QColor &color : {QColor(Qt::blue), QColor(), QColor(Qt::green)}) {
            surface.scene.setColor(color);
            surface.scene.setMode(eInsertCircle);
            surface.drag({100, 100}, {200, 200});
            QCOMPARE(drawn(), color.isValid() ? color : QColor(Qt::blue));
        }
        QCOMPARE(surface.all<QGraphicsEllipseItem>()[0]->pen().color(), QColor(Qt::blue));
    }

    void theRenderedPictureIsWhatTheViewShows()
    {
        Surface surface;
        surface.view.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        QPixmap large(1440, 1000);
        large.fill(Qt::darkCyan);
        surface.scene.setPicture(large); // stretched, as on the label
        surface.scene.setMode(eInsertCircle);
        surface.drag({100, 100}, {301, 247});
        surface.scene.setMode(eInsertLine);
        surface.drag({350, 300}, {500, 421});
        surface.scene.setText(u"Crack in longitudinal direction"_s);
        surface.scene.setMode(eInsertText);
        surface.drag({400, 60}, {400, 60});
        surface.drag({400 + 5, 60 + 5}, {400 + 5, 60 + 5});
        QCOMPARE(surface.scene.selectedItems().size(), 1);
        const QImage saved = surface.scene.rendered().convertToFormat(QImage::Format_RGB32);
        QVERIFY(surface.scene.selectedItems().isEmpty());
        const QImage shown = surface.view.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(saved.size(), QSize(720, 576));
        QCOMPARE(saved, shown);
        QCOMPARE(saved.pixelColor(719, 575), QColor(Qt::darkCyan));
    }

    void aPickedColourIsTheLastOneTouched()
    {
        QWidget window;
        ColorPicker picker(&window);
        const auto shown = [&picker] { return picker.grab().toImage().pixelColor(225, 95); };
        const auto touch = [&picker](const char *name) {
            QTest::mouseClick(picker.findChild<QPushButton *>(QString::fromLatin1(name)), Qt::LeftButton);
        };
        picker.setColor(Qt::magenta);
        picker.init();
        picker.show();
        QCOMPARE(shown(), QColor(Qt::magenta));
        touch("btn_ColorPicker_Navy");
        QCOMPARE(shown(), QColor(0, 0, 128));
        touch("btn_ColorPicker_Orange");
        QCOMPARE(shown(), QColor(255, 133, 27));
        QVERIFY(picker.isVisible());
        touch("btn_Confirm");
        QVERIFY(!picker.isVisible());
        QCOMPARE(picker.selectedColor, QColor(255, 133, 27));
    }

    void everySwatchGivesAColourLikeItsFace()
    {
        ColorPicker picker(nullptr);
        QList<QRgb> colours;
        const QImage face = picker.grab().toImage();
        for (QPushButton *swatch : picker.findChildren<QPushButton *>(QRegularExpression(u"ColorPicker"_s))) {
            swatch->click();
            colours << picker.selectedColor.rgb();
            const QColor shown = face.pixelColor(swatch->geometry().center());
            const QColor given = picker.selectedColor;
            for (const int difference :
                 {shown.red() - given.red(), shown.green() - given.green(), shown.blue() - given.blue()})
                QVERIFY2(std::abs(difference) <= 64, qPrintable(swatch->objectName()));
        }
        QCOMPARE(colours.size(), 16);
        QCOMPARE(QSet<QRgb>(colours.begin(), colours.end()).size(), 16);
    }

    void closedWithoutTheTickTheColourStays_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("cross") << 0;
        QTest::newRow("escape") << 1;
        QTest::newRow("closed from outside") << 2;
    }
    void closedWithoutTheTickTheColourStays()
    {
        QFETCH(const int, way);
        ColorPicker picker(nullptr);
        picker.setColor(Qt::cyan);
        picker.init();
        QTimer::singleShot(0, &picker, [&] {
            QTest::mouseClick(picker.findChild<QPushButton *>(u"btn_ColorPicker_Red"_s), Qt::LeftButton);
            if (way == 0)
                QTest::mouseClick(picker.findChild<QPushButton *>(u"btn_Cancel"_s), Qt::LeftButton);
            else if (way == 1)
                QTest::keyClick(&picker, Qt::Key_Escape);
            else
                picker.close();
        });
        picker.exec();
        QCOMPARE(picker.selectedColor, QColor(Qt::cyan));
    }

    void aTickWithoutATouchGivesNoColour()
    {
        ColorPicker picker(nullptr);
        picker.setColor(Qt::cyan);
        picker.init();
        picker.show();
        QTest::mouseClick(picker.findChild<QPushButton *>(u"btn_Confirm"_s), Qt::LeftButton);
        QVERIFY(!picker.selectedColor.isValid());
    }
};

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const TestUnit folder({u"/home/root/tubix4_app"_s});
    params::resetForTests();
    TestEditor test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_editor.moc"
