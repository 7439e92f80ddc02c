#include "window/reciprocal/peaktableview.h"

#include "reciprocal/mysortfilterproxymodel.h"
#include "reciprocal/peaktable.h"
#include "reciprocal/tablemodel.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QSortFilterProxyModel>

#include <algorithm>
#include <iterator>

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
    {50, false, false}, {70, true, false},  {60, true, false},  {120, true, false}};
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
    QT_TRANSLATE_NOOP("MainWindow", "Number of the group of equivalent reflections."),
    QT_TRANSLATE_NOOP("MainWindow", "Integrated intensity on the common scale of the series."),
    QT_TRANSLATE_NOOP("MainWindow", "Standard deviation of the integrated intensity."),
    QT_TRANSLATE_NOOP("MainWindow", "What is wrong with the integrated intensity; empty: nothing.")};
static_assert(std::size(g_apszColumnTip) == g_nPeakTableColumns, "each column has its tip");

QVector<QString> columnTips()
{
    QVector<QString> vecTip;
    for (const char* pszTip : g_apszColumnTip)
        vecTip.append(QCoreApplication::translate("MainWindow", pszTip));
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

PeakTableView::PeakTableView(const QVector<QString>& vecTitle, QWidget* pParent)
    : QTableView(pParent), m_pPeakTableModel(new TableModel(this))
{
    m_pPeakTableModel->setDefaultAlignment(g_nRightAlignment);
    m_pPeakTableModel->setHeader(vecTitle);
    const QVector<QString> vecTip = columnTips();
    m_pPeakTableModel->setHeaderTips(vecTip);
    // A view has columns only as long as there is a row.
    m_pPeakTableModel->setRows({QVector<QString>(g_nPeakTableColumns, QStringLiteral("0"))});
    auto* pSorted = new MySortFilterProxyModel(this);
    pSorted->setSourceModel(m_pPeakTableModel);
    setModel(pSorted);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAlternatingRowColors(true);
    sortByColumn(0, Qt::AscendingOrder);  // Qt would begin with the last one
    setSortingEnabled(true);
    verticalHeader()->hide();
    setLowRows(this);

    for (int i = 0; i < g_nPeakTableColumns; ++i) {
        setColumnWidth(i, g_aColumn[i].nWidth);
        setColumnHidden(i, g_aColumn[i].bHidden);
        auto* pAction = new QAction(m_pPeakTableModel->headerData(i, Qt::Horizontal).toString(), this);
        pAction->setCheckable(true);
        explain(pAction, vecTip[i]);
        pAction->setChecked(!g_aColumn[i].bHidden);
        pAction->setEnabled(!g_aColumn[i].bFixed);
        m_listColumnAction.append(pAction);
    }
    horizontalHeader()->addActions(m_listColumnAction);
    horizontalHeader()->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void PeakTableView::setTable(const std::shared_ptr<const CPeakTable>& pTable)
{
    // Without rows the columns go, and with them what the user has made of them.
    m_pTable = pTable;
    const bool bHadColumns = horizontalHeader()->count() > 0;
    if (bHadColumns)
        m_bytesColumnLayout = horizontalHeader()->saveState();
    m_pPeakTableModel->setCells(pTable->rowCount(), g_nPeakTableColumns,
                                [pTable](int nRow, int nColumn) { return pTable->text(nRow, nColumn); });
    if (!bHadColumns && horizontalHeader()->count() > 0) {
        horizontalHeader()->restoreState(m_bytesColumnLayout);
        showCheckedColumns();
    }
}

void PeakTableView::setIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated)
{
    if (m_pTable) {
        setTable(std::make_shared<const CPeakTable>(m_pTable->withIntegrated(pIntegrated)));
    }
}

void PeakTableView::checkIntegratedColumns(bool bCheck)
{
    for (QAction* pAction : m_listColumnAction.mid(g_nFirstIntegratedColumn)) {
        pAction->setChecked(bCheck);
    }
}

const IntegratedPeak* PeakTableView::integratedPeak(const QModelIndex& index) const
{
    const auto* pSorted = static_cast<const QSortFilterProxyModel*>(model());
    const int nRow = pSorted->mapToSource(index).row();
    return m_pTable && nRow >= 0 && nRow < m_pTable->rowCount() ? m_pTable->integrated(nRow) : nullptr;
}

void PeakTableView::showCheckedColumns()
{
    for (int i = 0; i < m_listColumnAction.size(); ++i)
        if (m_listColumnAction[i]->isChecked() == isColumnHidden(i))
            setColumnHidden(i, !m_listColumnAction[i]->isChecked());
}

QString PeakTableView::selectedText() const
{
    QModelIndexList listIndex = selectionModel()->selectedIndexes();
    const auto isHidden = [this](const QModelIndex& index) { return isColumnHidden(index.column()); };
    listIndex.erase(std::remove_if(listIndex.begin(), listIndex.end(), isHidden), listIndex.end());
    std::stable_sort(listIndex.begin(), listIndex.end());  // by row, then by column
    QString strText;
    for (int i = 0; i < listIndex.size(); ++i) {
        if (i > 0)
            strText += listIndex[i].row() == listIndex[i - 1].row() ? QLatin1Char('\t') : QLatin1Char('\n');
        strText += pastedText(listIndex[i]);
    }
    return strText;
}

}  // namespace tessera
