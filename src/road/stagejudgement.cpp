#include "road/stagejudgement.h"

#include "road/intensityjudgement.h"
#include "road/judgement.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The least fraction of peaks on the lattice for a good cell or geometry. A correct cell does not fit noise,
// other crystals and ice. In real series with a slightly wrong geometry it fits about three quarters of the
// peaks.
const double g_dfShareGood = 0.6;
// The least range of tilts, degrees, over which a cell can be good: rocking curves are about as wide. Over a
// smaller range the edge along the beam is determined only by the curvature of the Ewald sphere.
const double g_dfLeastTurn = 1;
// Fewer peaks are doubtful: a lattice search needs several points along each of the three axes.
const int g_nFewPeaks = 50;

// A fraction as a text in per cent.
QString percent(double dfShare)
{
    return QStringLiteral("%1%").arg(100 * dfShare, 0, 'f', 1);
}

// A count with its noun, whose plural ends in "s".
QString counted(int nCount, const char* pszOne)
{
    return QStringLiteral("%1 %2%3").arg(nCount).arg(QLatin1String(pszOne),
                                                     QLatin1String(nCount == 1 ? "" : "s"));
}

Judgement judged(RoadStage stage, Verdict verdict, const QString& strReason, double dfFigure)
{
    return {roadStageName(stage), verdict, strReason, dfFigure};
}

Judgement judgeShiftResult(const RoadResults& results)
{
    const ShiftResult& shifts = *results.shifts;
    if (!shifts.listJump.isEmpty()) {
        return judged(RoadStage::Shifts, Verdict::Doubtful,
                      QStringLiteral("The shifts of %1 stand apart from those of their neighbours.")
                          .arg(counted(shifts.listJump.size(), "frame")),
                      shifts.listJump.size());
    }
    // The correlation is periodic in the region, a square: a shift by more than half its side looks like one
    // in the opposite direction.
    const bool bTooFar = shifts.dfMaxShift > shifts.rcRegion.width() / 2.0;
    return judged(RoadStage::Shifts, bTooFar ? Verdict::Doubtful : Verdict::Good,
                  QStringLiteral("The pattern moves by up to %1 pixels, in a region of %2.")
                      .arg(shifts.dfMaxShift, 0, 'f', 1)
                      .arg(shifts.rcRegion.width()),
                  shifts.dfMaxShift);
}

Judgement judgePeakResult(const RoadResults& results)
{
    const int nPeaks = results.peaks->nPeaks;
    const int nFrames = results.open ? results.open->nFrames : 0;
    const Verdict verdict = nPeaks == 0            ? Verdict::Bad
                            : nPeaks < g_nFewPeaks ? Verdict::Doubtful
                                                   : Verdict::Good;
    return judged(RoadStage::Peaks, verdict,
                  QStringLiteral("%1 on %2%3.")
                      .arg(counted(nPeaks, "peak"), counted(nFrames, "frame"),
                           QLatin1String(nPeaks < g_nFewPeaks ? ", which is little for a search" : "")),
                  nPeaks);
}

Judgement judgeMergeResult(const RoadResults& results)
{
    const MergeResult& merge = *results.merge;
    const double dfShare = merge.nChains == 0 ? 0 : double(merge.nReflections) / merge.nChains;
    return judged(RoadStage::Merge, dfShare < g_dfShareExpected ? Verdict::Doubtful : Verdict::Good,
                  QStringLiteral("%1 of %2 chains of peaks gave a reflection (%3).")
                      .arg(merge.nReflections)
                      .arg(merge.nChains)
                      .arg(percent(dfShare)),
                  dfShare);
}

QString fitText(const LatticeFit& fit)
{
    return QStringLiteral("%1 of %2 peaks (%3) lie on the lattice, by chance %4")
        .arg(fit.nFitting)
        .arg(fit.nPoints)
        .arg(percent(fit.share()), percent(fit.dfByChance));
}

// Bad if too few peaks are on the lattice, or hardly more than by chance. Good if most are, at least twice as
// many as by chance, and if there are enough peaks.
Verdict verdictOfFit(const LatticeFit& fit)
{
    // The standard deviation of the fraction by chance, as if the peaks were independent. But those of one
    // reflection fit or do not fit together. With some six of them the true deviation is two and a half times
    // as large, so five times this value are two standard deviations.
    const double dfDeviation = std::sqrt(fit.dfByChance * (1 - fit.dfByChance) / std::max(1, fit.nPoints));
    if (fit.share() < g_dfShareExpected || fit.share() <= fit.dfByChance + 5 * dfDeviation) {
        return Verdict::Bad;
    }
    const bool bSure = fit.share() >= std::max(g_dfShareGood, 2 * fit.dfByChance) &&
                       fit.nPoints >= g_nFewPeaks;
    return bSure ? Verdict::Good : Verdict::Doubtful;
}

Judgement judgeCellResult(const RoadResults& results)
{
    const CellResult& cell = *results.cell;
    if (!cell.parameters) {
        return judged(RoadStage::Cell, Verdict::Bad, QStringLiteral("Its vectors are co-planar."), 0);
    }
    if (!cell.fit) {
        return judged(RoadStage::Cell, Verdict::Doubtful,
                      QStringLiteral("No mapped peaks are there to hold it against."), 0);
    }
    const Judgement judgement = judged(RoadStage::Cell, verdictOfFit(*cell.fit),
                                       fitText(*cell.fit) + QLatin1Char('.'), cell.fit->share());
    const bool bNoRotation = results.open && results.open->dfTurn < g_dfLeastTurn;
    if (!bNoRotation || judgement.verdict != Verdict::Good) {
        return judgement;
    }
    return judged(
        RoadStage::Cell, Verdict::Doubtful,
        fitText(*cell.fit) + QStringLiteral("; but the tilts do not change, so the edge along the beam "
                                            "is hardly known."),
        judgement.dfFigure);
}

Judgement judgeIndexResult(const RoadResults& results)
{
    const IndexResult& index = *results.index;
    QStringList listReason = {
        QStringLiteral("%1 of the reflections were indexed").arg(percent(index.dfShare))};
    // Verdicts are in the order good, doubtful, bad, so that the greatest is the worst.
    Verdict verdict = index.dfShare < g_dfShareExpected ? Verdict::Bad : Verdict::Good;
    double dfFigure = index.dfShare;
    if (results.cell && results.cell->fit) {
        const LatticeFit& fit = *results.cell->fit;
        verdict = std::max(verdict, verdictOfFit(fit));
        listReason.append(fitText(fit));
        dfFigure = fit.share();
        if (spreadContradicts(index.dfShare, fit)) {
            listReason.append(
                QStringLiteral("the indices followed from neighbour to neighbour and say nothing"));
        }
    }
    if (index.centreOffset && isBeamWrong(*index.centreOffset)) {
        verdict = std::max(verdict, Verdict::Doubtful);
        listReason.append(QStringLiteral("the direct beam seems to be %1 pixels off")
                              .arg(index.centreOffset->length(), 0, 'f', 1));
    }
    if (index.bOppositeSense) {
        verdict = std::max(verdict, Verdict::Doubtful);
        listReason.append(QStringLiteral("the rotation seems to go the other way"));
    }
    return judged(RoadStage::Index, verdict, listReason.join(QStringLiteral("; ")) + QLatin1Char('.'),
                  dfFigure);
}

Judgement judgeGeometryResult(const RoadResults& results)
{
    const GeometryRefinement& geometry = *results.geometry;
    if (!geometry.done()) {
        return judged(RoadStage::Geometry, Verdict::Doubtful,
                      QStringLiteral("It stays as it is. %1").arg(geometry.strReason), 0);
    }
    const double dfShare = double(geometry.nFitAfter) / geometry.nPeaks;
    // The refinement uses the positions of the peaks in whole pixels, or the finer ones of the spots. Those
    // in whole pixels are accurate to about one pixel: an rms of twice that indicates a distortion that is
    // not in the model, or a wrong cell.
    const bool bTooFar = geometry.dfRmsAfter > 2;
    const bool bFew = dfShare < g_dfShareGood;
    return judged(RoadStage::Geometry, bTooFar || bFew ? Verdict::Doubtful : Verdict::Good,
                  QStringLiteral("%1 of %2 fit it (%3), with an rms of %4 pixels instead of %5.")
                      .arg(geometry.nFitAfter)
                      .arg(counted(geometry.nPeaks, "indexed peak"), percent(dfShare))
                      .arg(geometry.dfRmsAfter, 0, 'f', 2)
                      .arg(geometry.dfRmsBefore, 0, 'f', 2),
                  geometry.dfRmsAfter);
}

Judgement judgeRefineResult(const RoadResults& results)
{
    int nRejected = 0;
    int nGroups = 0;
    bool bDisagree = false;
    for (const PairRefinement& run : results.refine->listRun) {
        nRejected += run.found.nGroupsRejected;
        nGroups += run.found.nGroupsRejected + run.found.listDifference.size();
        bDisagree = bDisagree || pairsDisagree(run.found);
    }
    return judged(RoadStage::Refine, bDisagree ? Verdict::Doubtful : Verdict::Good,
                  QStringLiteral("%1 of %2 groups of peak pairs disagree.").arg(nRejected).arg(nGroups),
                  nGroups == 0 ? 0 : double(nRejected) / nGroups);
}

}  // namespace

std::optional<Judgement> judgeStage(RoadStage stage, const RoadResults& results)
{
    const auto judgeIf = [&](bool bThere, Judgement (*fnJudge)(const RoadResults&)) {
        return bThere ? std::optional<Judgement>(fnJudge(results)) : std::nullopt;
    };
    switch (stage) {
        case RoadStage::Shifts:
            return judgeIf(results.shifts.has_value(), judgeShiftResult);
        case RoadStage::Peaks:
            return judgeIf(results.peaks.has_value(), judgePeakResult);
        case RoadStage::Merge:
            return judgeIf(results.merge.has_value(), judgeMergeResult);
        case RoadStage::Cell:
            return judgeIf(results.cell.has_value(), judgeCellResult);
        case RoadStage::Index:
            return judgeIf(results.index.has_value(), judgeIndexResult);
        case RoadStage::Geometry:
            return judgeIf(results.geometry.has_value(), judgeGeometryResult);
        case RoadStage::Integrate:
            return judgeIf(results.integrate.has_value(), judgeIntensities);
        case RoadStage::Refine:
            return judgeIf(results.refine.has_value(), judgeRefineResult);
    }
    return {};
}

Judgement judgeAxis(const AxisFound& axis)
{
    return {QStringLiteral("axis"), axis.bSure ? Verdict::Good : Verdict::Doubtful,
            QStringLiteral("It lies at %1°, its sense is %2: %3.")
                .arg(axis.best.dfAzimuth, 0, 'f', 1)
                .arg(QLatin1String(axis.bSure ? "sure" : "doubtful"), axis.strSense),
            axis.best.dfAzimuth};
}

Judgement judgeLattice(const LatticeAnalysis& analysis)
{
    // The figure is that of the last sentence: the misfit of the angles in degrees, else a share from 0 to 1.
    Judgement judgement = {QStringLiteral("lattice"), Verdict::Good, QString(), 0};
    QStringList listReason;
    if (analysis.proposed) {
        const LatticeSymmetry& symmetry = analysis.proposed->symmetry;
        listReason.append(QStringLiteral("%1 %2 is proposed, with a misfit of %3% and %4°")
                              .arg(nameOf(symmetry.system))
                              .arg(QLatin1Char(symmetry.chCentring))
                              .arg(symmetry.dfMisfitLengths, 0, 'f', 2)
                              .arg(symmetry.dfMisfitAngles, 0, 'f', 2));
        judgement.dfFigure = symmetry.dfMisfitAngles;
    } else {
        listReason.append(QStringLiteral("no type is proposed"));
        judgement.verdict = Verdict::Doubtful;
    }
    // Points between those of the lattice, at fractions of an index.
    const std::vector<Coset>& listNamed = analysis.whole.listNamed;
    if (!listNamed.empty()) {
        judgement.verdict = Verdict::Doubtful;
        judgement.dfFigure = listNamed.front().dfShare;
        listReason.append(cosetText(listNamed.front()) +
                          QStringLiteral(", so a longer cell may be the right one"));
    }
    if (analysis.lattices.listLattice.size() > 1) {
        judgement.verdict = Verdict::Doubtful;
        judgement.dfFigure = analysis.shareOfOthers();
        listReason.append(
            QStringLiteral("%1 of the peaks lie on further lattices").arg(percent(judgement.dfFigure)));
    }
    judgement.strReason = listReason.join(QStringLiteral("; ")) + QLatin1Char('.');
    return judgement;
}

bool fitsLattice(const LatticeFit& fit)
{
    return verdictOfFit(fit) != Verdict::Bad;
}

bool spreadContradicts(double dfIndexedShare, const LatticeFit& fit)
{
    return dfIndexedShare >= g_dfShareExpected && !fitsLattice(fit);
}

}  // namespace tessera
