// The drawing surface of the picture editor: one press, drag and release makes one item over the picture. GUI
// thread.
#pragma once

#include <QColor>
#include <QGraphicsScene>
#include <QImage>

#include <memory>

class params;

enum eMode { eNone, eInsertItem, eInsertLine, eInsertCircle, eInsertText, eMoveItem, eDeleteItem };

class editorScene : public QGraphicsScene
{
    Q_OBJECT

public:
    explicit editorScene(QObject *parent);
    ~editorScene() override;

    // Puts the picture under everything drawn, in place of the one before, stretched over the scene
    // rectangle. No finger moves it.
    void setPicture(const QPixmap &picture);

    // Hides QGraphicsScene's: takes out everything, also what a finger is just drawing, and lays the tool
    // down.
    void clear();

    // Takes a tool for one item; what was drawn and not finished goes. eInsertLine is the arrow.
    void setMode(eMode mode);
    eMode mode() const { return editMode; }

    void setColor(const QColor &color); // of items made from now on
    QColor drawingColor() const;        // the last valid colour set; red before

    void setText(const QString &label); // of the next label; an empty one is not placed

    bool hasItems() const;     // something drawn is on the picture
    void deleteSelectedItem(); // the first one; nothing when none is selected

    // The picture with everything drawn on it, as large as the scene rectangle. Ends the selection, whose
    // frame is not part of it.
    QImage rendered();

    bool isItemChange(int) const { return false; }

signals:
    void ClearPictureEditorButtons(); // an item has been finished
    void textInserted(QGraphicsTextItem *item);
    void itemSelected(QGraphicsItem *item);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override; // a press soon after another

private:
    void startItem(const QPointF &point);
    void placeText(const QPointF &point);
    bool finishArrow(); // false: a tap, nothing was placed
    void finishCircle();
    void itemFinished();
    void dropUnfinished();

    eMode editMode = eNone;
    std::unique_ptr<QGraphicsItem> m_waiting; // made by setMode, until a press puts it into the scene
    // The item in the hand: waiting, or in the scene and being drawn. Null when it is finished.
    QGraphicsLineItem *line = nullptr;
    QGraphicsEllipseItem *circle = nullptr;
    QGraphicsTextItem *text = nullptr;
    QGraphicsPixmapItem *m_picture = nullptr;
    QRectF itemBoundary; // of the circle being drawn
    QString textElement;
    QColor currColor;
    QColor m_lastValidColor = Qt::red;
    params *m_pParams; // not owned
};
