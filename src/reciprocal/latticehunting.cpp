#include "reciprocal/latticehunting.h"

#include "dataset/pagerounding.h"
#include "lattice/directionsearch.h"
#include "lattice/latticeanalysis.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/checkedcellhunting.h"
#include "reciprocal/latticepoints.h"
#include "records/timestamp.h"

#include <cmath>
#include <optional>

namespace tessera {

namespace {

constexpr double g_dfEnough = 0.5;       // with this share on the lattice no search in other ranges is needed
constexpr double g_dfAboutEqual = 0.95;  // of two shares
// With more reflections one search takes some ten seconds. Only noise, or spots that were hunted again and
// again, give as many, and the search over directions does without them.
constexpr int g_nMostRepeated = 50000;
constexpr double g_dfMuchLarger = 1.5;  // of two volumes: a supercell has at least twice that of its cell

/// The report of a search whose cell may not be the final one: passes on all but the text of the cell and
/// errors.
class CCandidateReport : public CRunReport {
public:
    explicit CCandidateReport(CRunReport& report) : m_report(report) {}

    void addMessage(const QString& strText, Severity severity) override
    {
        if (severity < Severity::Warning) {
            m_report.addMessage(strText, severity);
        }
    }

    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar) override
    {
        m_report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar);
    }
    void setProgress(int nValue) override { m_report.setProgress(nValue); }
    void endProgress() override { m_report.endProgress(); }
    bool goOn() override { return m_report.goOn(); }

private:
    CRunReport& m_report;
};

LatticeCandidate candidateOf(const LatticeBasis& basis, const LatticePoints& listPoint)
{
    return {basis, fitOfLattice(basis, listPoint)};
}

/// The cell of the difference vectors, brought onto the peaks unless fewer of them fit then.
std::optional<LatticeCandidate> candidateOfVectors(const QList<Peak3D>& listSelection,
                                                   const CellHuntingParameters& range,
                                                   double dfIndexThreshold, const LatticePoints& listPoint,
                                                   CRunReport& report, int nJobs)
{
    DataSet scratch;  // a search needs no more of a data set than a place for its cell
    CCandidateReport candidateReport(report);
    if (listSelection.size() > g_nMostRepeated) {
        runUnitCellHunting(scratch, listSelection, range, candidateReport, nJobs);
    } else {
        runCheckedCellHunting(scratch, listSelection, range, dfIndexThreshold, candidateReport, nJobs);
    }
    const std::optional<ReciprocalBasis> basis = cellInForce(scratch);
    if (!basis || !latticeBasisOf(*basis).allFinite()) {
        return std::nullopt;
    }
    const LatticeCandidate found = candidateOf(latticeBasisOf(*basis), listPoint);
    const LatticeCandidate refined = candidateOf(refinedBasis(found.basis, listPoint, g_dfLatticeTolerance),
                                                 listPoint);
    return refined.fit.nFitting >= found.fit.nFitting ? refined : found;
}

std::optional<LatticeCandidate> candidateOfDirections(const LatticePoints& listPoint,
                                                      const CellHuntingParameters& range, int nJobs,
                                                      CRunReport& report)
{
    std::optional<LatticeCandidate> best;
    for (const double dfFactor : {1.0, 2.0, 0.5}) {
        if (dfFactor > 1 && !range.m_bAutoRange) {
            continue;  // the user has given the longest edge
        }
        DirectionSearchOptions options;
        options.dfShortest = range.m_dfCellRangeMin;
        options.dfLongest = dfFactor * range.m_dfCellRangeMax;
        options.dfTolerance = g_dfLatticeTolerance;
        options.nJobs = nJobs;
        const std::optional<DirectionLattice> found = searchDirections(listPoint, options,
                                                                       [&] { return report.goOn(); });
        if (found) {
            const LatticeCandidate candidate = candidateOf(found->matBasis, listPoint);
            if (!best || isBetter(candidate, *best)) {
                best = candidate;
            }
        }
        if (!report.goOn() || (best && best->honestShare() >= g_dfEnough)) {
            break;
        }
    }
    return best;
}

void tellCandidate(const QString& strMethod, const std::optional<LatticeCandidate>& candidate,
                   CRunReport& report)
{
    if (!candidate) {
        report.addMessage(QStringLiteral("%1>%2: no cell.").arg(currentTimeStamp(), strMethod));
        return;
    }
    report.addMessage(QStringLiteral("%1>%2: V=%L3 Å³; %4.")
                          .arg(currentTimeStamp(), strMethod)
                          .arg(candidate->volume(), 0, 'f', 1)
                          .arg(latticeFitText(candidate->fit)),
                      Severity::Milestone);
}

RunOutcome ended(RunEnd end, const QString& strReason, CRunReport& report)
{
    report.fail(strReason);
    return {end, strReason};
}

QString reasonForNone(const CellHuntingParameters& range)
{
    if (range.m_dfCellRangeMin <= range.m_dfCellRangeMax) {
        return QStringLiteral("Unit cell not found.");
    }
    return QStringLiteral("No edge is both longer than \"Min.\", %L1 Å, and shorter than \"Max.\", %L2 Å.")
        .arg(range.m_dfCellRangeMin)
        .arg(range.m_dfCellRangeMax);
}

}  // namespace

double LatticeCandidate::volume() const
{
    return std::abs(basis.determinant());
}

double LatticeCandidate::honestShare() const
{
    return (fit.share() - fit.dfByChance) / std::max(1 - fit.dfByChance, 1e-3);
}

QString latticeFitText(const LatticeFit& fit, const QLocale& locale)
{
    return QStringLiteral("%1% of %2 peaks fit, by chance %3%")
        .arg(locale.toString(100 * fit.share(), 'f', 1), locale.toString(fit.nPoints),
             locale.toString(100 * fit.dfByChance, 'f', 1));
}

RunOutcome commitLattice(DataSet& dataSet, const LatticeBasis& found, CRunReport& report,
                         const QString& strLatticeHost)
{
    const ReciprocalBasis basis = reciprocalBasisOf(found);
    const QString strCell = unitCellHtml(QStringLiteral("Found unit cell"), basis, strLatticeHost);
    if (!isFinite(basis) || strCell.isEmpty()) {
        return ended(RunEnd::Failed, QStringLiteral("Unit cell not found."), report);
    }
    report.addHtml(strCell, Severity::Info);
    dataSet.m_listCellFound = basis.toList();
    updateUnitCell(dataSet);
    return {};
}

bool isBetter(const LatticeCandidate& candidate, const LatticeCandidate& other)
{
    const double dfShare = candidate.honestShare();
    const double dfOther = other.honestShare();
    const bool bEqual = std::min(dfShare, dfOther) >= g_dfAboutEqual * std::max(dfShare, dfOther);
    const double dfVolume = candidate.volume() / other.volume();
    if (bEqual && (dfVolume >= g_dfMuchLarger || dfVolume <= 1 / g_dfMuchLarger)) {
        return dfVolume < 1;
    }
    return dfShare > dfOther;
}

CellHuntingParameters withRange(CellHuntingParameters parameters, const DataSet& dataSet)
{
    if (parameters.m_bAutoRange) {
        const CellRange range = automaticCellRange(dataSet);
        parameters.m_dfCellRangeMin = range.dfShortest;
        parameters.m_dfCellRangeMax = range.dfLongest;
        roundToPages(parameters);
    }
    return parameters;
}

RunOutcome runLatticeHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                             const CellHuntingParameters& parameters, double dfIndexThreshold,
                             CRunReport& report, int nJobs, const QString& strLatticeHost)
{
    const CellHuntingParameters range = withRange(parameters, dataSet);
    if (parameters.m_bAutoRange) {
        report.addMessage(QStringLiteral("%1>The distances of the spots allow for edges of %2 to %3 Å.")
                              .arg(currentTimeStamp())
                              .arg(range.m_dfCellRangeMin, 0, 'f', 1)
                              .arg(range.m_dfCellRangeMax, 0, 'f', 1),
                          Severity::Milestone);
    }
    const LatticePoints listPoint = latticePoints(dataSet);
    if (range.m_method == CellSearchMethod::Directions && listPoint.empty()) {
        return ended(RunEnd::Refused, QStringLiteral("There are no mapped peaks to search a cell with."),
                     report);
    }
    if (range.m_method == CellSearchMethod::DifferenceVectors || listPoint.empty()) {
        return runCheckedCellHunting(dataSet, listSelection, range, dfIndexThreshold, report, nJobs);
    }
    std::optional<LatticeCandidate> best;
    if (range.m_method == CellSearchMethod::BestOfBoth) {
        best = candidateOfVectors(listSelection, range, dfIndexThreshold, listPoint, report, nJobs);
        tellCandidate(QStringLiteral("Difference vectors"), best, report);
    }
    report.addMessage(QStringLiteral("%1>Searching by directions...").arg(currentTimeStamp()),
                      Severity::Milestone);
    const std::optional<LatticeCandidate> directions = candidateOfDirections(listPoint, range, nJobs, report);
    if (!report.goOn()) {
        return {RunEnd::Stopped, QString()};
    }
    tellCandidate(QStringLiteral("Directions"), directions, report);
    if (directions && (!best || isBetter(*directions, *best))) {
        best = directions;
    }
    if (best) {
        const LatticeWithCosets whole = latticeAndCosets(best->basis, listPoint);
        for (const QString& strLine : tellWholeLattice(whole)) {
            report.addMessage(strLine, Severity::Milestone);
        }
        return commitLattice(dataSet, whole.matBasis, report, strLatticeHost);
    }
    return ended(RunEnd::Failed, reasonForNone(range), report);
}

}  // namespace tessera
