// MaskData: areas of the frame that peak hunting leaves out.
#pragma once

#include <QList>
#include <QPolygonF>

namespace tessera {

struct MaskData {
    Qt::FillRule fillRule = Qt::OddEvenFill;
    QList<QPolygonF> listPolygon;  ///< corners in raw frame pixels
};

}  // namespace tessera
