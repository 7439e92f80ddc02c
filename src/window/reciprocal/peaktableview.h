// PeakTableView: the table of reflections with its columns and its filter.
#pragma once

#include "reciprocal/peakfilter.h"
#include "window/reciprocal/peakcolumns.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTableView>
#include <QVector>

#include <memory>
#include <vector>

class QAction;
class QSettings;

namespace tessera {

class CIntegratedPeaks;
class CPeakTable;
class MySortFilterProxyModel;
class PeakFilterBar;
class TableModel;
struct IntegratedPeak;

/// The view of the tab "Peak Table": rows that sort by a click on a title, a line above them that says which
/// rows are shown, and columns (CPeakColumns). It has one row of zeros at first, as there are no columns
/// without a row.
///
/// Rows of the view are those that are seen, in their order; peakRow() and indexOfPeak() lead from them to
/// the rows of the table, which are the reflections in the order of their list, and back.
class PeakTableView : public QTableView {
public:
    /// @param vecTitle  of the columns, g_nPeakTableColumns of them
    explicit PeakTableView(const QVector<QString>& vecTitle, QWidget* pParent = nullptr);
    ~PeakTableView() override;

    /// Shows a table in the place of the former one, by the same filter. The columns keep their order and
    /// visibility, also over a table without rows.
    void setTable(const std::shared_ptr<const CPeakTable>& pTable);

    /// A checkable action per column, in their order; to be followed by showCheckedColumns().
    const QList<QAction*>& columnActions() const { return m_pColumns->actions(); }
    /// Shows the columns whose actions are checked, and hides the others.
    void showCheckedColumns() { m_pColumns->showChecked(); }
    /// Shows the rows that there are with another integration; null: with none.
    void setIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated);
    /// Checks or unchecks the actions of the columns that an integration fills.
    void checkIntegratedColumns(bool bCheck) { m_pColumns->checkIntegrated(bCheck); }
    /// Order and choice of the columns.
    void readColumns(const QSettings& settings) { m_pColumns->read(settings); }
    /// Keeps order and choice of the columns.
    void writeColumns(QSettings& settings) const { m_pColumns->write(settings); }

    /// Shows the rows that a line (CPeakFilter) lets through; the current row stays chosen if it is one.
    /// @return false for a line that is not understood: the bar says why, and the former filter stays
    bool setFilter(const QString& strLine);
    /// The line above the rows, with a button for the export.
    PeakFilterBar& filterBar() { return *m_pBar; }

    /// The row of the table that an index of the view shows; -1: none.
    int peakRow(const QModelIndex& index) const;
    /// The index of a row of the table, in the first column shown; invalid where the filter leaves it out.
    QModelIndex indexOfPeak(int nRow) const;
    /// Makes the next row (+1) or the one before (-1) current that is not indexed, going round at the ends.
    /// @return false when none is seen
    bool chooseUnindexed(int nStep);

    /// What the integration says of the row of an index of the view; null: nothing.
    const IntegratedPeak* integratedPeak(const QModelIndex& index) const;

    /// Numbers of the reflections in the selected rows.
    std::vector<int> selectedIds() const;
    /// Number of the reflection in the current row; −1: there is none.
    int currentId() const;
    /// Selects the rows of these reflections, as far as there are such, and scrolls to one of them.
    /// @param nCurrent  −1: none
    /// @return whether there is a row of `nCurrent`
    bool showIds(const std::vector<int>& vecId, int nCurrent);
    /// Selects all rows, which chooses none of them in the other views.
    void selectAllToCopy();
    /// Whether one of these two is at work: then the user has chosen nothing.
    bool isBeingSet() const { return m_bBeingSet; }

    /// The selected cells of the shown columns, with tabulators between the columns and line feeds between
    /// the rows; empty when nothing is selected.
    QString selectedText() const;
    /// The rows and columns that are seen, in their order (peakTableCsv()).
    QByteArray csv() const;

protected:
    void resizeEvent(QResizeEvent* pEvent) override;

private:
    void resetRows();
    void placeBar();

    TableModel* m_pPeakTableModel;
    MySortFilterProxyModel* m_pSorted;
    QVector<QString> m_vecTitle;
    std::shared_ptr<const CPeakTable> m_pTable;  ///< null at first
    std::unique_ptr<CPeakColumns> m_pColumns;
    CPeakFilter m_filter;
    PeakFilterBar* m_pBar = nullptr;
    bool m_bBeingSet = false;  ///< by the window
};

}  // namespace tessera
