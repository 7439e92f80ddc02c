// MaskData: areas of the frame that the peak search leaves out.
#pragma once

#include <QList>
#include <QPolygonF>

namespace tessera {

/// Polygons on the frame.
struct MaskData {
    Qt::FillRule fillRule = Qt::OddEvenFill;
    QList<QPolygonF> listPolygon;  ///< corners in raw frame pixels
};

}  // namespace tessera
