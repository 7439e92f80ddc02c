// Form rows: what the groups of "New Project" have in common.
#pragma once

#include <QString>

class QDoubleSpinBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QRadioButton;
class QSettings;
class QWidget;

namespace tessera {

/// Adds a row of a label or radio button and its control.
void addFormRow(QGridLayout* pGrid, QWidget* pLabel, QWidget* pControl);
/// A label of plain text; Wrapped breaks lines that are too long.
enum class LabelLines { One, Wrapped };
/// A label for texts with names of files, which are no markup.
QLabel* makePlainLabel(QWidget* pParent, LabelLines lines);
/// A button that Return does not press from elsewhere.
QPushButton* makeFormButton(const QString& strText, QWidget* pParent);
/// Shows a derived value in a disabled box, without a valueChanged() signal.
void showDerived(QDoubleSpinBox* pSpin, double dfValue);
/// Gives a box its number of the last dialog, if there is a finite one.
void readSpin(const QSettings& settings, const QString& strKey, QDoubleSpinBox* pSpin);
/// Checks a radio button that was checked in the last dialog.
void readRadio(const QSettings& settings, const QString& strKey, QRadioButton* pRadio);

}  // namespace tessera
