// Page controls: what the tool box pages have in common.
#pragma once

#include <QString>

class QDoubleSpinBox;
class QPushButton;
class QSpinBox;
class QTableView;
class QTableWidget;
class QWidget;

namespace tessera {

/// A right-aligned spin box of real numbers.
QDoubleSpinBox* makeDoubleSpin(QWidget* pParent, double dfLimitLow, double dfLimitHigh, int nDecimals,
                               double dfStep, double dfStart, const QString& strSuffix = {});

/// A spin box of whole numbers.
QSpinBox* makeIntSpin(QWidget* pParent, int nLimitLow, int nLimitHigh, int nStep, int nStart,
                      const QString& strSuffix = {});

/// The button of a run: its icon, its status tip, 30 pixels high at least.
QPushButton* makeRunButton(QWidget* pParent, const QString& strText, const QString& strStatusTip, bool bBold);

/// An empty table of point groups, whose rows are selected whole and one at a time: "Label", which takes
/// the spare width, "Count" and a narrow column without a title for the colour.
QTableWidget* makeGroupTable(QWidget* pParent);

/// Makes the rows of a table 20 pixels high, whatever the style takes for the least height.
void setLowRows(QTableView* pTable);

/// Puts a text into a cell, at its right edge.
void setRightItem(QTableWidget* pTable, int nRow, int nColumn, const QString& strText);

/// Makes column `nColumn` as narrow as a patch of colour or a mark needs, 25 pixels.
void setNarrowColumn(QTableWidget* pTable, int nColumn);

}  // namespace tessera
