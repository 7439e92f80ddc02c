#include "road/stages.h"

#include "dataset/shiftfile.h"
#include "frames/autoregion.h"
#include "frames/shiftevaluation.h"
#include "road/judgement.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Replaces the measured direct beam by a given one, also in the shift file.
StageResult takeGivenCentre(RoadState& state, const QString& strFile)
{
    const RoadOptions& options = state.options;
    DataSet& dataSet = state.dataSet;
    if (!options.dfCenterX && !options.dfCenterY) {
        return {};
    }
    takeOver(options.dfCenterX, dataSet.m_dfCenterX);
    takeOver(options.dfCenterY, dataSet.m_dfCenterY);
    QString strReason;
    if (!writeShiftFile(strFile, {dataSet.m_dfCenterX, dataSet.m_dfCenterY, dataSet.m_listShift},
                        &strReason)) {
        return state.report.failed(strReason);
    }
    state.report.addMessage(
        QStringLiteral("Shift correction data with the given center saved to %1.").arg(strFile));
    return {};
}

double greatestCoordinate(const QList<QPointF>& listShift)
{
    double dfMaximum = 0;
    for (const QPointF& ptShift : listShift) {
        dfMaximum = std::max({dfMaximum, std::abs(ptShift.x()), std::abs(ptShift.y())});
    }
    return dfMaximum;
}

}  // namespace

StageResult runShiftStage(RoadState& state)
{
    beginStage(state, RoadStage::Shifts);
    DataSet& dataSet = state.dataSet;
    const std::optional<QRect> rcRegion = state.options.rcRegion
                                              ? state.options.rcRegion
                                              : findBeamRegion(dataSet, state.report, state.options.jobs());
    if (!rcRegion) {
        return state.report.failed();
    }
    const QString strFile = fileOfProject(dataSet, ResultFile::Shifts);
    ShiftEvaluationOptions options;
    options.bKeepPartial = false;
    options.nJobs = state.options.jobs();
    const RunOutcome outcome = runShiftEvaluation(dataSet, QRectF(*rcRegion), state.report, options);
    if (!outcome.finished()) {
        return state.report.failed(
            QStringLiteral("Shift evaluation did not reach the last frame; nothing was written."));
    }
    if (!outcome.strReason.isEmpty()) {
        return state.report.notWritten(strFile, outcome.strReason);
    }
    StageResult result = takeGivenCentre(state, strFile);
    if (!result.finished()) {
        return result;
    }
    state.results.listFile.append(strFile);
    ShiftResult& shifts = state.results.shifts.emplace();
    shifts.rcRegion = *rcRegion;
    shifts.ptCentre = QPointF(dataSet.m_dfCenterX, dataSet.m_dfCenterY);
    shifts.dfMaxShift = greatestCoordinate(dataSet.m_listShift);
    shifts.listJump = judgeShifts(dataSet.m_listShift, state.report);
    return result;
}

}  // namespace tessera
