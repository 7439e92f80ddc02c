#include "road/axisfinding.h"

#include "dataset/pagerounding.h"
#include "reciprocal/mapping.h"
#include "reciprocal/rotationaxissearch.h"
#include "road/framesinput.h"

namespace tessera {

StageResult findAxisWhereAsked(RoadState& state)
{
    DataSet& dataSet = state.dataSet;
    if (!state.options.bFindAxis && dataSet.m_bRotationAxisKnown) {
        return {};
    }
    if (!canMapPeaks(dataSet)) {
        return {};  // the mapping will report the reason
    }
    const std::optional<AxisSearch> search = findRotationAxis(dataSet, state.mapping, state.report,
                                                              state.options.jobs());
    if (!search) {
        return state.report.failed(QStringLiteral("The search for the rotation axis did not finish."));
    }
    if (search->found) {
        dataSet.m_dfRotationAxis = search->found->best.dfAzimuth;
        dataSet.m_bRotationAxisKnown = true;
        roundToPages(dataSet);
        state.results.axis = search->found;
        return writeMadeProject(state) ? StageResult() : state.report.failed();
    }
    if (!dataSet.m_bRotationAxisKnown) {
        return state.report.failed(
            QStringLiteral(
                "There is no rotation axis: none was given, and the peaks do not determine it: %1.")
                .arg(search->strReason));
    }
    state.report.addMessage(
        QStringLiteral("Warning: the rotation axis stays at %1°, as the peaks do not determine it: %2.")
            .arg(dataSet.m_dfRotationAxis, 0, 'f', 1)
            .arg(search->strReason),
        Severity::Warning);
    return {};
}

}  // namespace tessera
