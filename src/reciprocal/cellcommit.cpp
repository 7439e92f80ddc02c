#include "reciprocal/cellcommit.h"

#include "dataset/unitcellfile.h"
#include "records/timestamp.h"

namespace tessera {

void updateUnitCell(DataSet& dataSet)
{
    if (basisFromList(dataSet.m_listCellFound)) {
        dataSet.m_listCell = dataSet.m_listCellFound;
    }
}

bool commitTransformedCell(DataSet& dataSet)
{
    if (!cellInForce(dataSet)) {
        return false;
    }
    if (dataSet.m_made.cell && dataSet.m_made.cell->listCell == dataSet.m_listCellFound) {
        dataSet.m_made.cell->listCell = dataSet.m_listCell;  // it follows from the same search
    }
    dataSet.m_listCellFound = dataSet.m_listCell;
    dataSet.m_vecPeakIndexedOnFrame.clear();
    dataSet.m_vecReflectionFrame.clear();
    return true;
}

bool saveProjectCell(const DataSet& dataSet, CRunReport& report)
{
    if (dataSet.m_strProjectDir.isEmpty()) {  // a cell that was loaded or set by hand, with no data set open
        return false;
    }
    const QString strFileName = fileOfProject(dataSet, ResultFile::Cell);
    QString strReason;
    if (saveUnitCellFile(dataSet, strFileName, &strReason)) {
        return true;
    }
    report.noteReason(strReason);
    report.fail(QStringLiteral("%1>Failed to save file: %2").arg(currentTimeStamp(), strFileName));
    report.addMessage(strReason, Severity::Error);
    return false;
}

}  // namespace tessera
