// MainWindow: the peak table.
#include "reciprocal/peaktable.h"
#include "records/wholefile.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/controltips.h"
#include "window/reciprocal/peakfilterbar.h"
#include "window/reciprocal/peaktableview.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QPushButton>

#include <memory>

namespace tessera {

void MainWindow::createPeakTable()
{
    m_pPeakTableView = new PeakTableView(m_mapColumnName.values().toVector(), m_pTabWidget);
    explainArea(
        m_pPeakTableView,
        tr("All merged reflections. A click on a row shows its curve through the frames, "
           "a click on a title sorts, a drag moves it; the right button on a title chooses columns."));
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
    createPeakTableKeys();
    m_pTabWidget->addTab(m_pPeakTableView, m_mapTabName[3]);
}

/// The entries of the table's menu behind those that copy, with their keys.
void MainWindow::createPeakTableKeys()
{
    const auto add = [this](const QString& strText, const QKeySequence& key, Qt::ShortcutContext context,
                            const QString& strTip, const auto& fn) {
        auto* pAction = new QAction(strText, m_pPeakTableView);
        pAction->setShortcut(key);
        pAction->setShortcutContext(context);
        pAction->setStatusTip(strTip);
        connect(pAction, &QAction::triggered, this, fn);
        m_pPeakTableView->addAction(pAction);
    };
    add(tr("Export CSV..."), {}, Qt::WidgetShortcut,
        tr("Saves the rows and columns that are seen, with all digits."), [this] { exportPeakTable(); });
    // Wherever the keyboard is, as long as the table is in sight.
    add(tr("Filter"), QKeySequence::Find, Qt::WindowShortcut, tr("Goes to the line that chooses the rows."),
        [this] { m_pPeakTableView->filterBar().takeKeyboard(); });
    add(tr("Show All Rows"), Qt::Key_Escape, Qt::WidgetWithChildrenShortcut,
        tr("Empties the line that chooses the rows."), [this] {
            m_pPeakTableView->setFilter({});
            m_pPeakTableView->setFocus();
        });
    const auto addStep = [&](const QString& strText, const QKeySequence& key, int nStep) {
        add(strText, key, Qt::WidgetShortcut, tr("Goes to a reflection without indices."), [this, nStep] {
            if (!m_pPeakTableView->chooseUnindexed(nStep)) {
                statusBarMessage(tr("All rows in sight are indexed."));
            }
        });
    };
    addStep(tr("Next Unindexed"), Qt::Key_N, 1);
    addStep(tr("Previous Unindexed"), Qt::SHIFT + Qt::Key_N, -1);
    connect(m_pPeakTableView->filterBar().m_pExportButton, &QPushButton::clicked, this,
            &MainWindow::exportPeakTable);
}

void MainWindow::exportPeakTable()
{
    QString strFile = QFileDialog::getSaveFileName(this, tr("Export Peak Table"), m_strWorkingDir,
                                                   tr("Tables (*.csv);;All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    if (QFileInfo(strFile).suffix().isEmpty()) {
        strFile += QStringLiteral(".csv");
    }
    guarded([&] {
        QString strReason;
        const int nRows = m_pPeakTableView->model()->rowCount();
        WindowReport report(*this);
        if (writeWholeFile(strFile, m_pPeakTableView->csv(), &strReason)) {
            report.addMessage(tr("Peak table of %1 rows saved to %2").arg(nRows).arg(strFile));
        } else {
            report.addMessage(strReason, Severity::Error);
        }
    });
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
