// MainWindow: shift and peak list files by hand.
#include "window/guards.h"
#include "window/mainwindow.h"

#include "dataset/peaklistfile.h"
#include "dataset/shiftfile.h"
#include "reciprocal/peakgroups.h"
#include "records/timestamp.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/shiftpage.h"
#include "window/windowreport.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QSignalBlocker>
#include <QTableWidget>

namespace tessera {

namespace {

QString filterText(const char* pTemplate, const char* pExtension)
{
    return MainWindow::tr(pTemplate).arg(QLatin1String(pExtension));
}

QString shiftFilter()
{
    return filterText("Shift Correction Files (*.%1);;All Files (*.*)", "sc");
}

QString peakListFilter()
{
    return filterText("Peak List Files (*.%1);;All Files (*.*)", "pk");
}

void addReason(CRunReport& report, const QString& strReason)
{
    if (!strReason.isEmpty()) {
        report.addMessage(strReason, Severity::Error);
    }
}

}  // namespace

void MainWindow::saveEDShift()
{
    if (refuseDuringRun(tr("Exporting shift data"))) {
        return;
    }
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Shift Data to File"),
                                                         m_strWorkingDir, shiftFilter());
    if (strFile.isEmpty()) {
        return;
    }
    syncParametersWithControls(true);
    QString strReason;
    if (writeShiftFile(strFile, {m_dataSet.m_dfCenterX, m_dataSet.m_dfCenterY, m_dataSet.m_listShift},
                       &strReason)) {
        m_strWorkingDir = QFileInfo(strFile).absolutePath();
        return;
    }
    WindowReport report(*this);
    report.addMessage(tr("No shift data was saved."), Severity::Error);
    addReason(report, strReason);
}

void MainWindow::loadEDShift()
{
    if (refuseDuringRun(tr("Loading shift data"))) {
        return;
    }
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load ED Shift"), m_strWorkingDir,
                                                         shiftFilter());
    if (strFile.isEmpty()) {
        return;
    }
    QString strReason;
    if (loadShiftFile(strFile, &strReason)) {
        return;
    }
    WindowReport report(*this);
    report.addMessage(QStringLiteral("Error occured when loading %1 as shift data.").arg(strFile),
                      Severity::Error);
    addReason(report, strReason);
}

bool MainWindow::loadShiftFile(const QString& strFileName, QString* pstrReason)
{
    WindowReport report(*this);
    if (!tessera::loadShiftFile(m_dataSet, strFileName, report, pstrReason)) {
        return false;
    }
    {
        // A slot of the one box reads the pages, and would take the former number of the other.
        const QSignalBlocker blockX(m_pShiftPage->m_pCenterXSpin);
        const QSignalBlocker blockY(m_pShiftPage->m_pCenterYSpin);
        m_pShiftPage->m_pCenterXSpin->setValue(m_dataSet.m_dfCenterX);
        m_pShiftPage->m_pCenterYSpin->setValue(m_dataSet.m_dfCenterY);
    }
    fillShiftTable();
    showRotationAxisLine();
    showEstimatedPeakPosition();
    mapWaitingPeaks();
    return true;
}

void MainWindow::fillShiftTable()
{
    QTableWidget* pTable = m_pShiftPage->m_pShiftTable;
    const QSignalBlocker blocker(pTable);
    const CDeferredPaint deferred(pTable);
    pTable->clearContents();
    pTable->setRowCount(0);
    for (const QPointF& ptShift : m_dataSet.m_listShift) {
        appendShiftRow(ptShift);
    }
}

void MainWindow::appendShiftRow(const QPointF& ptShift)
{
    QTableWidget* pTable = m_pShiftPage->m_pShiftTable;
    const int nRow = pTable->rowCount();
    pTable->insertRow(nRow);
    setRightItem(pTable, nRow, 0, QStringLiteral("%L1").arg(ptShift.x(), 0, 'f', 2));
    setRightItem(pTable, nRow, 1, QStringLiteral("%L1").arg(ptShift.y(), 0, 'f', 2));
}

void MainWindow::loadRawPeaks()
{
    if (refuseDuringRun(tr("Loading peaks"))) {
        return;
    }
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load Raw Peaks"), m_strWorkingDir,
                                                         peakListFilter());
    if (strFile.isEmpty()) {
        return;
    }
    CRunScope scope(*this);  // a long list lets events through, and nothing else may change the peaks then
    WindowReport report(*this);
    QString strReason;
    bool bRead = false;
    guarded([&] { bRead = readPeakList(m_dataSet, strFile, report, &strReason) != 0; });
    addReason(report, strReason);
    if (!bRead) {
        return;
    }
    m_rawGroups.forget();
    forgetLattices();
    transformPeaksTo3D();
    showPeaksIn3D();
    restorePointGroups();
}

void MainWindow::saveRawPeaks()
{
    if (refuseDuringRun(tr("Exporting peaks"))) {
        return;
    }
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Raw Peaks"), m_strWorkingDir,
                                                         peakListFilter());
    if (strFile.isEmpty()) {
        return;
    }
    WindowReport report(*this);
    QString strReason;
    bool bSaved = false;
    guarded([&] {
        updatePeakGroupsFromView();
        const int nBeyond = keepPeaksBeyondMasks(m_dataSet);
        if (nBeyond > 0) {
            report.addMessage(
                tr("%L1 peaks are only in groups beyond the 64 that a peak list can tell apart; they are "
                   "saved without a group.")
                    .arg(nBeyond),
                Severity::Error);
        }
        bSaved = writePeakList(m_dataSet, strFile, &strReason);
    });
    if (bSaved) {
        report.addMessage(QStringLiteral("%1>List of raw peaks saved to %2").arg(currentTimeStamp(), strFile),
                          Severity::Info);
    } else {
        report.addMessage(
            QStringLiteral("%1>Saving list of raw peaks to %2 failed.").arg(currentTimeStamp(), strFile),
            Severity::Error);
    }
    addReason(report, strReason);
}

}  // namespace tessera
