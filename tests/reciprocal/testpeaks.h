// Peaks and reflections by hand.
#pragma once

#include "records/peak3d.h"

#include <QList>

namespace tessera {

inline Peak3D peakAt(double dfX, double dfY, int nFrame = 0, double dfIntensity = 1)
{
    Peak3D peak;
    peak.dfX2D = dfX;
    peak.dfY2D = dfY;
    peak.nFrame = nFrame;
    peak.dfIPoint = dfIntensity;
    return peak;
}

inline Peak3D reflection(double dfH, double dfK, double dfL, double dfIntensity = 1, int nID = 0)
{
    Peak3D peak;
    peak.setHKL(dfH, dfK, dfL);
    peak.dfIPoint = dfIntensity;
    peak.nID = nID;
    return peak;
}

inline QList<int> idsOf(const QList<Peak3D>& listPeak)
{
    QList<int> listID;
    for (const Peak3D& peak : listPeak) {
        listID.append(peak.nID);
    }
    return listID;
}

}  // namespace tessera
