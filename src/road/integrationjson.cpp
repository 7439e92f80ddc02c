#include "road/integrationjson.h"

#include "integration/reflectionflags.h"
#include "road/celljson.h"

#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QJsonValue number(double dfValue)
{
    return std::isfinite(dfValue) ? QJsonValue(dfValue) : QJsonValue();
}

void putShell(QJsonObject& object, const ShellQuality& shell)
{
    object[QStringLiteral("observed")] = shell.nObserved;
    object[QStringLiteral("unique")] = shell.nUnique;
    object[QStringLiteral("completeness")] = number(shell.dfCompleteness);
    object[QStringLiteral("multiplicity")] = number(shell.dfMultiplicity);
    object[QStringLiteral("iOverSigma")] = number(shell.dfIOverSigma);
    object[QStringLiteral("rInt")] = number(shell.dfRInt);
    object[QStringLiteral("rMeas")] = number(shell.dfRMeas);
    object[QStringLiteral("rPim")] = number(shell.dfRPim);
    object[QStringLiteral("ccHalf")] = number(shell.dfCcHalf);
    object[QStringLiteral("dMax")] = number(shell.dfDMax);
    object[QStringLiteral("dMin")] = number(shell.dfDMin);
}

QJsonObject agreement(const ShellQuality& quality)
{
    return {{QStringLiteral("rInt"), number(quality.dfRInt)},
            {QStringLiteral("rMeas"), number(quality.dfRMeas)},
            {QStringLiteral("ccHalf"), number(quality.dfCcHalf)},
            {QStringLiteral("observed"), quality.nObserved}};
}

QJsonArray laueArray(const LaueProposal& laue)
{
    QJsonArray array;
    for (const LaueCandidate& candidate : laue.listCandidate) {
        array.append(QJsonObject{{QStringLiteral("class"), candidate.strClass},
                                 {QStringLiteral("centring"), QString(QLatin1Char(candidate.chCentring))},
                                 {QStringLiteral("likelihood"), number(candidate.dfLikelihood)},
                                 {QStringLiteral("rInt"), number(candidate.dfRInt)},
                                 {QStringLiteral("ccHalf"), number(candidate.dfCcHalf)}});
    }
    return array;
}

QJsonArray operationArray(const LaueProposal& laue)
{
    QJsonArray array;
    for (const OperationAgreement& operation : laue.listOperation) {
        array.append(QJsonObject{{QStringLiteral("operation"), operation.strOperation},
                                 {QStringLiteral("order"), operation.nOrder},
                                 {QStringLiteral("pairs"), operation.nPairs},
                                 {QStringLiteral("correlation"), number(operation.dfCorrelation)},
                                 {QStringLiteral("r"), number(operation.dfR)},
                                 {QStringLiteral("likelihood"), number(operation.dfLikelihood)}});
    }
    return array;
}

QJsonArray groupArray(const SpaceGroupRanking& ranking)
{
    QJsonArray array;
    for (const SpaceGroupCandidate& candidate : ranking.listCandidate) {
        array.append(QJsonObject{{QStringLiteral("number"), candidate.nNumber},
                                 {QStringLiteral("name"), candidate.strName},
                                 {QStringLiteral("likelihood"), number(candidate.dfLikelihood)}});
    }
    return array;
}

QJsonArray conditionArray(const SpaceGroupRanking& ranking)
{
    QJsonArray array;
    for (const ConditionEvidence& condition : ranking.listCondition) {
        array.append(QJsonObject{{QStringLiteral("condition"), condition.strCondition},
                                 {QStringLiteral("forbidden"), condition.nForbidden},
                                 {QStringLiteral("ratio"), number(condition.dfRatio)},
                                 {QStringLiteral("ratioError"), number(condition.dfRatioError)},
                                 {QStringLiteral("likelihood"), number(condition.dfLikelihood)}});
    }
    return array;
}

QJsonArray numbersArray(const std::vector<double>& listNumber)
{
    QJsonArray array;
    for (const double df : listNumber) {
        array.append(number(df));
    }
    return array;
}

QJsonArray shellsArray(const std::vector<ShellQuality>& listShell)
{
    QJsonArray array;
    for (const ShellQuality& shell : listShell) {
        QJsonObject object;
        putShell(object, shell);
        array.append(object);
    }
    return array;
}

int flagged(const std::vector<Observation>& list, unsigned nFlags)
{
    return int(std::count_if(list.begin(), list.end(),
                             [&](const Observation& one) { return (one.nFlags & nFlags) != 0; }));
}

}  // namespace

QJsonObject integrationObject(const IntegrateResult& integrate)
{
    if (!integrate.result) {
        return {{QStringLiteral("integrated"), false}, {QStringLiteral("reason"), integrate.strReason}};
    }
    const IntegrationResult& result = *integrate.result;
    const std::vector<Observation>& list = result.integrated.listObservation;
    QJsonObject object{{QStringLiteral("integrated"), true}};
    putShell(object, result.quality.overall);
    object[QStringLiteral("laueClass")] = result.chosen.strClass;
    object[QStringLiteral("laueClasses")] = laueArray(result.laue);
    object[QStringLiteral("operations")] = operationArray(result.laue);
    object[QStringLiteral("cell")] = QJsonObject{
        {QStringLiteral("parameters"), toArray(result.cell)},
        {QStringLiteral("standardErrors"), toArray(result.cellErrors)}};
    if (result.spaceGroup) {
        object[QStringLiteral("spaceGroup")] = result.spaceGroup->strName;
    }
    object[QStringLiteral("spaceGroups")] = groupArray(result.spaceGroups);
    object[QStringLiteral("conditions")] = conditionArray(result.spaceGroups);
    object[QStringLiteral("predicted")] = int(list.size());
    object[QStringLiteral("leftOut")] = flagged(list, g_nExcludingFlags & ~unsigned(FlagOutlier));
    object[QStringLiteral("outliers")] = flagged(list, FlagOutlier);
    object[QStringLiteral("beforeScaling")] = agreement(result.unscaled.overall);
    object[QStringLiteral("afterScaling")] = agreement(result.scaled.overall);
    object[QStringLiteral("errorModel")] = QJsonArray{result.scaling.dfErrorA, result.scaling.dfErrorB};
    object[QStringLiteral("scales")] = numbersArray(result.scaling.listFrameScale);
    object[QStringLiteral("decay")] = numbersArray(result.scaling.listFrameDecay);
    object[QStringLiteral("shells")] = shellsArray(result.quality.listShell);
    object[QStringLiteral("wilsonB")] = number(result.quality.dfWilsonB);
    object[QStringLiteral("completenessByFrame")] = numbersArray(result.quality.listCompletenessByFrame);
    object[QStringLiteral("forecast")] = result.forecast.strText;
    QJsonArray arrayFile;
    for (const QString& strFile : integrate.files.listFile) {
        arrayFile.append(QFileInfo(strFile).fileName());
    }
    object[QStringLiteral("files")] = arrayFile;
    return object;
}

}  // namespace tessera
