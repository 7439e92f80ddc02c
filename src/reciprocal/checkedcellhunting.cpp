#include "reciprocal/checkedcellhunting.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/duplicates.h"
#include "reciprocal/indexspreading.h"
#include "records/timestamp.h"

#include <algorithm>
#include <iterator>

namespace tessera {

namespace {

constexpr double g_dfEnough = 0.5;  // of the reflections have to be indexed
constexpr double g_dfShorter =
    0.95;  // times the edge of the shortest vector: an upper limit that leaves this vector out
constexpr int g_nMostSearches = 10;
constexpr float g_fRadius = 1.f / 3;  // Å⁻¹, as in the indexing

QString percent(double dfShare)
{
    return QString::number(100 * dfShare, 'f', 1);
}

/// The longest edge, within the range of the last search, of one that leaves out the shortest vector which
/// that search found; 0 if there is none. A third axis made up for a single plane can be of any length, 0
/// too, and is not found by a search.
double shorterEdge(const ReciprocalBasis& basis, const CellHuntingParameters& range)
{
    double dfEdge = 0;
    for (const Vec3D& v : basis.vectors()) {
        if (const double df = g_dfShorter / double(length(v)); df < range.m_dfCellRangeMax) {
            dfEdge = std::max(dfEdge, df);
        }
    }
    return dfEdge > range.m_dfCellRangeMin ? dfEdge : 0;
}

}  // namespace

double indexedShare(const ReciprocalBasis& basis, const QList<Peak3D>& listSelection, float fThreshold,
                    CRunReport& report)
{
    QList<Peak3D> listPeak = listSelection;
    if (listPeak.isEmpty() || !indexReflections(listPeak, basis, fThreshold, g_fRadius, report)) {
        return 0;
    }
    QList<Peak3D> listIndexed;
    std::copy_if(listPeak.begin(), listPeak.end(), std::back_inserter(listIndexed),
                 [&](const Peak3D& peak) { return isCloseToInteger(peak, fThreshold); });
    return double(takeDuplicateReflections(listIndexed)[0].size()) / listPeak.size();
}

void adviseOnCell(const DataSet& dataSet, const QList<Peak3D>& listSelection,
                  const CellHuntingParameters& parameters, double dfIndexThreshold, CRunReport& report)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis) {
        return;
    }
    const double dfShare = indexedShare(*basis, listSelection, float(dfIndexThreshold), report);
    if (dfShare >= g_dfEnough) {
        return;
    }
    QString strText = QStringLiteral("Only %1% of the reflections fit this cell.").arg(percent(dfShare));
    if (const double dfEdge = shorterEdge(*basis, parameters); dfEdge > 0) {
        strText += QStringLiteral(
                       " If it is wrong, search with a \"Max.\" of %1 Å, which leaves out its "
                       "shortest vector.")
                       .arg(dfEdge, 0, 'f', 1);
    }
    report.addMessage(strText);
}

RunOutcome runCheckedCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                                 const CellHuntingParameters& parameters, double dfIndexThreshold,
                                 CRunReport& report, int nJobs)
{
    std::optional<ReciprocalBasis> basisBest;
    double dfBest = -1;
    RunOutcome outcome;
    CellHuntingParameters range = parameters;
    for (int n = 0; n < g_nMostSearches; ++n) {
        outcome = runUnitCellHunting(dataSet, listSelection, range, report, nJobs);
        if (!outcome.finished()) {
            break;
        }
        const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
        const double dfShare = indexedShare(*basis, listSelection, float(dfIndexThreshold), report);
        if (dfShare > dfBest) {
            dfBest = dfShare;
            basisBest = basis;
        }
        range.m_dfCellRangeMax = shorterEdge(*basis, range);
        if (dfShare >= g_dfEnough || n + 1 == g_nMostSearches || range.m_dfCellRangeMax == 0) {
            break;
        }
        report.addMessage(QStringLiteral("%1>Only %2% of the reflections fit this cell. Searching again, for "
                                         "edges up to %3 Å.")
                              .arg(currentTimeStamp(), percent(dfShare))
                              .arg(range.m_dfCellRangeMax, 0, 'f', 2),
                          Severity::Milestone);
    }
    if (!basisBest) {
        return outcome;
    }
    const QList<Vec3D> listBest = basisBest->toList();
    if (listBest != dataSet.m_listCell) {
        report.addMessage(QStringLiteral("An earlier cell, which %1% of the reflections fit, is kept.")
                              .arg(percent(dfBest)));
    }
    dataSet.m_listCellFound = listBest;
    updateUnitCell(dataSet);
    return {};
}

}  // namespace tessera
