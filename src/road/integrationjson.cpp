#include "road/integrationjson.h"

#include "integration/reflectionflags.h"
#include "road/celljson.h"

#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// JSON has no NaN, so the key is left out.
void putNumber(QJsonObject& object, const char* pszKey, double dfValue)
{
    if (std::isfinite(dfValue)) {
        object[QLatin1String(pszKey)] = dfValue;
    }
}

void putShell(QJsonObject& object, const ShellQuality& shell)
{
    object[QStringLiteral("observed")] = shell.nObserved;
    object[QStringLiteral("unique")] = shell.nUnique;
    putNumber(object, "completeness", shell.dfCompleteness);
    putNumber(object, "multiplicity", shell.dfMultiplicity);
    putNumber(object, "iOverSigma", shell.dfIOverSigma);
    putNumber(object, "rInt", shell.dfRInt);
    putNumber(object, "rMeas", shell.dfRMeas);
    putNumber(object, "rPim", shell.dfRPim);
    putNumber(object, "ccHalf", shell.dfCcHalf);
    putNumber(object, "dMax", shell.dfDMax);
    putNumber(object, "dMin", shell.dfDMin);
}

QJsonObject agreement(const ShellQuality& quality)
{
    QJsonObject object{{QStringLiteral("observed"), quality.nObserved}};
    putNumber(object, "rInt", quality.dfRInt);
    putNumber(object, "rMeas", quality.dfRMeas);
    putNumber(object, "ccHalf", quality.dfCcHalf);
    return object;
}

QJsonArray laueArray(const LaueProposal& laue)
{
    QJsonArray array;
    for (const LaueCandidate& candidate : laue.listCandidate) {
        QJsonObject object{{QStringLiteral("class"), candidate.strClass},
                           {QStringLiteral("centring"), QString(QLatin1Char(candidate.chCentring))}};
        putNumber(object, "likelihood", candidate.dfLikelihood);
        putNumber(object, "rInt", candidate.dfRInt);
        putNumber(object, "ccHalf", candidate.dfCcHalf);
        array.append(object);
    }
    return array;
}

QJsonArray operationArray(const LaueProposal& laue)
{
    QJsonArray array;
    for (const OperationAgreement& operation : laue.listOperation) {
        QJsonObject object{{QStringLiteral("operation"), operation.strOperation},
                           {QStringLiteral("order"), operation.nOrder},
                           {QStringLiteral("pairs"), operation.nPairs}};
        putNumber(object, "correlation", operation.dfCorrelation);
        putNumber(object, "r", operation.dfR);
        putNumber(object, "likelihood", operation.dfLikelihood);
        array.append(object);
    }
    return array;
}

QJsonArray groupArray(const SpaceGroupRanking& ranking)
{
    QJsonArray array;
    for (const SpaceGroupCandidate& candidate : ranking.listCandidate) {
        QJsonObject object{{QStringLiteral("number"), candidate.nNumber},
                           {QStringLiteral("name"), candidate.strName}};
        putNumber(object, "likelihood", candidate.dfLikelihood);
        array.append(object);
    }
    return array;
}

QJsonArray conditionArray(const SpaceGroupRanking& ranking)
{
    QJsonArray array;
    for (const ConditionEvidence& condition : ranking.listCondition) {
        QJsonObject object{{QStringLiteral("condition"), condition.strCondition},
                           {QStringLiteral("forbidden"), condition.nForbidden}};
        putNumber(object, "ratio", condition.dfRatio);
        putNumber(object, "ratioError", condition.dfRatioError);
        putNumber(object, "likelihood", condition.dfLikelihood);
        array.append(object);
    }
    return array;
}

/// One number for each frame; 0 if it is not known.
QJsonArray numbersArray(const std::vector<double>& listNumber)
{
    QJsonArray array;
    for (const double df : listNumber) {
        array.append(std::isfinite(df) ? df : 0);
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
    putNumber(object, "wilsonB", result.quality.dfWilsonB);
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
