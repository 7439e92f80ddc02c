// Page controls: what the tool box pages have in common.
#pragma once

#include "dataset/parametertable.h"

#include <QString>

class QDoubleSpinBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QSpinBox;
class QTableView;
class QTableWidget;
class QWidget;

namespace tessera {

/// The box of a parameter: range, decimals, step, suffix, tip and start value as its row in the table of
/// parameters has them, right-aligned. CParameterBindings ties it to the number in the window's record.
QDoubleSpinBox* makeDoubleSpin(QWidget* pParent, const Parameter& row);
/// The same of a whole number.
QSpinBox* makeIntSpin(QWidget* pParent, const Parameter& row);

/// The box of the parameter that is kept in that member.
template <typename TRecord>
QDoubleSpinBox* makeSpin(QWidget* pParent, double TRecord::*pMember)
{
    return makeDoubleSpin(pParent, parameterOf(pMember));
}

/// The same of a whole number.
template <typename TRecord>
QSpinBox* makeSpin(QWidget* pParent, int TRecord::*pMember)
{
    return makeIntSpin(pParent, parameterOf(pMember));
}

/// Puts a label and a box into a row of a grid; the box bears the name for those who see no page.
/// @param strGroup  what the name begins with where the label alone is not clear; empty: nothing
void addBox(QGridLayout* pGrid, int nRow, const QString& strLabel, QWidget* pBox,
            const QString& strGroup = {});

/// The row that a box was made from; null for all other widgets.
const Parameter* parameterOfBox(const QWidget* pBox);

/// A right-aligned spin box of real numbers.
QDoubleSpinBox* makeDoubleSpin(QWidget* pParent, double dfLimitLow, double dfLimitHigh, int nDecimals,
                               double dfStep, double dfStart, const QString& strSuffix = {});

/// A spin box of whole numbers.
QSpinBox* makeIntSpin(QWidget* pParent, int nLimitLow, int nLimitHigh, int nStep, int nStart,
                      const QString& strSuffix = {});

/// How the text of a button is set.
enum class ButtonText {
    Plain,
    Bold,
};

/// The button of a run: with the icon of all runs, a status tip, and 30 pixels high at least.
QPushButton* makeRunButton(QWidget* pParent, const QString& strText, const QString& strStatusTip,
                           ButtonText text);

/// Makes a label the heading of a page: bold, and a quarter larger than the text.
void makeHeading(QLabel* pLabel);

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
