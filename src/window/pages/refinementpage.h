// RefinementPage: the tool box page "Unit Cell Refinement".
#pragma once

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QPushButton;

namespace tessera {

/// The limits of the reflections that the refinement of the cell uses, and its buttons.
///
/// The page holds controls alone; MainWindow connects them.
class RefinementPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the parameters.
    explicit RefinementPage(QWidget* pParent = nullptr);

    QDoubleSpinBox* m_pSpinRefineIntensityLow;
    QDoubleSpinBox* m_pSpinRefineIntensityHigh;
    QDoubleSpinBox* m_pSpinRefineDStarLow;   ///< Å⁻¹
    QDoubleSpinBox* m_pSpinRefineDStarHigh;  ///< Å⁻¹
    QCheckBox* m_pCheckRefine2D;
    QCheckBox* m_pCheckOutputPeakList;
    QPushButton* m_pButtonRunRefinement;
    QPushButton* m_pButtonRunRefinementFromList;
    QPushButton* m_pButtonGeometry;
};

}  // namespace tessera
