#include "dialogs/editorscene.h"

#include "dialogs/editorshapes.h"
#include "settings/params.h"

#include <QFont>
#include <QGraphicsItemGroup>
#include <QGraphicsPixmapItem>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsTextItem>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace {

constexpr double kPenWidth = 4.0;
constexpr double kFinger = 24.0; // width of the strip along an arrow in which a touch takes it
constexpr int kLabelPoints = 14;
constexpr double kNarrowestLabel = 160.0;

QPen penOf(const QColor &color)
{
    return QPen(QBrush(color), kPenWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
}

void makeMovable(QGraphicsItem *item)
{
    item->setFlags(QGraphicsItem::ItemIsMovable | QGraphicsItem::ItemIsSelectable |
                   QGraphicsItem::ItemSendsGeometryChanges);
}

// A group would take touches in its whole rectangle, and a slanting arrow hide what lies beside it.
class Arrow : public QGraphicsItemGroup
{
public:
    explicit Arrow(const QLineF &shaft)
    {
        QPainterPath path(shaft.p1());
        path.lineTo(shaft.p2());
        QPainterPathStroker strip;
        strip.setWidth(kFinger);
        strip.setCapStyle(Qt::RoundCap);
        m_strip = strip.createStroke(path);
    }

    QPainterPath shape() const override { return m_strip; }

private:
    QPainterPath m_strip;
};

} // namespace

editorScene::editorScene(QObject *parent) : QGraphicsScene(parent), m_pParams(params::getInstance())
{
    setBackgroundBrush(Qt::black);
}

editorScene::~editorScene() = default;

void editorScene::setPicture(const QPixmap &picture)
{
    delete m_picture;
    const QSize size = sceneRect().size().toSize();
    m_picture = addPixmap(picture.size() == size || picture.isNull()
                              ? picture
                              : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    m_picture->setPos(sceneRect().topLeft());
    m_picture->setZValue(-1);
}

void editorScene::clear()
{
    setMode(eNone);
    m_picture = nullptr;
    QGraphicsScene::clear();
}

void editorScene::dropUnfinished()
{
    if (!m_waiting) { // then it is in the scene
        delete line;
        delete circle;
    }
    m_waiting.reset();
    line = nullptr;
    circle = nullptr;
    text = nullptr;
}

void editorScene::setMode(eMode mode)
{
    dropUnfinished();
    editMode = mode;
    if (mode == eInsertLine)
        m_waiting.reset(line = new QGraphicsLineItem);
    else if (mode == eInsertCircle)
        m_waiting.reset(circle = new QGraphicsEllipseItem);
    else if (mode == eInsertText)
        m_waiting.reset(text = new QGraphicsTextItem);
}

void editorScene::setColor(const QColor &color)
{
    currColor = color;
    if (color.isValid())
        m_lastValidColor = color;
}

QColor editorScene::drawingColor() const
{
    return currColor.isValid() ? currColor : m_lastValidColor;
}

void editorScene::setText(const QString &label)
{
    textElement = label;
}

bool editorScene::hasItems() const
{
    const QList<QGraphicsItem *> all = items();
    return std::any_of(all.cbegin(), all.cend(), [](const QGraphicsItem *item) {
        return item->flags().testFlag(QGraphicsItem::ItemIsSelectable);
    });
}

void editorScene::deleteSelectedItem()
{
    const QList<QGraphicsItem *> selected = selectedItems();
    if (!selected.isEmpty())
        delete selected.first(); // leaves the scene by itself
}

QImage editorScene::rendered()
{
    clearSelection();
    QImage picture(sceneRect().size().toSize(), QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    // As the view draws it: the file shows what the screen showed.
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    render(&painter, QRectF(), sceneRect(), Qt::KeepAspectRatio);
    return picture;
}

void editorScene::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const bool draws = m_waiting != nullptr;
    if (draws)
        startItem(event->scenePos());
    QGraphicsScene::mousePressEvent(event);
    if (draws) {
        clearSelection(); // the press has taken whatever lies below
        event->accept();
    }
}

void editorScene::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    mousePressEvent(event);
}

void editorScene::startItem(const QPointF &point)
{
    if (text) {
        placeText(point);
        return;
    }
    if (line) {
        line->setLine(QLineF(point, point));
        line->setPen(penOf(drawingColor()));
    } else {
        itemBoundary = QRectF(point, QSizeF(0, 0));
        circle->setRect(itemBoundary);
        circle->setPen(penOf(drawingColor()));
        makeMovable(circle);
    }
    addItem(m_waiting.release());
}

void editorScene::placeText(const QPointF &point)
{
    if (textElement.isEmpty()) {
        dropUnfinished();
        return;
    }
    text->setPlainText(textElement);
    makeMovable(text);
    text->setTextInteractionFlags(Qt::NoTextInteraction);
    text->setDefaultTextColor(drawingColor());
    QFont font = text->font();
    font.setPointSize(kLabelPoints);
    text->setFont(font);
    text->setPos(point);
    // A long label goes on in the next line, not beyond the picture.
    const double room = std::max(sceneRect().right() - point.x(), kNarrowestLabel);
    if (text->boundingRect().width() > room)
        text->setTextWidth(room);
    addItem(m_waiting.release());
    text = nullptr;
    itemFinished();
}

void editorScene::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (editMode == eMoveItem) {
        QGraphicsScene::mouseMoveEvent(event);
    } else if (m_waiting) {
        return; // a tool is ready, no finger is down
    } else if (line) {
        line->setLine(QLineF(line->line().p1(), event->scenePos()));
    } else if (circle) {
        itemBoundary = editorshapes::draggedCircle(itemBoundary, event->scenePos());
        circle->setRect(itemBoundary);
    }
}

void editorScene::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool endsGesture = event->button() == Qt::LeftButton && !m_waiting;
    const bool drew = editMode == eInsertLine || editMode == eInsertCircle || editMode == eInsertText;
    if (endsGesture) {
        if (line && !finishArrow()) {
            setMode(eInsertLine); // a tap has no direction: the arrow is still to come
        } else {
            if (circle)
                finishCircle();
            editMode = eMoveItem;
        }
    }
    QGraphicsScene::mouseReleaseEvent(event);
    if (endsGesture && drew)
        clearSelection(); // what lay below the finger was not meant
}

bool editorScene::finishArrow()
{
    const QPolygonF corners = editorshapes::arrowHead(line->line());
    if (corners.isEmpty())
        return false;
    auto *head = new QGraphicsPolygonItem(corners);
    head->setPen(line->pen());
    head->setBrush(line->pen().color());
    auto *arrow = new Arrow(line->line());
    addItem(arrow);
    arrow->addToGroup(line);
    arrow->addToGroup(head);
    makeMovable(arrow);
    line = nullptr;
    itemFinished();
    return true;
}

void editorScene::finishCircle()
{
    itemBoundary = editorshapes::finishedCircle(itemBoundary);
    circle->setRect(itemBoundary);
    circle = nullptr;
    itemFinished();
}

void editorScene::itemFinished()
{
    m_pParams->getParams().bPictureEdited = true;
    emit ClearPictureEditorButtons();
}
