#include "reciprocal/cellhunting.h"

#include "reciprocal/basisvectors.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/differencevectors.h"
#include "reciprocal/vectoraveraging.h"
#include "records/runends.h"
#include "records/timestamp.h"

#include <algorithm>

namespace tessera {

namespace {

/// Differences that lie closer than this are one vector, Å⁻¹. Beyond the longest edge of the pages' start it
/// is a quarter of the shortest difference looked for, as it would melt neighbours of large cells into one.
float averagingTolerance(double dfLongestEdge)
{
    const float fTolerance = 0.01f;
    return dfLongestEdge > 30 ? std::min(fTolerance, float(0.25 / dfLongestEdge)) : fTolerance;
}

}  // namespace

RunOutcome runUnitCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                              const CellHuntingParameters& parameters, CRunReport& report, int nJobs,
                              const QString& strLatticeHost)
{
    if (listSelection.isEmpty()) {
        const QString strReason = QStringLiteral("No reflections were selected for unit cell hunting.");
        report.addMessage(QStringLiteral("%1> %2").arg(currentTimeStamp(), strReason), Severity::Info);
        return {RunEnd::Refused, strReason};
    }
    if (!report.goOn()) {
        return {RunEnd::Stopped, {}};
    }
    report.addMessage(QStringLiteral("%1>Calculating difference vectors...").arg(currentTimeStamp()),
                      Severity::Milestone);
    // The smallest cell edge gives the greatest length.
    const std::vector<DifferenceVector> vecDifference = calDifferenceVectors(
        listSelection, float(1 / parameters.m_dfCellRangeMin), float(1 / parameters.m_dfCellRangeMax),
        report);
    if (!report.goOn()) {
        return {RunEnd::Stopped, {}};
    }
    report.addMessage(
        QStringLiteral("%1>Total difference vectors: %L2").arg(currentTimeStamp()).arg(vecDifference.size()),
        Severity::Milestone);
    report.addMessage(QStringLiteral("%1>Averaging difference vectors...").arg(currentTimeStamp()),
                      Severity::Milestone);
    if (!report.goOn()) {
        return {RunEnd::Stopped, {}};
    }
    QList<Vec3D> listBasis = findBasisVectors(averageDifferenceVectors(
        vecDifference, averagingTolerance(parameters.m_dfCellRangeMax), report, nJobs));
    if (!report.goOn()) {
        return {RunEnd::Stopped, {}};
    }
    if (listBasis.size() == 2) {
        listBasis.append(cross(listBasis[0], listBasis[1]));
    }
    const std::optional<ReciprocalBasis> basis = basisFromList(listBasis);
    // Vectors without weight have no mean; such a basis is no cell.
    if (!basis || !isFinite(*basis)) {
        RunOutcome outcome = failRun(report, QStringLiteral("Unit cell not found."));
        if (parameters.m_dfCellRangeMin > parameters.m_dfCellRangeMax) {
            report.addMessage(QStringLiteral("No edge is both longer than \"Min.\", %L1 Å, and shorter than "
                                             "\"Max.\", %L2 Å.")
                                  .arg(parameters.m_dfCellRangeMin)
                                  .arg(parameters.m_dfCellRangeMax),
                              Severity::Error);
        }
        return outcome;
    }
    const QString strCell = unitCellHtml(QStringLiteral("Found unit cell"), *basis, strLatticeHost);
    if (!strCell.isEmpty()) {
        report.addHtml(strCell, Severity::Info);
    }
    dataSet.m_listCellFound = listBasis;
    updateUnitCell(dataSet);
    return {};
}

}  // namespace tessera
