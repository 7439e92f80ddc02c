#include "reciprocal/latticepoints.h"

#include "records/runparameters.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

constexpr double g_dfBeamRadius =
    8;  // pixels: at smaller distances spots cannot be separated from the halo of the direct beam
constexpr std::size_t g_nShells = 20;
constexpr std::size_t g_nLeastDistances = 10;
constexpr double g_dfMargin = 1.5;
constexpr double g_dfLowPart = 0.05;

bool isSpot(const Peak3D& peak)
{
    const double dfRadius = std::hypot(peak.dfX2DCorrected, peak.dfY2DCorrected);
    return dfRadius >= g_dfBeamRadius && std::isfinite(peak.fX3D) && std::isfinite(peak.fY3D) &&
           std::isfinite(peak.fZ3D);
}

Eigen::Vector3d pointOf(const Peak3D& peak)
{
    return {double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D)};
}

/// The points of each frame or list in turn, with the distance of each from its nearest neighbour.
void appendDistances(LatticePoints listPoint, std::vector<double>& vecDistance)
{
    // Sorted by x, so that only neighbours within the smallest distance so far have to be looked at.
    std::sort(listPoint.begin(), listPoint.end(),
              [](const Eigen::Vector3d& a, const Eigen::Vector3d& b) { return a.x() < b.x(); });
    const int nCount = int(listPoint.size());
    for (int n = 0; n < nCount && nCount > 1; ++n) {
        double dfNearest = HUGE_VAL;
        for (const int nStep : {-1, 1}) {
            for (int m = n + nStep; m >= 0 && m < nCount; m += nStep) {
                const Eigen::Vector3d difference = listPoint[m] - listPoint[n];
                if (std::abs(difference.x()) >= dfNearest) {
                    break;
                }
                dfNearest = std::min(dfNearest, difference.norm());
            }
        }
        vecDistance.push_back(dfNearest);
    }
}

/// The distance that 5 % of all distances are below; none for too few.
std::optional<double> closeDistance(std::vector<double> vecDistance)
{
    if (vecDistance.size() < g_nLeastDistances) {
        return std::nullopt;
    }
    const auto itLow = vecDistance.begin() + std::ptrdiff_t(g_dfLowPart * double(vecDistance.size()));
    std::nth_element(vecDistance.begin(), itLow, vecDistance.end());
    return *itLow > 0 ? std::optional<double>(*itLow) : std::nullopt;
}

}  // namespace

double denseDStar(std::vector<double> vecDStar)
{
    if (vecDStar.empty()) {
        return 0;
    }
    std::sort(vecDStar.begin(), vecDStar.end());
    if (vecDStar.size() < 10 * g_nShells) {
        return vecDStar.back();
    }
    std::vector<double> vecEnd;
    std::vector<double> vecArea;  // by points: the inverse of the density
    double dfStart = 0;
    for (std::size_t n = 1; n <= g_nShells; ++n) {
        const double dfEnd = vecDStar[n * vecDStar.size() / g_nShells - 1];
        vecEnd.push_back(dfEnd);
        vecArea.push_back(dfEnd * dfEnd - dfStart * dfStart);
        dfStart = dfEnd;
    }
    std::vector<double> vecSorted = vecArea;
    std::nth_element(vecSorted.begin(), vecSorted.begin() + g_nShells / 2, vecSorted.end());
    std::size_t nLast = g_nShells - 1;
    while (nLast > 0 && vecArea[nLast] > 4 * vecSorted[g_nShells / 2]) {
        --nLast;
    }
    return vecEnd[nLast];
}

std::vector<PlaceOfPeak> placesOfLatticePoints(const DataSet& dataSet)
{
    std::vector<PlaceOfPeak> listAll;
    std::vector<double> vecDStar;
    if (!dataSet.m_peakMapping) {
        return listAll;
    }
    for (int nFrame = 0; nFrame < dataSet.m_listPeakFrame.size(); ++nFrame) {
        const QList<Peak3D>& listPeak = dataSet.m_listPeakFrame[nFrame];
        for (int nPeak = 0; nPeak < listPeak.size(); ++nPeak) {
            if (isSpot(listPeak[nPeak])) {
                listAll.push_back({nFrame, nPeak});
                vecDStar.push_back(pointOf(listPeak[nPeak]).norm());
            }
        }
    }
    const double dfLimit = denseDStar(vecDStar);
    std::vector<PlaceOfPeak> listDense;
    for (size_t n = 0; n < listAll.size(); ++n) {
        if (vecDStar[n] <= dfLimit) {
            listDense.push_back(listAll[n]);
        }
    }
    return listDense;
}

LatticePoints latticePoints(const DataSet& dataSet)
{
    LatticePoints listPoint;
    for (const PlaceOfPeak& place : placesOfLatticePoints(dataSet)) {
        listPoint.push_back(pointOf(dataSet.m_listPeakFrame[place.nFrame][place.nPeak]));
    }
    return listPoint;
}

CellRange automaticCellRange(const DataSet& dataSet)
{
    std::vector<double> vecOnFrames;
    for (const QList<Peak3D>& listPeak : dataSet.m_listPeakFrame) {
        LatticePoints listPoint;
        for (const Peak3D& peak : listPeak) {
            if (isSpot(peak)) {
                listPoint.push_back(pointOf(peak));
            }
        }
        appendDistances(std::move(listPoint), vecOnFrames);
    }
    LatticePoints listReflection;
    for (const Peak3D& peak : dataSet.m_listPeakMerged) {
        if (isSpot(peak)) {
            listReflection.push_back(pointOf(peak));
        }
    }
    std::vector<double> vecInSpace;
    appendDistances(std::move(listReflection), vecInSpace);

    const std::optional<double> dfOnFrames = closeDistance(std::move(vecOnFrames));
    const std::optional<double> dfInSpace = closeDistance(std::move(vecInSpace));
    const bool bMerged = !dataSet.m_listPeakMerged.isEmpty();
    if ((!dfOnFrames && !dfInSpace) || (bMerged && !dfInSpace)) {
        const CellHuntingParameters page;
        return {page.m_dfCellRangeMin, page.m_dfCellRangeMax};
    }
    CellRange range;
    range.dfLongest = g_dfMargin / std::min(dfOnFrames.value_or(HUGE_VAL), dfInSpace.value_or(HUGE_VAL));
    return range;
}

}  // namespace tessera
