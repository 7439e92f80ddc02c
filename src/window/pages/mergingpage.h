// MergingPage: the tool box page "3D Peak Merging" with the stretching, the limits and the merge.
#pragma once

#include <QWidget>

class QDoubleSpinBox;
class QGroupBox;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace tessera {

class LensDistortionBox;

/// The lens distortion that the mapping takes out, the limits of what the raw 3D view shows, and the
/// controls of peak merging.
///
/// The page holds controls alone; MainWindow connects them and fills the table.
class MergingPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the parameters; the table is empty.
    explicit MergingPage(QWidget* pParent = nullptr);

    QGroupBox* m_pGroupApplyStretching;       ///< checkable, unchecked at start
    QDoubleSpinBox* m_pSpinStretchAmplitude;  ///< per cent; no keyboard tracking
    QDoubleSpinBox* m_pSpinStretchAzimuth;    ///< degrees; no keyboard tracking
    LensDistortionBox* m_pLensDistortion;     ///< folded up at the start
    QDoubleSpinBox* m_pSpinResolutionMin;     ///< Å⁻¹
    QDoubleSpinBox* m_pSpinResolutionMax;     ///< Å⁻¹
    QDoubleSpinBox* m_pSpinIntensityMin;
    QDoubleSpinBox* m_pSpinIntensityMax;

    QTableWidget* m_pTableTargetPeaks;  ///< Label, Count, colour; a row per point group of the raw 3D view
    QPushButton* m_pButtonLoadPeaks;
    QPushButton* m_pButtonExportPeaks;
    QDoubleSpinBox* m_pSpinMin3DDistance;  ///< pixels, as the next three
    QDoubleSpinBox* m_pSpinMax2DDistance;
    QDoubleSpinBox* m_pSpinMin2DLength;  ///< hidden with its label: the value stays 0
    QDoubleSpinBox* m_pSpinMax3DLength;
    QRadioButton* m_pRadioInFrames2DIntegration;  ///< "Intensity In Frames"; checked at start
    QRadioButton* m_pRadioInFramesPoint;
    QRadioButton* m_pRadioThroughFramesMaximum;  ///< "Intensity Through Frames"; checked at start
    QRadioButton* m_pRadioThroughFrames3DIntegration;
    QPushButton* m_pButtonSuggest;
    QPushButton* m_pButtonMerge;

private:
    void makeStretching();
    QGroupBox* makeMerging();
    QGroupBox* makeTarget(QWidget* pParent);
    QWidget* makeParameters(QWidget* pParent);
    void explainChoices();
};

}  // namespace tessera
