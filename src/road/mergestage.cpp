#include "road/stages.h"

#include "dataset/pagerounding.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "reciprocal/peakgroups.h"
#include "reciprocal/suggestlimits.h"
#include "reciprocal/suggestmerging.h"
#include "road/axisfinding.h"
#include "road/takesuggestion.h"

#include <limits>

namespace tessera {

namespace {

/// Limits that were not given are unlimited; they are beyond the boxes of the pages and so not rounded.
void chooseLimits(const RoadOptions& options, MappingParameters& mapping)
{
    const double dfNoLimit = std::numeric_limits<double>::infinity();
    if (!options.bWindowDefaults) {
        mapping.m_dfResolutionMin = 0;
        mapping.m_dfResolutionMax = dfNoLimit;
        mapping.m_dfIntensityMin = -dfNoLimit;
        mapping.m_dfIntensityMax = dfNoLimit;
    }
    takeLimit(options.dfResolutionMin, mapping, &MappingParameters::m_dfResolutionMin);
    takeLimit(options.dfResolutionMax, mapping, &MappingParameters::m_dfResolutionMax);
    takeLimit(options.dfIntensityMin, mapping, &MappingParameters::m_dfIntensityMin);
    takeLimit(options.dfIntensityMax, mapping, &MappingParameters::m_dfIntensityMax);
}

/// Parameters that were not given follow from the peaks: distances below half the spacing of peaks, and a
/// lower limit of resolution beyond false peaks of the direct beam.
void chooseByPeaks(RoadState& state)
{
    using Merge = PeakMergingParameters;
    RoadOptions& options = state.options;
    const GivenValues listGiven = {{&Merge::m_dfMin3DDistance, &options.dfMin3DDistance},
                                   {&Merge::m_dfMax2DDistance, &options.dfMax2DDistance},
                                   {&MappingParameters::m_dfResolutionMin, &options.dfResolutionMin}};
    ParameterRecords records{};
    std::get<PeakMergingParameters*>(records) = &options.merging;
    std::get<MappingParameters*>(records) = &state.mapping;
    if (!options.bWindowDefaults && anyIsOpen(listGiven)) {
        const double dfClosest = closestDistanceOfPeaks(state.dataSet.m_listPeakFrame);
        takeSuggestion(suggestMerging(dfClosest) + suggestLimits(state.dataSet, dfClosest), listGiven,
                       records, state.report);
    }
    takeGiven(listGiven.mid(0, 2), records);  // the limit is set already, rounded to its box
    roundToPages(options.merging);
}

}  // namespace

StageResult runMergeStage(RoadState& state)
{
    beginStage(state, RoadStage::Merge);
    DataSet& dataSet = state.dataSet;
    chooseLimits(state.options, state.mapping);
    const StageResult axis = findAxisWhereAsked(state);
    if (!axis.finished()) {
        return axis;
    }
    chooseByPeaks(state);
    if (!transformPeaksTo3D(dataSet, state.mapping, state.report)) {
        return state.report.failed();
    }
    showPeaksIn3D(dataSet, state.mapping);
    const int nGroup = state.options.nGroup;
    std::vector<char> vecFlag;
    if (nGroup >= 0) {
        vecFlag = flagsOfPeakGroup(dataSet, nGroup);
    }
    const PeakMergingResult result = peakReduction3D(
        dataSet, state.options.merging, nGroup >= 0 ? &vecFlag : nullptr, state.report, state.options.jobs());
    if (!result.outcome.finished()) {
        return state.report.ended(result.outcome);
    }
    MergeResult& merge = state.results.merge.emplace();
    merge.nPeaks = result.nPeaks;
    merge.nOutsideLimits = result.nOutsideLimits;
    merge.nChains = dataSet.m_listPeakChain.size();
    merge.nReflections = dataSet.m_listPeakMerged.size();
    if (merge.nReflections == 0) {
        return state.report.failed(QStringLiteral("No reflections came out of the merging."));
    }
    return {};
}

}  // namespace tessera
