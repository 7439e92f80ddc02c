// MainWindow: mapping of the peaks, merging, and the rotation axis on the frame.
#include "window/mainwindow.h"

#include "frameview/originalimgscene.h"
#include "geometry/axisline.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "reciprocal/peakgroups.h"
#include "view3d/ed3dwidget.h"
#include "view3d/quietview.h"
#include "window/alivedata.h"
#include "window/frameview/framemarks.h"
#include "window/guards.h"
#include "window/pages/framespage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/view3dpage.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>
#include <QThread>

namespace tessera {

void MainWindow::transformPeaksTo3D()
{
    syncParametersWithControls(true);
    WindowReport report(*this);
    guarded([&] {
        if (!isRunning()) {
            tessera::transformPeaksTo3D(m_dataSet, m_mapping, report);
            return;
        }
        const MappingParameters mapping = m_mapping;
        computeAlive(report, [&](CAliveData& alive) {
            tessera::transformPeaksTo3D(alive.dataSet(), mapping, alive.report());
        });
    });
}

void MainWindow::showPeaksIn3D()
{
    if (isPumping()) {  // the run may be walking the lists
        m_gate.wishes().bShow = true;
        return;
    }
    syncParametersWithControls(true);
    guarded([this] {
        withoutLatticeColors([this] {
            m_rawGroups.keep(m_dataSet, *m_pView3DRaw);
            const QList<Peak3D> listPeak = tessera::showPeaksIn3D(m_dataSet, m_mapping);
            showInRawView(listPeak, m_rawGroups.take(m_dataSet, listPeak));
            m_rawGroups.setHoldsPeaks(true);
        });
    });
}

void MainWindow::showInRawView(const QList<Peak3D>& listPeak)
{
    showInRawView(listPeak, {});
}

void MainWindow::showInRawView(const QList<Peak3D>& listPeak, const QList<PointGroup>& listGroup)
{
    const QuietView quiet(*m_pView3DRaw);
    const double dfSize = m_pView3DPage->m_pSpinPointSize->value();
    if (m_pView3DRaw->pointSizeRatio() !=
        dfSize) {  // else the sizes of the points that go would be made again
        m_pView3DRaw->setPointSizeRatio(dfSize);
    }
    m_pView3DRaw->setPoints(listPeak, listGroup);
}

void MainWindow::mapWaitingPeaks()
{
    if (m_dataSet.m_peakMapping || !canMapPeaks(m_dataSet)) {
        return;
    }
    const bool bRestore = !m_rawGroups.holdsPeaks();  // of a list that could not be shown when it was opened
    transformPeaksTo3D();
    showPeaksIn3D();
    if (bRestore) {
        guarded([this] { restoreRawGroups(); });
    }
}

void MainWindow::recalculate3DPeakPositionsAndUpdateView()
{
    if (isPumping()) {
        m_gate.wishes().bRemap = true;
        return;
    }
    transformPeaksTo3D();
    showPeaksIn3D();
    showCellFit();
    updateExpectedPeakPositionFromOrientationMatrix();
    showFrameGuides();
}

void MainWindow::mapPeaksAnew(const QString& strThen, CRunReport& report)
{
    if (!m_rawGroups.holdsPeaks() || !needsMapping(m_dataSet, m_mapping)) {
        return;
    }
    report.addMessage(
        tr("Shifts, direct beam or geometry have changed since the peaks were mapped. %1").arg(strThen));
    transformPeaksTo3D();
    showPeaksIn3D();
}

void MainWindow::peakReduction3D()
{
    if (refuseDuringRun(tr("Merging"))) {
        return;
    }
    syncParametersWithControls(true);
    const int nGroup = selectedGroupRow(m_pMergingPage->m_pTableTargetPeaks);
    if (nGroup < 0) {
        return;
    }
    CRunScope scope(*this);
    WindowReport report(*this);
    // Positions relative to a beam that has moved since must not meet points of the former one.
    mapPeaksAnew(tr("They are mapped anew before merging."), report);
    const CDisabledWidget disabled(m_pMergingPage->m_pButtonMerge);
    // Before events are let through: the pages and the views stay open to the user meanwhile.
    const PeakMergingParameters merging = m_merging;
    const std::vector<char> vecFlag =
        m_colorsRaw.isShown()  // the groups are then not those of the masks of the peaks
            ? flagsOfPoints(m_pView3DRaw->points(), m_pView3DRaw->groupPoints().value(nGroup))
            : m_rawGroups.flags(m_dataSet, *m_pView3DRaw, nGroup, m_mapping);
    if (vecFlag.empty() && !m_pView3DRaw->groupPoints().value(nGroup).isEmpty()) {
        report.addMessage(tr("The points of this group are no peaks of the data set. Nothing was merged."),
                          Severity::Error);
        return;
    }
    report.addMessage(tr("Merging the peaks of the group \"%1\" (%L2).")
                          .arg(m_pView3DRaw->groupLabels().value(nGroup))
                          .arg(m_pView3DRaw->groupPoints().value(nGroup).size()));
    report.goOn();
    guarded([&] {
        PeakMergingResult result;
        computeAlive(report, [&](CAliveData& alive) {
            result = tessera::peakReduction3D(alive.dataSet(), merging, &vecFlag, alive.report(),
                                              QThread::idealThreadCount());
        });
        if (!result.outcome.finished()) {
            return;
        }
        m_nMergedGroup = m_pView3DRaw->groupLabels().size() > 1 ? nGroup : -1;
        m_pTabWidget->setCurrentIndex(2);
        report.goOn();
        showInMergedView(m_dataSet.m_listPeakMergedShown, result.listStreakIndex);
        report.goOn();
        updatePeakTable(m_dataSet.m_listPeakMerged);
    });
}

void MainWindow::showRotationAxisLine()
{
    if (isFrameInUse()) {
        return;
    }
    if (!isRunning()) {
        syncParametersWithControls(true);
    }
    const int nFrame = m_pFrameSpin->value() - 1;
    const BeamCentres centres = beamCentres(m_dataSet);
    const ImageList& vecImage = m_dataSet.m_vecFrameImage;
    std::optional<QLineF> line;
    if (m_pFramesPage->m_pShowAxisCheck->isChecked() && centres.holds(nFrame) && !vecImage.empty()) {
        line = axisLine(frameCentre(centres, nFrame), m_pFramesPage->m_pRotationAxisSpin->value(),
                        {vecImage.front()->Width(), vecImage.front()->Height()});
    }
    if (line) {
        m_pMarks->showAxis(*line);
    } else {
        m_pMarks->hideAxis();
    }
    m_pFrameScene->update();
}

}  // namespace tessera
