#include "road/roadjson.h"

#include "road/stagejudgement.h"

#include <QJsonArray>

namespace tessera {

namespace {

QJsonArray toArray(const CellParameters& cell)
{
    QJsonArray array;
    for (const double dfNumber : cell.numbers()) {
        array.append(dfNumber);
    }
    return array;
}

void put(QJsonObject& object, const ShiftResult& shifts)
{
    const QRect& rcRegion = shifts.rcRegion;
    object[QStringLiteral("region")] = QJsonArray{rcRegion.x(), rcRegion.y(), rcRegion.width()};
    object[QStringLiteral("centre")] = QJsonArray{shifts.ptCentre.x(), shifts.ptCentre.y()};
    object[QStringLiteral("maxShift")] = shifts.dfMaxShift;
    QJsonArray arrayJump;
    for (const int nFrame : shifts.listJump) {
        arrayJump.append(nFrame);
    }
    object[QStringLiteral("shiftJumps")] = arrayJump;
}

void put(QJsonObject& object, const PeakResult& peaks)
{
    object[QStringLiteral("peakThreshold")] = peaks.dfThreshold;
    if (peaks.dfFrameScale != 1) {
        object[QStringLiteral("frameScale")] = peaks.dfFrameScale;
    }
    object[QStringLiteral("peakRadius")] = peaks.dfPeakRadius;
    object[QStringLiteral("backgroundRadius")] = peaks.dfBackgroundRadius;
    object[QStringLiteral("peaks")] = peaks.nPeaks;
}

void put(QJsonObject& object, const AxisFound& axis)
{
    object[QStringLiteral("axis")] = QJsonObject{
        {QStringLiteral("azimuth"), axis.best.dfAzimuth},
        {QStringLiteral("error"), axis.dfAzimuthError},
        {QStringLiteral("sharpness"), axis.best.dfSharpness},
        {QStringLiteral("second"), axis.second.dfAzimuth},
        {QStringLiteral("secondSharpness"), axis.second.dfSharpness},
        {QStringLiteral("sense"), axis.bSure ? QStringLiteral("sure") : QStringLiteral("doubtful")},
        {QStringLiteral("curvature"), axis.dfCurvature}};
}

void put(QJsonObject& object, const MergeResult& merge)
{
    object[QStringLiteral("peaksMerged")] = merge.nPeaks;
    object[QStringLiteral("peaksOutsideLimits")] = merge.nOutsideLimits;
    object[QStringLiteral("chains")] = merge.nChains;
    object[QStringLiteral("reflections")] = merge.nReflections;
}

QJsonObject cellObject(const CellResult& cell)
{
    if (!cell.parameters) {
        return {};
    }
    return {{QStringLiteral("parameters"), toArray(*cell.parameters)},
            {QStringLiteral("volume"), cell.dfVolume}};
}

QJsonObject refinedObject(const CellRefinement& refinement)
{
    return {{QStringLiteral("parameters"), toArray(refinement.cell)},
            {QStringLiteral("standardErrors"), toArray(refinement.cellStdErr)},
            {QStringLiteral("rmsDStar"), refinement.dfRmsAfter[0]}};
}

void put(QJsonObject& object, const IndexResult& index)
{
    object[QStringLiteral("indexed")] = index.nIndexed;
    object[QStringLiteral("indexedShare")] = index.dfShare;
    object[QStringLiteral("duplicated")] = index.nDuplicated;
    object[QStringLiteral("unindexed")] = index.nUnindexed;
    object[QStringLiteral("onEdge")] = index.nOnEdge;
    if (index.refined) {
        object[QStringLiteral("refined")] = refinedObject(*index.refined);
    }
    if (index.centreOffset) {
        const CentreOffset& offset = *index.centreOffset;
        object[QStringLiteral("centreOffset")] = QJsonArray{offset.dfX, offset.dfY};
        object[QStringLiteral("centreOffsetErrors")] = QJsonArray{offset.dfErrorX, offset.dfErrorY};
    }
}

QJsonObject pairsObject(const DifferenceVectorRefinement& found)
{
    QJsonObject object = refinedObject(*found.refinement);
    object[QStringLiteral("pairs")] = double(found.nPairs);
    object[QStringLiteral("groups")] = found.listDifference.size();
    object[QStringLiteral("groupsRejected")] = found.nGroupsRejected;
    object[QStringLiteral("vectorsRejected")] = found.nVectorsRejected;
    return object;
}

void put(QJsonObject& object, const RefineResult& refine)
{
    static const char* const aszKey[] = {"wholePixels", "subPixels", "subPixelsConstant"};
    if (refine.listRun.isEmpty()) {
        return;
    }
    QJsonObject pairs{{QStringLiteral("dStar"), QJsonArray{refine.dfDStarLow, refine.dfDStarHigh}}};
    for (const PairRefinement& run : refine.listRun) {
        pairs[QLatin1String(aszKey[int(run.positions)])] = pairsObject(run.found);
    }
    object[QStringLiteral("peakPairs")] = pairs;
}

void put(QJsonObject& object, const LatticeFit& fit)
{
    object[QStringLiteral("fitShare")] = fit.share();
    object[QStringLiteral("fitByChance")] = fit.dfByChance;
}

/// The parts by their names, and the worst verdict of all.
QJsonObject judgementObject(const QList<Judgement>& listJudgement)
{
    QJsonObject object = {{QStringLiteral("overall"), verdictName(worstVerdict(listJudgement))}};
    for (const Judgement& judgement : listJudgement) {
        object[judgement.strPart] = QJsonObject{{QStringLiteral("verdict"), verdictName(judgement.verdict)},
                                                {QStringLiteral("reason"), judgement.strReason},
                                                {QStringLiteral("figure"), judgement.dfFigure}};
    }
    return object;
}

QJsonObject timesObject(const QList<PartTime>& listTime)
{
    QJsonObject object;
    for (const PartTime& time : listTime) {
        object[time.strPart] = time.dfSeconds;
    }
    return object;
}

template <class Result>
void putIfThere(QJsonObject& object, const std::optional<Result>& result)
{
    if (result) {
        put(object, *result);
    }
}

/// How the road ended, which every summary tells.
QJsonObject endObject(const QString& strStage, const QString& strFailed, const StageResult& end)
{
    QJsonObject object = {{QStringLiteral("stage"), strStage}, {QStringLiteral("reached"), end.finished()}};
    if (!strFailed.isEmpty()) {
        object[QStringLiteral("failed")] = strFailed;
    }
    if (!end.finished()) {
        object[QStringLiteral("reason")] = end.strReason;
    }
    return object;
}

/// Where no stage finished.
QString noStage()
{
    return QStringLiteral("none");
}

}  // namespace

QJsonObject roadSummary(const RoadResults& results)
{
    QJsonObject object = endObject(results.lastStage ? roadStageName(*results.lastStage) : noStage(),
                                   results.strFailed, results.end);
    object[QStringLiteral("warnings")] = QJsonArray::fromStringList(results.listWarning);
    if (results.open) {
        object[QStringLiteral("name")] = results.open->strName;
        object[QStringLiteral("frames")] = results.open->nFrames;
    }
    putIfThere(object, results.shifts);
    putIfThere(object, results.peaks);
    putIfThere(object, results.axis);
    putIfThere(object, results.merge);
    if (results.cell) {
        object[QStringLiteral("cell")] = cellObject(*results.cell);
        putIfThere(object, results.cell->fit);
    }
    putIfThere(object, results.index);
    putIfThere(object, results.refine);
    if (results.index && results.cell && results.cell->fit) {
        object[QStringLiteral("spreadContradicts")] = spreadContradicts(results.index->dfShare,
                                                                        *results.cell->fit);
    }
    if (!results.listJudgement.isEmpty()) {
        object[QStringLiteral("judgement")] = judgementObject(results.listJudgement);
    }
    if (results.listExported) {
        object[QStringLiteral("exported")] = QJsonArray::fromStringList(*results.listExported);
    }
    if (results.listTime) {
        object[QStringLiteral("seconds")] = timesObject(*results.listTime);
    }
    return object;
}

QJsonObject unfinishedSummary()
{
    return endObject(noStage(), QStringLiteral("unfinished"),
                     {RunEnd::Stopped, QStringLiteral("at work, or killed before its end")});
}

}  // namespace tessera
