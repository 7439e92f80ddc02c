// MainWindow: the peak table.
#include "reciprocal/peaktable.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/controltips.h"
#include "window/reciprocal/peaktableview.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QItemSelectionModel>

#include <memory>

namespace tessera {

void MainWindow::createPeakTable()
{
    m_pPeakTableView = new PeakTableView(m_mapColumnName.values().toVector(), m_pTabWidget);
    explainArea(m_pPeakTableView,
                tr("All merged reflections. A click on a row shows its curve through the frames, "
                   "a click on a title sorts; the right button on a title chooses columns."));
    for (const QAction* pAction : m_pPeakTableView->columnActions())
        connect(pAction, &QAction::toggled, this, &MainWindow::updatePeakTableColumnVisability);

    m_pActions->setReady(m_pActions->m_pTableCopySelected);
    m_pActions->setReady(m_pActions->m_pTableCopyAll);
    m_pPeakTableView->addAction(m_pActions->m_pTableCopySelected);
    m_pPeakTableView->addAction(m_pActions->m_pTableCopyAll);
    m_pPeakTableView->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(m_pActions->m_pTableCopySelected, &QAction::triggered, this,
            &MainWindow::copySelectedReflectionsInPeakTable);
    connect(m_pActions->m_pTableCopyAll, &QAction::triggered, this,
            &MainWindow::copyAllReflectionsInPeakTable);

    connect(m_pPeakTableView, &QTableView::clicked, this, &MainWindow::updateCurveWindow);
    // The keyboard walks through the curves as well, and the right button chooses the row that its menu is
    // for. A press of the left one is followed by its click, and a row that only takes the focus was not
    // asked for.
    const auto showChosen = [this](const QModelIndex& index, Qt::MouseButtons buttons) {
        if (QApplication::mouseButtons() == buttons && !m_dataSet.m_listPeakChain.isEmpty() &&
            m_pPeakTableView->selectionModel()->isSelected(index))
            updateCurveWindow(index);
    };
    connect(m_pPeakTableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [showChosen](const QModelIndex& index) { showChosen(index, Qt::NoButton); });
    connect(m_pPeakTableView, &QTableView::pressed, this,
            [showChosen](const QModelIndex& index) { showChosen(index, Qt::RightButton); });
    m_pTabWidget->addTab(m_pPeakTableView, m_mapTabName[3]);
}

void MainWindow::updatePeakTable(QList<Peak3D> listPeak)
{
    guarded([&] {
        m_dataSet.m_spaceGroup.setSpaceGroup(m_pCellPage->m_pComboReflectionGrouping->currentData().toInt());
        m_pPeakTableView->setTable(std::make_shared<const CPeakTable>(
            listPeak, m_dataSet, m_indexing.m_dfIndexThreshold, m_locale, m_pIntegration->peaksOfTable()));
    });
}

void MainWindow::updatePeakTableColumnVisability()
{
    m_pPeakTableView->showCheckedColumns();
}

void MainWindow::copySelectedReflectionsInPeakTable()
{
    const QString strText = m_pPeakTableView->selectedText();
    if (!strText.isEmpty())
        QApplication::clipboard()->setText(strText);
}

void MainWindow::copyAllReflectionsInPeakTable()
{
    m_pPeakTableView->selectAll();
    copySelectedReflectionsInPeakTable();
}

}  // namespace tessera
