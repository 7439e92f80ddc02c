// TableModel: a table of texts that is replaced as a whole, or makes its texts when they are asked for.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QVector>

#include <functional>

namespace tessera {

/// Rows of texts with column titles and an alignment per column.
class TableModel : public QAbstractTableModel {
public:
    using Rows = QVector<QVector<QString>>;

    /// Without rows and columns.
    explicit TableModel(QObject* pParent = nullptr);
    ~TableModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int nRole = Qt::DisplayRole) const override;
    QVariant headerData(int nSection, Qt::Orientation orientation,
                        int nRole = Qt::DisplayRole) const override;

    /// Replaces all rows by one model reset.
    void setRows(const Rows& rows);
    /// The same by a function of row and column, which is asked each time that a text is needed: of a long
    /// table, whose texts would fill the memory, few are ever seen.
    void setCells(int nRows, int nColumns, const std::function<QString(int nRow, int nColumn)>& fnText);
    /// The titles of the columns, which are as many.
    void setHeader(const QVector<QString>& vecHeader);
    /// What the tool tips of the titles say.
    void setHeaderTips(const QVector<QString>& vecTip) { m_vecHeaderTip = vecTip; }
    /// Qt::Alignment as a number, of columns without one of their own.
    void setDefaultAlignment(int nAlignment);

private:
    template <class Replace>
    void replaceAll(const Replace& replace);

    Rows m_vecRow;
    int m_nRows = 0;  ///< these two: of m_fnText
    int m_nColumns = 0;
    std::function<QString(int, int)> m_fnText;  ///< in place of m_vecRow, or empty
    QVector<QString> m_vecHeader;
    QVector<QString> m_vecHeaderTip;
    int m_nDefaultAlignment = 0;
    QVector<int> m_vecAlignment;
};

}  // namespace tessera
