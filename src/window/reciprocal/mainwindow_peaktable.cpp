// MainWindow: the peak table.
#include "reciprocal/mysortfilterproxymodel.h"
#include "reciprocal/peaktable.h"
#include "reciprocal/tablemodel.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QTableView>

#include <algorithm>
#include <iterator>
#include <memory>

namespace tessera {

namespace {

const int g_nRightAlignment = int(Qt::AlignRight) | int(Qt::AlignVCenter);

struct Column {
    int nWidth;  ///< pixels
    bool bHidden;
    bool bFixed;  ///< stays shown or hidden as it is
};

constexpr Column g_aColumn[] = {
    {50, false, false}, {50, true, false},  {50, true, false},  {50, true, false},  {50, false, true},
    {50, false, true},  {50, false, true},  {60, false, false}, {60, true, true},   {50, false, false},
    {50, false, false}, {60, false, false}, {60, true, true},   {70, true, true},   {70, true, false},
    {70, true, true},   {60, false, false}, {60, false, false}, {50, false, false}, {50, false, false},
    {50, false, false}, {50, false, false}, {50, false, false}, {50, false, false}, {50, false, false},
    {50, false, false}};
static_assert(std::size(g_aColumn) == g_nPeakTableColumns, "each column has its width");

/// Tips of the columns, for their titles and for the menu that shows and hides them.
constexpr const char* g_apszColumnTip[] = {
    QT_TRANSLATE_NOOP("MainWindow", "Number of the reflection, from the merging."),
    QT_TRANSLATE_NOOP("MainWindow", "h before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "k before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "l before rounding."),
    QT_TRANSLATE_NOOP("MainWindow", "h; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "k; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "l; * if it is not whole within the index threshold."),
    QT_TRANSLATE_NOOP("MainWindow", "Intensity, counts, as chosen for the merging."),
    QT_TRANSLATE_NOOP("MainWindow", "Height of the curve that was fitted through the frames."),
    QT_TRANSLATE_NOOP("MainWindow", "Spacing of the lattice planes, Å."),
    QT_TRANSLATE_NOOP("MainWindow", "Distance from the origin of reciprocal space, Å⁻¹."),
    QT_TRANSLATE_NOOP("MainWindow", "Frame on which the reflection is strongest, from 1."),
    QT_TRANSLATE_NOOP("MainWindow", "Frame number at the top of the fitted curve."),
    QT_TRANSLATE_NOOP("MainWindow", "Half width of the fitted curve, frames."),
    QT_TRANSLATE_NOOP("MainWindow", "Distance from the rotation axis, pixels."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "Half width times distance from the rotation axis: alike for all sharp reflections."),
    QT_TRANSLATE_NOOP("MainWindow", "Azimuth on the frame, degrees counter-clockwise from the right."),
    QT_TRANSLATE_NOOP("MainWindow", "Angle to the rotation axis, degrees."),
    QT_TRANSLATE_NOOP("MainWindow", "Column on the frame, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row on the frame, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Column relative to the direct beam, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row relative to the direct beam, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Column relative to the direct beam with the stretching undone, pixels."),
    QT_TRANSLATE_NOOP("MainWindow", "Row relative to the direct beam with the stretching undone, pixels."),
    QT_TRANSLATE_NOOP("MainWindow",
                      "0 if the space group of \"Reflection Grouping\" forbids the reflection, else 1."),
    QT_TRANSLATE_NOOP("MainWindow", "Number of the group of equivalent reflections.")};
static_assert(std::size(g_apszColumnTip) == g_nPeakTableColumns, "each column has its tip");

QVector<QString> columnTips()
{
    QVector<QString> vecTip;
    for (const char* pszTip : g_apszColumnTip)
        vecTip.append(MainWindow::tr(pszTip));
    return vecTip;
}

/// The text of a cell without the no-break spaces, wide and narrow, that locales put between groups of
/// digits: other programs don't read numbers that have them.
QString pastedText(const QModelIndex& index)
{
    QString strText = index.data().toString();
    strText.remove(QChar(0x00A0));
    strText.remove(QChar(0x202F));
    return strText;
}

}  // namespace

void MainWindow::createPeakTable()
{
    m_pPeakTableView = new QTableView(m_pTabWidget);
    m_pPeakTableModel = new TableModel(m_pPeakTableView);
    m_pPeakTableModel->setDefaultAlignment(g_nRightAlignment);
    m_pPeakTableModel->setHeader(m_mapColumnName.values().toVector());
    const QVector<QString> vecTip = columnTips();
    m_pPeakTableModel->setHeaderTips(vecTip);
    explainArea(m_pPeakTableView,
                tr("All merged reflections. A click on a row shows its curve through the frames, "
                   "a click on a title sorts; the right button on a title chooses columns."));
    // A view has columns only as long as there is a row.
    m_pPeakTableModel->setRows({QVector<QString>(g_nPeakTableColumns, QStringLiteral("0"))});
    auto* pSorted = new MySortFilterProxyModel(m_pPeakTableView);
    pSorted->setSourceModel(m_pPeakTableModel);
    m_pPeakTableView->setModel(pSorted);
    m_pPeakTableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_pPeakTableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_pPeakTableView->setAlternatingRowColors(true);
    m_pPeakTableView->sortByColumn(0, Qt::AscendingOrder);  // Qt would begin with the last one
    m_pPeakTableView->setSortingEnabled(true);
    m_pPeakTableView->verticalHeader()->hide();
    setLowRows(m_pPeakTableView);

    QHeaderView* pHeader = m_pPeakTableView->horizontalHeader();
    for (int i = 0; i < g_nPeakTableColumns; ++i) {
        m_pPeakTableView->setColumnWidth(i, g_aColumn[i].nWidth);
        m_pPeakTableView->setColumnHidden(i, g_aColumn[i].bHidden);
        auto* pAction = new QAction(m_pPeakTableModel->headerData(i, Qt::Horizontal).toString(), this);
        pAction->setCheckable(true);
        explain(pAction, vecTip[i]);
        pAction->setChecked(!g_aColumn[i].bHidden);
        pAction->setEnabled(!g_aColumn[i].bFixed);
        connect(pAction, &QAction::toggled, this, &MainWindow::updatePeakTableColumnVisability);
        m_listColumnAction.append(pAction);
    }
    pHeader->addActions(m_listColumnAction);
    pHeader->setContextMenuPolicy(Qt::ActionsContextMenu);

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
        const auto pTable = std::make_shared<const CPeakTable>(listPeak, m_dataSet,
                                                               m_indexing.m_dfIndexThreshold, m_locale);
        // Without rows the columns go, and with them what the user has made of them.
        QHeaderView* pHeader = m_pPeakTableView->horizontalHeader();
        const bool bHadColumns = pHeader->count() > 0;
        if (bHadColumns)
            m_bytesColumnLayout = pHeader->saveState();
        m_pPeakTableModel->setCells(pTable->rowCount(), g_nPeakTableColumns,
                                    [pTable](int nRow, int nColumn) { return pTable->text(nRow, nColumn); });
        if (!bHadColumns && pHeader->count() > 0) {
            pHeader->restoreState(m_bytesColumnLayout);
            updatePeakTableColumnVisability();
        }
    });
}

void MainWindow::updatePeakTableColumnVisability()
{
    for (int i = 0; i < m_listColumnAction.size(); ++i)
        if (m_listColumnAction[i]->isChecked() == m_pPeakTableView->isColumnHidden(i))
            m_pPeakTableView->setColumnHidden(i, !m_listColumnAction[i]->isChecked());
}

void MainWindow::copySelectedReflectionsInPeakTable()
{
    QModelIndexList listIndex = m_pPeakTableView->selectionModel()->selectedIndexes();
    const auto isHidden = [this](const QModelIndex& index) {
        return m_pPeakTableView->isColumnHidden(index.column());
    };
    listIndex.erase(std::remove_if(listIndex.begin(), listIndex.end(), isHidden), listIndex.end());
    if (listIndex.isEmpty())
        return;
    std::stable_sort(listIndex.begin(), listIndex.end());  // by row, then by column
    QString strText;
    int nRow = listIndex.first().row();
    for (int i = 0; i < listIndex.size(); ++i) {
        if (i > 0)
            strText += listIndex[i].row() == nRow ? QLatin1Char('\t') : QLatin1Char('\n');
        nRow = listIndex[i].row();
        strText += pastedText(listIndex[i]);
    }
    QApplication::clipboard()->setText(strText);
}

void MainWindow::copyAllReflectionsInPeakTable()
{
    m_pPeakTableView->selectAll();
    copySelectedReflectionsInPeakTable();
}

}  // namespace tessera
