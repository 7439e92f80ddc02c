// SelRectItem: the rectangle that the user drags over a frame to choose a region.
#pragma once

#include <QColor>
#include <QGraphicsRectItem>
#include <QObject>

namespace tessera {

/// A movable rectangle that stays within a bound, with a red cross at its centre.
///
/// Its rectangle lies around the item's position, half a pixel towards larger coordinates, so that the
/// frame of the rectangle runs through the middle of pixels.
class SelRectItem : public QObject, public QGraphicsRectItem {
    Q_OBJECT

public:
    /// Of size 0, without a bound.
    explicit SelRectItem(QGraphicsItem* pParent = nullptr);

    /// Sets the size in pixels around the present position and moves the item into the bound.
    void setSelSize(double dfWidth, double dfHeight);
    /// Sets the bound, scene coordinates, and moves the item into it.
    void setBound(const QRectF& rectBound);
    const QRectF& bound() const { return m_rectBound; }  ///< scene coordinates

    void setPenColor(const QColor& color);  ///< of the frame
    void setPenWidth(double dfWidth);       ///< of the frame, scene coordinates

    QRectF boundingRect() const override;
    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;

signals:
    /// The rectangle after a move, scene coordinates in whole pixels.
    void positionChanged(QRectF rectSel);

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;

private:
    void clampToBound();

    QRectF m_rectBound;
    bool m_bClamping = false;
};

}  // namespace tessera
