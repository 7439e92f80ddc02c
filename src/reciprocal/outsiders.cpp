#include "reciprocal/outsiders.h"

#include <algorithm>
#include <cmath>

void removeOutsiderReflections(QList<Peak3D>& listPeak, const QList<double>& listOverallTilt,
                               const QList<Vec3D>& listCell)
{
    if (listOverallTilt.isEmpty() || listCell.size() != 3)
        return;
    constexpr double dfPi = 3.141592653589793;
    const double dfFirst = listOverallTilt.constFirst();
    const double dfLast = listOverallTilt.constLast();
    const double dfLow = (std::min(dfFirst, dfLast) + 2) * dfPi / 180;
    const double dfHigh = (std::max(dfFirst, dfLast) - 2) * dfPi / 180;
    QList<Peak3D> listInside;
    for (const Peak3D& peak : listPeak) {
        const double dfAngle = double(std::atan2(peak.fZ3D, peak.fY3D));
        double dfOpposite = dfAngle + dfPi;
        if (dfOpposite > dfPi)
            dfOpposite -= 2 * dfPi;
        if ((dfLow < dfAngle && dfAngle < dfHigh) || (dfLow < dfOpposite && dfOpposite < dfHigh))
            listInside.append(peak);
    }
    listPeak = listInside;
}
