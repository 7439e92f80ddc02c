#include "refinement/geometryterms.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

// Over a narrower range an inclination of the axis cannot be distinguished from a rotation of the crystal.
const double g_dfLeastRangeOutOfPlane = 20;

bool isFixed(const GeometryRefinementOptions& options, int nNumber)
{
    return std::find(options.listFixed.begin(), options.listFixed.end(), nNumber) != options.listFixed.end();
}

/// The factor by which a term must lower the rms of frames that were left out. A superfluous number still
/// fits the errors of the chains, which have frames in both halves, and so lowers the mean square by its
/// share in the two coordinates of all chains. Twice that decrease is required.
double rmsToReach(double dfRms, size_t nNumbers, int nChains)
{
    return dfRms * std::sqrt(std::max(0.0, 1 - double(nNumbers) / std::max(1, nChains)));
}

struct Choice {
    const GeometryWork& work;
    int nChains;
    GeometryFit& fit;
    double dfRms;  ///< rms of the frames left out, under the fit
    std::vector<FixedNumber>& listFixed;
    CRunReport& report;

    void leaveFixed(const std::vector<int>& listNumber, const QString& strWhy)
    {
        for (const int nNumber : listNumber) {
            listFixed.push_back({nNumber, strWhy});
        }
    }

    /// Accepts a fit with other numbers if it predicts the frames that were left out better.
    bool take(const GeometryFit& other, const std::vector<int>& listNew, const QString& strTerm)
    {
        const double dfOther = rmsOfUnseenFrames(work, other);
        GeometryFit solved = other;
        const bool bBetter =
            dfOther < rmsToReach(dfRms, listNew.size(), nChains) && solveGeometry(work.residuals(), solved) &&
            undeterminedNumbers(geometryNormal(work.residuals(), solved), solved.listFree).listNumber.empty();
        report.addMessage(
            QStringLiteral("Geometry with %1: rms of frames not fitted to %2 px instead of %3 px; %4.")
                .arg(strTerm)
                .arg(dfOther, 0, 'f', 4)
                .arg(dfRms, 0, 'f', 4)
                .arg(QLatin1String(bBetter ? "taken" : "left out")));
        if (bBetter) {
            fit = solved;
            dfRms = dfOther;
        } else {
            leaveFixed(listNew, QStringLiteral("does not lower the rms of frames that it was not fitted to"));
        }
        return bBetter;
    }
};

}  // namespace

HalvesRms rmsOfHalves(const GeometryWork& work, const GeometryFit& fit)
{
    double dfSeen = 0, dfUnseen = 0;
    int nSpots = 0;
    for (const int nHalf : {0, 1}) {
        const CGeometryResiduals seen = work.residualsOfHalf(nHalf);
        const CGeometryResiduals unseen = work.residualsOfHalf(1 - nHalf);
        GeometryFit half = fit;
        if (2 * seen.spots() < 3 * int(fit.listFree.size()) || unseen.spots() == 0 ||
            !solveGeometry(seen, half, 12)) {
            const double dfNone = std::numeric_limits<double>::infinity();
            return {dfNone, dfNone};
        }
        dfSeen += std::pow(rmsInPlane(seen, half), 2) * seen.spots();
        dfUnseen += std::pow(rmsInPlane(unseen, half), 2) * unseen.spots();
        nSpots += unseen.spots();
    }
    return {std::sqrt(dfSeen / nSpots), std::sqrt(dfUnseen / nSpots)};
}

GeometryFit withNumbers(const GeometryFit& fit, const std::vector<int>& listMore)
{
    GeometryFit more = fit;
    more.listFree.insert(more.listFree.end(), listMore.begin(), listMore.end());
    std::sort(more.listFree.begin(), more.listFree.end());
    more.listFree.erase(std::unique(more.listFree.begin(), more.listFree.end()), more.listFree.end());
    return more;
}

GeometryFit withoutNumbers(const GeometryFit& fit, const std::vector<int>& listLess, double dfValue)
{
    GeometryFit less = fit;
    for (const int nNumber : listLess) {
        less.listFree.erase(std::remove(less.listFree.begin(), less.listFree.end(), nNumber),
                            less.listFree.end());
        less.numbers[nNumber] = dfValue;
    }
    return less;
}

bool chooseTerms(const GeometryWork& work, const GeometryRefinementOptions& options, double dfTiltRange,
                 GeometryFit& fit, std::vector<FixedNumber>& listFixed, CRunReport& report)
{
    const CGeometryResiduals residuals = work.residuals();
    Choice choice = {work, residuals.chains(), fit, rmsOfUnseenFrames(work, fit), listFixed, report};
    const auto wanted = [&](bool bWanted, const std::vector<int>& listNumber) {
        const bool bFree = bWanted && std::none_of(listNumber.begin(), listNumber.end(),
                                                   [&](int n) { return isFixed(options, n); });
        if (!bFree) {
            choice.leaveFixed(listNumber, QStringLiteral("was not asked for"));
        } else if (!std::isfinite(choice.dfRms)) {
            choice.leaveFixed(listNumber, QStringLiteral("needs more reflections"));
        }
        return bFree && std::isfinite(choice.dfRms);
    };
    const std::vector<int> listThird = {ThirdOrderRadial, ThirdOrderSpiral};
    if (wanted(options.bThirdOrder, listThird)) {
        choice.take(withNumbers(fit, listThird), listThird, QStringLiteral("the third order"));
    }
    bool bEllipse = false;
    const bool bMayReplace = !isFixed(options, StretchingCos) && !isFixed(options, StretchingSin);
    if (wanted(options.bEllipse && bMayReplace, {EllipseAcross})) {
        // Along the axis, a free cell absorbs the ellipse.
        const GeometryFit other = withNumbers(withoutNumbers(fit, {StretchingCos, StretchingSin}),
                                              {EllipseAcross});
        bEllipse = choice.take(other, {EllipseAcross},
                               QStringLiteral("a linear ellipse instead of the stretching"));
    }
    const std::vector<int> listSecond = {ParabolicCos, ParabolicSin};
    if (wanted(options.bParabolic, listSecond)) {
        choice.take(withNumbers(fit, listSecond), listSecond, QStringLiteral("a parabolic distortion"));
    }
    if (wanted(options.bTiltScale, {TiltScale})) {
        choice.take(withNumbers(fit, {TiltScale}), {TiltScale}, QStringLiteral("a scale of the tilts"));
    }
    if (wanted(options.bAxisOutOfPlane, {AxisOutOfPlane})) {
        if (dfTiltRange < g_dfLeastRangeOutOfPlane) {
            choice.leaveFixed({AxisOutOfPlane},
                              QStringLiteral("needs %1° of tilt").arg(g_dfLeastRangeOutOfPlane));
        } else {
            choice.take(withNumbers(fit, {AxisOutOfPlane}), {AxisOutOfPlane},
                        QStringLiteral("an axis out of the plane"));
        }
    }
    return bEllipse;
}

}  // namespace tessera
