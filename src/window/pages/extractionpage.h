// ExtractionPage: the controls of the intensity extraction, in a small window beside the main window.
#pragma once

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace tessera {

/// The window of the integration, where reflections are expected on the frame, and the button of the run.
///
/// A tool window: it stays above its parent and goes with it. It holds controls alone; MainWindow connects
/// them.
class ExtractionPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the parameters.
    explicit ExtractionPage(QWidget* pParent = nullptr);

    /// Shows the window beside its parent, where the screen has room for it; a second time where it was left.
    void showBeside();

    QSpinBox* m_pSpinWindowRadius;            ///< pixels; of the circles on the frame too
    QSpinBox* m_pSpinBackgroundSize;          ///< pixels
    QRadioButton* m_pRadioOrientationMatrix;  ///< checked at start
    QRadioButton* m_pRadioIndexedReflections;
    QDoubleSpinBox* m_pSpinResolutionLimit;  ///< d*, Å⁻¹
    QCheckBox* m_pCheckShowEstimated;
    QPushButton* m_pButtonRun;

protected:
    /// Hands status tips on to the main window, which has the status bar.
    bool event(QEvent* pEvent) override;

private:
    bool m_bPlaced = false;
};

}  // namespace tessera
