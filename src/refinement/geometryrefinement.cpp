#include "refinement/geometryrefinement.h"

#include "refinement/bravaisfit.h"
#include "refinement/fixednumbers.h"
#include "refinement/geometryrounds.h"
#include "refinement/geometryterms.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tessera {

namespace {

const int g_nFewestPeaks = 20;
const int g_nMostRounds = 10;
// One eighth of randomly distributed indices is as near to whole numbers as the final tolerance requires.
const double g_adfIndexTolerances[] = {0.4, 0.32, 0.25};

/// Which tolerances the rounds of a fit take: one after the other, or the narrowest one alone.
enum class IndexTolerance { Narrowing, Narrowest };

// A geometry must fit at least this fraction of the peaks.
const double g_dfLeastShare = 1.0 / 3;

bool isFinite(const GeometrySpot& spot)
{
    const FramePlace fine = spot.finePlace.value_or(spot.place);
    return std::isfinite(fine.dfX) && std::isfinite(fine.dfY) && std::isfinite(spot.place.dfX) &&
           std::isfinite(spot.place.dfY) && std::isfinite(spot.dfTilt) && std::isfinite(spot.dfWeight) &&
           spot.nFrame >= 0;
}

bool isUsable(const DiffractionGeometry& geometry)
{
    const auto& [a, b, c] = geometry.aBasis;
    const double dfVolume = dot(a, cross(b, c));
    const double dfEdges = std::sqrt(dot(a, a) * dot(b, b) * dot(c, c));
    return std::isfinite(geometry.plane.axis) && geometry.dfWavelength > 0 && geometry.dfPixelSize > 0 &&
           geometry.dfRadius > 0 && std::isfinite(dfVolume) && std::abs(dfVolume) > 1e-6 * dfEdges;
}

bool liesInPlane(const GeometryWork& work)
{
    Eigen::Matrix3d matSum = Eigen::Matrix3d::Zero();
    for (const int n : work.listUsed) {
        const DoubleVector index = realIndices(work.listSpot[n]);
        const Eigen::Vector3d vec(index[0], index[1], index[2]);
        matSum += vec * vec.transpose();
    }
    const Eigen::FullPivLU<Eigen::Matrix3d> lu(matSum);
    return lu.rank() < 3;
}

double tiltRange(const std::vector<GeometrySpot>& listSpot)
{
    const auto [itLow, itHigh] = std::minmax_element(
        listSpot.begin(), listSpot.end(),
        [](const GeometrySpot& one, const GeometrySpot& other) { return one.dfTilt < other.dfTilt; });
    return itHigh->dfTilt - itLow->dfTilt;
}

/// The numbers that are always fitted: cell, axis, beam and stretching.
std::vector<int> usualNumbers(const GeometryRefinementOptions& options, std::vector<FixedNumber>& listFixed)
{
    std::vector<int> listNumber;
    for (int n = CellFirst; n <= StretchingSin; ++n) {
        const auto& listAsked = options.listFixed;
        if (isOfCell(n) || std::find(listAsked.begin(), listAsked.end(), n) == listAsked.end()) {
            listNumber.push_back(n);
        } else {
            listFixed.push_back({n, QStringLiteral("was not asked for")});
        }
    }
    return listNumber;
}

/// Indices and spots in use, to detect whether a round has changed anything.
std::vector<int> stateOf(const GeometryWork& work)
{
    std::vector<int> listState = work.listUsed;
    for (const int n : work.listUsed) {
        const auto& anIndex = work.listSpot[n].anIndex;
        listState.insert(listState.end(), anIndex.begin(), anIndex.end());
    }
    return listState;
}

/// Whether significantly more peaks were lost than gained at a limit.
/// Source: McNemar (1947), Psychometrika 12, 153–157.
bool losesPeaks(const std::vector<int>& listBefore, const std::vector<int>& listAfter)
{
    std::vector<int> listGone, listCome;
    std::set_difference(listBefore.begin(), listBefore.end(), listAfter.begin(), listAfter.end(),
                        std::back_inserter(listGone));
    std::set_difference(listAfter.begin(), listAfter.end(), listBefore.begin(), listBefore.end(),
                        std::back_inserter(listCome));
    const double dfGone = double(listGone.size()), dfCome = double(listCome.size());
    return dfGone - dfCome > 2 * std::sqrt(dfGone + dfCome);
}

class CRefinement {
public:
    CRefinement(GeometryWork& work, GeometryRefinement& result, CRunReport& report)
        : m_work(work), m_result(result), m_report(report)
    {}

    /// Why the geometry cannot be fitted; empty if it can.
    QString reasonNotToFit(const GeometryFit& fit)
    {
        if (int(m_work.listUsed.size()) < g_nFewestPeaks) {
            return QStringLiteral("The geometry needs %1 indexed peaks; %2 are there.")
                .arg(g_nFewestPeaks)
                .arg(m_work.listUsed.size());
        }
        if (liesInPlane(m_work)) {
            return QStringLiteral("The indices of the peaks lie in one plane, which determines no cell.");
        }
        const Undetermined undetermined = undeterminedNumbers(geometryNormal(m_work.residuals(), fit),
                                                              fit.listFree);
        return undetermined.bCell ? QStringLiteral("The peaks do not determine the cell.") : QString();
    }

    /// Fixes numbers that the peaks do not determine, fits, and selects the peaks again, until nothing
    /// changes.
    /// @return false, with the reason in the result, if the refinement cannot go on
    bool runRounds(GeometryFit& fit, IndexTolerance tolerance)
    {
        const int nTolerances = 3;
        std::vector<int> listState;
        for (int nRound = 0; nRound < g_nMostRounds; ++nRound) {
            fixUndetermined(fit);
            if (!m_report.goOn()) {
                return fail(QStringLiteral("The refinement of the geometry was stopped."));
            }
            if (!solveGeometry(m_work.residuals(), fit)) {
                return fail(QStringLiteral("The fit of the geometry did not finish."));
            }
            const int nTolerance = tolerance == IndexTolerance::Narrowing ? std::min(nRound, nTolerances - 1)
                                                                          : nTolerances - 1;
            m_limits = chooseSpots(m_work, fit, g_adfIndexTolerances[nTolerance]);
            m_report.addMessage(QStringLiteral("Geometry, round %1: %2 of %3 peaks, rms %4 px.")
                                    .arg(nRound + 1)
                                    .arg(m_work.listUsed.size())
                                    .arg(m_work.listSpot.size())
                                    .arg(rmsInPlane(m_work.residuals(), fit), 0, 'f', 3));
            if (double(m_work.listUsed.size()) < g_dfLeastShare * double(m_work.listSpot.size())) {
                return fail(QStringLiteral("Most of the peaks do not fit the cell (%1 of %2 do).")
                                .arg(m_work.listUsed.size())
                                .arg(m_work.listSpot.size()));
            }
            const QString strReason = reasonNotToFit(fit);
            if (!strReason.isEmpty()) {
                return fail(strReason);
            }
            std::vector<int> listNow = stateOf(m_work);
            if (nTolerance == nTolerances - 1 && listNow == listState) {
                break;
            }
            listState = std::move(listNow);
        }
        return true;
    }

    /// Corrects the places for the residual drift of the frames. The peaks of a frame are on all sides of the
    /// beam, so drift hardly correlates with any number but the centre: drift and fit are determined in turn.
    /// @return whether there is a residual drift
    bool takeOutDrift(GeometryFit& fit, int nFrames)
    {
        const int nTurns = 3;
        for (const GeometrySpot& spot : m_work.listSpot) {
            nFrames = std::max(nFrames, spot.nFrame + 1);
        }
        CRunReport silent;
        for (int nTurn = 0; nTurn < nTurns; ++nTurn) {
            m_drift = frameDrift(frameDistances(m_work, fit), nFrames,
                                 nTurn + 1 == nTurns || m_drift.listOffset.empty() ? m_report : silent);
            m_work.setDrift(m_drift.listOffset);
            m_limits = chooseSpots(m_work, fit, m_limits.dfIndex);
            if (m_drift.listOffset.empty() || !solveGeometry(m_work.residuals(), fit)) {
                break;
            }
        }
        return !m_drift.listOffset.empty();
    }

    /// Uses the subpixel places of the spots if they lower the rms of frames that were left out of the fit.
    /// @return false where it cannot go on with them
    bool takeFinePlaces(GeometryFit& fit)
    {
        const auto isFine = [](const GeometrySpot& spot) { return spot.finePlace.has_value(); };
        if (std::none_of(m_work.listSpot.begin(), m_work.listSpot.end(), isFine)) {
            return true;
        }
        const GeometryWork fine = m_work.withFinePlaces();
        const double dfRms = rmsOfUnseenFrames(m_work, fit), dfFine = rmsOfUnseenFrames(fine, fit);
        const bool bBetter = dfFine < dfRms;
        m_report.addMessage(
            QStringLiteral("Geometry with the centres of the spots: rms of frames not fitted to "
                           "%1 px instead of %2 px at the hunted pixels; %3.")
                .arg(dfFine, 0, 'f', 4)
                .arg(dfRms, 0, 'f', 4)
                .arg(QLatin1String(bBetter ? "taken" : "left out")));
        if (!bBetter) {
            return true;
        }
        m_work = fine;
        m_result.bFinePlaces = true;
        return runRounds(fit, IndexTolerance::Narrowest);
    }

    /// Adds spots without indices that lie where reflections are expected.
    /// @return false where it cannot go on with them
    bool takeOthers(GeometryFit& fit)
    {
        if (m_work.listRest.empty()) {
            return true;
        }
        const size_t nRest = m_work.listRest.size();
        m_result.nJoined = joinSpots(m_work, fit, m_limits);
        m_report.addMessage(
            QStringLiteral("Geometry: %1 of %2 peaks without indices lie where reflections are "
                           "expected, and are included.")
                .arg(m_result.nJoined)
                .arg(nRest));
        return m_result.nJoined == 0 || runRounds(fit, IndexTolerance::Narrowest);
    }

    void putDrift(GeometryModel& model) const
    {
        model.listDrift = m_drift.listOffset;
        model.nDriftIntervals = m_drift.nIntervals;
        model.nJumps = m_drift.nJumps;
    }

    /// Determines the number of peaks within the final limits, and the rms of the peaks in use.
    /// @return whether the result is worse than the start, by the rms or by the number of peaks within half
    /// the limits; peaks near the full limits are often false and fall on either side by chance
    bool isWorse(const GeometryFit& before, const GeometryFit& after)
    {
        const GeometryWork measured = m_work.withoutDrift();
        m_result.nFitBefore = indexedOf(spotsWithin(measured, before, m_limits));
        m_result.nFitAfter = indexedOf(spotsWithin(m_work, after, m_limits));
        m_result.dfRmsBefore = rmsInPlane(measured.residuals(), before);
        m_result.dfRmsAfter = rmsInPlane(m_work.residuals(), after);
        const SpotLimits close = {m_limits.dfIndex, m_limits.dfPlane / 2, m_limits.dfAlong / 2};
        return m_result.dfRmsAfter > m_result.dfRmsBefore ||
               losesPeaks(spotsWithin(measured, before, close), spotsWithin(m_work, after, close));
    }

    bool fail(const QString& strReason)
    {
        m_result.strReason = strReason;
        return false;
    }

private:
    /// The number of spots that had indices at the start.
    int indexedOf(const std::vector<int>& listWithin) const
    {
        return int(std::count_if(listWithin.begin(), listWithin.end(),
                                 [&](int n) { return m_work.listSpot[n].bIndexed; }));
    }

    void fixUndetermined(GeometryFit& fit)
    {
        const GeometryNormal normal = geometryNormal(m_work.residuals(), fit);
        for (const int nNumber : undeterminedNumbers(normal, fit.listFree).listNumber) {
            fit.listFree.erase(std::find(fit.listFree.begin(), fit.listFree.end(), nNumber));
            m_result.listFixed.push_back(
                {nNumber, QStringLiteral("cannot be distinguished from the others")});
        }
    }

    GeometryWork& m_work;
    GeometryRefinement& m_result;
    CRunReport& m_report;
    SpotLimits m_limits;
    FrameDrift m_drift;
};

/// Free and constrained fits.
void refineSpots(GeometryWork& work, const DiffractionGeometry& start,
                 const GeometryRefinementOptions& options, GeometryRefinement& result, CRunReport& report)
{
    CRefinement refinement(work, result, report);
    GeometryFit before;
    before.numbers = numbersOf(start, work.dfAzimuthZero);
    Eigen::Matrix3d matBasis;
    for (int n = 0; n < 9; ++n) {
        matBasis(n / 3, n % 3) = start.aBasis[n / 3][n % 3];
    }
    before.form.setStart(before.numbers, matBasis);
    before.listFree = usualNumbers(options, result.listFixed);
    const QString strReason = refinement.reasonNotToFit(before);
    if (!strReason.isEmpty()) {
        refinement.fail(strReason);
        return;
    }
    GeometryFit fit = before;
    if (!refinement.runRounds(fit, IndexTolerance::Narrowing)) {
        return;
    }
    if (options.bDrift) {
        refinement.takeOutDrift(fit, options.nFrames);
    }
    if (!refinement.takeFinePlaces(fit)) {
        return;
    }
    const bool bEllipse = chooseTerms(work, options, result.dfTiltRange, fit, result.listFixed, report);
    if (!refinement.runRounds(fit, IndexTolerance::Narrowest) || !refinement.takeOthers(fit)) {
        return;
    }
    if (options.bDrift && refinement.takeOutDrift(fit, options.nFrames) &&
        !refinement.runRounds(fit, IndexTolerance::Narrowest)) {
        return;
    }
    result.free = geometryModel(work, fit, bEllipse);
    refinement.putDrift(result.free);
    result.constrained = bravaisModel(work, options, result.free, report);
    if (result.constrained) {
        refinement.putDrift(*result.constrained);
    }
    bool bWorse = refinement.isWorse(before, result.best().fit);
    if (result.constrained && bWorse) {
        report.addMessage(
            QStringLiteral("Geometry under %1: fewer peaks lie close to it than before; left out.")
                .arg(result.constrained->fit.form.constraint()->strSymbol));
        result.constrained.reset();
        bWorse = refinement.isWorse(before, result.best().fit);
    }
    noteOthers(result);
    if (bWorse) {
        refinement.fail(
            QStringLiteral("The refined geometry would be worse than the one before: rms %1 px of %2 "
                           "peaks, instead of %3 px of %4.")
                .arg(result.dfRmsAfter, 0, 'f', 3)
                .arg(result.nFitAfter)
                .arg(result.dfRmsBefore, 0, 'f', 3)
                .arg(result.nFitBefore));
    }
    tellFixed(result.listFixed, report);
}

}  // namespace

GeometryRefinement refineGeometry(std::vector<GeometrySpot> listSpot, const DiffractionGeometry& start,
                                  const GeometryRefinementOptions& options, CRunReport& report)
{
    GeometryRefinement result;
    result.before = start;
    listSpot.erase(std::remove_if(listSpot.begin(), listSpot.end(),
                                  [](const GeometrySpot& spot) { return !isFinite(spot); }),
                   listSpot.end());
    for (GeometrySpot& spot : listSpot) {
        spot.dfWeight = spot.dfWeight > 0 ? spot.dfWeight
                                          : 1;  // intensities may be negative after background subtraction
    }
    GeometryWork work;
    work.nJobs = options.nJobs;
    std::partition_copy(listSpot.begin(), listSpot.end(), std::back_inserter(work.listSpot),
                        std::back_inserter(work.listRest),
                        [](const GeometrySpot& spot) { return spot.bIndexed; });
    listSpot = std::move(work.listSpot);
    result.nPeaks = int(listSpot.size());
    if (!isUsable(start) || listSpot.empty()) {
        result.strReason = listSpot.empty()
                               ? QStringLiteral("There are no indexed peaks to fit the geometry to.")
                               : QStringLiteral(
                                     "The geometry to begin with has no usable cell, "
                                     "wavelength, pixel size or axis.");
        return result;
    }
    numberChains(listSpot);
    result.dfTiltRange = tiltRange(listSpot);
    work.listSpot = std::move(listSpot);
    work.fixed = start;
    work.dfAzimuthZero = start.plane.axis;
    for (int n = 0; n < result.nPeaks; ++n) {
        work.listUsed.push_back(n);
    }
    refineSpots(work, start, options, result, report);
    return result;
}

}  // namespace tessera
