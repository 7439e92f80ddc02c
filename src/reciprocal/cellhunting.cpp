#include "reciprocal/cellhunting.h"

#include "app/dataset/unitcellfile.h"
#include "app/records/timestamp.h"
#include "reciprocal/basisvectors.h"
#include "reciprocal/differencevectors.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr float g_fAveragingTolerance = 0.01f;  // Å⁻¹

bool areFinite(const QList<Vec3D>& listVector)
{
    return std::all_of(listVector.begin(), listVector.end(), [](const Vec3D& v) {
        return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    });
}

// Writes the cell in force to the project's unit-cell file; a failure is a red line, and one with its reason.
void saveProjectCell(DataSet& dataSet, CRunReport& report)
{
    if (dataSet.m_strProjectDir.isEmpty())  // a cell that was loaded or set by hand, with no data set open
        return;
    const QString strFileName = dataSet.m_strProjectDir + QLatin1Char('/') + dataSet.m_strProjectName +
                                QStringLiteral(".uc");
    QString strReason;
    if (!saveUnitCellFile(dataSet, strFileName, &strReason)) {
        report.addMessage(QStringLiteral("%1>Failed to save file: %2").arg(currentTimeStamp(), strFileName),
                          Qt::red);
        report.addMessage(strReason, Qt::red);
    }
}

}  // namespace

bool selectReflectionsForProcessing(const QList<Peak3D>& listPeakMerged, const QList<Peak3D>& listViewPoint,
                                    const QList<int>& listGroupIndex, QList<Peak3D>& listPeak,
                                    CRunReport& report)
{
    if (listViewPoint.isEmpty())
        return false;
    std::vector<int> vecID;
    for (int nIndex : listGroupIndex) {
        if (nIndex < 0 || nIndex >= listViewPoint.size())
            continue;
        const int nID = listViewPoint[nIndex].nID;
        if (nID < 0)
            report.addMessage(QStringLiteral("ID: %L1 out of range.").arg(nID), Qt::red);
        else
            vecID.push_back(nID);
    }
    // Sorted rather than one flag per ID: a strange ID must not cost memory.
    std::sort(vecID.begin(), vecID.end());
    QList<Peak3D> listChosen;
    for (const Peak3D& peak : listPeakMerged)
        if (std::binary_search(vecID.begin(), vecID.end(), peak.nID))
            listChosen.append(peak);
    listPeak = listChosen;
    return true;
}

void updateUnitCell(DataSet& dataSet)
{
    if (dataSet.m_listCellFound.size() == 3)
        dataSet.m_listCell = dataSet.m_listCellFound;
}

bool commitTransformedCell(DataSet& dataSet, CRunReport& report)
{
    if (dataSet.m_listCell.size() != 3)
        return false;
    dataSet.m_listCellFound = dataSet.m_listCell;
    saveProjectCell(dataSet, report);
    dataSet.m_vecPeakIndexedOnFrame.clear();
    dataSet.m_vecReflectionFrame.clear();
    return true;
}

bool runUnitCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                        const CellHuntingParameters& parameters, CRunReport& report, bool bSave,
                        const QString& strLatticeHost)
{
    if (listSelection.isEmpty()) {
        report.addMessage(
            QStringLiteral("%1> No reflections were selected for unit cell hunting.").arg(currentTimeStamp()),
            Qt::black);
        return false;
    }
    if (!report.goOn())
        return false;
    report.addMessage(QStringLiteral("%1>Calculating difference vectors...").arg(currentTimeStamp()),
                      Qt::blue);
    // The smallest cell edge gives the greatest length.
    const QList<Peak3D> listDifference = calDifferenceVectors(listSelection,
                                                              float(1 / parameters.m_dfCellRangeMin),
                                                              float(1 / parameters.m_dfCellRangeMax), report);
    if (!report.goOn())
        return false;
    report.addMessage(
        QStringLiteral("%1>Total difference vectors: %L2").arg(currentTimeStamp()).arg(listDifference.size()),
        Qt::blue);
    report.addMessage(QStringLiteral("%1>Averaging difference vectors...").arg(currentTimeStamp()), Qt::blue);
    if (!report.goOn())
        return false;
    QList<Vec3D> listBasis = findBasisVectors(
        averageDifferenceVectors(listDifference, g_fAveragingTolerance, report));
    if (!report.goOn())
        return false;
    if (listBasis.size() == 2)
        listBasis.append(cross(listBasis[0], listBasis[1]));
    // Vectors without weight have no mean; such a basis is no cell.
    if (listBasis.size() != 3 || !areFinite(listBasis)) {
        report.addMessage(QStringLiteral("Unit cell not found."), Qt::red);
        return false;
    }
    const QString strCell = unitCellHtml(QStringLiteral("Found unit cell"), listBasis, strLatticeHost);
    if (!strCell.isEmpty())
        report.addHtml(strCell, Qt::black);
    dataSet.m_listCellFound = listBasis;
    updateUnitCell(dataSet);
    if (bSave)
        saveProjectCell(dataSet, report);
    return true;
}
