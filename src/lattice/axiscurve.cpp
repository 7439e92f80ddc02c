#include "lattice/axiscurve.h"

#include "imaging/sidebyside.h"
#include "lattice/latticesharpness.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nCurvePeaks = 900;  // more peaks do not make the curve clearer
constexpr int g_nDirections = 2000;         // more directions find the same rows
constexpr int g_nCoarseStep = 6;        // degrees, half the width of a maximum for a range of 60° of tilts
constexpr std::size_t g_nPlaces = 4;    // maxima that are sampled closely: two lattices in two senses
constexpr double g_dfClosestSpots = 5;  // pixels; the peak search does not separate closer spots

bool isSharper(const AxisSharpness& a, const AxisSharpness& b)
{
    return a.dfSharpness > b.dfSharpness;
}

}  // namespace

double circleAzimuth(double dfAzimuth)
{
    return dfAzimuth - 360 * std::ceil((dfAzimuth - 180) / 360);
}

double azimuthsApart(double dfOne, double dfOther)
{
    return std::abs(circleAzimuth(dfOne - dfOther));
}

std::vector<FlatPeak> thinnedPeaks(const std::vector<FlatPeak>& vecPeak, std::size_t nMost)
{
    if (vecPeak.size() <= nMost) {
        return vecPeak;
    }
    std::vector<FlatPeak> vecFew;
    vecFew.reserve(nMost);
    for (std::size_t n = 0; n < nMost; ++n) {
        vecFew.push_back(vecPeak[n * vecPeak.size() / nMost]);
    }
    return vecFew;
}

CAxisCurve::CAxisCurve(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, int nJobs,
                       const std::function<bool()>& fnGoOn)
    : m_vecPeak(thinnedPeaks(vecPeak, g_nCurvePeaks)), m_geometry(geometry), m_nJobs(nJobs), m_fnGoOn(fnGoOn)
{
    m_options.dfLongest = 1 / (g_dfClosestSpots * geometry.dfPixelSize);
    m_options.nDirections = g_nDirections;
}

bool CAxisCurve::holds(double dfAzimuth) const
{
    return std::any_of(m_vecPoint.begin(), m_vecPoint.end(), [&](const AxisSharpness& point) {
        return azimuthsApart(point.dfAzimuth, dfAzimuth) < 1e-9;
    });
}

bool CAxisCurve::add(const std::vector<double>& vecAzimuth)
{
    const std::size_t nBefore = m_vecPoint.size();
    for (const double dfAzimuth : vecAzimuth) {
        if (!holds(dfAzimuth)) {
            m_vecPoint.push_back({circleAzimuth(dfAzimuth), 0});
        }
    }
    const auto makeWorker = [&]() -> FnPiece {
        return [&](int n) {
            AxisSharpness& point = m_vecPoint[nBefore + std::size_t(n)];
            point.dfSharpness = latticeSharpness(pointsForAxis(m_vecPeak, m_geometry, point.dfAzimuth),
                                                 m_options);
        };
    };
    const bool bDone = sideBySide(int(m_vecPoint.size() - nBefore), m_nJobs, makeWorker, m_fnGoOn);
    std::sort(m_vecPoint.begin(), m_vecPoint.end(),
              [](const AxisSharpness& a, const AxisSharpness& b) { return a.dfAzimuth < b.dfAzimuth; });
    return bDone;
}

bool CAxisCurve::trace()
{
    std::vector<double> vecAzimuth;
    for (int n = 0; n < 360; n += g_nCoarseStep) {
        vecAzimuth.push_back(n);
    }
    if (!add(vecAzimuth)) {
        return false;
    }
    std::vector<AxisSharpness> vecByHeight = m_vecPoint;
    std::stable_sort(vecByHeight.begin(), vecByHeight.end(), isSharper);
    m_dfUsual = vecByHeight[vecByHeight.size() / 2].dfSharpness;
    for (const std::vector<double>& vecOffset : {std::vector<double>{-4, -2, 2, 4}, {-1, 1}}) {
        std::vector<AxisSharpness> vecPlace = maxima();
        vecPlace.resize(std::min(vecPlace.size(), g_nPlaces));
        vecAzimuth.clear();
        for (const AxisSharpness& place : vecPlace) {
            for (const double dfOffset : vecOffset) {
                vecAzimuth.push_back(place.dfAzimuth + dfOffset);
            }
        }
        if (!add(vecAzimuth)) {
            return false;
        }
    }
    return true;
}

std::vector<AxisSharpness> CAxisCurve::maxima() const
{
    std::vector<AxisSharpness> vecMaximum;
    for (const AxisSharpness& point : m_vecPoint) {
        const bool bHighest = std::none_of(
            m_vecPoint.begin(), m_vecPoint.end(), [&](const AxisSharpness& other) {
                return isSharper(other, point) &&
                       azimuthsApart(other.dfAzimuth, point.dfAzimuth) <= g_dfAxisElsewhere;
            });
        if (bHighest) {
            vecMaximum.push_back(point);
        }
    }
    std::stable_sort(vecMaximum.begin(), vecMaximum.end(), isSharper);
    return vecMaximum;
}

double CAxisCurve::sharpnessAt(double dfAzimuth) const
{
    const auto it = std::find_if(m_vecPoint.begin(), m_vecPoint.end(), [&](const AxisSharpness& point) {
        return azimuthsApart(point.dfAzimuth, dfAzimuth) < 1e-9;
    });
    return it == m_vecPoint.end() ? 0 : it->dfSharpness;
}

double CAxisCurve::contrastOf(double dfSharpness) const
{
    const double dfLeft = 1 - m_dfUsual;
    return dfLeft > 1e-6 ? (dfSharpness - m_dfUsual) / dfLeft : 0;
}

}  // namespace tessera
