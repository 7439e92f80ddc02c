// MainWindow: runs that try a model or an idea on the data set and only write to the log.
#include "window/mainwindow.h"

#include "crystal/testindexing.h"
#include "reciprocal/cubicmodel.h"
#include "reciprocal/mapping.h"
#include "reciprocal/planeindexing.h"
#include "reciprocal/rotationaxistest.h"
#include "reciprocal/stretchingtest.h"

#include <QSpinBox>

namespace tessera {

namespace {

// Whether the raw view has a list of peaks for each frame; if not, the log gets a red line.
bool holdsShownPeaks(const DataSet& dataSet, CRunReport& report)
{
    const int nFrames = dataSet.m_listFrameFile.size();
    if (nFrames > 0 && dataSet.m_listPeakFrameShown.size() == nFrames) {
        return true;
    }
    report.addMessage(
        MainWindow::tr("There are no peaks of these frames in 3D. Find peaks and shifts first."),
        Severity::Error);
    return false;
}

}  // namespace

void MainWindow::testRotationAxis()
{
    runWithButton(m_bRunning, nullptr, [this](CRunReport& report) {
        if (!holdsShownPeaks(m_dataSet, report)) {
            return;
        }
        const BeamCentres centres = beamCentres(m_dataSet);
        RotationAxisTest test;
        inFold(tr("Rotation axis test"), [&] {
            test = tessera::testRotationAxis(peaksAroundBeam(m_dataSet.m_listPeakFrameShown, centres),
                                             centres, m_merging.m_dfMax2DDistance, report);
        });
        if (test.bFinished && test.nChains > 0) {
            offerAxis(test.dfMaxAngleWeighted);
        }
    });
}

void MainWindow::testFindCubicCell()
{
    withIndexedReflections([this](CRunReport& report) {
        inFold(tr("Cubic cell"),
               [&] { tessera::testFindCubicCell(m_dataSet.m_listReflectionIndexed, m_dataSet, report); });
    });
}

void MainWindow::refineCubicUnitCell()
{
    withIndexedReflections([this](CRunReport& report) {
        inFold(tr("Cubic cell by the curves"), [&] {
            tessera::refineCubicUnitCell(m_dataSet.m_listReflectionIndexed, m_dataSet, report,
                                         tiltOptions(report));
        });
    });
}

/// On the indexed peaks of the frame in view.
void MainWindow::testStreching()
{
    runWithButton(m_bRunning, nullptr, [this](CRunReport& report) {
        const QList<Peak3D> listPeak = m_dataSet.m_vecPeakIndexedOnFrame.value(m_pFrameSpin->value() - 1);
        if (m_dataSet.m_strProjectDir.isEmpty()) {
            report.addMessage(tr("No data set is open, so no result file is written."), Severity::Error);
        } else if (listPeak.isEmpty()) {
            report.addMessage(
                QStringLiteral("No indexed peaks are available. Do merging and indexing first."),
                Severity::Error);
        } else {
            inFold(tr("Stretching test"), [&] { tessera::testStreching(listPeak, m_dataSet, report); });
        }
    });
}

/// On the peaks of the frame in view that are shown.
void MainWindow::test2DIndexing()
{
    runWithButton(m_bRunning, nullptr, [this](CRunReport& report) {
        if (!holdsShownPeaks(m_dataSet, report)) {
            return;
        }
        const QList<QList<Peak3D>> listPeakFrame = peaksAroundBeam(m_dataSet.m_listPeakFrameShown,
                                                                   beamCentres(m_dataSet));
        inFold(tr("Vectors in the plane"), [&] {
            tessera::test2DIndexing(listPeakFrame.value(m_pFrameSpin->value() - 1), m_dataSet.m_dfPixelSize,
                                    m_mapping.m_dfResolutionMax, m_extraction.m_nBackgroundSize, report);
        });
    });
}

void MainWindow::testIndexing()
{
    runWithButton(m_bRunning, nullptr, [this](CRunReport& report) {
        QList<Peak3D> listPeak;
        if (tessera::testIndexing(cellInForce(m_dataSet), listPeak, report)) {
            showReflectionList(listPeak);
        }
    });
}

}  // namespace tessera
