#include "reciprocal/tablemodel.h"

namespace tessera {

TableModel::TableModel(QObject* pParent) : QAbstractTableModel(pParent) {}

TableModel::~TableModel() = default;

int TableModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid()) {
        return 0;
    }
    return m_fnText ? m_nRows : m_vecRow.size();
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    if (parent.isValid() || rowCount() == 0) {
        return 0;
    }
    return m_fnText ? m_nColumns : m_vecRow.first().size();
}

QVariant TableModel::data(const QModelIndex& index, int nRole) const
{
    if (nRole == Qt::TextAlignmentRole) {
        return m_vecAlignment.value(index.column(), m_nDefaultAlignment);
    }
    if (nRole != Qt::DisplayRole || index.row() < 0 || index.row() >= rowCount()) {
        return {};
    }
    if (m_fnText) {
        return index.column() >= 0 && index.column() < m_nColumns ? m_fnText(index.row(), index.column())
                                                                  : QVariant();
    }
    const QVector<QString>& vecCell = m_vecRow[index.row()];
    if (index.column() < 0 || index.column() >= vecCell.size()) {
        return {};
    }
    return vecCell[index.column()];
}

QVariant TableModel::headerData(int nSection, Qt::Orientation orientation, int nRole) const
{
    if (orientation == Qt::Horizontal && (nRole == Qt::ToolTipRole || nRole == Qt::WhatsThisRole)) {
        return m_vecHeaderTip.value(nSection);
    }
    if (nRole != Qt::DisplayRole) {
        return {};
    }
    if (orientation == Qt::Vertical) {
        return nSection;
    }
    if (nSection < 0 || nSection >= m_vecHeader.size()) {
        return {};
    }
    return m_vecHeader[nSection];
}

template <class Replace>
void TableModel::replaceAll(const Replace& replace)
{
    beginResetModel();
    replace();
    const int nOld = m_vecAlignment.size();
    m_vecAlignment.resize(columnCount());
    for (int i = nOld; i < m_vecAlignment.size(); ++i) {
        m_vecAlignment[i] = m_nDefaultAlignment;
    }
    endResetModel();
}

void TableModel::setRows(const Rows& rows)
{
    replaceAll([&] {
        m_fnText = {};
        m_vecRow = rows;
    });
}

void TableModel::setCells(int nRows, int nColumns,
                          const std::function<QString(int nRow, int nColumn)>& fnText)
{
    replaceAll([&] {
        m_vecRow = {};
        m_nRows = nRows;
        m_nColumns = nColumns;
        m_fnText = fnText;
    });
}

void TableModel::setHeader(const QVector<QString>& vecHeader)
{
    m_vecHeader = vecHeader;
    if (columnCount() > 0) {
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    }
}

void TableModel::setDefaultAlignment(int nAlignment)
{
    m_nDefaultAlignment = nAlignment;
}

}  // namespace tessera
