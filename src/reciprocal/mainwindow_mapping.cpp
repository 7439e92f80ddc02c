// MainWindow: mapping of the peaks, merging, and the rotation axis on the frame.
#include "app/mainwindow.h"

#include "app/windowreport.h"
#include "frames/pages/framespage.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/geometry/axisline.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "reciprocal/pages/mergingpage.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGraphicsLineItem>
#include <QPushButton>
#include <QSpinBox>

void MainWindow::transformPeaksTo3D()
{
    syncParametersWithControls(true);
    WindowReport report(*this);
    guarded([&] { ::transformPeaksTo3D(m_dataSet, m_mapping, report); });
}

void MainWindow::showPeaksIn3D()
{
    if (isPumping()) {  // the run may be walking the lists
        m_bShowAsked = true;
        return;
    }
    syncParametersWithControls(true);
    guarded([this] { ::showPeaksIn3D(m_dataSet, m_mapping); });
}

void MainWindow::recalculate3DPeakPositionsAndUpdateView()
{
    if (isPumping()) {
        m_bRemapAsked = true;
        return;
    }
    transformPeaksTo3D();
    showPeaksIn3D();
}

void MainWindow::peakReduction3D()
{
    if (refuseDuringRun(tr("Merging")))
        return;
    syncParametersWithControls(true);
    CRunScope scope(*this);
    WindowReport report(*this);
    m_pMergingPage->m_pButtonMerge->setEnabled(false);
    report.goOn();
    const PeakMergingParameters merging = m_merging;  // the pages stay open to the user meanwhile
    guarded([&] { ::peakReduction3D(m_dataSet, merging, nullptr, report); });
    m_pMergingPage->m_pButtonMerge->setEnabled(true);
}

void MainWindow::showRotationAxisLine()
{
    if (isPumping()) {  // the image in memory is the run's: the frame is shown anew after it, with its axis
        if (m_nFrameAsked == 0)
            m_nFrameAsked = m_pFrameSpin->value();
        return;
    }
    const int nFrame = m_pFrameSpin->value() - 1;
    const BeamCentres centres = beamCentres(m_dataSet);
    const ImageList& vecImage = m_dataSet.m_vecFrameImage;
    QLineF line;
    bool bShow = m_pFramesPage->m_pShowAxisCheck->isChecked() && centres.holds(nFrame) && !vecImage.empty();
    bShow = bShow && axisLine(line, frameCentre(centres, nFrame), m_pFramesPage->m_pRotationAxisSpin->value(),
                              {vecImage.front()->Width(), vecImage.front()->Height()});
    if (bShow)
        m_pAxisLine->setLine(line);
    m_pAxisLine->setVisible(bShow);
    m_pFrameScene->update();
}
