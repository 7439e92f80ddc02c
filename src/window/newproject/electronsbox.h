// ElectronsBox: the wavelength of the electrons of a new project.
#pragma once

#include "dataset/seriesfacts.h"

#include <QGroupBox>

class QDoubleSpinBox;
class QRadioButton;
class QSettings;

namespace tessera {

class FactFields;

/// The wavelength as it is given, or by the accelerating voltage.
class ElectronsBox : public QGroupBox {
    Q_OBJECT

public:
    /// @param facts  gets the fields that the frames can tell; outlives this
    explicit ElectronsBox(FactFields& facts, QWidget* pParent = nullptr);

    /// What the controls say, Å.
    double wavelength() const;
    /// Enables the box in use, and shows in the other one what follows.
    void showDerivedWavelength();
    /// Takes what the frames tell, where the user has set nothing.
    void fill(const SeriesFacts& facts);
    /// What was given last.
    void readSettings(const QSettings& settings);
    /// Keeps it.
    void writeSettings(QSettings& settings) const;

    QRadioButton* m_pVoltageRadio = nullptr;      ///< wavelength by the voltage
    QRadioButton* m_pWavelengthRadio = nullptr;   ///< wavelength as it is given
    QDoubleSpinBox* m_pVoltageSpin = nullptr;     ///< kV
    QDoubleSpinBox* m_pWavelengthSpin = nullptr;  ///< Å

private:
    FactFields& m_facts;
};

}  // namespace tessera
