// MarkItem: what the marks on a frame have in common, a size and a pen.
#pragma once

#include <QColor>
#include <QGraphicsItem>
#include <QPen>

namespace tessera {

class CMarkZoom;

/// A mark at a position on the frame; its position is the corner of the pixel that it marks.
///
/// The bounding rectangle is the square of the side `size` around the position. Paint may reach beyond
/// it (see the derived marks), so a view that shows marks repaints as a whole, as BaseImgView does.
class MarkItem : public QGraphicsItem {
public:
    /// A mark of size 0.
    explicit MarkItem(QGraphicsItem* pParent = nullptr);

    /// Pixels; what it measures is the derived mark's. Schedules a repaint, as do the two below.
    void setSize(float fSize);
    void setColor(const QColor& color);  ///< of the lines
    void setPenWidth(double dfWidth);    ///< of the lines at 100 %, pixels

    float size() const { return m_fSize; }     ///< pixels
    const QPen& pen() const { return m_pen; }  ///< colour and width of the lines

    QRectF boundingRect() const override;

protected:
    /// Gives a painter the pen as it is at 100 %, at another zoom as CMarkZoom has it.
    void setPenOn(QPainter& painter, const CMarkZoom& zoom) const;

    float m_fSize = 0.f;
    QPen m_pen;
};

}  // namespace tessera
