#include "road/intensityjudgement.h"

#include <cmath>

namespace tessera {

namespace {

// Half data sets with a lower correlation have no significant signal: Karplus & Diederichs (2012), Science
// 336, 1030.
const double g_dfCcHalfBad = 0.3;
const double g_dfCcHalfGood = 0.9;
// Because of multiple scattering, good data have 0.1 to 0.25.
const double g_dfRIntGood = 0.3;
// Half of the reflections, and a mean I/sigma of three. Structures have been solved from less, but not
// reliably.
const double g_dfCompletenessGood = 0.5;
const double g_dfIOverSigmaGood = 3;
const double g_dfSecondClass = 0.5;  ///< relative to the likelihood of the best class
const int g_nFewUnique = 20;         ///< with fewer reflections the figures mean little

QString several(double dfValue, int nDecimals)
{
    return std::isfinite(dfValue) ? QString::number(dfValue, 'f', nDecimals) : QStringLiteral("not known");
}

QString summaryOf(const IntegrationResult& result)
{
    const ShellQuality& quality = result.quality.overall;
    return QStringLiteral(
               "%1 observations of %2 reflections to %3 Å (%4) agree in %5 with Rint %6 and "
               "CC1/2 %7")
        .arg(quality.nObserved)
        .arg(quality.nUnique)
        .arg(quality.dfDMin, 0, 'f', 2)
        .arg(std::isfinite(quality.dfCompleteness)
                 ? QStringLiteral("%1% complete").arg(100 * quality.dfCompleteness, 0, 'f', 1)
                 : QStringLiteral("completeness not known"))
        .arg(result.chosen.strClass, several(quality.dfRInt, 3), several(quality.dfCcHalf, 3));
}

/// The doubts about the intensities, in words.
QStringList doubts(const IntegrationResult& result)
{
    const ShellQuality& quality = result.quality.overall;
    QStringList list;
    if (quality.nUnique < g_nFewUnique) {
        list.append(QStringLiteral("so few reflections say little"));
    }
    if (quality.dfRInt > g_dfRIntGood || quality.dfCcHalf < g_dfCcHalfGood) {
        list.append(QStringLiteral("equivalent reflections agree poorly"));
    }
    if (!std::isfinite(quality.dfRInt)) {
        list.append(QStringLiteral("no reflection was measured twice"));
    }
    if (!(quality.dfCompleteness >= g_dfCompletenessGood)) {
        list.append(QStringLiteral("much is missing"));
    }
    if (!(quality.dfIOverSigma >= g_dfIOverSigmaGood)) {
        list.append(
            QStringLiteral("intensities are %1 sigmas in the mean").arg(several(quality.dfIOverSigma, 1)));
    }
    const std::vector<LaueCandidate>& listClass = result.laue.listCandidate;
    if (listClass.size() > 1 && listClass[1].dfLikelihood > g_dfSecondClass * listClass[0].dfLikelihood) {
        list.append(
            QStringLiteral("%1 is nearly as likely as %2").arg(listClass[1].strClass, listClass[0].strClass));
    }
    return list;
}

}  // namespace

Judgement judgeIntensities(const RoadResults& results)
{
    const IntegrateResult& integrate = *results.integrate;
    if (integrate.result) {
        return judgeIntensities(*integrate.result);
    }
    return {roadStageName(RoadStage::Integrate), Verdict::Doubtful,
            QStringLiteral("There are no intensities. %1").arg(integrate.strReason), 0};
}

Judgement judgeIntensities(const IntegrationResult& result)
{
    Judgement judgement = {roadStageName(RoadStage::Integrate), Verdict::Doubtful, QString(), 0};
    const ShellQuality& quality = result.quality.overall;
    QStringList listReason = {summaryOf(result)};
    judgement.dfFigure = std::isfinite(quality.dfRInt) ? quality.dfRInt : 0;
    if (quality.dfCcHalf < g_dfCcHalfBad && quality.nUnique >= g_nFewUnique) {
        judgement.verdict = Verdict::Bad;
        listReason.append(QStringLiteral("equivalent reflections have little in common"));
    } else {
        const QStringList listDoubt = doubts(result);
        judgement.verdict = listDoubt.isEmpty() ? Verdict::Good : Verdict::Doubtful;
        listReason += listDoubt;
    }
    judgement.strReason = listReason.join(QStringLiteral("; ")) + QLatin1Char('.');
    return judgement;
}

}  // namespace tessera
