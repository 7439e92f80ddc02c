#include "window/newproject/factfields.h"

#include "window/factlabel.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QObject>

#include <cmath>

namespace tessera {

namespace {

const QWidget* groupOf(const QWidget* pControl)
{
    while (pControl && !qobject_cast<const QGroupBox*>(pControl)) {
        pControl = pControl->parentWidget();
    }
    return pControl;
}

// Where the number stood, and the number itself where the field shows another one.
QString sourceText(const ToldNumber& told, const QDoubleSpinBox* pSpin)
{
    return isShown(pSpin, told.df)
               ? told.strSource
               : QObject::tr("%1: %2").arg(told.strSource, QString::number(told.df, 'g', 6));
}

}  // namespace

bool isShown(const QDoubleSpinBox* pSpin, double df)
{
    return std::abs(pSpin->value() - df) <= 1.01 * std::pow(10.0, -pSpin->decimals());
}

void FactFields::addRow(QGridLayout* pGrid, QWidget* pLabel, QDoubleSpinBox* pSpin, const FnTold& fnTold,
                        Trust trust)
{
    const int nRow = pGrid->rowCount();
    pGrid->setVerticalSpacing(4);
    auto* pFact = new FactLabel(pSpin->parentWidget());
    m_mapField[pSpin] = {pFact, fnTold, trust};
    pGrid->addWidget(pLabel, nRow, 0);
    pGrid->addWidget(pSpin, nRow, 1);
    pGrid->addWidget(pFact, nRow, 2);
    pGrid->setColumnStretch(1, 2);
    pGrid->setColumnStretch(2, 3);
}

void FactFields::show(const SeriesFacts& facts, bool bFrames) const
{
    for (auto it = m_mapField.begin(); it != m_mapField.end(); ++it) {
        const Field& field = it.value();
        const ToldNumber told = field.fnTold(facts);
        QString strText = bFrames ? QObject::tr("not told") : QString();
        if (told.isTold()) {
            strText = sourceText(told, it.key());
            if (field.trust == Trust::SenseUnsure) {
                strText = QObject::tr("sense not certain; %1").arg(strText);
            } else if (isDoubtful(told, facts.listDoubt)) {
                strText = QObject::tr("guessed: ") + strText;
            }
        }
        field.pLabel->setFact(strText);
    }
}

FactLabel* FactFields::label(QDoubleSpinBox* pSpin) const
{
    return m_mapField.value(pSpin).pLabel;
}

void FactFields::touch(const QWidget* pControl)
{
    m_setTouched.insert(groupOf(pControl));
}

bool FactFields::isTouched(const QWidget* pControl) const
{
    return m_setTouched.contains(groupOf(pControl));
}

}  // namespace tessera
