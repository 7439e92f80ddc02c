// MySortFilterProxyModel: sorts cells as numbers where both are numbers of the system locale, else as texts.
#pragma once

#include <QLocale>
#include <QSortFilterProxyModel>

class MySortFilterProxyModel : public QSortFilterProxyModel {
public:
    explicit MySortFilterProxyModel(QObject* pParent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    QLocale m_locale = QLocale::system();
};
