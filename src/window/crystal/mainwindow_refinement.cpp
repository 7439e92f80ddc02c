// MainWindow: refinements of the cell and of the direct beam from the indexed peaks.
#include "window/mainwindow.h"

#include "crystal/peakpairs.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/directbeamrefinement.h"
#include "reciprocal/expectedframes.h"
#include "reciprocal/mapping.h"
#include "reciprocal/tiltrefinement.h"
#include "records/timestamp.h"
#include "road/pairrefinement.h"
#include "window/alivedata.h"
#include "window/pages/refinementpage.h"
#include "window/windowreport.h"

#include <QPushButton>

#include <algorithm>

namespace tessera {

void MainWindow::runUnitCellRefinement()
{
    runWithButton(m_bRunning, nullptr, [&](CRunReport& report) {
        if (!m_dataSet.m_vecPeakIndexedOnFrame.isEmpty() && !holdsIndicesOfCell(report)) {
            return;
        }
        if (m_refinement.m_bRefine2D) {
            clearFrameMarks();
        }
        m_pRefinementPage->m_pButtonRunRefinement->setEnabled(false);
        const RefinementParameters refinement = m_refinement;
        guarded([&] {
            computeAlive(report, [&](CAliveData& alive) {
                refineCellFromPairs(alive.dataSet(), refinement, positionOptions(report, alive),
                                    alive.report());
            });
        });
        m_pRefinementPage->m_pButtonRunRefinement->setEnabled(true);
    });
}

void MainWindow::refineDirectBeamPosition()
{
    if (stopsRun() || !holdsPeaks(m_dataSet.m_vecPeakIndexedOnFrame)) {
        return;
    }
    runWithButton(m_bRunning, nullptr, [this](CRunReport& report) {
        const PeakPairLimits limits{m_refinement.m_dfRefineDStarLow, m_refinement.m_dfRefineDStarHigh,
                                    m_dataSet.m_dfPixelSize};
        // Copies, because waiting events may change the data set during the run.
        const QVector<QList<Peak3D>> vecPeak = withoutDistortionBeside(m_dataSet.m_vecPeakIndexedOnFrame,
                                                                       m_dataSet);
        const CSpaceGroup spaceGroup = m_dataSet.m_spaceGroup;
        QVector<DifferenceMap> vecMap;
        inFold(tr("Maps of the differences"), [&] {
            computeAlive(report, [&](CAliveData& alive) {
                vecMap = tessera::refineDirectBeamPosition(
                    vecPeak, limits, spaceGroup, alive.dataSet().m_dfStretchAmplitude,
                    alive.dataSet().m_dfStretchAzimuth, alive.report());
            });
        });
        const bool bGoing = report.goOn();
        if (bGoing && std::all_of(vecMap.begin(), vecMap.end(),
                                  [](const DifferenceMap& map) { return map.nPairs == 0; })) {
            report.addMessage(tr("No two peaks of a frame lie within the d* range of the page \"Unit Cell "
                                 "Refinement\"."),
                              Severity::Error);
        }
        if (!bGoing) {
            report.addMessage(
                tr("%1>Refinement of the direct beam position did not finish.").arg(currentTimeStamp()),
                Severity::Error);
        }
    });
}

void MainWindow::withIndexedReflections(const std::function<void(CRunReport&)>& fnRun)
{
    runWithButton(m_bRunning, nullptr, [&](CRunReport& report) {
        const bool bCell = cellInForce(m_dataSet).has_value();  // without one the run says so
        if (bCell && m_dataSet.m_listReflectionIndexed.isEmpty()) {
            report.addMessage(
                QStringLiteral("No indexed peaks are available. Do merging and indexing first."),
                Severity::Error);
        } else if (!bCell || holdsIndicesOfCell(report)) {
            fnRun(report);
        }
    });
}

bool MainWindow::holdsIndicesOfCell(CRunReport& report)
{
    if (tessera::holdsIndicesOfCell(m_dataSet)) {
        return true;
    }
    report.addMessage(tr("The unit cell is another one than the reflections were indexed with. Index them "
                         "again first."),
                      Severity::Error);
    return false;
}

TiltRefinementOptions MainWindow::tiltOptions(CRunReport& report) const
{
    TiltRefinementOptions options;
    options.dfWavelength = wavelengthOfTilts(m_dataSet, report);
    options.listExcluded = m_refinement.m_listExcluded;
    options.strLatticeHost = m_strLatticeHost;
    return options;
}

void MainWindow::refineBasisVectors()
{
    withIndexedReflections([this](CRunReport& report) {
        const TiltRefinementOptions options = tiltOptions(report);
        std::optional<TiltRefinement> result;
        inFold(tr("Refined basis vectors"), [&] {
            computeAlive(report, [&](CAliveData& alive) {
                result = tessera::refineBasisVectors(alive.dataSet().m_listReflectionIndexed, alive.dataSet(),
                                                     alive.report(), options);
            });
        });
        if (result) {
            offerCell(*result);
        }
    });
}

void MainWindow::refineUnitCellUsingFrameNo()
{
    withIndexedReflections([this](CRunReport& report) {
        const TiltRefinementOptions options = tiltOptions(report);
        std::optional<TiltRefinement> result;
        inFold(tr("Refined by the curves"), [&] {
            computeAlive(report, [&](CAliveData& alive) {
                const DataSet& dataSet = alive.dataSet();
                result = tessera::refineUnitCellUsingFrameNo(dataSet.m_listReflectionIndexed, dataSet,
                                                             alive.report(), options);
                if (result) {
                    tessera::calExpectedFrameNo(result->basisBefore.toList(), result->basis.toList(),
                                                result->listPeak, dataSet, alive.report(), options,
                                                result->bExchanged);
                }
            });
        });
        if (result) {
            offerCell(*result);
        }
    });
}

}  // namespace tessera
