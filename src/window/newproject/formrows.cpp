#include "window/newproject/formrows.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalBlocker>

#include <cmath>

namespace tessera {

void addFormRow(QGridLayout* pGrid, QWidget* pLabel, QWidget* pControl)
{
    const int nRow = pGrid->rowCount();
    pGrid->addWidget(pLabel, nRow, 0);
    pGrid->addWidget(pControl, nRow, 1);
    pGrid->setColumnStretch(1, 1);
}

QLabel* makePlainLabel(QWidget* pParent, LabelLines lines)
{
    auto* pLabel = new QLabel(pParent);
    pLabel->setWordWrap(lines == LabelLines::Wrapped);
    pLabel->setTextFormat(Qt::PlainText);
    return pLabel;
}

QPushButton* makeFormButton(const QString& strText, QWidget* pParent)
{
    auto* pButton = new QPushButton(strText, pParent);
    pButton->setAutoDefault(false);
    return pButton;
}

void showDerived(QDoubleSpinBox* pSpin, double dfValue)
{
    const QSignalBlocker blocker(pSpin);
    pSpin->setValue(dfValue);
}

void readSpin(const QSettings& settings, const QString& strKey, QDoubleSpinBox* pSpin)
{
    bool bOk = false;
    const double dfValue = settings.value(strKey).toDouble(&bOk);
    if (bOk && std::isfinite(dfValue)) {
        pSpin->setValue(dfValue);
    }
}

void readRadio(const QSettings& settings, const QString& strKey, QRadioButton* pRadio)
{
    if (settings.value(strKey).toBool()) {
        pRadio->setChecked(true);
    }
}

}  // namespace tessera
