// MainWindow: shift, peak list and mask files by hand.
#include "app/mainwindow.h"

#include "app/dataset/maskfile.h"
#include "app/dataset/peaklistfile.h"
#include "app/dataset/shiftfile.h"
#include "app/records/timestamp.h"
#include "app/windowreport.h"
#include "frames/pages/peaksearchpage.h"
#include "frames/pages/shiftpage.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/peakgroups.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsPolygonItem>
#include <QPen>
#include <QSignalBlocker>
#include <QTableWidget>

namespace {

const double g_dfMaskZ = 300;
const int g_nMaskAlpha = 32;

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
    if (!strReason.isEmpty())
        report.addMessage(strReason, Qt::red);
}

QTableWidgetItem* numberItem(const QString& strText)
{
    auto* pItem = new QTableWidgetItem(strText);
    pItem->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return pItem;
}

}  // namespace

void MainWindow::saveEDShift()
{
    if (refuseDuringRun(tr("Exporting shift data")))
        return;
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Shift Data to File"),
                                                         m_dataSet.m_strWorkingDir, shiftFilter());
    if (strFile.isEmpty())
        return;
    syncParametersWithControls(true);
    if (writeShiftFile(strFile, {m_dataSet.m_dfCenterX, m_dataSet.m_dfCenterY, m_dataSet.m_listShift}))
        m_dataSet.m_strWorkingDir = QFileInfo(strFile).absolutePath();
}

void MainWindow::loadEDShift()
{
    if (refuseDuringRun(tr("Loading shift data")))
        return;
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load ED Shift"), m_dataSet.m_strWorkingDir,
                                                         shiftFilter());
    if (strFile.isEmpty())
        return;
    if (!loadShiftFile(strFile))
        WindowReport(*this).addMessage(
            QStringLiteral("Error occured when loading %1 as shift data.").arg(strFile), Qt::red);
}

bool MainWindow::loadShiftFile(const QString& strFileName)
{
    WindowReport report(*this);
    if (!::loadShiftFile(m_dataSet, strFileName, report))
        return false;
    m_pShiftPage->m_pCenterXSpin->setValue(m_dataSet.m_dfCenterX);
    m_pShiftPage->m_pCenterYSpin->setValue(m_dataSet.m_dfCenterY);
    fillShiftTable();
    showEstimatedPeakPosition();
    return true;
}

void MainWindow::fillShiftTable()
{
    QTableWidget* pTable = m_pShiftPage->m_pShiftTable;
    const QSignalBlocker blocker(pTable);
    pTable->setUpdatesEnabled(false);
    pTable->clearContents();
    pTable->setRowCount(0);
    for (const QPointF& ptShift : m_dataSet.m_listShift)
        appendShiftRow(ptShift);
    pTable->setUpdatesEnabled(true);
}

void MainWindow::appendShiftRow(const QPointF& ptShift)
{
    QTableWidget* pTable = m_pShiftPage->m_pShiftTable;
    const int nRow = pTable->rowCount();
    pTable->insertRow(nRow);
    pTable->setItem(nRow, 0, numberItem(QStringLiteral("%L1").arg(ptShift.x(), 0, 'f', 2)));
    pTable->setItem(nRow, 1, numberItem(QStringLiteral("%L1").arg(ptShift.y(), 0, 'f', 2)));
}

void MainWindow::loadRawPeaks()
{
    if (refuseDuringRun(tr("Loading peaks")))
        return;
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load Raw Peaks"),
                                                         m_dataSet.m_strWorkingDir, peakListFilter());
    if (strFile.isEmpty())
        return;
    CRunScope scope(*this);  // a long list lets events through, and nothing else may change the peaks then
    WindowReport report(*this);
    QString strReason;
    bool bRead = false;
    guarded([&] { bRead = readPeakList(m_dataSet, strFile, report, &strReason) != 0; });
    addReason(report, strReason);
    if (!bRead)
        return;
    forgetRawGroups();
    transformPeaksTo3D();
    showPeaksIn3D();
    restorePointGroups();
}

void MainWindow::saveRawPeaks()
{
    if (refuseDuringRun(tr("Exporting peaks")))
        return;
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Raw Peaks"),
                                                         m_dataSet.m_strWorkingDir, peakListFilter());
    if (strFile.isEmpty())
        return;
    WindowReport report(*this);
    QString strReason;
    bool bSaved = false;
    guarded([&] {
        updatePeakGroupsFromView();
        const int nBeyond = keepPeaksBeyondMasks(m_dataSet);
        if (nBeyond > 0)
            report.addMessage(
                tr("%L1 peaks are only in groups beyond the 64 that a peak list can tell apart; they are "
                   "saved without a group.")
                    .arg(nBeyond),
                Qt::red);
        bSaved = writePeakList(m_dataSet, strFile, &strReason);
    });
    if (bSaved)
        report.addMessage(QStringLiteral("%1>List of raw peaks saved to %2").arg(currentTimeStamp(), strFile),
                          Qt::black);
    else
        report.addMessage(
            QStringLiteral("%1>Saving list of raw peaks to %2 failed.").arg(currentTimeStamp(), strFile),
            Qt::red);
    addReason(report, strReason);
}

void MainWindow::loadPeakHuntingMask()
{
    if (refuseDuringRun(tr("Loading a mask")))
        return;
    const QString strFile = QFileDialog::getOpenFileName(
        this, tr("Load Peak Hunting Mask"), m_dataSet.m_strWorkingDir,
        filterText("Mask Files (*.%1);;All Files (*.*)", "msk"));
    if (strFile.isEmpty())
        return;
    WindowReport report(*this);
    if (!readMaskFile(m_dataSet.m_maskPeakHunting, strFile)) {
        report.addMessage(QStringLiteral("Error occured when loading %1 as mask file.").arg(strFile),
                          Qt::red);
        return;
    }
    fillMaskTable();
    makeMaskItems();
    refreshPeakMarks();
    m_pPeakSearchPage->m_pShowMaskCheck->setChecked(true);
    showPeakHuntingMask(true);
}

void MainWindow::clearPeakHuntingMask()
{
    if (refuseDuringRun(tr("Clearing the mask")))
        return;
    m_dataSet.m_maskPeakHunting.listPolygon.clear();
    fillMaskTable();
    clearMaskItems();
    m_pPeakSearchPage->m_pShowMaskCheck->setChecked(false);
    refreshPeakMarks();
}

void MainWindow::showPeakHuntingMask(bool bShow)
{
    for (QGraphicsPolygonItem* pItem : m_listMaskItem)
        pItem->setVisible(bShow);
}

void MainWindow::fillMaskTable()
{
    QTableWidget* pTable = m_pPeakSearchPage->m_pMaskTable;
    pTable->clearContents();
    pTable->setRowCount(0);
    for (const QPolygonF& polygon : m_dataSet.m_maskPeakHunting.listPolygon) {
        const int nRow = pTable->rowCount();
        pTable->insertRow(nRow);
        pTable->setItem(nRow, 0, numberItem(QStringLiteral("%L1").arg(polygon.size())));
    }
}

void MainWindow::makeMaskItems()
{
    clearMaskItems();
    const MaskData& mask = m_dataSet.m_maskPeakHunting;
    for (const QPolygonF& polygon : mask.listPolygon) {
        auto* pItem = new QGraphicsPolygonItem(polygon);
        pItem->setFillRule(mask.fillRule);
        pItem->setPen(QPen(QBrush(Qt::yellow), 1, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin));
        pItem->setBrush(QColor(255, 255, 0, g_nMaskAlpha));
        pItem->setZValue(g_dfMaskZ);
        pItem->hide();
        m_pFrameScene->addItem(pItem);
        m_listMaskItem.append(pItem);
    }
}

void MainWindow::clearMaskItems()
{
    qDeleteAll(m_listMaskItem);  // an item takes leave of its scene by itself
    m_listMaskItem.clear();
}

void MainWindow::refreshPeakMarks()
{
    if (m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
        testCurrentPatternForPeaks();
        return;
    }
    clearCrossMarks();
    m_pFrameScene->update();
}
