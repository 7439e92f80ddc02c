// MainWindow: the mask of peak hunting - its file, its table and its polygons on the frame.
#include "window/mainwindow.h"

#include "dataset/maskfile.h"
#include "dataset/seriesreading.h"
#include "window/frameview/framemarks.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/peaksearchpage.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QSet>
#include <QTableWidget>

namespace tessera {

void MainWindow::loadPeakHuntingMask()
{
    if (refuseDuringRun(tr("Loading a mask"))) {
        return;
    }
    const QString strFile = QFileDialog::getOpenFileName(
        this, tr("Load Peak Hunting Mask"), m_strWorkingDir,
        tr("Mask Files (*.%1);;All Files (*.*)").arg(QStringLiteral("msk")));
    if (strFile.isEmpty()) {
        return;
    }
    WindowReport report(*this);
    QString strReason;
    if (!readMaskFile(m_dataSet.m_maskPeakHunting, strFile, &strReason)) {
        report.addMessage(QStringLiteral("Error occured when loading %1 as mask file.").arg(strFile),
                          Severity::Error);
        report.addMessage(strReason, Severity::Error);
        return;
    }
    // Mask files are in pixels of the camera, without binning.
    m_dataSet.m_maskPeakHunting = maskInBins(m_dataSet.m_maskPeakHunting, m_dataSet.m_reading.choice.nBin);
    m_strMaskFile = QFileInfo(strFile).absoluteFilePath();
    showNewMask();
}

void MainWindow::showNewMask()
{
    fillMaskTable();
    m_pMarks->setMask(m_dataSet.m_maskPeakHunting);
    refreshPeakMarks();
    m_pPeakSearchPage->m_pShowMaskCheck->setChecked(true);
    showPeakHuntingMask(true);
}

void MainWindow::clearPeakHuntingMask()
{
    if (refuseDuringRun(tr("Clearing the mask"))) {
        return;
    }
    m_dataSet.m_maskPeakHunting.listPolygon.clear();
    fillMaskTable();
    m_pMarks->setMask({});
    m_pPeakSearchPage->m_pShowMaskCheck->setChecked(false);
    refreshPeakMarks();
}

void MainWindow::removeSelectedMaskAreas()
{
    if (refuseDuringRun(tr("Changing the mask"))) {
        return;
    }
    QList<QPolygonF>& listPolygon = m_dataSet.m_maskPeakHunting.listPolygon;
    QSet<int> setRow;
    for (const QModelIndex& index : m_pPeakSearchPage->m_pMaskTable->selectionModel()->selectedIndexes()) {
        setRow.insert(index.row());
    }
    for (int nRow = listPolygon.size() - 1; nRow >= 0; --nRow) {
        if (setRow.contains(nRow)) {
            listPolygon.removeAt(nRow);
        }
    }
    fillMaskTable();
    m_pMarks->setMask(m_dataSet.m_maskPeakHunting);
    showPeakHuntingMask(m_pPeakSearchPage->m_pShowMaskCheck->isChecked());
    refreshPeakMarks();
}

void MainWindow::showPeakHuntingMask(bool bShow)
{
    m_pMarks->showMask(bShow);
}

void MainWindow::fillMaskTable()
{
    QTableWidget* pTable = m_pPeakSearchPage->m_pMaskTable;
    pTable->clearContents();
    pTable->setRowCount(0);
    for (const QPolygonF& polygon : m_dataSet.m_maskPeakHunting.listPolygon) {
        const int nRow = pTable->rowCount();
        pTable->insertRow(nRow);
        setRightItem(pTable, nRow, 0, QStringLiteral("%L1").arg(polygon.size()));
    }
}

}  // namespace tessera
