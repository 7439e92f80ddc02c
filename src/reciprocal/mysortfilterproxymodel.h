// MySortFilterProxyModel: sorts cells as numbers where both are numbers of the system locale, else as texts.
#pragma once

#include <QLocale>
#include <QSortFilterProxyModel>
#include <QVector>

namespace tessera {

/// A pair of cells of which one is no number is compared as texts, in the order of the locale.
class MySortFilterProxyModel : public QSortFilterProxyModel {
public:
    explicit MySortFilterProxyModel(QObject* pParent = nullptr);

    void setSourceModel(QAbstractItemModel* pSourceModel) override;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    struct Key {
        QString strText;  ///< of a cell that is no number; of the many that are, the texts would weigh
        double dfNumber = 0;
        bool bNumber = false;
    };
    const Key& key(const QModelIndex& index) const;

    QLocale m_locale = QLocale::system();
    /// The cells of the column compared last, parsed once; emptied by every change of the source model.
    mutable QVector<Key> m_vecKey;
    mutable int m_nKeyColumn = -1;
};

}  // namespace tessera
