#include "window/reciprocal/peaktableview.h"

#include "reciprocal/mysortfilterproxymodel.h"
#include "reciprocal/peaktable.h"
#include "reciprocal/peaktablecsv.h"
#include "reciprocal/tablemodel.h"
#include "window/pages/pagecontrols.h"
#include "window/reciprocal/peakfilterbar.h"

#include <QAbstractProxyModel>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScopedValueRollback>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace tessera {

namespace {

const int g_nRightAlignment = int(Qt::AlignRight) | int(Qt::AlignVCenter);
const int g_nWholeIndexColumn = 4;

/// The titles with room above them, inside the table's frame, for the bar.
class TitlesUnderBar : public QHeaderView {
public:
    explicit TitlesUnderBar(QWidget* pParent) : QHeaderView(Qt::Horizontal, pParent) {}
    int room() const { return m_nRoom; }
    void setRoom(int nRoom)
    {
        m_nRoom = nRoom;
        setViewportMargins(0, nRoom, 0, 0);
    }
    QSize sizeHint() const override { return QHeaderView::sizeHint() + QSize(0, m_nRoom); }

private:
    int m_nRoom = 0;
};

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
    : QTableView(pParent), m_pPeakTableModel(new TableModel(this)), m_vecTitle(vecTitle)
{
    auto* pTitles = new TitlesUnderBar(this);
    pTitles->setSectionsClickable(true);
    pTitles->setHighlightSections(true);
    setHorizontalHeader(pTitles);
    m_pPeakTableModel->setDefaultAlignment(g_nRightAlignment);
    m_pPeakTableModel->setHeader(vecTitle);
    m_pPeakTableModel->setHeaderTips(peakColumnTips());
    // A view has columns only as long as there is a row.
    m_pPeakTableModel->setRows({QVector<QString>(g_nPeakTableColumns, QStringLiteral("0"))});
    m_pSorted = new MySortFilterProxyModel(this);
    m_pSorted->setSourceModel(m_pPeakTableModel);
    setModel(m_pSorted);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAlternatingRowColors(true);
    setWordWrap(false);
    sortByColumn(0, Qt::AscendingOrder);  // Qt would begin with the last one
    setSortingEnabled(true);
    verticalHeader()->hide();
    setLowRows(this);
    m_pColumns = std::make_unique<CPeakColumns>(*this, vecTitle);

    m_pBar = new PeakFilterBar(this);
    connect(m_pBar, &PeakFilterBar::entered, this, [this](const QString& strLine) { setFilter(strLine); });
    connect(m_pBar, &PeakFilterBar::heightChanged, this, &PeakTableView::placeBar);
    m_pBar->setCounts(0, 0);
    placeBar();
}

PeakTableView::~PeakTableView() = default;

void PeakTableView::setTable(const std::shared_ptr<const CPeakTable>& pTable)
{
    m_pTable = pTable;
    resetRows();
    m_pColumns->fit(pTable);
}

/// Hands the rows of the table over that pass the filter, by one reset of the model.
void PeakTableView::resetRows()
{
    const std::shared_ptr<const CPeakTable> pTable = m_pTable;
    m_pSorted->setPassingRows(m_filter.isEmpty() ? std::vector<char>() : m_filter.rowsThatPass(*pTable));
    // Without rows a view has no columns, and would lose their widths and order.
    const bool bHadColumns = horizontalHeader()->count() > 0;
    m_pColumns->keepLayout();
    m_pPeakTableModel->setCells(pTable->rowCount(), g_nPeakTableColumns,
                                [pTable](int nRow, int nColumn) { return pTable->text(nRow, nColumn); });
    if (!bHadColumns && horizontalHeader()->count() > 0) {
        m_pColumns->restoreLayout();
    }
    m_pBar->setCounts(m_pSorted->rowCount(), pTable->rowCount());
}

bool PeakTableView::setFilter(const QString& strLine)
{
    QString strReason;
    const std::optional<CPeakFilter> filter = CPeakFilter::parse(strLine, m_vecTitle, strReason);
    m_pBar->setText(strLine);
    m_pBar->setError(strReason);
    if (!filter) {
        return false;
    }
    if (filter->isEmpty() && m_filter.isEmpty()) {
        return true;
    }
    m_filter = *filter;
    if (m_pTable) {
        const int nRow = peakRow(currentIndex());
        const bool bChosen = selectionModel()->isSelected(currentIndex());
        resetRows();
        const QModelIndex index = indexOfPeak(nRow);
        if (bChosen && index.isValid()) {
            setCurrentIndex(index);
            scrollTo(index);
        }
    }
    return true;
}

int PeakTableView::peakRow(const QModelIndex& index) const
{
    return m_pSorted->mapToSource(index).row();
}

QModelIndex PeakTableView::indexOfPeak(int nRow) const
{
    const QModelIndex index = m_pSorted->mapFromSource(m_pPeakTableModel->index(nRow, 0));
    // A column that is hidden cannot be scrolled to.
    const QVector<int> vecShown = m_pColumns->shown();
    return index.isValid() && !vecShown.isEmpty() ? index.sibling(index.row(), vecShown.first()) : index;
}

bool PeakTableView::chooseUnindexed(int nStep)
{
    const int nRows = m_pSorted->rowCount();
    if (!m_pTable || nRows == 0) {
        return false;
    }
    const int nFrom = currentIndex().isValid() ? currentIndex().row() : nStep > 0 ? -1 : nRows;
    for (int i = 1; i <= nRows; ++i) {
        const int nRow = ((nFrom + i * nStep) % nRows + nRows) % nRows;
        const int nPeak = peakRow(m_pSorted->index(nRow, 0));
        if (std::isnan(m_pTable->number(nPeak, g_nWholeIndexColumn))) {
            setCurrentIndex(indexOfPeak(nPeak));
            return true;
        }
    }
    return false;
}

QByteArray PeakTableView::csv() const
{
    if (!m_pTable) {
        return {};
    }
    QVector<int> vecRow;
    for (int nRow = 0; nRow < m_pSorted->rowCount(); ++nRow) {
        vecRow.append(peakRow(m_pSorted->index(nRow, 0)));
    }
    return peakTableCsv(*m_pTable, m_vecTitle, vecRow, m_pColumns->shown());
}

void PeakTableView::setIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated)
{
    if (m_pTable) {
        setTable(std::make_shared<const CPeakTable>(m_pTable->withIntegrated(pIntegrated)));
    }
}

const IntegratedPeak* PeakTableView::integratedPeak(const QModelIndex& index) const
{
    const int nRow = peakRow(index);
    return m_pTable && nRow >= 0 && nRow < m_pTable->rowCount() ? m_pTable->integrated(nRow) : nullptr;
}

/// The bar lies over the room above the titles, beside the scroll bar if there is one.
void PeakTableView::placeBar()
{
    const int nWidth = viewport()->width();
    const int nHeight = m_pBar->heightFor(nWidth);
    m_pBar->setGeometry(frameWidth(), frameWidth(), nWidth, nHeight);
    auto* pHeader = static_cast<TitlesUnderBar*>(horizontalHeader());
    if (pHeader->room() != nHeight) {
        pHeader->setRoom(nHeight);
        updateGeometries();
    }
}

void PeakTableView::resizeEvent(QResizeEvent* pEvent)
{
    placeBar();
    QTableView::resizeEvent(pEvent);
}

std::vector<int> PeakTableView::selectedIds() const
{
    std::vector<int> vecId;
    const auto* pProxy = static_cast<const QAbstractProxyModel*>(model());
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        const int nRow = pProxy->mapToSource(index).row();
        if (m_pTable && nRow >= 0 && nRow < m_pTable->rowCount()) {
            vecId.push_back(m_pTable->id(nRow));
        }
    }
    return vecId;
}

int PeakTableView::currentId() const
{
    const int nRow = static_cast<const QAbstractProxyModel*>(model())->mapToSource(currentIndex()).row();
    return m_pTable && nRow >= 0 && nRow < m_pTable->rowCount() ? m_pTable->id(nRow) : -1;
}

bool PeakTableView::showIds(const std::vector<int>& vecId, int nCurrent)
{
    const QScopedValueRollback<bool> setting(m_bBeingSet, true);
    const auto* pProxy = static_cast<const QAbstractProxyModel*>(model());
    const QSet<int> setId(vecId.begin(), vecId.end());
    QVector<int> vecRow;  // of the view
    QModelIndex indexCurrent;
    for (int nRow = 0; m_pTable && !setId.isEmpty() && nRow < m_pTable->rowCount(); ++nRow) {
        if (!setId.contains(m_pTable->id(nRow))) {
            continue;
        }
        const QModelIndex index = pProxy->mapFromSource(m_pPeakTableModel->index(nRow, 0));
        if (index.isValid()) {
            vecRow.append(index.row());
            if (m_pTable->id(nRow) == nCurrent && !indexCurrent.isValid()) {
                indexCurrent = index;
            }
        }
    }
    std::sort(vecRow.begin(), vecRow.end());
    QItemSelection selection;  // of runs of rows: one row after the other would cost their square
    for (int i = 0, nFirst = 0; i < vecRow.size(); ++i) {
        if (i + 1 == vecRow.size() || vecRow[i + 1] != vecRow[i] + 1) {
            selection.select(pProxy->index(vecRow[nFirst], 0),
                             pProxy->index(vecRow[i], pProxy->columnCount() - 1));
            nFirst = i + 1;
        }
    }
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (indexCurrent.isValid()) {
        const int nColumn = horizontalHeader()->logicalIndexAt(0);
        const QModelIndex indexShown = indexCurrent.sibling(indexCurrent.row(), std::max(nColumn, 0));
        selectionModel()->setCurrentIndex(indexShown, QItemSelectionModel::NoUpdate);
        scrollTo(indexShown, QAbstractItemView::PositionAtCenter);
    }
    return indexCurrent.isValid();
}

void PeakTableView::selectAllToCopy()
{
    const QScopedValueRollback<bool> setting(m_bBeingSet, true);
    selectAll();
}

QString PeakTableView::selectedText() const
{
    QModelIndexList listIndex = selectionModel()->selectedIndexes();
    const auto isHidden = [this](const QModelIndex& index) { return isColumnHidden(index.column()); };
    listIndex.erase(std::remove_if(listIndex.begin(), listIndex.end(), isHidden), listIndex.end());
    // By row, then from the left to the right.
    const QHeaderView* pHeader = horizontalHeader();
    const auto isBefore = [pHeader](const QModelIndex& left, const QModelIndex& right) {
        return left.row() != right.row()
                   ? left.row() < right.row()
                   : pHeader->visualIndex(left.column()) < pHeader->visualIndex(right.column());
    };
    std::stable_sort(listIndex.begin(), listIndex.end(), isBefore);
    QString strText;
    for (int i = 0; i < listIndex.size(); ++i) {
        if (i > 0) {
            strText += listIndex[i].row() == listIndex[i - 1].row() ? QLatin1Char('\t') : QLatin1Char('\n');
        }
        strText += pastedText(listIndex[i]);
    }
    return strText;
}

}  // namespace tessera
