// MainWindow: the mask of peak hunting - its file, its table and its polygons on the frame.
#include "window/mainwindow.h"

#include "dataset/maskfile.h"
#include "frameview/originalimgscene.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/peaksearchpage.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGraphicsPolygonItem>
#include <QPen>
#include <QTableWidget>

namespace tessera {

namespace {

const double g_dfMaskZ = 300;
const int g_nMaskAlpha = 32;

}  // namespace

void MainWindow::loadPeakHuntingMask()
{
    if (refuseDuringRun(tr("Loading a mask")))
        return;
    const QString strFile = QFileDialog::getOpenFileName(
        this, tr("Load Peak Hunting Mask"), m_strWorkingDir,
        tr("Mask Files (*.%1);;All Files (*.*)").arg(QStringLiteral("msk")));
    if (strFile.isEmpty())
        return;
    WindowReport report(*this);
    QString strReason;
    if (!readMaskFile(m_dataSet.m_maskPeakHunting, strFile, &strReason)) {
        report.addMessage(QStringLiteral("Error occured when loading %1 as mask file.").arg(strFile),
                          Severity::Error);
        report.addMessage(strReason, Severity::Error);
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
        setRightItem(pTable, nRow, 0, QStringLiteral("%L1").arg(polygon.size()));
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

}  // namespace tessera
