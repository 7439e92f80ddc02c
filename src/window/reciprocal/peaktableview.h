// PeakTableView: the table of reflections with its columns.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTableView>
#include <QVector>

#include <memory>

class QAction;

namespace tessera {

class CIntegratedPeaks;
class CPeakTable;
class TableModel;
struct IntegratedPeak;

/// The view of the tab "Peak Table": rows that sort by a click on a title, and columns that the menu of the
/// titles shows and hides. It has one row of zeros at first, as there are no columns without a row.
class PeakTableView : public QTableView {
public:
    /// @param vecTitle  of the columns, g_nPeakTableColumns of them
    explicit PeakTableView(const QVector<QString>& vecTitle, QWidget* pParent = nullptr);

    /// Shows a table in the place of the former one. The columns keep their widths, order and visibility,
    /// also over a table without rows.
    void setTable(const std::shared_ptr<const CPeakTable>& pTable);

    /// A checkable action per column, in their order; to be followed by showCheckedColumns().
    const QList<QAction*>& columnActions() const { return m_listColumnAction; }
    /// Shows the columns whose actions are checked, and hides the others.
    void showCheckedColumns();
    /// Shows the rows that there are with another integration; null: with none.
    void setIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated);
    /// Checks or unchecks the actions of the columns that an integration fills.
    void checkIntegratedColumns(bool bCheck);

    /// What the integration says of the row of an index of the view; null: nothing.
    const IntegratedPeak* integratedPeak(const QModelIndex& index) const;

    /// The selected cells of the shown columns, with tabulators between the columns and line feeds between
    /// the rows; empty when nothing is selected.
    QString selectedText() const;

private:
    TableModel* m_pPeakTableModel;
    std::shared_ptr<const CPeakTable> m_pTable;  ///< null at first
    QList<QAction*> m_listColumnAction;
    QByteArray m_bytesColumnLayout;  ///< when the table last had rows
};

}  // namespace tessera
