#include "road/integrationtable.h"

#include "integration/reflectionflags.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const size_t g_nMostCandidates = 8;

QString number(double dfValue, int nDecimals, int nWidth)
{
    return std::isfinite(dfValue) ? QStringLiteral("%1").arg(dfValue, nWidth, 'f', nDecimals)
                                  : QStringLiteral("%1").arg(QLatin1Char('-'), nWidth);
}

QString shellLine(const ShellQuality& shell)
{
    return QStringLiteral("%1 - %2 %3 %4 %5 %6 %7 %8 %9")
        .arg(number(shell.dfDMax, 2, 6), number(shell.dfDMin, 2, 5), number(shell.nObserved, 0, 8),
             number(shell.nUnique, 0, 7), number(100 * shell.dfCompleteness, 1, 6),
             number(shell.dfMultiplicity, 1, 6), number(shell.dfIOverSigma, 1, 8), number(shell.dfRInt, 3, 7),
             number(shell.dfRMeas, 3, 7) + number(shell.dfRPim, 3, 7) + number(shell.dfCcHalf, 3, 7));
}

QStringList shellLines(const MergingQuality& quality)
{
    QStringList listLine = {QStringLiteral(
        "Shells: d/Å           observed  unique    %    mult. I/sigma    Rint  Rmeas   Rpim  CC1/2")};
    for (const ShellQuality& shell : quality.listShell) {
        listLine.append(shellLine(shell));
    }
    listLine.append(shellLine(quality.overall) + QStringLiteral("  all"));
    return listLine;
}

QString agreementLine(const char* pszWhen, const ShellQuality& quality)
{
    return QStringLiteral("%1 Rint %2, Rmeas %3, CC1/2 %4 of %5 observations.")
        .arg(QLatin1String(pszWhen), -17)
        .arg(number(quality.dfRInt, 3, 0), number(quality.dfRMeas, 3, 0), number(quality.dfCcHalf, 3, 0))
        .arg(quality.nObserved);
}

QStringList operationLines(const LaueProposal& laue)
{
    QStringList listLine;
    for (const OperationAgreement& operation : laue.listOperation) {
        listLine.append(QStringLiteral("Rotation %1 %2 %3 pairs, correlation %4, R %5, likelihood %6")
                            .arg(operation.nOrder)
                            .arg(operation.strOperation, -14)
                            .arg(operation.nPairs, 6)
                            .arg(number(operation.dfCorrelation, 3, 6), number(operation.dfR, 3, 5),
                                 number(operation.dfLikelihood, 2, 4)));
    }
    for (size_t n = 0; n < std::min(g_nMostCandidates, laue.listCandidate.size()); ++n) {
        const LaueCandidate& candidate = laue.listCandidate[n];
        listLine.append(QStringLiteral("Laue class %1 %2 likelihood %3, Rint %4, CC1/2 %5")
                            .arg(candidate.strClass, -6)
                            .arg(QLatin1Char(candidate.chCentring))
                            .arg(number(candidate.dfLikelihood, 2, 4), number(candidate.dfRInt, 3, 5),
                                 number(candidate.dfCcHalf, 3, 5)));
    }
    return listLine;
}

QStringList groupLines(const SpaceGroupRanking& ranking)
{
    QStringList listLine;
    for (const ConditionEvidence& condition : ranking.listCondition) {
        listLine.append(QStringLiteral("Condition %1 %2 forbidden, %3(%4) of the allowed ones, likelihood %5")
                            .arg(condition.strCondition, -22)
                            .arg(condition.nForbidden, 5)
                            .arg(number(condition.dfRatio, 3, 6), number(condition.dfRatioError, 3, 0),
                                 number(condition.dfLikelihood, 2, 4)));
    }
    for (size_t n = 0; n < std::min(g_nMostCandidates, ranking.listCandidate.size()); ++n) {
        const SpaceGroupCandidate& candidate = ranking.listCandidate[n];
        listLine.append(QStringLiteral("Space group %1 %2 likelihood %3")
                            .arg(candidate.nNumber, 3)
                            .arg(candidate.strName, -12)
                            .arg(number(candidate.dfLikelihood, 2, 4)));
    }
    return listLine;
}

QString flagLine(const std::vector<Observation>& listObservation)
{
    QStringList listPart;
    for (unsigned nFlag = FlagSlow; nFlag <= FlagNotFinite; nFlag <<= 1) {
        const auto nCount = std::count_if(listObservation.begin(), listObservation.end(),
                                          [&](const Observation& one) { return (one.nFlags & nFlag) != 0; });
        if (nCount > 0) {
            listPart.append(
                QStringLiteral("%1 %2").arg(nCount).arg(reflectionFlagName(ReflectionFlag(nFlag))));
        }
    }
    return QStringLiteral("%1 passages predicted%2.")
        .arg(listObservation.size())
        .arg(listPart.isEmpty() ? QString()
                                : QStringLiteral("; left out: ") + listPart.join(QStringLiteral(", ")));
}

}  // namespace

QStringList integrationTable(const IntegrationResult& result)
{
    QStringList listLine = {flagLine(result.integrated.listObservation)};
    listLine += operationLines(result.laue);
    listLine += shellLines(result.quality);
    listLine.append(agreementLine("Before scaling:", result.unscaled.overall));
    listLine.append(agreementLine("After scaling:", result.scaled.overall));
    listLine.append(agreementLine("After rejection:", result.quality.overall));
    listLine += groupLines(result.spaceGroups);
    return listLine;
}

}  // namespace tessera
