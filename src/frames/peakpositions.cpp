#include "frames/peakpositions.h"

namespace tessera {

QList<QPointF> peakPositions(const QList<Peak3D>& listPeak)
{
    QList<QPointF> listPosition;
    listPosition.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        listPosition.append(QPointF(peak.dfX2D, peak.dfY2D));
    }
    return listPosition;
}

}  // namespace tessera
