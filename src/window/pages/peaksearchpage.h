// PeakSearchPage: the tool box page "Peak Search" with the hunting parameters and the mask.
#pragma once

#include <QWidget>

class QAction;
class QCheckBox;
class QDoubleSpinBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLayout;
class QPushButton;
class QTableWidget;

namespace tessera {

/// The controls of peak hunting; MainWindow connects them and fills the table. Radii in pixels.
class PeakSearchPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the hunting parameters.
    explicit PeakSearchPage(QWidget* pParent = nullptr);

    QDoubleSpinBox* m_pPeakRadiusSpin;
    QDoubleSpinBox* m_pBackgroundRadiusSpin;
    QCheckBox* m_pAutoRadiiCheck;  ///< both radii come from the spots
    QDoubleSpinBox* m_pThresholdSpin;
    QDoubleSpinBox* m_pSmoothRadiusSpin;  ///< "Integration Radius", hidden; the smoothing radius
    QTableWidget* m_pMaskTable;           ///< corners of each polygon; a row per polygon
    QAction* m_pRemoveAreasAction;        ///< context menu of the table
    QPushButton* m_pLoadMaskButton;
    QPushButton* m_pClearMaskButton;
    QCheckBox* m_pShowMaskCheck;
    QPushButton* m_pFindDefectsButton;
    QCheckBox* m_pShowPeaksCheck;              ///< "Show Found Peaks"
    QLabel* m_pLiveLabel;                      ///< that these peaks follow the boxes, and how many they are
    QDoubleSpinBox* m_pIntegrationRadiusSpin;  ///< disc of the 2D integration
    QDoubleSpinBox* m_pIntegrationBackgroundSpin;  ///< its ring
    QPushButton* m_pSuggestButton;
    QPushButton* m_pRunButton;

private:
    void makeHunt(QWidget* pParent, QGridLayout* pGrid);
    QGroupBox* makeMask(QWidget* pParent);
    void makeFoundPeaks(QWidget* pParent, QGridLayout* pGrid);
    QGroupBox* makeIntegration(QWidget* pParent);
    QLayout* makeButtons(QWidget* pParent);
};

}  // namespace tessera
