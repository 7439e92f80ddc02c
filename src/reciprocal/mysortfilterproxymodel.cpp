#include "reciprocal/mysortfilterproxymodel.h"

namespace tessera {

MySortFilterProxyModel::MySortFilterProxyModel(QObject* pParent) : QSortFilterProxyModel(pParent) {}

void MySortFilterProxyModel::setSourceModel(QAbstractItemModel* pSourceModel)
{
    // Connected before the base class connects, as that compares cells when the source model changes.
    const auto forget = [this] { m_vecKey.clear(); };
    m_vecKey.clear();
    if (sourceModel()) {
        sourceModel()->disconnect(this);
    }
    if (pSourceModel) {
        connect(pSourceModel, &QAbstractItemModel::modelReset, this, forget);
        connect(pSourceModel, &QAbstractItemModel::dataChanged, this, forget);
        connect(pSourceModel, &QAbstractItemModel::layoutChanged, this, forget);
        connect(pSourceModel, &QAbstractItemModel::rowsInserted, this, forget);
        connect(pSourceModel, &QAbstractItemModel::rowsRemoved, this, forget);
        connect(pSourceModel, &QAbstractItemModel::rowsMoved, this, forget);
        connect(pSourceModel, &QAbstractItemModel::columnsInserted, this, forget);
        connect(pSourceModel, &QAbstractItemModel::columnsRemoved, this, forget);
        connect(pSourceModel, &QAbstractItemModel::columnsMoved, this, forget);
    }
    QSortFilterProxyModel::setSourceModel(pSourceModel);
}

const MySortFilterProxyModel::Key& MySortFilterProxyModel::key(const QModelIndex& index) const
{
    if (m_nKeyColumn != index.column() || index.row() >= m_vecKey.size()) {
        m_nKeyColumn = index.column();
        m_vecKey.resize(sourceModel()->rowCount());
        for (int i = 0; i < m_vecKey.size(); ++i) {
            Key& cell = m_vecKey[i];
            const QString strText = index.sibling(i, m_nKeyColumn).data().toString();
            cell.dfNumber = m_locale.toDouble(strText, &cell.bNumber);
            if (!cell.bNumber) {
                cell.strText = strText;
            }
        }
    }
    return m_vecKey.at(index.row());
}

bool MySortFilterProxyModel::filterAcceptsRow(int nSourceRow, const QModelIndex&) const
{
    return size_t(nSourceRow) >= m_vecPasses.size() || m_vecPasses[nSourceRow] != 0;
}

bool MySortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const Key& keyLeft = key(left);
    const Key& keyRight = key(right);
    if (keyLeft.bNumber && keyRight.bNumber) {
        return keyLeft.dfNumber < keyRight.dfNumber;
    }
    const auto text = [](const Key& cell, const QModelIndex& index) {
        return cell.bNumber ? index.data().toString() : cell.strText;
    };
    return text(keyLeft, left).localeAwareCompare(text(keyRight, right)) < 0;
}

}  // namespace tessera
