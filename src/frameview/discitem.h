// DiscItem: a circle at a place between the pixels, with a text for the pointer.
#pragma once

#include <QColor>
#include <QGraphicsEllipseItem>
#include <QPointF>
#include <QString>

namespace tessera {

/// The disc in which a reflection is summed. Its line has the same width at each zoom; the tool tip comes up
/// anywhere inside.
class DiscItem : public QGraphicsEllipseItem {
public:
    /// @param ptCentre  pixels of the frame, its upper left corner at (0, 0)
    /// @param dfRadius  pixels
    DiscItem(const QPointF& ptCentre, double dfRadius, const QColor& color, const QString& strTip);
};

}  // namespace tessera
