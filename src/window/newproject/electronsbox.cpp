#include "window/newproject/electronsbox.h"

#include "crystal/electronwavelength.h"
#include "window/newproject/factfields.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QRadioButton>
#include <QSettings>

namespace tessera {

ElectronsBox::ElectronsBox(FactFields& facts, QWidget* pParent)
    : QGroupBox(tr("Electrons"), pParent), m_facts(facts)
{
    m_pVoltageRadio = new QRadioButton(tr("Accelerating Voltage"), this);
    m_pWavelengthRadio = new QRadioButton(tr("Wavelength"), this);
    m_pVoltageRadio->setChecked(true);
    m_pVoltageSpin = makeDoubleSpin(this, 0, 10000, 2, 100, 200, QStringLiteral(" kV"));
    m_pWavelengthSpin = makeDoubleSpin(this, 0, 10000, 6, 0.0005, 0, QStringLiteral(" Å"));
    explain(m_pVoltageSpin, tr("Of the microscope, kV. The wavelength follows from it by the relativistic "
                               "formula: 0.0251 Å at 200 kV, 0.0197 Å at 300 kV."));
    explain(m_pWavelengthSpin, tr("Of the electrons, Å. It determines the curvature of the Ewald sphere: if "
                                  "it is wrong, the rows of the reciprocal lattice bend at high d*."));
    explain(m_pVoltageRadio, tr("The wavelength follows from the accelerating voltage."));
    explain(m_pWavelengthRadio, tr("The wavelength is typed in."));
    auto* pGrid = new QGridLayout(this);
    m_facts.addRow(pGrid, m_pVoltageRadio, m_pVoltageSpin,
                   [](const SeriesFacts& told) { return told.kilovolts; });
    m_facts.addRow(pGrid, m_pWavelengthRadio, m_pWavelengthSpin,
                   [](const SeriesFacts& told) { return told.wavelength; });
}

double ElectronsBox::wavelength() const
{
    return m_pVoltageRadio->isChecked() ? electronWavelength(m_pVoltageSpin->value())
                                        : m_pWavelengthSpin->value();
}

void ElectronsBox::showDerivedWavelength()
{
    m_pVoltageSpin->setEnabled(m_pVoltageRadio->isChecked());
    m_pWavelengthSpin->setEnabled(m_pWavelengthRadio->isChecked());
    if (m_pVoltageRadio->isChecked()) {
        showDerived(m_pWavelengthSpin, wavelength());
    }
}

void ElectronsBox::fill(const SeriesFacts& facts)
{
    if (!facts.wavelength.isTold() || m_facts.isTouched(this)) {
        return;
    }
    m_pVoltageRadio->setChecked(facts.bOfVoltage);
    m_pWavelengthRadio->setChecked(!facts.bOfVoltage);
    if (facts.bOfVoltage) {
        m_pVoltageSpin->setValue(facts.kilovolts.df);
    } else {
        m_pWavelengthSpin->setValue(facts.wavelength.df);
    }
}

void ElectronsBox::readSettings(const QSettings& settings)
{
    readRadio(settings, QStringLiteral("GivesWavelength"), m_pWavelengthRadio);
    readSpin(settings, QStringLiteral("Voltage"), m_pVoltageSpin);
    readSpin(settings, QStringLiteral("Wavelength"), m_pWavelengthSpin);
}

void ElectronsBox::writeSettings(QSettings& settings) const
{
    settings.setValue(QStringLiteral("Voltage"), m_pVoltageSpin->value());
    settings.setValue(QStringLiteral("Wavelength"), m_pWavelengthSpin->value());
    settings.setValue(QStringLiteral("GivesWavelength"), m_pWavelengthRadio->isChecked());
}

}  // namespace tessera
