#include "refinement/geometryrounds.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

double medianOf(std::vector<double> listValue)
{
    if (listValue.empty()) {
        return 0;
    }
    const auto itMiddle = listValue.begin() + std::ptrdiff_t(listValue.size() / 2);
    std::nth_element(listValue.begin(), itMiddle, listValue.end());
    return *itMiddle;
}

/// The mean indices of each chain, as real numbers.
std::vector<DoubleVector> chainIndices(const std::vector<GeometrySpot>& listSpot,
                                       const DiffractionGeometry& geometry)
{
    int nChains = 0;
    for (const GeometrySpot& spot : listSpot) {
        nChains = std::max(nChains, spot.nChain + 1);
    }
    std::vector<DoubleVector> listMean(nChains, DoubleVector{0, 0, 0});
    std::vector<double> listWeight(nChains, 0.0);
    for (const GeometrySpot& spot : listSpot) {
        const DoubleVector point = pointOfPlace(geometry, spot.place, spot.dfTilt);
        for (size_t n = 0; n < 3; ++n) {
            listMean[spot.nChain][n] += spot.dfWeight * point[n];
        }
        listWeight[spot.nChain] += spot.dfWeight;
    }
    for (size_t n = 0; n < listMean.size(); ++n) {
        const double dfWeight = listWeight[n];
        const DoubleVector& sum = listMean[n];
        listMean[n] = indicesOfPoint(geometry, {sum[0] / dfWeight, sum[1] / dfWeight, sum[2] / dfWeight});
    }
    return listMean;
}

/// The whole indices near real indices; none for 0 0 0, the direct beam.
std::optional<std::array<int, 3>> wholeIndices(const DoubleVector& index, double dfTolerance)
{
    std::array<int, 3> anIndex = {};
    for (size_t i = 0; i < 3; ++i) {
        const double dfWhole = std::round(index[i]);
        if (!(std::abs(index[i] - dfWhole) <= dfTolerance && std::abs(dfWhole) < 1e6)) {
            return std::nullopt;
        }
        anIndex[i] = int(dfWhole);
    }
    const bool bBeam = anIndex == std::array<int, 3>{};
    return bBeam ? std::nullopt : std::optional<std::array<int, 3>>(anIndex);
}

/// The spots whose chain has mean indices near whole numbers; they are given these indices.
std::vector<int> indexChains(std::vector<GeometrySpot>& listSpot, const DiffractionGeometry& geometry,
                             double dfTolerance)
{
    const std::vector<DoubleVector> listIndex = chainIndices(listSpot, geometry);
    std::vector<int> listNear;
    for (size_t n = 0; n < listSpot.size(); ++n) {
        if (const auto whole = wholeIndices(listIndex[size_t(listSpot[n].nChain)], dfTolerance)) {
            listSpot[n].anIndex = *whole;
            listNear.push_back(int(n));
        }
    }
    return listNear;
}

/// The distance of each spot in the plane of its frame, and of its chain along the beam.
struct Distances {
    std::vector<double> listPlane;
    std::vector<double> listAlong;
};
Distances distancesOf(const CGeometryResiduals& residuals, const GeometryFit& fit)
{
    Eigen::VectorXd vecResidual;
    residuals.evaluate(fit.numbers, fit.form, {}, vecResidual, nullptr);
    Distances distances;
    distances.listPlane.reserve(residuals.spots());
    distances.listAlong.reserve(residuals.spots());
    for (int n = 0; n < residuals.spots(); ++n) {
        distances.listPlane.push_back(vecResidual.segment<2>(2 * n).norm());
        distances.listAlong.push_back(std::abs(vecResidual[residuals.chainRows()[n]]));
    }
    return distances;
}

/// The distances along the beam of single spots.
Distances distancesAlone(std::vector<GeometrySpot>& listSpot, const GeometryWork& work,
                         const GeometryFit& fit)
{
    std::vector<int> listAll;
    for (GeometrySpot& spot : listSpot) {
        spot.nChain = int(listAll.size());
        listAll.push_back(spot.nChain);
    }
    return distancesOf({listSpot, listAll, work.fixed, work.dfAzimuthZero}, fit);
}

/// The distance that a typical spot moves along the beam from one frame to the next, pixels.
double turnOfFrame(const std::vector<GeometrySpot>& listSpot)
{
    const auto [itFirst, itLast] = std::minmax_element(
        listSpot.begin(), listSpot.end(),
        [](const GeometrySpot& one, const GeometrySpot& other) { return one.nFrame < other.nFrame; });
    std::vector<double> listRadius;
    listRadius.reserve(listSpot.size());
    for (const GeometrySpot& spot : listSpot) {
        listRadius.push_back(std::hypot(spot.place.dfX, spot.place.dfY));
    }
    const int nFrames = std::max(1, itLast->nFrame - itFirst->nFrame);
    return radians(std::abs(itLast->dfTilt - itFirst->dfTilt) / nFrames) * medianOf(std::move(listRadius));
}

std::vector<int> within(const std::vector<int>& listNear, const Distances& distances,
                        const SpotLimits& limits)
{
    std::vector<int> listKept;
    for (size_t n = 0; n < listNear.size(); ++n) {
        if (distances.listPlane[n] <= limits.dfPlane && distances.listAlong[n] <= limits.dfAlong) {
            listKept.push_back(listNear[n]);
        }
    }
    return listKept;
}

}  // namespace

CGeometryResiduals GeometryWork::residualsOfHalf(int nHalf) const
{
    std::vector<int> listHalf;
    std::copy_if(listUsed.begin(), listUsed.end(), std::back_inserter(listHalf),
                 [&](int n) { return listSpot[n].nFrame % 2 == nHalf; });
    return {listSpot, listHalf, fixed, dfAzimuthZero, nJobs};
}

DiffractionGeometry GeometryWork::geometryOf(const GeometryFit& fit) const
{
    DiffractionGeometry geometry = fixed;
    setNumbers(geometry, fit.numbers, dfAzimuthZero);
    const Eigen::Matrix3d matBasis = fit.form.reciprocal(fit.numbers);
    for (int n = 0; n < 3; ++n) {
        geometry.aBasis[n] = {matBasis(n, 0), matBasis(n, 1), matBasis(n, 2)};
    }
    return geometry;
}

void GeometryWork::setDrift(std::vector<FramePlace> listNew)
{
    const auto driftOf = [](const std::vector<FramePlace>& list, int nFrame) {
        return size_t(nFrame) < list.size() ? list[nFrame] : FramePlace();
    };
    const auto moveSpot = [&](GeometrySpot& spot) {
        const FramePlace was = driftOf(listDrift, spot.nFrame), now = driftOf(listNew, spot.nFrame);
        spot.place.dfX += was.dfX - now.dfX;
        spot.place.dfY += was.dfY - now.dfY;
        if (spot.finePlace) {
            spot.finePlace->dfX += was.dfX - now.dfX;
            spot.finePlace->dfY += was.dfY - now.dfY;
        }
    };
    std::for_each(listSpot.begin(), listSpot.end(), moveSpot);
    std::for_each(listRest.begin(), listRest.end(), moveSpot);
    listDrift = std::move(listNew);
}

GeometryWork GeometryWork::withFinePlaces() const
{
    GeometryWork work = *this;
    for (std::vector<GeometrySpot>* pList : {&work.listSpot, &work.listRest}) {
        for (GeometrySpot& spot : *pList) {
            spot.place = spot.finePlace.value_or(spot.place);
        }
    }
    return work;
}

GeometryWork GeometryWork::withoutDrift() const
{
    GeometryWork work = *this;
    work.setDrift({});
    return work;
}

std::vector<FrameDistance> frameDistances(const GeometryWork& work, const GeometryFit& fit)
{
    const CGeometryResiduals residuals(work.listSpot, work.listNear, work.fixed, work.dfAzimuthZero);
    Eigen::VectorXd vecResidual;
    residuals.evaluate(fit.numbers, fit.form, {}, vecResidual, nullptr);
    const double dfCos = std::cos(radians(fit.numbers[Axis])), dfSin = std::sin(radians(fit.numbers[Axis]));
    std::vector<FrameDistance> listDistance;
    listDistance.reserve(work.listNear.size());
    for (int n = 0; n < residuals.spots(); ++n) {
        const GeometrySpot& spot = work.listSpot[size_t(work.listNear[n])];
        const double dfAlong = vecResidual[2 * n], dfAcross = vecResidual[2 * n + 1];
        FramePlace off = {dfCos * dfAlong + dfSin * dfAcross, dfCos * dfAcross - dfSin * dfAlong};
        if (size_t(spot.nFrame) < work.listDrift.size()) {
            off.dfX += work.listDrift[spot.nFrame].dfX;
            off.dfY += work.listDrift[spot.nFrame].dfY;
        }
        listDistance.push_back({spot.nFrame, spot.nChain, off});
    }
    return listDistance;
}

SpotLimits chooseSpots(GeometryWork& work, const GeometryFit& fit, double dfIndexTolerance)
{
    work.listNear = indexChains(work.listSpot, work.geometryOf(fit), dfIndexTolerance);
    const CGeometryResiduals residuals(work.listSpot, work.listNear, work.fixed, work.dfAzimuthZero);
    const Distances distances = distancesOf(residuals, fit);
    // Medians of a distance in a plane and along a line, in standard deviations of a normal distribution.
    const double dfMedianPlane = 1.1774, dfMedianLine = 0.6745, dfDeviations = 4;
    // Peaks have whole-pixel positions, so half the diagonal of a pixel is always tolerated.
    const double dfLeast = 0.75;
    SpotLimits limits;
    limits.dfIndex = dfIndexTolerance;
    limits.dfPlane = std::max(dfLeast, dfDeviations / dfMedianPlane * medianOf(distances.listPlane));
    // If a chain is cut by the start or the end of the series, or lacks a frame, its mean is off by up to the
    // rotation of one frame.
    limits.dfAlong = std::max(g_dfWeightAlongBeam * std::max(dfLeast, turnOfFrame(work.listSpot)),
                              dfDeviations / dfMedianLine * medianOf(distances.listAlong));
    work.listUsed = within(work.listNear, distances, limits);
    return limits;
}

int joinSpots(GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits)
{
    const DiffractionGeometry geometry = work.geometryOf(fit);
    std::vector<GeometrySpot> listNear, listRest, listUsed;
    for (GeometrySpot& spot : work.listRest) {
        const auto whole = wholeIndices(
            indicesOfPoint(geometry, pointOfPlace(geometry, spot.place, spot.dfTilt)), limits.dfIndex);
        spot.anIndex = whole.value_or(spot.anIndex);
        (whole ? listNear : listRest).push_back(spot);
    }
    for (const int n : work.listUsed) {
        listUsed.push_back(work.listSpot[n]);
    }
    // A reflection is seen equally on both sides of the sphere, so twice the median includes nearly all of
    // its frames.
    const double dfAlong = 2 * medianOf(distancesAlone(listUsed, work, fit).listAlong);
    const Distances distances = distancesAlone(listNear, work, fit);
    int nJoined = 0;
    for (size_t n = 0; n < listNear.size(); ++n) {
        const bool bJoins = distances.listPlane[n] <= limits.dfPlane && distances.listAlong[n] <= dfAlong;
        (bJoins ? work.listSpot : listRest).push_back(listNear[n]);
        nJoined += bJoins;
    }
    work.listRest = std::move(listRest);
    numberChains(work.listSpot);
    return nJoined;
}

std::vector<int> spotsWithin(const GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits)
{
    std::vector<GeometrySpot> listSpot = work.listSpot;
    const std::vector<int> listNear = indexChains(listSpot, work.geometryOf(fit), limits.dfIndex);
    const CGeometryResiduals residuals(listSpot, listNear, work.fixed, work.dfAzimuthZero);
    return within(listNear, distancesOf(residuals, fit), limits);
}

}  // namespace tessera
