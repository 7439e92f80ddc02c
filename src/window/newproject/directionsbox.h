// DirectionsBox: rotation axis, kind of rotation and elliptical distortion of a new project.
#pragma once

#include "dataset/seriesfacts.h"
#include "geometry/rotationmode.h"

#include <QGroupBox>

class QComboBox;
class QDoubleSpinBox;
class QRadioButton;
class QSettings;

namespace tessera {

class FactFields;

/// The rotation axis as it is given, or left to be found from the peaks; how the crystal turned while a frame
/// was exposed; the ellipse that the lenses make of a circle.
class DirectionsBox : public QGroupBox {
    Q_OBJECT

public:
    /// @param facts  gets the fields that the frames can tell; outlives this
    explicit DirectionsBox(FactFields& facts, QWidget* pParent = nullptr);

    /// What the controls say of the rotation.
    RotationMode rotation() const;
    /// Enables the boxes in use.
    void enableBoxes();
    /// Takes the axis that the frames tell, where the user has given none.
    void fill(const SeriesFacts& facts);
    /// What was given last.
    void readSettings(const QSettings& settings);
    /// Keeps it.
    void writeSettings(QSettings& settings) const;

    QRadioButton* m_pAxisRadio = nullptr;               ///< the axis as it is given
    QRadioButton* m_pFindAxisRadio = nullptr;           ///< the project has none: it is found from the peaks
    QDoubleSpinBox* m_pRotationAxisSpin = nullptr;      ///< degrees
    QComboBox* m_pRotationCombo = nullptr;              ///< its data: RotationKind
    QDoubleSpinBox* m_pPrecessionSpin = nullptr;        ///< degrees, half opening of the cone
    QDoubleSpinBox* m_pStretchAmplitudeSpin = nullptr;  ///< per cent
    QDoubleSpinBox* m_pStretchAzimuthSpin = nullptr;    ///< degrees

private:
    void explainNumbers();
    QWidget* makeRotation();

    FactFields& m_facts;
};

}  // namespace tessera
