#include "reciprocal/mysortfilterproxymodel.h"

MySortFilterProxyModel::MySortFilterProxyModel(QObject* pParent) : QSortFilterProxyModel(pParent) {}

bool MySortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QString strLeft = left.data().toString();
    const QString strRight = right.data().toString();
    bool bLeft = false, bRight = false;
    const double dfLeft = m_locale.toDouble(strLeft, &bLeft);
    const double dfRight = m_locale.toDouble(strRight, &bRight);
    if (bLeft && bRight)
        return dfLeft < dfRight;
    return strLeft.localeAwareCompare(strRight) < 0;
}
