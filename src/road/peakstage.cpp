#include "road/stages.h"

#include "dataset/pagerounding.h"
#include "frames/autothreshold.h"
#include "frames/framedefects.h"
#include "frames/peakhunting.h"
#include "frames/suggestpeaksearch.h"
#include "road/takesuggestion.h"

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

/// Lets the hunting leave out what the frames show to be no measurement.
/// @return false when the report asked to stop or memory is short
bool leaveDefectsOut(RoadState& state)
{
    const RoadOptions& options = state.options;
    if (!options.bFindDefects || options.bWindowDefaults || !options.strMaskFile.isEmpty()) {
        return true;
    }
    FrameDefects defects;
    if (!findFrameDefects(state.dataSet, state.report, defects, options.jobs())) {
        return false;
    }
    for (const QString& strLine : tellDefects(defects)) {
        state.report.addMessage(strLine, Severity::Info);
    }
    state.dataSet.m_maskPeakHunting.listPolygon += maskOfDefects(defects).listPolygon;
    state.dataSet.m_listHotPixel += defects.listHotPixel;
    return true;
}

/// Radii that nobody gave follow from the size of the spots; those of the page stay where there are none.
/// @return false when the report asked to stop or memory is short
bool chooseRadii(RoadState& state)
{
    using Hunt = PeakHuntingParameters;
    RoadOptions& options = state.options;
    const GivenValues listGiven = {{&Hunt::m_dfPeakRadius, &options.dfPeakRadius},
                                   {&Hunt::m_dfBackgroundRadius, &options.dfBackgroundRadius},
                                   {&Hunt::m_dfIntegrationRadius, &options.dfIntegrationRadius},
                                   {&Hunt::m_dfIntegrationBackground, &options.dfIntegrationBackground}};
    ParameterRecords records{};
    std::get<PeakHuntingParameters*>(records) = &options.hunting;
    if (!options.bWindowDefaults && anyIsOpen(listGiven)) {
        Suggestion suggestion;
        if (!suggestRadii(state.dataSet, state.report, suggestion, options.dfPeakRadius, options.jobs())) {
            return false;
        }
        takeSuggestion(suggestion, listGiven, records, state.report);
    }
    takeGiven(listGiven, records);
    return true;
}

}  // namespace

StageResult runPeakStage(RoadState& state)
{
    beginStage(state, RoadStage::Peaks);
    const int nJobs = state.options.jobs();
    DataSet& dataSet = state.dataSet;
    CPeakFilters filters;
    PeakHuntingParameters& parameters = state.options.hunting;
    if (!leaveDefectsOut(state) || !chooseRadii(state)) {
        return state.report.failed();
    }
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
    peaks.dfPeakRadius = parameters.m_dfPeakRadius;
    peaks.dfBackgroundRadius = parameters.m_dfBackgroundRadius;
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
