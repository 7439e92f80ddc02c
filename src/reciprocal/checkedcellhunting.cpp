#include "reciprocal/checkedcellhunting.h"

#include "app/records/timestamp.h"
#include "crystal/reflectionindices.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/duplicates.h"
#include "reciprocal/indexspreading.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr double g_dfEnough = 0.5;    // share of the reflections
constexpr double g_dfShorter = 0.95;  // of the edge that the vector to leave out stands for
constexpr int g_nMostSearches = 10;
constexpr float g_fRadius = 1.f / 3;  // Å⁻¹, as in the indexing

QString percent(double dfShare)
{
    return QString::number(100 * dfShare, 'f', 1);
}

/// The longest edge of a search that leaves out the shortest vector of a basis.
double shorterEdge(const QList<Vec3D>& listCell)
{
    return g_dfShorter / double(std::min({length(listCell[0]), length(listCell[1]), length(listCell[2])}));
}

}  // namespace

double indexedShare(const QList<Vec3D>& listCell, const QList<Peak3D>& listSelection, float fThreshold,
                    CRunReport& report)
{
    QList<Peak3D> listPeak = listSelection;
    if (listPeak.isEmpty() || !indexReflections(listPeak, listCell, fThreshold, g_fRadius, report))
        return 0;
    QList<Peak3D> listIndexed;
    std::copy_if(listPeak.begin(), listPeak.end(), std::back_inserter(listIndexed),
                 [&](const Peak3D& peak) { return isCloseToInteger(peak, fThreshold); });
    return double(takeDuplicateReflections(listIndexed)[0].size()) / listPeak.size();
}

void adviseOnCell(const DataSet& dataSet, const QList<Peak3D>& listSelection, double dfIndexThreshold,
                  CRunReport& report)
{
    if (dataSet.m_listCell.size() != 3)
        return;
    const double dfShare = indexedShare(dataSet.m_listCell, listSelection, float(dfIndexThreshold), report);
    if (dfShare < g_dfEnough)
        report.addMessage(QStringLiteral("Only %1% of the reflections fit this cell. If it is wrong, search "
                                         "with a \"Max.\" of %2 Å, which leaves out its shortest vector.")
                              .arg(percent(dfShare))
                              .arg(shorterEdge(dataSet.m_listCell), 0, 'f', 1));
}

bool runCheckedCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                           const CellHuntingParameters& parameters, double dfIndexThreshold,
                           CRunReport& report, bool bSave)
{
    QList<Vec3D> listBest;
    double dfBest = -1;
    CellHuntingParameters range = parameters;
    for (int n = 0; n < g_nMostSearches; ++n) {
        if (!runUnitCellHunting(dataSet, listSelection, range, report, false))
            break;
        const QList<Vec3D>& listCell = dataSet.m_listCell;
        const double dfShare = indexedShare(listCell, listSelection, float(dfIndexThreshold), report);
        if (dfShare > dfBest) {
            dfBest = dfShare;
            listBest = listCell;
        }
        range.m_dfCellRangeMax = shorterEdge(listCell);
        if (dfShare >= g_dfEnough || n + 1 == g_nMostSearches ||
            !(range.m_dfCellRangeMax > range.m_dfCellRangeMin))
            break;
        report.addMessage(QStringLiteral("%1>Only %2% of the reflections fit this cell. Searching again, for "
                                         "edges up to %3 Å.")
                              .arg(currentTimeStamp(), percent(dfShare))
                              .arg(range.m_dfCellRangeMax, 0, 'f', 2),
                          Qt::blue);
    }
    if (listBest.isEmpty())
        return false;
    if (listBest != dataSet.m_listCell)
        report.addMessage(QStringLiteral("An earlier cell, which %1% of the reflections fit, is kept.")
                              .arg(percent(dfBest)));
    dataSet.m_listCellFound = listBest;
    updateUnitCell(dataSet);
    if (bSave)
        saveProjectCell(dataSet, report);
    return true;
}
