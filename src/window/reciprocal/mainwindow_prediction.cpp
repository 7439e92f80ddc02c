// MainWindow: where reflections are expected on the frame in view.
#include "window/mainwindow.h"

#include "frames/peakpositions.h"
#include "reciprocal/predictedpositions.h"
#include "window/frameview/framemarks.h"
#include "window/pages/extractionpage.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QSpinBox>

namespace tessera {

/// Circles where the cell in force puts reflections on the frame in view, or on its indexed peaks; none when
/// the box is not checked.
void MainWindow::showEstimatedPeakPosition()
{
    if (isFrameInUse()) {
        return;
    }
    if (!isRunning()) {
        syncParametersWithControls(true);
    }
    const int nFrame = m_pFrameSpin->value() - 1;
    const int nFrames = m_dataSet.m_listFrameFile.size();
    const ImageList& vecImage = m_dataSet.m_vecFrameImage;
    QList<QPointF> listPosition;
    // Where the frame could not be read, the picture in view is that of another one.
    if (m_pExtractionPage->m_pCheckShowEstimated->isChecked() && !vecImage.empty() && nFrame >= 0 &&
        nFrame < nFrames) {
        guarded([&] {
            if (m_pExtractionPage->m_pRadioOrientationMatrix->isChecked()) {
                listPosition = peakPositions(predictedPositionsOnFrame(
                    m_dataSet, nFrame, m_extraction.m_dfResolutionLimit, m_mapping.m_bApplyStretching,
                    {vecImage.front()->Width(), vecImage.front()->Height()}));
            } else if (m_dataSet.m_vecPeakIndexedOnFrame.size() == nFrames) {
                listPosition = peakPositions(m_dataSet.m_vecPeakIndexedOnFrame[nFrame]);
            }
        });
    }
    m_pMarks->showEstimated(listPosition, m_extraction.m_nWindowRadius);
}

void MainWindow::updateExpectedPeakPositionFromOrientationMatrix()
{
    if (m_pExtractionPage->m_pRadioOrientationMatrix->isChecked()) {
        showEstimatedPeakPosition();
    }
}

}  // namespace tessera
