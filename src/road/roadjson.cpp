#include "road/roadjson.h"

#include "road/celljson.h"
#include "road/geometryjson.h"
#include "road/integrationjson.h"
#include "road/stagejudgement.h"

#include <QJsonArray>

#include <algorithm>

namespace tessera {

namespace {

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

QJsonArray toArray(const Eigen::Matrix3d& mat)
{
    QJsonArray array;
    for (int n = 0; n < 3; ++n) {
        array.append(QJsonArray{mat(n, 0), mat(n, 1), mat(n, 2)});
    }
    return array;
}

QJsonObject typeObject(const LatticeType& type)
{
    const LatticeSymmetry& symmetry = type.symmetry;
    return {{QStringLiteral("system"), nameOf(symmetry.system)},
            {QStringLiteral("centring"), QString(QLatin1Char(symmetry.chCentring))},
            {QStringLiteral("symbol"), bravaisSymbol(symmetry)},
            {QStringLiteral("parameters"), toArray(symmetry.cellConstrained)},
            {QStringLiteral("measured"), toArray(symmetry.cellMeasured)},
            {QStringLiteral("matrix"), toArray(type.matTransform)},
            {QStringLiteral("misfitDegrees"), symmetry.dfMisfitAngles},
            {QStringLiteral("misfitPercent"), symmetry.dfMisfitLengths}};
}

QJsonArray cosetsArray(const std::vector<Coset>& listCoset)
{
    QJsonArray array;
    for (const Coset& coset : listCoset) {
        QJsonArray place;
        for (const int nNumerator : coset.anNumerator) {
            place.append(double(nNumerator) / coset.nDenominator);
        }
        array.append(QJsonObject{{QStringLiteral("at"), place},
                                 {QStringLiteral("peaks"), coset.nPoints},
                                 {QStringLiteral("byChance"), coset.dfByChance}});
    }
    return array;
}

QJsonArray furtherArray(const LatticesOfPoints& lattices)
{
    QJsonArray array;
    const double dfAll = double(std::max<size_t>(1, lattices.vecLabel.size()));
    for (size_t n = 1; n < lattices.listLattice.size(); ++n) {
        const OneOfLattices& lattice = lattices.listLattice[n];
        QJsonObject object = {{QStringLiteral("parameters"), toArray(cellOf(lattice.matBasis))},
                              {QStringLiteral("basis"), toArray(lattice.matBasis)},
                              {QStringLiteral("share"), lattice.nOwn / dfAll}};
        if (lattice.turn) {
            object[QStringLiteral("turnDegrees")] = lattice.turn->dfAngle;
        }
        array.append(object);
    }
    return array;
}

/// The proposed Bravais type, all others that fit, and conditions and supercells.
QJsonObject latticeObject(const LatticeAnalysis& analysis)
{
    QJsonObject object;
    if (analysis.proposed) {
        object = typeObject(*analysis.proposed);
    }
    QJsonArray candidates;
    for (const LatticeType& type : analysis.listType) {
        candidates.append(typeObject(type));
    }
    object[QStringLiteral("candidates")] = candidates;
    object[QStringLiteral("cosets")] = cosetsArray(analysis.whole.listNamed);
    object[QStringLiteral("further")] = furtherArray(analysis.lattices);
    return object;
}

/// The judgements by the names of the parts, and the worst verdict.
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

/// How the road ended; part of every summary.
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

QJsonArray sectionsArray(const QList<SectionResult>& listSection)
{
    QJsonArray array;
    for (const SectionResult& section : listSection) {
        array.append(QJsonObject{{QStringLiteral("plane"), section.strPlane},
                                 {QStringLiteral("maxDStar"), section.dfMaxDStar},
                                 {QStringLiteral("thickness"), section.dfThickness},
                                 {QStringLiteral("step"), section.dfStep},
                                 {QStringLiteral("seen"), section.dfSeen},
                                 {QStringLiteral("files"), QJsonArray::fromStringList(section.listFile)}});
    }
    return array;
}

/// Used if no stage finished.
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
        if (!results.open->strChoice.isEmpty()) {
            object[QStringLiteral("choice")] = results.open->strChoice;
        }
    }
    putIfThere(object, results.shifts);
    putIfThere(object, results.peaks);
    putIfThere(object, results.axis);
    putIfThere(object, results.merge);
    if (results.cell) {
        object[QStringLiteral("cell")] = cellObject(*results.cell);
        putIfThere(object, results.cell->fit);
    }
    if (results.lattice) {
        object[QStringLiteral("lattice")] = latticeObject(*results.lattice);
    }
    putIfThere(object, results.index);
    if (results.geometry) {
        object[QStringLiteral("geometry")] = geometryObject(*results.geometry);
    }
    if (results.integrate) {
        object[QStringLiteral("quality")] = integrationObject(*results.integrate);
    }
    putIfThere(object, results.refine);
    if (results.index && results.cell && results.cell->fit) {
        object[QStringLiteral("spreadContradicts")] = spreadContradicts(results.index->dfShare,
                                                                        *results.cell->fit);
    }
    if (!results.listJudgement.isEmpty()) {
        object[QStringLiteral("judgement")] = judgementObject(results.listJudgement);
    }
    if (!results.listHint.isEmpty()) {
        object[QStringLiteral("hints")] = QJsonArray::fromStringList(results.listHint);
    }
    if (results.listExported) {
        object[QStringLiteral("exported")] = QJsonArray::fromStringList(*results.listExported);
    }
    if (!results.listSection.isEmpty()) {
        object[QStringLiteral("sections")] = sectionsArray(results.listSection);
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
