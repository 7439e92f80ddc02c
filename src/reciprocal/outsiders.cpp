#include "reciprocal/outsiders.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

void removeOutsiderReflections(QList<Peak3D>& listPeak, const QList<double>& listOverallTilt,
                               const std::optional<ReciprocalBasis>& basis)
{
    if (listOverallTilt.isEmpty() || !basis) {
        return;
    }
    const double dfFirst = listOverallTilt.constFirst();
    const double dfLast = listOverallTilt.constLast();
    const double dfLow = radians(std::min(dfFirst, dfLast) + 2);
    const double dfHigh = radians(std::max(dfFirst, dfLast) - 2);
    QList<Peak3D> listInside;
    for (const Peak3D& peak : listPeak) {
        const double dfAngle = double(std::atan2(peak.fZ3D, peak.fY3D));
        double dfOpposite = dfAngle + g_dfPi;
        if (dfOpposite > g_dfPi) {
            dfOpposite -= 2 * g_dfPi;
        }
        if ((dfLow < dfAngle && dfAngle < dfHigh) || (dfLow < dfOpposite && dfOpposite < dfHigh)) {
            listInside.append(peak);
        }
    }
    listPeak = listInside;
}

}  // namespace tessera
