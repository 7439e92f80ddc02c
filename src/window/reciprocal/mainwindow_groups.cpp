// MainWindow: point groups of the 3D views, their tables, and the group masks of the peak list.
#include "crystal/peaklist3d.h"
#include "reciprocal/peakgroups.h"
#include "view3d/ed3dwidget.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/view3dpage.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QTableWidget>

namespace tessera {

namespace {

enum Column { ColumnLabel, ColumnCount, ColumnColor, ColumnShown };

QString shownText(bool bShown)
{
    return bShown ? QStringLiteral("●") : QString();
}

/// The item of a cell, made with its flags if there was none.
QTableWidgetItem* itemAt(QTableWidget* pTable, int nRow, int nColumn, Qt::ItemFlags flags, int nAlignment)
{
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        pItem->setFlags(flags);
        pItem->setTextAlignment(nAlignment);
        pTable->setItem(nRow, nColumn, pItem);
    }
    return pItem;
}

void setItemText(QTableWidgetItem* pItem, const QString& strText)
{
    if (pItem->text() != strText) {  // a change would overwrite what is being typed into the cell
        pItem->setText(strText);
    }
}

/// Whether the groups that the table shows stand at the head of the list, up to one that has been renamed:
/// then the rows keep their meaning.
bool rowsStay(const QTableWidget* pTable, const QStringList& listLabel)
{
    const int nRows = pTable->rowCount();
    if (nRows > listLabel.size()) {
        return false;
    }
    int nOthers = 0;
    for (int i = 0; i < nRows; ++i) {
        if (!pTable->item(i, ColumnLabel) || pTable->item(i, ColumnLabel)->text() != listLabel[i]) {
            ++nOthers;
        }
    }
    return nOthers <= (nRows == listLabel.size() ? 1 : 0);
}

void sayUnwritten(MainWindow& window, const QString& strFile, const QString& strReason)
{
    WindowReport report(window);
    report.addMessage(QStringLiteral("Failed to open file for writing: %1").arg(strFile), Severity::Error);
    report.addMessage(strReason, Severity::Error);
}

}  // namespace

void MainWindow::addSelectedAsNewGroup()
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->addSelectedPeaksAsNewGroup();
    }
}

void MainWindow::removeSelectedPeakGroups()
{
    if (refuseDuringRun(tr("Removing groups of peaks"))) {
        return;
    }
    if (!m_pView3DCurrent || refuseUnderLatticeColors(m_pView3DCurrent)) {
        return;
    }
    const QList<int> listRow = selectedPeakGroupRows();
    const int nGroups = m_pView3DCurrent->groupLabels().size();
    changeHiddenGroups(m_pView3DCurrent, [&] { removePeakGroups(m_dataSet, nGroups, listRow); });
    m_pView3DCurrent->removePointGroups(listRow);
}

void MainWindow::mergeSelectedPeakGroups()
{
    if (refuseDuringRun(tr("Merging groups of peaks"))) {
        return;
    }
    if (!m_pView3DCurrent || refuseUnderLatticeColors(m_pView3DCurrent)) {
        return;
    }
    const QList<int> listRow = selectedPeakGroupRows();
    const int nGroups = m_pView3DCurrent->groupLabels().size();
    changeHiddenGroups(m_pView3DCurrent, [&] { mergePeakGroups(m_dataSet, nGroups, listRow); });
    m_pView3DCurrent->mergePointGroups(listRow);
}

/// Lets the peaks that the limits hide follow a change of the raw view's groups, before the view makes it.
void MainWindow::changeHiddenGroups(const ED3DWidget* pView, const std::function<void()>& fnChange)
{
    if (pView != m_pView3DRaw || !m_rawGroups.holdsPeaks()) {
        return;
    }
    guarded([&] {
        updatePeakGroupsFromView();
        fnChange();
    });
}

void MainWindow::resetSelectedPeakGroups()
{
    if (refuseDuringRun(tr("Removing groups of peaks"))) {
        return;
    }
    const QPointer<ED3DWidget> pView = m_pView3DCurrent;
    if (!pView || pView->groupPoints().size() < 2 || refuseUnderLatticeColors(pView)) {
        return;
    }
    if (QMessageBox::question(this, tr("Confirm"), tr("Are you sure you want to reset this table?"),
                              QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes ||
        !pView) {
        return;
    }
    QList<int> listGroup;
    for (int g = 1; g < pView->groupPoints().size(); ++g) {
        listGroup.append(g);
    }
    changeHiddenGroups(pView, [&] { removePeakGroups(m_dataSet, listGroup.size() + 1, listGroup); });
    pView->removePointGroups(listGroup);
}

void MainWindow::exportSelectedPeak3D()
{
    if (refuseDuringRun(tr("Exporting peaks"))) {
        return;
    }
    if (!m_pView3DCurrent) {
        return;
    }
    const QList<QList<int>> listGroupPoint = m_pView3DCurrent->groupPoints();
    const QList<Peak3D> listPoint = m_pView3DCurrent->points();
    const bool bMerged = m_pView3DCurrent == m_pView3DMerged;
    QList<int> listRow = selectedPeakGroupRows();
    if (listRow.isEmpty()) {
        for (int g = 0; g < listGroupPoint.size(); ++g) {
            listRow.append(g);
        }
    }
    for (int nRow : qAsConst(listRow)) {
        if (nRow >= listGroupPoint.size()) {
            QMessageBox::warning(this, tr("Error"), tr("Group index out of range!"));
            return;
        }
    }
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export 3D Peaks"), m_strWorkingDir,
                                                         tr("Text Files (*.txt);;All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    guarded([&] {
        QList<Peak3D> listPeak;
        for (int nRow : qAsConst(listRow)) {
            for (int nPoint : listGroupPoint[nRow]) {
                if (nPoint >= 0 && nPoint < listPoint.size()) {
                    listPeak.append(listPoint[nPoint]);
                }
            }
        }
        QString strReason;
        if (!writePeak3DList(listPeak, strFile, bMerged, &strReason)) {
            sayUnwritten(*this, strFile, strReason);
        }
    });
}

void MainWindow::exportPeak3D()
{
    if (!m_pView3DCurrent || refuseDuringRun(tr("Exporting peaks"))) {
        return;
    }
    const QList<int> listPoint = m_pView3DCurrent->groupPoints().value(0);
    const QList<Peak3D> listPeak = m_pView3DCurrent->points();
    const QString strFile = QFileDialog::getSaveFileName(
        this, tr("Export 3D Peaks to File"), m_strWorkingDir,
        tr("Peak List Files (*.%1);;All Files (*.*)").arg(QStringLiteral("pk")));
    if (strFile.isEmpty()) {
        return;
    }
    guarded([&] {
        QString strReason;
        if (!writePeakPositions(listPeak, listPoint, strFile, &strReason)) {
            sayUnwritten(*this, strFile, strReason);
        }
    });
}

QList<int> MainWindow::selectedPeakGroupRows() const
{
    QList<int> listRow;
    for (const QTableWidgetItem* pItem : m_pView3DPage->m_pTablePeakGroups->selectedItems()) {
        if (!listRow.contains(pItem->row())) {
            listRow.append(pItem->row());
        }
    }
    return listRow;
}

int MainWindow::selectedGroupRow(QTableWidget* pTable)
{
    if (pTable->selectedItems().isEmpty()) {
        pTable->setCurrentCell(0, 0);
    }
    const QList<QTableWidgetItem*> listItem = pTable->selectedItems();
    if (!listItem.isEmpty()) {
        return listItem.first()->row();
    }
    QMessageBox::warning(this, tr("Error"),
                         tr("No peaks were selected. Please select from the peak table first."));
    return -1;
}

void MainWindow::restorePointGroups()
{
    if (refuseDuringRun(tr("Restoring groups of peaks"))) {
        return;
    }
    if (!m_pView3DRaw) {
        return;
    }
    guarded([this] {
        bool bRestored = false;
        withoutLatticeColors([&] { bRestored = restoreRawGroups(); });
        if (bRestored) {
            m_pTabWidget->setCurrentIndex(1);
        }
    });
}

bool MainWindow::restoreRawGroups()
{
    const RestoredPointGroups all = tessera::restorePointGroups(m_dataSet);
    if (!all.bRestored) {
        return false;
    }
    const RestoredPointGroups shown = withinLimits(all, m_mapping);
    QList<PointGroup> listGroup{{m_pView3DRaw->groupLabels()[0],
                                 {},
                                 m_pView3DRaw->groupColors()[0],
                                 m_pView3DRaw->groupsVisible()[0]}};
    for (int g = 1; g < all.listGroupPoint.size(); ++g) {
        if (!all.listGroupPoint[g].isEmpty()) {  // else a group of hidden peaks would be lost
            listGroup.append(
                {QStringLiteral("Label%1").arg(g), shown.listGroupPoint[g], ED3DWidget::nextGroupColor()});
        }
    }
    closeGapsOfGroups(m_dataSet, all);
    m_dataSet.m_listPeakFrameShown = shown.listPeakFrameShown;
    showInRawView(shown.listPeakFlat, listGroup);
    m_rawGroups.setHoldsPeaks(true);
    return true;
}

void MainWindow::updatePeakGroupsFromView()
{
    if (refuseDuringRun(tr("Updating the groups of the peak list")) || !m_pView3DRaw) {
        return;
    }
    withoutLatticeColors([this] {
        tessera::updatePeakGroupsFromView(m_dataSet, m_pView3DRaw->points(), m_pView3DRaw->groupPoints());
    });
}

void MainWindow::pointGroupTableCellClicked(int nRow, int nColumn)
{
    QTableWidget* pTable = m_pView3DPage->m_pTablePeakGroups;
    const QPointer<ED3DWidget> pView = m_pView3DCurrent;
    if (!pView || nRow < 0 || nRow >= pView->groupsVisible().size() ||
        (nColumn != ColumnColor && nColumn != ColumnShown)) {
        return;
    }
    if (refuseDuringRun(tr("Changing a group of peaks"))) {
        return;
    }
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem) {
        return;
    }
    if (nColumn == ColumnShown) {
        const bool bShow = !pView->groupsVisible()[nRow];
        const QSignalBlocker blocker(pTable);
        setItemText(pItem, shownText(bShow));
        pView->setGroupVisible(nRow, bShow);
        return;
    }
    const QColor color = QColorDialog::getColor(pView->groupColors()[nRow], this, tr("Select Color"));
    if (color.isValid() && pView) {
        pView->setGroupColor(nRow, color);  // which comes back into the table
    }
}

void MainWindow::pointGroupTableLabelEdidted(int nRow, int nColumn)
{
    const QTableWidgetItem* pItem = m_pView3DPage->m_pTablePeakGroups->item(nRow, nColumn);
    if (nColumn == ColumnLabel && pItem && m_pTableView && m_pTableView->setGroupLabel(nRow, pItem->text())) {
        ed3dViewPointDisplayDataChanged(m_pTableView);  // the other table of the view
    }
}

void MainWindow::ed3dViewPointDisplayDataChanged(ED3DWidget* view)
{
    if (view == m_pView3DCurrent) {
        update3DViewControls();
    }
    if (view == m_pView3DRaw) {
        buildGroupTable(m_pMergingPage->m_pTableTargetPeaks, view, false);
    } else if (view == m_pView3DMerged) {
        buildGroupTable(m_pCellPage->m_pTableReflectionSelection, view, false);
    }
}

/// Cells that stay keep their items, and with them the selection and an editor that is open. Rows that come
/// to stand for other groups lose both.
void MainWindow::buildGroupTable(QTableWidget* pTable, ED3DWidget* pView, bool bPanelTable)
{
    if (bPanelTable && m_pTableView != pView) {
        pTable->setCurrentItem(nullptr);  // unfinished input goes to the view for which it was typed
        pTable->clearSelection();
        m_pTableView = pView;
    }
    const QStringList listLabel = pView ? pView->groupLabels() : QStringList();
    const QSignalBlocker blocker(pTable);
    if (!rowsStay(pTable, listLabel)) {
        pTable->setCurrentItem(nullptr);  // closes the editor
        pTable->clearSelection();
    }
    pTable->setRowCount(listLabel.size());
    const Qt::ItemFlags flagsShown = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    const int nCentre = Qt::AlignCenter, nLeft = int(Qt::AlignLeft) | int(Qt::AlignVCenter),
              nRight = int(Qt::AlignRight) | int(Qt::AlignVCenter);
    for (int g = 0; g < listLabel.size(); ++g) {
        setItemText(itemAt(pTable, g, ColumnLabel, flagsShown | Qt::ItemIsEditable, nLeft), listLabel[g]);
        setItemText(itemAt(pTable, g, ColumnCount, flagsShown, nRight),
                    QStringLiteral("%L1").arg(pView->groupPoints()[g].size()));
        // Not selectable in the panel, so that the colour is seen on a selected row.
        QTableWidgetItem* pColor = itemAt(
            pTable, g, ColumnColor, bPanelTable ? Qt::ItemFlags(Qt::ItemIsEnabled) : flagsShown, nCentre);
        if (pColor->background() != QBrush(pView->groupColors()[g])) {
            pColor->setBackground(pView->groupColors()[g]);
        }
        if (bPanelTable) {
            setItemText(itemAt(pTable, g, ColumnShown, flagsShown, nCentre),
                        shownText(pView->groupsVisible()[g]));
        }
    }
}

}  // namespace tessera
