// MainWindow: remeasurement on the frames - the direct beam, positions and intensities of known peaks.
#include "window/mainwindow.h"

#include "frames/directbeamfit.h"
#include "frames/intensityextraction.h"
#include "frames/positionrefinement.h"
#include "window/alivedata.h"
#include "window/frames/curveplot.h"
#include "window/pages/extractionpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/tabwidget.h"
#include "window/waitalive.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QThread>

#include <algorithm>

namespace tessera {

namespace {

const int g_nCrossSize = 5;
const int g_nLookTime = 1000;  // ms that the crosses of a frame can be looked at

}  // namespace

bool MainWindow::holdsPeaks(const QVector<QList<Peak3D>>& vecPeak)
{
    if (std::any_of(vecPeak.begin(), vecPeak.end(),
                    [](const QList<Peak3D>& list) { return !list.isEmpty(); })) {
        return true;
    }
    WindowReport(*this).addMessage(
        QStringLiteral("No indexed peaks are available. Do merging and indexing first."), Severity::Error);
    return false;
}

bool MainWindow::canMeasure(const QVector<QList<Peak3D>>& vecPeak)
{
    // The run reports a wrong number of frames itself. An empty list of peaks is refused here, because the
    // run would replace existing results by nothing.
    return vecPeak.size() != m_dataSet.m_listFrameFile.size() || holdsPeaks(vecPeak);
}

bool MainWindow::fitDirectBeam()
{
    if (m_dataSet.m_listFrameFile.isEmpty()) {
        WindowReport(*this).addMessage(tr("There are no frames."), Severity::Error);
        return false;
    }
    return runOnFrames(m_pExtractionPage->m_pButtonRun, [this](CRunReport& report) {
        std::vector<DirectBeamOnFrame> listBeam;
        RunOutcome outcome;
        inFold(tr("Direct beam on each frame"), [&] {
            computeAlive(report, [&](CAliveData& alive) {
                outcome = tessera::fitDirectBeam(alive.dataSet(), alive.report(),
                                                 [&](const DirectBeamOnFrame& beam) {
                                                     listBeam.push_back(beam);
                                                     alive.show([&] {
                                                         showCircleMarks({beam.ptFitted});
                                                         refreshImageView();
                                                     });
                                                 });
            });
        });
        if (outcome.finished()) {
            offerBeam(listBeam);
        }
    });
}

PositionRefinementOptions MainWindow::positionOptions(CRunReport& report, CAliveData& alive)
{
    PositionRefinementOptions options;
    options.nJobs = QThread::idealThreadCount();
    options.bConstantBackground = m_bConstantBackground;
    const auto look = [this, &report, &alive](Qt::GlobalColor color) {
        return [this, &report, &alive, color](int, const QList<QPointF>& listPosition) {
            alive.show([&] {
                if (!m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
                    return;
                }
                showCrossMarks(listPosition, color, g_nCrossSize);
                refreshImageView();
                waitAlive(report, [] { return g_nLookTime; });
            });
        };
    };
    options.fnBeforeFit = look(Qt::green);
    options.fnAfterFit = look(Qt::yellow);
    return options;
}

QVector<QList<Peak3D>> MainWindow::refinePeakPosition(const QVector<QList<Peak3D>>& peaksSorted)
{
    QVector<QList<Peak3D>> vecRefined;
    runOnFrames(nullptr, [&](CRunReport& report) {
        computeAlive(report, [&](CAliveData& alive) {
            vecRefined = tessera::refinePeakPosition(alive.dataSet(), peaksSorted, alive.report(),
                                                     positionOptions(report, alive))
                             .vecPeak;
        });
    });
    return vecRefined;
}

QVector<std::vector<std::vector<double>>> MainWindow::refinePeakPositionOnFrame(
    QVector<QList<Peak3D>>& peaksSorted)
{
    QVector<std::vector<std::vector<double>>> vecFit;
    runOnFrames(nullptr, [&](CRunReport& report) {
        QVector<QList<Peak3D>> vecPeak = peaksSorted;  // which may be the data set's
        computeAlive(report, [&](CAliveData& alive) {
            vecFit = tessera::refinePeakPositionOnFrame(alive.dataSet(), vecPeak, alive.report(),
                                                        positionOptions(report, alive));
        });
        peaksSorted = vecPeak;
    });
    return vecFit;
}

void MainWindow::runIntensityExtraction()
{
    if (!stopsRun() && canMeasure(m_dataSet.m_vecPeakIndexedOnFrame)) {
        refinePeakPositionOnFrame(m_dataSet.m_vecPeakIndexedOnFrame);
    }
}

bool MainWindow::extractIntensity(QVector<QList<Peak3D>>& peaksSorted)
{
    if (stopsRun() || !canMeasure(peaksSorted)) {
        return false;
    }
    bool bResult = false;
    runOnFrames(m_pExtractionPage->m_pButtonRun, [&](CRunReport& report) {
        RunOutcome outcome;
        QVector<QList<Peak3D>> vecPeak = peaksSorted;  // which may be the data set's
        const PeakHuntingParameters hunting = m_hunting;
        const ExtractionParameters extraction = m_extraction;
        computeAlive(report, [&](CAliveData& alive) {
            outcome = tessera::extractIntensity(alive.dataSet(), vecPeak, hunting, extraction, m_peakFilters,
                                                alive.report(), [&](int, const QList<QPointF>& listPosition) {
                                                    alive.show([&] {
                                                        showCircleMarks(listPosition);
                                                        refreshImageView();
                                                    });
                                                });
        });
        peaksSorted = vecPeak;
        bResult = outcome.end != RunEnd::Refused;
        if (outcome.end != RunEnd::Finished) {
            return;
        }
        m_pCurvePlot->clearCurve();  // of a reflection that has left
        showInMergedView(m_dataSet.m_listPeakMergedShown, {});
        updatePeakTable(m_dataSet.m_listPeakMerged);
        m_pTabWidget->setCurrentIndex(2);
    });
    return bResult;
}

}  // namespace tessera
