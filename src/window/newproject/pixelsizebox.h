// PixelSizeBox: the size of a pixel of a new project in reciprocal space.
#pragma once

#include "dataset/seriesfacts.h"

#include <QGroupBox>

class QDoubleSpinBox;
class QRadioButton;
class QSettings;

namespace tessera {

class FactFields;

/// The pixel size as it is given, or by camera length and detector pixel.
class PixelSizeBox : public QGroupBox {
    Q_OBJECT

public:
    /// @param facts  gets the fields that the frames can tell; outlives this
    explicit PixelSizeBox(FactFields& facts, QWidget* pParent = nullptr);

    /// What the controls say, Å⁻¹, for electrons of this wavelength, Å.
    double pixelSize(double dfWavelength) const;
    /// Enables the boxes in use, and shows in the other one what follows.
    void showDerivedSize(double dfWavelength);
    /// Takes what the frames tell, where the user has set nothing.
    void fill(const SeriesFacts& facts);
    /// What was given last.
    void readSettings(const QSettings& settings);
    /// Keeps it.
    void writeSettings(QSettings& settings) const;

    QRadioButton* m_pPixelSizeRadio = nullptr;       ///< pixel size as it is given
    QRadioButton* m_pCameraRadio = nullptr;          ///< pixel size by camera length and detector
    QDoubleSpinBox* m_pPixelSizeSpin = nullptr;      ///< Å⁻¹
    QDoubleSpinBox* m_pCameraLengthSpin = nullptr;   ///< mm
    QDoubleSpinBox* m_pDetectorPixelSpin = nullptr;  ///< µm

private:
    FactFields& m_facts;
};

}  // namespace tessera
