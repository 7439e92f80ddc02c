#include "lattice/beamsearch.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr int g_nReach = 25;      // steps on each side
constexpr double g_dfStep = 0.2;  // share of the distance of two spots; the maximum is about 0.5 wide
constexpr int g_nFiner = 10;      // steps of the finer grid in one of the first

/// The indices of a peak, and their change with the direct beam, per pixel.
struct MovedIndex {
    Eigen::Vector3d index;
    Eigen::Vector3d byX;
    Eigen::Vector3d byY;
};

/// The curvature of the Ewald sphere is included in the indices, but not in their change, where it matters
/// only by the cosine of the scattering angle.
std::vector<MovedIndex> movedIndices(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                     double dfAzimuth, const LatticeBasis& basis)
{
    const double dfCos = geometry.dfPixelSize * std::cos(radians(dfAzimuth));
    const double dfSin = geometry.dfPixelSize * std::sin(radians(dfAzimuth));
    std::vector<MovedIndex> vecIndex;
    vecIndex.reserve(vecPeak.size());
    for (const FlatPeak& peak : vecPeak) {
        const Eigen::Vector3d point = turnedByTilt(onSphere(peak, geometry, dfAzimuth), peak.dfTilt);
        vecIndex.push_back({basis * point, basis * turnedByTilt({dfCos, dfSin, 0}, peak.dfTilt),
                            basis * turnedByTilt({-dfSin, dfCos, 0}, peak.dfTilt)});
    }
    return vecIndex;
}

double sharpnessOf(const std::vector<MovedIndex>& vecIndex, double dfX, double dfY)
{
    double dfSum = 0;
    for (const MovedIndex& moved : vecIndex) {
        const Eigen::Vector3d index = moved.index - dfX * moved.byX - dfY * moved.byY;
        for (int n = 0; n < 3; ++n) {
            dfSum += std::cos(2 * g_dfPi * index[n]);
        }
    }
    return dfSum / (3 * double(vecIndex.size()));
}

/// The best position of a square grid around a first one, which wins if others are only as good.
BeamMove bestAround(const BeamMove& first, const std::vector<MovedIndex>& vecIndex, double dfStep, int nReach)
{
    BeamMove best = first;
    best.dfSharpness = sharpnessOf(vecIndex, first.dfX, first.dfY);
    for (int y = -nReach; y <= nReach; ++y) {
        for (int x = -nReach; x <= nReach; ++x) {
            const double dfX = first.dfX + x * dfStep;
            const double dfY = first.dfY + y * dfStep;
            const double dfSharpness = sharpnessOf(vecIndex, dfX, dfY);
            if (dfSharpness > best.dfSharpness) {
                best = {dfX, dfY, dfSharpness};
            }
        }
    }
    return best;
}

}  // namespace

std::optional<BeamMove> searchBeam(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                   double dfAzimuth, const LatticeBasis& basis)
{
    const double dfStep = g_dfStep / (geometry.dfPixelSize * basis.rowwise().norm().maxCoeff());
    if (vecPeak.empty() || !(dfStep > 0) || !std::isfinite(dfStep) || !basis.allFinite()) {
        return std::nullopt;
    }
    const std::vector<MovedIndex> vecIndex = movedIndices(vecPeak, geometry, dfAzimuth, basis);
    const BeamMove coarse = bestAround({}, vecIndex, dfStep, g_nReach);
    return bestAround(coarse, vecIndex, dfStep / g_nFiner, g_nFiner);
}

}  // namespace tessera
