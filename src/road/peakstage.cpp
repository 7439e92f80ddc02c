#include "road/stages.h"

#include "dataset/pagerounding.h"
#include "frames/autothreshold.h"
#include "frames/peakhunting.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace tessera {

namespace {

int countPeaks(const QList<QList<Peak3D>>& listPeakFrame)
{
    int nCount = 0;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        nCount += listPeak.size();
    }
    return nCount;
}

}  // namespace

StageResult runPeakStage(RoadState& state)
{
    beginStage(state, RoadStage::Peaks);
    const int nJobs = state.options.jobs();
    DataSet& dataSet = state.dataSet;
    CPeakFilters filters;
    PeakHuntingParameters& parameters = state.options.hunting;
    takeOver(state.options.dfPeakThreshold, parameters.m_dfPeakThreshold);
    roundToPages(parameters);
    if (!state.options.dfPeakThreshold && !state.options.bWindowDefaults &&
        !estimatePeakThreshold(dataSet, parameters, filters, state.report, parameters.m_dfPeakThreshold,
                               nJobs, &parameters.m_dfFrameScale)) {
        return state.report.failed();
    }
    PeakHuntingOptions options;
    options.bSaveEmpty = false;
    options.nJobs = nJobs;
    const RunOutcome outcome = runPeakHunting(dataSet, parameters, filters, state.report, options);
    if (!outcome.finished()) {
        return state.report.ended(outcome);
    }
#ifdef __GLIBC__
    malloc_trim(0);  // the work images of the threads, which the heap would keep beside what follows
#endif
    PeakResult& peaks = state.results.peaks.emplace();
    peaks.dfThreshold = parameters.m_dfPeakThreshold;
    peaks.dfFrameScale = parameters.m_dfFrameScale;
    peaks.nPeaks = countPeaks(dataSet.m_listPeakFrame);
    if (peaks.nPeaks == 0) {
        return state.report.failed(QStringLiteral("No peaks were found on any frame."));
    }
    return outcome.strReason.isEmpty()
               ? StageResult()
               : state.report.notWritten(fileOfProject(dataSet, ResultFile::Peaks), outcome.strReason);
}

}  // namespace tessera
