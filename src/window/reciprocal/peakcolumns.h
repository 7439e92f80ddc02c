// PeakColumns: widths, order and choice of the columns of the peak table.
#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QVector>

#include <memory>

class QAction;
class QSettings;
class QTableView;

namespace tessera {

class CPeakTable;

/// What the titles of the columns say when the pointer rests on them.
QVector<QString> peakColumnTips();

/// The columns of a view of the peak table. They are as wide as titles and numbers need, so that none is
/// elided, or as wide as the user makes them beyond that; a double click on the edge of a title gives the
/// width that is needed. Titles move by a drag, and their menu shows and hides columns.
class CPeakColumns {
public:
    /// @param view      has its model, and outlives this
    /// @param vecTitle  of the columns, g_nPeakTableColumns of them
    CPeakColumns(QTableView& view, const QVector<QString>& vecTitle);

    /// A checkable action per column, in their order; to be followed by showChecked().
    const QList<QAction*>& actions() const { return m_listAction; }
    /// Shows the columns whose actions are checked, and hides the others.
    void showChecked();
    /// Checks or unchecks the actions of the columns that an integration fills, but those that the user has
    /// hidden.
    void checkIntegrated(bool bCheck);

    /// Gives the shown columns the width that a table needs, and further ones when they are shown.
    void fit(const std::shared_ptr<const CPeakTable>& pTable);
    /// The columns that are shown, from the left.
    QVector<int> shown() const;

    /// A view without rows has no columns; these two bring them back as they were.
    void keepLayout();
    /// Puts order and widths back as keepLayout() noted them.
    void restoreLayout();

    /// Order and choice of the columns; entries that name no column are passed over.
    void read(const QSettings& settings);
    /// Keeps order and choice of the columns.
    void write(QSettings& settings) const;

private:
    void takeOwnWidth(int nColumn, int nWidth);
    void setWidth(int nColumn);
    void measure(int nColumn);

    QTableView& m_view;
    std::shared_ptr<const CPeakTable> m_pTable;  ///< null at first
    QList<QAction*> m_listAction;
    QList<int> m_listUnwanted;  ///< columns of an integration that the user has hidden
    QVector<int> m_vecNeeded;   ///< pixels; 0: not measured
    QVector<int> m_vecOwn;      ///< pixels, where the user has made a column wider; else 0
    bool m_bResizing = false;   ///< by this class, not by the user
    QByteArray m_bytesLayout;
    QObject m_context;  ///< of the connections, which end with this and not with the view
};

}  // namespace tessera
