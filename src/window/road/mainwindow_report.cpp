// MainWindow: the report of the last "Solve", or of the present results of the window.
#include "window/mainwindow.h"

#include "dataset/serieschoice.h"
#include "road/cellresult.h"
#include "road/report.h"
#include "window/alivedata.h"
#include "window/crystal/geometrycontrol.h"
#include "window/integration/integrationcontroller.h"
#include "window/road/roadwork.h"
#include "window/windowreport.h"

#include <QFileDialog>
#include <QFileInfo>

#include <algorithm>

namespace tessera {

namespace {

/// Whether a road was walked on the series that is open.
bool isOfSeries(const CRoadWork* pWork, const SeriesData& series)
{
    return pWork && pWork->state().dataSet.m_strProjectDir == series.m_strProjectDir &&
           pWork->state().dataSet.m_strProjectName == series.m_strProjectName &&
           pWork->state().dataSet.m_listFrameFile == series.m_listFrameFile;
}

/// Fills in the results of "Solve" that a series processed by hand has, too.
/// @param pGeometry, pIntegrated  null: there is none
void fillResults(RoadState& state, const GeometryRefinement* pGeometry, const IntegrationResult* pIntegrated)
{
    const SeriesData& series = state.dataSet;
    const QList<double>& listTilt = series.m_listOverallTilt;
    const auto range = std::minmax_element(listTilt.begin(), listTilt.end());
    state.results.open = OpenResult{series.m_strProjectName, series.m_listFrameFile.size(),
                                    listTilt.isEmpty() ? 0 : *range.second - *range.first,
                                    choiceText(series.m_reading.choice)};
    if (cellInForce(state.dataSet)) {
        state.results.cell = cellResultOf(state.dataSet);
    }
    const int nMerged = series.m_listPeakMerged.size();
    if (!series.m_listReflectionIndexed.isEmpty() && nMerged > 0 && holdsIndicesOfCell(state.dataSet)) {
        state.results.index.emplace().nIndexed = series.m_listReflectionIndexed.size();
        state.results.index->dfShare = double(series.m_listReflectionIndexed.size()) / nMerged;
    }
    if (pGeometry) {
        state.results.geometry = *pGeometry;
    }
    if (pIntegrated) {
        state.results.integrate.emplace().result = *pIntegrated;
    }
}

}  // namespace

void MainWindow::saveReport()
{
    if (refuseDuringRun(tr("Writing a report"))) {
        return;
    }
    syncParametersWithControls(true);
    WindowReport report(*this);
    QString strFile = QFileDialog::getSaveFileName(this, tr("Report"),
                                                   fileOfProject(m_dataSet, QStringLiteral("_report.html")),
                                                   tr("Web pages (*.html);;All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    if (QFileInfo(strFile).suffix().isEmpty()) {
        strFile += QStringLiteral(".html");
    }
    if (m_dataSet.allFiles().contains(QFileInfo(strFile).absoluteFilePath())) {
        report.addMessage(tr("%1 is a frame of the series: no report is written.").arg(strFile),
                          Severity::Error);
        return;
    }
    RoadOptions options;
    options.hunting = m_hunting;
    options.merging = m_merging;
    options.cell = m_cellHunting;
    options.indexing = m_indexing;
    const MappingParameters mapping = m_mapping;
    const GeometryRefinement* pGeometry = m_pGeometry->refinement();
    QString strReason;
    CRunScope scope(*this);
    guarded([&] {
        computeAlive(report, [&](CAliveData& alive) {  // it reads frames
            if (isOfSeries(m_pRoadWork.get(), alive.dataSet())) {
                strReason = writeReport(m_pRoadWork->state(), strFile);
                return;
            }
            CRunReport silent;
            RoadState state(RoadOptions(), alive.dataSet(), silent);
            state.mapping = mapping;
            state.options = options;
            fillResults(state, pGeometry, m_pIntegration->result());
            strReason = writeReport(state, strFile);
        });
    });
    if (strReason.isEmpty()) {
        report.addMessage(tr("The report is written: %1").arg(strFile));
    } else {
        report.addMessage(strReason, Severity::Error);
    }
}

}  // namespace tessera
