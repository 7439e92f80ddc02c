// MySortFilterProxyModel: sorts cells as numbers where both are numbers of the system locale, else as texts,
// and leaves out the rows that it is told to.
#pragma once

#include <QLocale>
#include <QSortFilterProxyModel>
#include <QVector>

#include <utility>
#include <vector>

namespace tessera {

/// A pair of cells of which one is no number is compared as texts, in the order of the locale.
class MySortFilterProxyModel : public QSortFilterProxyModel {
public:
    explicit MySortFilterProxyModel(QObject* pParent = nullptr);

    void setSourceModel(QAbstractItemModel* pSourceModel) override;

    /// Which rows of the source are let through, in force from the next reset of the source model on: to take
    /// thousands of rows out one by one would take the views seconds.
    /// @param vecPasses  one entry per row, 0: left out; rows beyond its end pass
    void setPassingRows(std::vector<char> vecPasses) { m_vecPasses = std::move(vecPasses); }

protected:
    bool filterAcceptsRow(int nSourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    struct Key {
        QString strText;  ///< of a cell that is no number; of the many that are, the texts would weigh
        double dfNumber = 0;
        bool bNumber = false;
    };
    const Key& key(const QModelIndex& index) const;

    QLocale m_locale = QLocale::system();
    std::vector<char> m_vecPasses;
    /// The cells of the column compared last, parsed once; emptied by every change of the source model.
    mutable QVector<Key> m_vecKey;
    mutable int m_nKeyColumn = -1;
};

}  // namespace tessera
