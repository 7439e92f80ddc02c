#include "reciprocal/tablemodel.h"

TableModel::TableModel(QObject* pParent) : QAbstractTableModel(pParent) {}

TableModel::~TableModel() = default;

int TableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_vecRow.size();
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || m_vecRow.isEmpty() ? 0 : m_vecRow.first().size();
}

QVariant TableModel::data(const QModelIndex& index, int nRole) const
{
    if (nRole == Qt::TextAlignmentRole)
        return m_vecAlignment.value(index.column(), m_nDefaultAlignment);
    if (nRole != Qt::DisplayRole || index.row() < 0 || index.row() >= m_vecRow.size())
        return {};
    const QVector<QString>& vecCell = m_vecRow[index.row()];
    if (index.column() < 0 || index.column() >= vecCell.size())
        return {};
    return vecCell[index.column()];
}

QVariant TableModel::headerData(int nSection, Qt::Orientation orientation, int nRole) const
{
    if (orientation == Qt::Horizontal && (nRole == Qt::ToolTipRole || nRole == Qt::WhatsThisRole))
        return m_vecHeaderTip.value(nSection);
    if (nRole != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return nSection;
    if (nSection < 0 || nSection >= m_vecHeader.size())
        return {};
    return m_vecHeader[nSection];
}

void TableModel::setRows(const Rows& rows)
{
    beginResetModel();
    m_vecRow = rows;
    const int nOld = m_vecAlignment.size();
    m_vecAlignment.resize(columnCount());
    for (int i = nOld; i < m_vecAlignment.size(); ++i)
        m_vecAlignment[i] = m_nDefaultAlignment;
    endResetModel();
}

void TableModel::setHeader(const QVector<QString>& vecHeader)
{
    m_vecHeader = vecHeader;
    if (columnCount() > 0)
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void TableModel::setDefaultAlignment(int nAlignment)
{
    m_nDefaultAlignment = nAlignment;
}
