// TableModel: a table of texts that is replaced as a whole.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QVector>

/// Rows of texts with column titles and an alignment per column.
class TableModel : public QAbstractTableModel {
public:
    using Rows = QVector<QVector<QString>>;

    explicit TableModel(QObject* pParent = nullptr);
    ~TableModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int nRole = Qt::DisplayRole) const override;
    QVariant headerData(int nSection, Qt::Orientation orientation,
                        int nRole = Qt::DisplayRole) const override;

    /// Replaces all rows by one model reset.
    void setRows(const Rows& rows);
    void setHeader(const QVector<QString>& vecHeader);
    /// What the tool tips of the titles say.
    void setHeaderTips(const QVector<QString>& vecTip) { m_vecHeaderTip = vecTip; }
    /// Qt::Alignment as a number, of columns without one of their own.
    void setDefaultAlignment(int nAlignment);

private:
    Rows m_vecRow;
    QVector<QString> m_vecHeader;
    QVector<QString> m_vecHeaderTip;
    int m_nDefaultAlignment = 0;
    QVector<int> m_vecAlignment;
};
