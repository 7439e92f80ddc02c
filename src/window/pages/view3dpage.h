// View3DPage: the tool box page "3D View Control".
#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QSlider;
class QSpinBox;
class QTableWidget;

namespace tessera {

/// Look, lattice, point groups and direction of the 3D view in the current tab.
///
/// The page holds controls alone; MainWindow connects them, fills them from the view, and enables the
/// page while a 3D view is current.
class View3DPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls; no view is shown.
    explicit View3DPage(QWidget* pParent = nullptr);

    QDoubleSpinBox* m_pSpinPointSize;
    QSpinBox* m_pSpinPointTransparency;       ///< per cent
    QGroupBox* m_pGroupCanvasGrid;            ///< checkable, checked at start
    QSpinBox* m_pSpinCanvasGridTransparency;  ///< per cent
    QCheckBox* m_pCheckLatticePoints;
    QCheckBox* m_pCheckLatticeLines;
    QSpinBox* m_pSpinLatticeH;  ///< lattice drawn from minus to plus this index, as K and L
    QSpinBox* m_pSpinLatticeK;
    QSpinBox* m_pSpinLatticeL;

    QTableWidget* m_pTablePeakGroups;  ///< Label, Count, colour, shown; actions as context menu
    QLineEdit* m_pEditSelectedCount;   ///< read-only
    QPushButton* m_pButtonAddGroup;    ///< disabled at start: nothing is selected

    QPushButton* m_pButtonAlongRA;  ///< "a*"
    QPushButton* m_pButtonAlongRB;
    QPushButton* m_pButtonAlongRC;
    QPushButton* m_pButtonAlongA;  ///< "a"
    QPushButton* m_pButtonAlongB;
    QPushButton* m_pButtonAlongC;

    QLineEdit* m_pEditZone;           ///< [u v w] to look along
    QPushButton* m_pButtonAlongZone;  ///< "[uvw]"
    QPushButton* m_pButtonAlongAxis;  ///< the rotation axis
    QPushButton* m_pButtonNearest;    ///< "Nearest"
    QPushButton* m_pButtonFit;        ///< "Fit"
    QPushButton* m_pButtonReset;      ///< "Reset"
    QPushButton* m_pButtonMeasure;    ///< "Measure"; checkable

    QPushButton* m_pButtonRotateLeft;
    QPushButton* m_pButtonRotateRight;
    QPushButton* m_pButtonRotateUp;
    QPushButton* m_pButtonRotateDown;
    QPushButton* m_pButtonRotateClockwise;
    QPushButton* m_pButtonRotateCounterClockwise;
    QComboBox* m_pComboRotationStep;  ///< degrees; editable
    QPushButton* m_pButtonLoadHKL;

    QGroupBox* m_pGroupSlab;           ///< checkable, not checked at start
    QComboBox* m_pComboLayer;          ///< "h", "k", "l", which it starts with, or a typed [u v w]
    QDoubleSpinBox* m_pSpinLayer;      ///< n
    QDoubleSpinBox* m_pSpinThickness;  ///< on either side of n, in units of the index
    QSlider* m_pSliderLayer;           ///< whole n of the points

private:
    QGroupBox* makeAppearance();
    QGroupBox* makeCanvasGrid();
    QGroupBox* makeLattice();
    QGroupBox* makePeaks();
    QGroupBox* makeViewAlong();
    QGroupBox* makeRotation();
    QGroupBox* makeSlab();
};

}  // namespace tessera
