// MainWindow: marks on the frame view - peaks, index labels and the pixel readout.
#include "window/mainwindow.h"

#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "window/frames/seriespicturetitle.h"
#include "window/frameview/frameguides.h"
#include "window/frameview/framemarks.h"
#include "window/frameview/pixelreadout.h"
#include "window/integration/integrationcontroller.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"

#include <QApplication>
#include <QSpinBox>

#include <cmath>

namespace tessera {

void MainWindow::showCrossMarks(const QList<QPointF>& listPos, const QColor& color, int nSize)
{
    m_pMarks->showCrosses(listPos, color, nSize);
}

void MainWindow::clearCrossMarks()
{
    m_pMarks->showCrosses({}, {}, 0);
}

void MainWindow::showCircleMarks(const QList<QPointF>& listPos)
{
    m_pMarks->showCircles(listPos, m_extraction.m_nWindowRadius);
}

void MainWindow::clearCircleMarks()
{
    m_pMarks->showCircles({}, 0);
}

void MainWindow::showPeakText()
{
    if (isFrameInUse()) {
        return;
    }
    const QVector<QList<Peak3D>>& vecPeak = m_dataSet.m_vecPeakIndexedOnFrame;
    const int nFrame = m_pFrameSpin->value() - 1;
    QList<Peak3D> listLabelled;
    // Where the frame could not be read, the picture in view is that of another one.
    if (m_pActions->m_pShowPeakLabels->isChecked() && !m_dataSet.m_vecFrameImage.empty() &&
        !m_pSeriesTitle->isBegun() && vecPeak.size() == m_dataSet.m_listFrameFile.size() && nFrame >= 0 &&
        nFrame < vecPeak.size()) {
        listLabelled = vecPeak[nFrame];
    }
    m_pMarks->showLabels(listLabelled, m_dataSet, nFrame);
    m_pFrameScene->update();
}

void MainWindow::clearTextMarks()
{
    m_pMarks->showLabels({}, m_dataSet, 0);
}

void MainWindow::clearFrameMarks()
{
    m_pMarks->clear();
    m_pIntegration->showDiscs(-1);
    m_pPixelReadout->clear();
    m_pGuides->clear();
}

void MainWindow::enableShowPeaks(bool /*bShow*/)
{
    showPeakText();
}

void MainWindow::mouseMoving(QPointF posF)
{
    // During a run the images in memory are those of the run, which may not be in view.
    if (isPumping() || m_pTabWidget->currentWidget() != m_pFrameView) {
        return;
    }
    const QSize size = m_pFrameScene->imageSize();
    const double dfX = std::floor(posF.x());
    const double dfY = std::floor(posF.y());
    if (!(dfX >= 0 && dfY >= 0 && dfX < size.width() && dfY < size.height())) {
        return;
    }
    m_pPixelReadout->show(m_dataSet.m_vecFrameImage, posF, QApplication::mouseButtons() == Qt::RightButton);
}

}  // namespace tessera
