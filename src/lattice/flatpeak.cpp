#include "lattice/flatpeak.h"

#include "geometry/angles.h"

#include <cmath>

namespace tessera {

Eigen::Vector3d onSphere(const FlatPeak& peak, const FlatGeometry& geometry, double dfAzimuth)
{
    const double dfK = 1 / geometry.dfWavelength;
    const double dfCos = std::cos(radians(dfAzimuth));
    const double dfSin = std::sin(radians(dfAzimuth));
    const double dfX = geometry.dfPixelSize * (dfCos * peak.dfX - dfSin * peak.dfY);
    const double dfY = geometry.dfPixelSize * (dfSin * peak.dfX + dfCos * peak.dfY);
    const double dfSquare = dfX * dfX + dfY * dfY;
    const double dfLength = std::sqrt(dfSquare + dfK * dfK);
    const double dfScale = dfK / dfLength;
    // This is k·(length − k)/length, rearranged to avoid the difference of two nearly equal numbers.
    return {dfX * dfScale, dfY * dfScale, dfScale * dfSquare / (dfLength + dfK)};
}

Eigen::Vector3d turnedByTilt(const Eigen::Vector3d& v, double dfTilt)
{
    const double dfCos = std::cos(radians(dfTilt));
    const double dfSin = std::sin(radians(dfTilt));
    return {v.x(), dfCos * v.y() - dfSin * v.z(), dfSin * v.y() + dfCos * v.z()};
}

LatticePoints pointsForAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                            double dfAzimuth)
{
    LatticePoints listPoint;
    listPoint.reserve(vecPeak.size());
    for (const FlatPeak& peak : vecPeak) {
        listPoint.push_back(turnedByTilt(onSphere(peak, geometry, dfAzimuth), peak.dfTilt));
    }
    return listPoint;
}

}  // namespace tessera
