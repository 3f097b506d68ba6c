#include "finger.h"
#include "testunit.h"

#include "dialogs/colorpicker.h"
#include "dialogs/editorscene.h"
#include "settings/params.h"

#include <QApplication>
#include <QGraphicsItemGroup>
#include <QGraphicsView>
#include <QSignalSpy>
#include <QTest>

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

class TestEditor : public HeardTest
{
    Q_OBJECT

private slots:
    void anArrowsHeadPointsAlongTheDrag()
    {
        const QPoint from(300, 300);
        for (const QPoint way : {QPoint(1, 0), QPoint(1, 1), QPoint(0, 1), QPoint(-1, 1), QPoint(-1, 0),
                                 QPoint(-1, -1), QPoint(0, -1), QPoint(1, -1)}) {
            const QPoint to = from + way * 100;
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
            auto *line = qgraphicsitem_cast<QGraphicsLineItem *>(parts[0]);
            auto *head = qgraphicsitem_cast<QGraphicsPolygonItem *>(parts[1]);
            QCOMPARE(line->line(), QLineF(from, to));
            QCOMPARE(head->brush(), QBrush(Qt::yellow));
            QCOMPARE(head->polygon()[0], QPointF(to));
            const QPointF back =
                (head->polygon()[1] + head->polygon()[2]) / 2 - to; // from the tip to its base
            const QPointF expected = QPointF(-way) / std::hypot(way.x(), way.y()) * 10 * std::cos(3.14 / 6);
            QVERIFY(QLineF(back, expected).length() < 0.2);
        }
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

    void aCircleTakesItsSizeFromTheDrag()
    {
        struct Row
        {
            QPoint from, to;
            QRectF rectangle;
        };
        for (const auto &[from, to, rectangle] : {Row{{100, 100}, {180, 160}, {100, 100, 80, 60}},
                                                  {{300, 300}, {220, 240}, {300, 300, -80, -60}},
                                                  {{300, 300}, {220, 320}, {300, 300, -80, 20}},
                                                  {{300, 300}, {310, 280}, {300, 300, 10, -20}},
                                                  {{300, 300}, {300, 300}, {300, 300, 20, 20}}, // a tap
                                                  {{300, 300}, {500, 319}, {300, 300, 20, 20}}, // flat
                                                  {{0, 0}, {200, 200}, {0, 0, 20, 20}}}) {
            Surface surface;
            surface.scene.setMode(eInsertCircle);
            surface.drag(from, to);
            const auto circles = surface.all<QGraphicsEllipseItem>();
            QCOMPARE(circles.size(), 1);
            QCOMPARE(circles[0]->rect(), rectangle);
            QCOMPARE(circles[0]->pen().color(), QColor(Qt::red));
            QVERIFY(surface.isEdited());
            QCOMPARE(surface.scene.mode(), eMoveItem);
        }
    }

    void aLabelStaysOnThePicture()
    {
        Surface surface;
        const QString note = u"root "_s.repeated(80);
        for (const QString &text : {note, u"Blockage"_s, QString()}) {
            surface.scene.setText(text);
            surface.scene.setMode(eInsertText);
            surface.press({400, 100});
            QVERIFY(surface.isEdited()); // finished at the press
            surface.release({400, 100});
        }
        const auto labels = surface.all<QGraphicsTextItem>();
        QCOMPARE(labels.size(), 2); // no words, no label
        QCOMPARE(labels[0]->toPlainText(), note);
        QCOMPARE(labels[0]->pos(), QPointF(400, 100));
        QVERIFY(labels[0]->sceneBoundingRect().right() <= 720.5);
        QVERIFY(labels[1]->boundingRect().height() < 40); // one line
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

    void thePickerShowsTheColourThatCounts()
    {
        QWidget window;
        ColorPicker picker(&window);
        const auto shown = [&picker] { return picker.grab().toImage().pixelColor(225, 95); };
        picker.setColor(Qt::magenta);
        picker.init();
        picker.show();
        QCOMPARE(shown(), QColor(Qt::magenta));
        touchIn(&picker, u"btn_ColorPicker_Navy"_s);
        QCOMPARE(shown(), QColor(0, 0, 128));
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
