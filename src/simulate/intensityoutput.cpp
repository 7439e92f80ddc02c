// The judged intensities as JSON for scripts and as text for reading.
#include "simulate/intensityjudgement.h"

#include <QJsonArray>

#include <cmath>

namespace tessera {

namespace {
QJsonValue finite(double df)
{
    return std::isfinite(df) ? QJsonValue(df) : QJsonValue();
}

QJsonArray worst(const IntensityJudgement& judgement)
{
    QJsonArray array;
    for (const JudgedReflection& r : judgement.listWorst) {
        array.append(
            QJsonArray{r.anIndex[0], r.anIndex[1], r.anIndex[2], r.dfIntensity, r.dfSigma, r.dfTrue});
    }
    return array;
}
}  // namespace

QJsonObject intensitiesToJson(const IntensityJudgement& judgement)
{
    if (!judgement.bRead) {
        return judgement.strWhy.isEmpty() ? QJsonObject()
                                          : QJsonObject{{QStringLiteral("why"), judgement.strWhy}};
    }
    QJsonArray arrayMatrix;
    for (const Vector3& row : judgement.matToTrue) {
        arrayMatrix.append(QJsonArray{row[0], row[1], row[2]});
    }
    return {{QStringLiteral("lines"), judgement.nLines},
            {QStringLiteral("withoutSigma"), judgement.nWithoutSigma},
            {QStringLiteral("observed"), judgement.nObserved},
            {QStringLiteral("offTruth"), judgement.nOffTruth},
            {QStringLiteral("matrixToTrue"), arrayMatrix},
            {QStringLiteral("scale"), finite(judgement.dfScale)},
            {QStringLiteral("correlation"), finite(judgement.dfCorrelation)},
            {QStringLiteral("correlationBare"), finite(judgement.dfCorrelationBare)},
            {QStringLiteral("rF"), finite(judgement.dfR)},
            {QStringLiteral("rFForetold"), finite(judgement.dfRForetold)},
            {QStringLiteral("meanSquaredDeviation"), finite(judgement.dfMeanSquare)},
            {QStringLiteral("medianSquaredDeviation"), finite(judgement.dfMedianSquare)},
            {QStringLiteral("medianIOverSigma"), finite(judgement.dfMedianRatio)},
            {QStringLiteral("decayLeft"), finite(judgement.dfDecayLeft)},
            {QStringLiteral("dMin"), finite(judgement.dfDMin)},
            {QStringLiteral("crossed"), judgement.nCrossed},
            {QStringLiteral("crossedMeasured"), judgement.nCrossedMeasured},
            {QStringLiteral("crossedObserved"), judgement.nCrossedObserved},
            {QStringLiteral("observedShare"), judgement.observedShare()},
            {QStringLiteral("expected"), judgement.nExpected},
            {QStringLiteral("expectedMeasured"), judgement.nExpectedMeasured},
            {QStringLiteral("completeness"), judgement.completeness()},
            {QStringLiteral("completenessWithin"), judgement.completenessWithin()},
            {QStringLiteral("completenessOfAll"), judgement.completenessOfAll()},
            {QStringLiteral("worst"), worst(judgement)}};
}

QString intensitiesToText(const QString& strHead, const IntensityJudgement& judgement)
{
    if (!judgement.bRead) {
        return judgement.strWhy.isEmpty()
                   ? QString()
                   : QStringLiteral("%1 not assessed: %2\n").arg(strHead, judgement.strWhy);
    }
    return QStringLiteral(
               "%1 %2 lines to %3 Å, correlation %4 (%5 with bare |F|²), R on F %6 (by the sigmas %7), "
               "mean squared deviation %8 sigma², median I/sigma %9; ")
               .arg(strHead)
               .arg(judgement.nLines)
               .arg(judgement.dfDMin, 0, 'f', 2)
               .arg(judgement.dfCorrelation, 0, 'f', 4)
               .arg(judgement.dfCorrelationBare, 0, 'f', 4)
               .arg(judgement.dfR, 0, 'f', 3)
               .arg(judgement.dfRForetold, 0, 'f', 3)
               .arg(judgement.dfMeanSquare, 0, 'f', 2)
               .arg(judgement.dfMedianRatio, 0, 'f', 1) +
           QStringLiteral(
               "%1 of %2 that crossed are there (%3 %), %4 observed; %5 % of those expected, "
               "%6 beside the truth\n")
               .arg(judgement.nCrossedMeasured)
               .arg(judgement.nCrossed)
               .arg(100 * judgement.completenessOfAll(), 0, 'f', 1)
               .arg(judgement.nCrossedObserved)
               .arg(100 * judgement.completeness(), 0, 'f', 1)
               .arg(judgement.nOffTruth);
}

}  // namespace tessera
