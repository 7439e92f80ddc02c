// FramesPage: the tool box page "Frames" with the file table, the geometry and the auto play.
#pragma once

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QGroupBox;
class QLayout;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace tessera {

class ContrastHistogram;

/// The series as a table of files, the geometry of the experiment, the contrast limits and the auto play.
///
/// The page holds controls alone; MainWindow connects them and fills the table.
class FramesPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the data set; the table is empty.
    explicit FramesPage(QWidget* pParent = nullptr);

    static constexpr int nContrastLow = -1000000, nContrastHigh = 1000000;  ///< of the contrast boxes

    /// Number of decimals that the box of the axis shows. No valueChanged() is sent.
    void setAxisDecimals(int nDecimals);

    QTableWidget* m_pFileTable;           ///< Name, Stage, Beam, Overall; a row per frame
    QDoubleSpinBox* m_pWavelengthSpin;    ///< Å
    QDoubleSpinBox* m_pPixelSizeSpin;     ///< Å⁻¹ per pixel
    QDoubleSpinBox* m_pRotationAxisSpin;  ///< degrees
    QCheckBox* m_pShowAxisCheck;          ///< "Show On EDP"
    QDoubleSpinBox* m_pContrastMinSpin;   ///< pixel values shown as black
    QDoubleSpinBox* m_pContrastMaxSpin;   ///< and as white
    ContrastHistogram* m_pContrastHistogram;
    QPushButton* m_pContrastAutoButton;  ///< limits by the percentiles of the image in view
    QPushButton* m_pContrastFullButton;  ///< limits by its whole range
    QCheckBox* m_pContrastLogCheck;
    QDoubleSpinBox* m_pTiltRelaxationSpin;  ///< degrees over the whole series
    QSpinBox* m_pPlayDelaySpin;             ///< ms
    QPushButton* m_pPlayForwardButton;
    QPushButton* m_pPlayBackwardButton;
    QPushButton* m_pPlayStopButton;
    QCheckBox* m_pPlayLoopCheck;  ///< from the last frame on to the first

private:
    QGroupBox* makeFiles();
    QLayout* makeGeometry();
    QGroupBox* makeContrast();
    QGroupBox* makePlay();
};

}  // namespace tessera
