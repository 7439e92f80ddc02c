// IntegrationPage: the tool box page "Integration" with the choices, the run and what came out of it.
#pragma once

#include "road/intensities.h"

#include <QWidget>

#include <optional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tessera {

/// The controls of the integration; IntegrationController connects them. A number at its lowest value reads
/// "Auto": it comes from the data.
class IntegrationPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the options.
    explicit IntegrationPage(QWidget* pParent = nullptr);

    /// What the controls say.
    /// @return none, with the reason, where a space group or a formula is typed that is none
    std::optional<IntensityOptions> options(QString* pstrReason) const;
    /// Offers space groups in the list of these; the one that is chosen or typed stays.
    void offerSpaceGroups(const QStringList& listGroup);
    /// Shows what came out, line by line; empty: nothing did.
    void showResult(const QStringList& listLine);

    QComboBox* m_pComboRotation;          ///< its data: RotationKind
    QDoubleSpinBox* m_pSpinPrecession;    ///< degrees, half opening of the cone
    QDoubleSpinBox* m_pSpinResolution;    ///< Å, least d; 0: Auto
    QDoubleSpinBox* m_pSpinDiscRadius;    ///< pixels; 0: Auto
    QDoubleSpinBox* m_pSpinRockingWidth;  ///< Å⁻¹, sigma; 0: Auto
    QCheckBox* m_pCheckProfile;           ///< weak reflections by a fit of the profile
    QCheckBox* m_pCheckScale;             ///< a scale for each frame
    QCheckBox* m_pCheckDecay;             ///< and a fall-off with resolution
    QDoubleSpinBox* m_pSpinRejection;     ///< sigmas
    QComboBox* m_pComboLaue;              ///< its data: the name, empty for Auto
    QComboBox* m_pComboSpaceGroup;        ///< editable; first "Auto"
    QLineEdit* m_pEditFormula;
    QCheckBox* m_pCheckPredicted;  ///< discs on the frame
    QLabel* m_pLabelLegend;        ///< their colours
    QPushButton* m_pButtonIntegrate;
    QPushButton* m_pButtonExport;
    QLabel* m_pLabelResult;

private:
    QHBoxLayout* makeRotation(QWidget* pParent);
    QGroupBox* makeIntegration();
    QGroupBox* makeSymmetry();
    QGroupBox* makeDiscs();
    void explainControls();
};

}  // namespace tessera
