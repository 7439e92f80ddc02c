#include "frames/peakmask.h"

#include <algorithm>

namespace tessera {

void removeMaskedPeaks(const MaskData& mask, QList<double>& listX, QList<double>& listY)
{
    if (mask.listPolygon.isEmpty() || listX.size() != listY.size()) {
        return;
    }
    QList<double> listKeptX, listKeptY;
    for (int i = 0; i < listX.size(); ++i) {
        const QPointF ptRaw(listX[i], listY[i]);
        const bool bMasked = std::any_of(
            mask.listPolygon.cbegin(), mask.listPolygon.cend(),
            [&](const QPolygonF& polygon) { return polygon.containsPoint(ptRaw, mask.fillRule); });
        if (bMasked) {
            continue;
        }
        listKeptX.append(listX[i]);
        listKeptY.append(listY[i]);
    }
    listX = listKeptX;
    listY = listKeptY;
}

}  // namespace tessera
