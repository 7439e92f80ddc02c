#include "reciprocal/cellhunting.h"

#include "reciprocal/basisvectors.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/differencevectors.h"
#include "reciprocal/vectoraveraging.h"
#include "records/timestamp.h"

namespace tessera {

namespace {

constexpr float g_fAveragingTolerance = 0.01f;  // Å⁻¹

}  // namespace

bool runUnitCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                        const CellHuntingParameters& parameters, CRunReport& report, bool bSave,
                        const QString& strLatticeHost)
{
    if (listSelection.isEmpty()) {
        report.addMessage(
            QStringLiteral("%1> No reflections were selected for unit cell hunting.").arg(currentTimeStamp()),
            Severity::Info);
        return false;
    }
    if (!report.goOn())
        return false;
    report.addMessage(QStringLiteral("%1>Calculating difference vectors...").arg(currentTimeStamp()),
                      Severity::Milestone);
    // The smallest cell edge gives the greatest length.
    const QList<Peak3D> listDifference = calDifferenceVectors(listSelection,
                                                              float(1 / parameters.m_dfCellRangeMin),
                                                              float(1 / parameters.m_dfCellRangeMax), report);
    if (!report.goOn())
        return false;
    report.addMessage(
        QStringLiteral("%1>Total difference vectors: %L2").arg(currentTimeStamp()).arg(listDifference.size()),
        Severity::Milestone);
    report.addMessage(QStringLiteral("%1>Averaging difference vectors...").arg(currentTimeStamp()),
                      Severity::Milestone);
    if (!report.goOn())
        return false;
    QList<Vec3D> listBasis = findBasisVectors(
        averageDifferenceVectors(listDifference, g_fAveragingTolerance, report));
    if (!report.goOn())
        return false;
    if (listBasis.size() == 2)
        listBasis.append(cross(listBasis[0], listBasis[1]));
    const std::optional<ReciprocalBasis> basis = basisFromList(listBasis);
    // Vectors without weight have no mean; such a basis is no cell.
    if (!basis || !isFinite(*basis)) {
        report.fail(QStringLiteral("Unit cell not found."));
        if (parameters.m_dfCellRangeMin > parameters.m_dfCellRangeMax)
            report.addMessage(QStringLiteral("No edge is both longer than \"Min.\", %L1 Å, and shorter than "
                                             "\"Max.\", %L2 Å.")
                                  .arg(parameters.m_dfCellRangeMin)
                                  .arg(parameters.m_dfCellRangeMax),
                              Severity::Error);
        return false;
    }
    const QString strCell = unitCellHtml(QStringLiteral("Found unit cell"), *basis, strLatticeHost);
    if (!strCell.isEmpty())
        report.addHtml(strCell, Severity::Info);
    dataSet.m_listCellFound = listBasis;
    updateUnitCell(dataSet);
    if (bSave)
        saveProjectCell(dataSet, report);
    return true;
}

}  // namespace tessera
