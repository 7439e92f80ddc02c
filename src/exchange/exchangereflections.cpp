#include "exchange/exchangereflections.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tessera {

namespace {

const double g_dfMostOff = 1.0 / 3;       // greatest distance of an index from a whole number
const double g_dfSigmaOfMedian = 1.4826;  // sigma of a Gaussian over the median of its absolute deviations

double medianOf(std::vector<double> list)
{
    if (list.empty()) {
        return 0;
    }
    const auto middle = list.begin() + int(list.size() / 2);
    std::nth_element(list.begin(), middle, list.end());
    return *middle;
}

/// Indexes a peak with the geometry of the series.
/// @return false where no lattice point is close
bool indexAnew(const SeriesGeometry& series, GeometrySpot& spot)
{
    const DoubleVector point = pointOfPlace(series.geometry, spot.place, spot.dfTilt);
    const DoubleVector index = indicesOfPoint(series.geometry, point);
    bool bNear = true;
    for (size_t n = 0; n < 3; ++n) {
        bNear = bNear && std::abs(index[n] - std::round(index[n])) < g_dfMostOff;
        spot.anIndex[n] = bNear ? int(std::lround(index[n])) : 0;
    }
    return bNear && spot.anIndex != std::array<int, 3>{};
}

/// Weighted sums over the peaks of a reflection.
struct PeakSum {
    double dfWeight = 0, dfX = 0, dfY = 0, dfAngle = 0;
    int nPeaks = 0, nFirst = 0, nLast = 0;
    std::array<int, 3> anIndex = {};
};

void addPeak(const ExchangeGeometry& geometry, const GeometrySpot& spot, PeakSum& sum)
{
    const std::array<double, 2> flat = undistorted(geometry.source.plane, geometry.source.dfRadius,
                                                   spot.place);
    const double dfWeight = std::max(spot.dfWeight, 1e-6);
    sum.dfWeight += dfWeight;
    sum.dfX += dfWeight * flat[0];
    sum.dfY += dfWeight * flat[1];
    sum.dfAngle += dfWeight * geometry.listAngle[spot.nFrame];
    const int nNumber = geometry.numbering.listNumber[spot.nFrame];
    sum.nFirst = sum.nPeaks == 0 ? nNumber : std::min(sum.nFirst, nNumber);
    sum.nLast = sum.nPeaks == 0 ? nNumber : std::max(sum.nLast, nNumber);
    sum.anIndex = spot.anIndex;
    ++sum.nPeaks;
}

std::optional<ExchangeReflection> reflectionOf(const ExchangeGeometry& geometry, const PeakSum& sum)
{
    ExchangeReflection reflection;
    reflection.anIndex = geometry.indexOf(sum.anIndex);
    reflection.seen.place = {geometry.beam.dfX + sum.dfX / sum.dfWeight,
                             geometry.beam.dfY + sum.dfY / sum.dfWeight};
    reflection.seen.dfAngle = sum.dfAngle / sum.dfWeight;
    reflection.seen.s1 = beamToPlace(geometry, reflection.seen.place);
    reflection.dfIntensity = sum.dfWeight;
    reflection.nFirst = sum.nFirst;
    reflection.nLast = sum.nLast;
    reflection.nPeaks = sum.nPeaks;
    const std::optional<Passage> expected = passageNear(geometry, reflection.anIndex,
                                                        reflection.seen.dfAngle);
    if (!expected) {
        return std::nullopt;
    }
    reflection.expected = *expected;
    // The length of s1 changes by s1 · (axis × r), which is positive where the reflection leaves the
    // sphere.
    DoubleVector point = expected->s1;
    point[2] += 1 / geometry.dfWavelength;
    reflection.bEntering = dot(expected->s1, cross(geometry.axis, point)) < 0;
    return reflection;
}

}  // namespace

DoubleVector beamToPlace(const ExchangeGeometry& geometry, const FramePlace& place)
{
    const double dfX = (place.dfX - geometry.beam.dfX) * geometry.dfPixel;
    const double dfY = -(place.dfY - geometry.beam.dfY) * geometry.dfPixel;
    const double dfLength = std::sqrt(dfX * dfX + dfY * dfY + geometry.dfDistance * geometry.dfDistance) *
                            geometry.dfWavelength;
    return {dfX / dfLength, dfY / dfLength, -geometry.dfDistance / dfLength};
}

std::optional<Passage> passageNear(const ExchangeGeometry& geometry, const std::array<int, 3>& anIndex,
                                   double dfAngle)
{
    DoubleVector point = {};
    for (size_t n = 0; n < 3; ++n) {
        for (size_t m = 0; m < 3; ++m) {
            point[n] += anIndex[m] * geometry.aReciprocal[m][n];
        }
    }
    // The condition |s0 + r| = 1/λ with s0 = (0, 0, −1/λ) means a height of r²·λ/2. The height of a
    // rotating point is the sum of a constant, a cosine and a sine.
    const double dfFixed = geometry.axis[2] * dot(geometry.axis, point);
    const double dfCos = point[2] - dfFixed;
    const double dfSin = cross(geometry.axis, point)[2];
    const double dfRatio = (dot(point, point) * geometry.dfWavelength / 2 - dfFixed) /
                           std::hypot(dfCos, dfSin);
    if (!(std::abs(dfRatio) < 1)) {
        return std::nullopt;
    }
    const double dfMiddle = degrees(std::atan2(dfSin, dfCos)), dfOff = degrees(std::acos(dfRatio));
    const double dfBefore = std::remainder(dfMiddle - dfOff - dfAngle, 360);
    const double dfAfter = std::remainder(dfMiddle + dfOff - dfAngle, 360);
    Passage passage;
    passage.dfAngle = dfAngle + (std::abs(dfBefore) < std::abs(dfAfter) ? dfBefore : dfAfter);
    passage.s1 = turned(point, geometry.axis, passage.dfAngle);
    passage.s1[2] -= 1 / geometry.dfWavelength;
    if (!(passage.s1[2] < 0)) {  // the beam would return to the source
        return std::nullopt;
    }
    const double dfScale = -geometry.dfDistance / passage.s1[2] / geometry.dfPixel;
    passage.place = {geometry.beam.dfX + dfScale * passage.s1[0],
                     geometry.beam.dfY - dfScale * passage.s1[1]};
    return passage;
}

std::vector<ExchangeReflection> exchangeReflections(const ExchangeGeometry& geometry,
                                                    std::vector<GeometrySpot> listSpot,
                                                    const std::vector<FramePlace>& listBeam,
                                                    const SeriesGeometry& series)
{
    for (GeometrySpot& spot : listSpot) {
        const size_t n = size_t(spot.nFrame);
        spot.place = spot.finePlace.value_or(spot.place);
        if (n < listBeam.size() && n < series.listBeam.size()) {
            spot.place.dfX += listBeam[n].dfX - series.listBeam[n].dfX;
            spot.place.dfY += listBeam[n].dfY - series.listBeam[n].dfY;
        }
    }
    const auto isLost = [&](GeometrySpot& spot) {
        return size_t(spot.nFrame) >= geometry.listAngle.size() || !indexAnew(series, spot);
    };
    listSpot.erase(std::remove_if(listSpot.begin(), listSpot.end(), isLost), listSpot.end());
    std::vector<PeakSum> listSum(size_t(numberChains(listSpot)));
    for (const GeometrySpot& spot : listSpot) {
        addPeak(geometry, spot, listSum[spot.nChain]);
    }
    std::vector<ExchangeReflection> list;
    for (const PeakSum& sum : listSum) {
        if (const auto reflection = reflectionOf(geometry, sum)) {
            list.push_back(*reflection);
        }
    }
    std::stable_sort(list.begin(), list.end(), [](const auto& one, const auto& other) {
        return one.seen.dfAngle < other.seen.dfAngle;
    });
    return list;
}

Scatter scatterOf(const std::vector<ExchangeReflection>& listReflection)
{
    std::vector<double> listPlace, listAngle;
    for (const ExchangeReflection& one : listReflection) {
        listPlace.push_back(std::abs(one.seen.place.dfX - one.expected.place.dfX));
        listPlace.push_back(std::abs(one.seen.place.dfY - one.expected.place.dfY));
        listAngle.push_back(std::abs(one.seen.dfAngle - one.expected.dfAngle));
    }
    return {g_dfSigmaOfMedian * medianOf(listPlace), g_dfSigmaOfMedian * medianOf(listAngle)};
}

}  // namespace tessera
