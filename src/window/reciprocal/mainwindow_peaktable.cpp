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

#include <functional>
#include <memory>

namespace tessera {

namespace {

/// An entry of the table's menu, behind those that copy.
template <typename Fn>
void addEntry(PeakTableView* pTable, const QString& strText, const QKeySequence& key,
              Qt::ShortcutContext context, const QString& strTip, const Fn& fn)
{
    auto* pAction = new QAction(strText, pTable);
    pAction->setShortcut(key);
    pAction->setShortcutContext(context);
    pAction->setStatusTip(strTip);
    QObject::connect(pAction, &QAction::triggered, pTable, fn);
    pTable->addAction(pAction);
}

/// The entries that have keys.
/// @param fnSay  shows a short text
void addKeys(PeakTableView* pTable, const std::function<void(const QString&)>& fnSay)
{
    // Wherever the keyboard is, as long as the table is in sight.
    addEntry(pTable, MainWindow::tr("Filter"), QKeySequence::Find, Qt::WindowShortcut,
             MainWindow::tr("Goes to the line that chooses the rows."),
             [pTable] { pTable->filterBar().takeKeyboard(); });
    addEntry(pTable, MainWindow::tr("Show All Rows"), Qt::Key_Escape, Qt::WidgetWithChildrenShortcut,
             MainWindow::tr("Empties the line that chooses the rows."), [pTable] {
                 pTable->setFilter({});
                 pTable->setFocus();
             });
    const auto addStep = [&](const QString& strText, const QKeySequence& key, int nStep) {
        addEntry(pTable, strText, key, Qt::WidgetShortcut,
                 MainWindow::tr("Goes to a reflection without indices."), [pTable, fnSay, nStep] {
                     if (!pTable->chooseUnindexed(nStep)) {
                         fnSay(MainWindow::tr("All rows in sight are indexed."));
                     }
                 });
    };
    addStep(MainWindow::tr("Next Unindexed"), Qt::Key_N, 1);
    addStep(MainWindow::tr("Previous Unindexed"), Qt::SHIFT + Qt::Key_N, -1);
}

QString askForCsv(QWidget* pParent, const QString& strFolder)
{
    const QString strFile = QFileDialog::getSaveFileName(pParent, MainWindow::tr("Export Peak Table"),
                                                         strFolder,
                                                         MainWindow::tr("Tables (*.csv);;All Files (*.*)"));
    const bool bNamed = strFile.isEmpty() || !QFileInfo(strFile).suffix().isEmpty();
    return bNamed ? strFile : strFile + QStringLiteral(".csv");
}

void saveCsv(MainWindow& window, const PeakTableView& table, const QString& strFile)
{
    QString strReason;
    WindowReport report(window);
    if (writeWholeFile(strFile, table.csv(), &strReason)) {
        report.addMessage(
            MainWindow::tr("Peak table of %1 rows saved to %2").arg(table.model()->rowCount()).arg(strFile));
    } else {
        report.addMessage(strReason, Severity::Error);
    }
}

}  // namespace

void MainWindow::createPeakTable()
{
    m_pPeakTableView = new PeakTableView(m_mapColumnName.values().toVector(), m_pTabWidget);
    explainArea(
        m_pPeakTableView,
        tr("All merged reflections. A click on a row shows its curve through the frames, "
           "a click on a title sorts, a drag moves it; the right button on a title chooses columns."));
    for (const QAction* pAction : m_pPeakTableView->columnActions()) {
        connect(pAction, &QAction::toggled, this, &MainWindow::updatePeakTableColumnVisability);
    }

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
        if (!m_pPeakTableView->isBeingSet() && QApplication::mouseButtons() == buttons &&
            !m_dataSet.m_listPeakChain.isEmpty() && m_pPeakTableView->selectionModel()->isSelected(index)) {
            updateCurveWindow(index);
        }
    };
    connect(m_pPeakTableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [showChosen](const QModelIndex& index) { showChosen(index, Qt::NoButton); });
    connect(m_pPeakTableView, &QTableView::pressed, this,
            [showChosen](const QModelIndex& index) { showChosen(index, Qt::RightButton); });
    const auto exportTable = [this] {
        const QString strFile = askForCsv(this, m_strWorkingDir);
        if (!strFile.isEmpty()) {
            guarded([&] { saveCsv(*this, *m_pPeakTableView, strFile); });
        }
    };
    connect(m_pPeakTableView->filterBar().m_pExportButton, &QPushButton::clicked, this, exportTable);
    addEntry(m_pPeakTableView, tr("Export CSV..."), {}, Qt::WidgetShortcut,
             tr("Saves the rows and columns that are seen, with all digits."), exportTable);
    addKeys(m_pPeakTableView, [this](const QString& strText) { statusBarMessage(strText); });
    m_pTabWidget->addTab(m_pPeakTableView, m_mapTabName[3]);
}

void MainWindow::updatePeakTable(QList<Peak3D> listPeak)
{
    guarded([&] {
        m_dataSet.m_spaceGroup.setSpaceGroup(m_pCellPage->m_pComboReflectionGrouping->currentData().toInt());
        showInPeakTable(listPeak);
    });
}

/// By the space group of the data set.
void MainWindow::showInPeakTable(const QList<Peak3D>& listPeak)
{
    m_pPeakTableView->setTable(std::make_shared<const CPeakTable>(
        listPeak, m_dataSet, m_indexing.m_dfIndexThreshold, m_locale, m_pIntegration->peaksOfTable()));
    m_listTablePeak = listPeak;
}

void MainWindow::updatePeakTableColumnVisability()
{
    m_pPeakTableView->showCheckedColumns();
}

void MainWindow::copySelectedReflectionsInPeakTable()
{
    const QString strText = m_pPeakTableView->selectedText();
    if (!strText.isEmpty()) {
        QApplication::clipboard()->setText(strText);
    }
}

void MainWindow::copyAllReflectionsInPeakTable()
{
    m_pPeakTableView->selectAllToCopy();
    copySelectedReflectionsInPeakTable();
}

}  // namespace tessera
