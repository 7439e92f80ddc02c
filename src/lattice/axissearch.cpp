#include "lattice/axissearch.h"

#include "lattice/axiscurve.h"
#include "lattice/axisfit.h"
#include "lattice/latticefit.h"
#include "lattice/latticesharpness.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nLeastPeaks = 50;     // fewer peaks fit a lattice at almost any azimuth
constexpr std::size_t g_nSearchPeaks = 2000;  // sample for the lattice from which the fit begins
// Sample for the fit; its error is then some hundredths of a degree.
constexpr std::size_t g_nFitPeaks = 8000;
constexpr double g_dfBeamRadius = 8;  // pixels; peaks within it lie on the tail of the direct beam
constexpr double g_dfFarthest = 20;   // Å⁻¹; no crystal scatters that far
constexpr double g_dfLeastTurn = 1;   // degree, about the width of rocking curves
// The contrast is some hundredths for points without a lattice, and 0.5 to 1 for simulated and real series.
// Where a second maximum is nearly as high as the first, it is a matter of chance which of them is higher.
constexpr double g_dfLeastContrast = 0.15;
constexpr double g_dfRival = 0.9;
constexpr double g_dfLeastShare = 0.3;  // share of the peaks that fit beyond chance
constexpr double g_dfMostError = 0.5;   // degrees, standard error of the azimuth
constexpr double g_dfMostMoved = 4;     // degrees, distance of the fit from the maximum of the curve
constexpr double g_dfSureErrors = 6;    // least ratio of curvature to standard error for a certain sense
constexpr double g_dfMostOff = 0.5;     // greatest distance of the curvature from 1

double turnOf(const std::vector<FlatPeak>& vecPeak)
{
    const auto range = std::minmax_element(
        vecPeak.begin(), vecPeak.end(),
        [](const FlatPeak& a, const FlatPeak& b) { return a.dfTilt < b.dfTilt; });
    return range.second->dfTilt - range.first->dfTilt;
}

bool isGeometry(const FlatGeometry& geometry)
{
    return geometry.dfPixelSize > 0 && std::isfinite(geometry.dfPixelSize) && geometry.dfWavelength > 0 &&
           std::isfinite(geometry.dfWavelength);
}

QString faultOfPeaks(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry)
{
    if (!isGeometry(geometry)) {
        return QStringLiteral("wavelength or pixel size are not positive");
    }
    if (vecPeak.size() < g_nLeastPeaks) {
        return QStringLiteral("%1 peaks away from the direct beam are too few").arg(vecPeak.size());
    }
    if (turnOf(vecPeak) < g_dfLeastTurn) {
        return QStringLiteral("the tilts do not change");
    }
    return {};
}

QString textOf(const AxisSharpness& point)
{
    return QStringLiteral("%1° with a sharpness of %2")
        .arg(point.dfAzimuth, 0, 'f', 0)
        .arg(point.dfSharpness, 0, 'f', 3);
}

/// Why the maximum of the curve cannot be used; empty where it can.
QString faultOfCurve(const CAxisCurve& curve)
{
    const std::vector<AxisSharpness> vecMaximum = curve.maxima();
    const AxisSharpness best = vecMaximum.front();
    const double dfContrast = curve.contrastOf(best.dfSharpness);
    if (dfContrast < g_dfLeastContrast) {
        return QStringLiteral("no azimuth is clearly better than the others; the best is %1")
            .arg(textOf(best));
    }
    for (const AxisSharpness& other : vecMaximum) {
        // The opposite sense is no rival, as the curvature will decide between the two.
        const bool bSameLine = azimuthsApart(2 * other.dfAzimuth, 2 * best.dfAzimuth) < 2 * g_dfAxisElsewhere;
        if (!bSameLine && curve.contrastOf(other.dfSharpness) > g_dfRival * dfContrast) {
            return QStringLiteral("two azimuths are about as good, %1, and %2")
                .arg(textOf(best), textOf(other));
        }
    }
    return {};
}

/// Fits the axis, beginning with the lattice found at an azimuth.
std::optional<AxisFit> fitAt(double dfAzimuth, const std::vector<FlatPeak>& vecPeak,
                             const FlatGeometry& geometry, const DirectionSearchOptions& options)
{
    const LatticePoints listPoint = pointsForAxis(thinnedPeaks(vecPeak, g_nSearchPeaks), geometry, dfAzimuth);
    DirectionSearchOptions clear = options;
    clear.dfShortest = shortestClearRow(listPoint, options);
    const std::optional<DirectionLattice> lattice = searchDirections(listPoint, clear);
    if (!lattice) {
        return std::nullopt;
    }
    return fitAxis(thinnedPeaks(vecPeak, g_nFitPeaks), geometry, dfAzimuth, lattice->matBasis,
                   g_dfLatticeTolerance);
}

/// Fits the axis; if the curvature shows the opposite sense, once more from there.
std::optional<AxisFit> fitInItsSense(double dfAzimuth, const std::vector<FlatPeak>& vecPeak,
                                     const FlatGeometry& geometry, const DirectionSearchOptions& options)
{
    const std::optional<AxisFit> fit = fitAt(dfAzimuth, vecPeak, geometry, options);
    if (!fit || fit->dfCurvature > -g_dfSureErrors * fit->dfCurvatureError) {
        return fit;
    }
    const std::optional<AxisFit> turned = fitAt(dfAzimuth + 180, vecPeak, geometry, options);
    return turned && turned->dfCurvature > fit->dfCurvature ? turned : fit;
}

/// Why the refined axis cannot be used; empty where it can.
QString faultOfFit(const std::optional<AxisFit>& fit, double dfBegun, const LatticeFit& share)
{
    if (!fit || !(azimuthsApart(2 * fit->dfAzimuth, 2 * dfBegun) < 2 * g_dfMostMoved)) {
        return QStringLiteral("the best azimuth, %1°, is not confirmed by the refinement with the lattice")
            .arg(dfBegun, 0, 'f', 0);
    }
    if (!(fit->dfAzimuthError < g_dfMostError)) {
        return QStringLiteral("the uncertainty of the best azimuth, %1°, is %2°")
            .arg(fit->dfAzimuth, 0, 'f', 1)
            .arg(fit->dfAzimuthError, 0, 'f', 1);
    }
    if (share.share() - share.dfByChance < g_dfLeastShare * (1 - share.dfByChance)) {
        return QStringLiteral(
                   "at the best azimuth, %1°, no more than %2 % of the peaks fit a lattice, %3 % by "
                   "chance")
            .arg(fit->dfAzimuth, 0, 'f', 1)
            .arg(100 * share.share(), 0, 'f', 0)
            .arg(100 * share.dfByChance, 0, 'f', 0);
    }
    return {};
}

void judgeSense(AxisFound& found, const AxisFit& fit)
{
    found.dfCurvature = fit.dfCurvature;
    found.dfCurvatureError = fit.dfCurvatureError;
    const bool bDecided = std::abs(fit.dfCurvature) > g_dfSureErrors * fit.dfCurvatureError;
    const bool bFits = std::abs(fit.dfCurvature - 1) < g_dfMostOff;
    found.bSure = bDecided && bFits;
    found.strSense = QStringLiteral("the peaks are curved %1 ± %2 times as much as the Ewald sphere")
                         .arg(fit.dfCurvature, 0, 'f', 2)
                         .arg(fit.dfCurvatureError, 0, 'f', 2);
    if (!bDecided) {
        found.strSense += QStringLiteral(", which does not determine the sense");
    } else if (!bFits) {
        found.strSense += QStringLiteral(", which fits neither sense");
    }
}

AxisSharpness secondOf(const CAxisCurve& curve, double dfBest)
{
    const std::vector<AxisSharpness> vecMaximum = curve.maxima();
    const auto it = std::find_if(vecMaximum.begin(), vecMaximum.end(), [&](const AxisSharpness& point) {
        return azimuthsApart(point.dfAzimuth, dfBest) > g_dfAxisElsewhere;
    });
    return it == vecMaximum.end() ? AxisSharpness{} : *it;
}

}  // namespace

std::vector<FlatPeak> usablePeaks(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry)
{
    std::vector<FlatPeak> vecUsable;
    for (const FlatPeak& peak : vecPeak) {
        const double dfRadius = std::hypot(peak.dfX, peak.dfY);
        const bool bPlace = dfRadius > g_dfBeamRadius && dfRadius * geometry.dfPixelSize < g_dfFarthest;
        if (bPlace && std::isfinite(peak.dfTilt)) {
            vecUsable.push_back(peak);
        }
    }
    return vecUsable;
}

double axisSharpness(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, double dfAzimuth)
{
    const std::vector<FlatPeak> vecUsable = usablePeaks(vecPeak, geometry);
    if (vecUsable.empty() || !isGeometry(geometry)) {
        return 0;
    }
    const std::function<bool()> fnGoOn;
    CAxisCurve curve(vecUsable, geometry, 1, fnGoOn);
    curve.add({dfAzimuth});
    return curve.sharpnessAt(dfAzimuth);
}

std::optional<AxisSearch> searchAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                     int nJobs, const std::function<bool()>& fnGoOn)
{
    AxisSearch search;
    const std::vector<FlatPeak> vecUsable = usablePeaks(vecPeak, geometry);
    search.strReason = faultOfPeaks(vecUsable, geometry);
    if (!search.strReason.isEmpty()) {
        return search;
    }
    CAxisCurve curve(vecUsable, geometry, nJobs, fnGoOn);
    if (!curve.trace()) {
        return std::nullopt;
    }
    search.vecCurve = curve.points();
    search.strReason = faultOfCurve(curve);
    if (!search.strReason.isEmpty()) {
        return search;
    }
    DirectionSearchOptions options = curve.options();
    options.nDirections = DirectionSearchOptions().nDirections;
    options.nJobs = nJobs;
    const double dfBegun = curve.maxima().front().dfAzimuth;
    const std::optional<AxisFit> fit = fitInItsSense(dfBegun, vecUsable, geometry, options);
    LatticeFit share;
    if (fit) {
        share = fitOfLattice(
            fit->basis, pointsForAxis(thinnedPeaks(vecUsable, g_nSearchPeaks), geometry, fit->dfAzimuth));
    }
    search.strReason = faultOfFit(fit, dfBegun, share);
    if (!search.strReason.isEmpty()) {
        return search;
    }
    if (!curve.add({fit->dfAzimuth, fit->dfAzimuth + 180})) {
        return std::nullopt;
    }
    search.vecCurve = curve.points();
    AxisFound& found = search.found.emplace();
    found.best = {circleAzimuth(fit->dfAzimuth), curve.sharpnessAt(fit->dfAzimuth)};
    found.dfAzimuthError = fit->dfAzimuthError;
    found.second = secondOf(curve, fit->dfAzimuth);
    found.dfShareFitting = share.share();
    judgeSense(found, *fit);
    return search;
}

}  // namespace tessera
