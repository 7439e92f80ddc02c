#include "frames/suggestpeaksearch.h"

#include "dataset/pagerounding.h"
#include "frames/autothreshold.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfWideToNarrow = 2.7;
const double g_dfLeastWideToNarrow = 2;
const double g_dfDisc = 3;  // sigmas; the disc has 99 % of a Gaussian spot
const double g_dfFoot = 2;  // sigmas; radius that contains 86 % of the next spot
const double g_dfRing = 3;  // pixels, the initial value of the page

QString figure(double df)
{
    return QString::number(df, 'f', 2);
}

}  // namespace

SuggestedValue suggestedValue(ParameterMember member, double dfValue, const QString& strWhy)
{
    return {member, spinBoxValue(dfValue, parameterOf(member).box), strWhy};
}

Suggestion suggestPeakSearch(const std::optional<SpotSize>& size, const std::optional<double>& dfPeakRadius)
{
    if (!size) {
        return {};
    }
    using Hunt = PeakHuntingParameters;
    const QString strSize = QStringLiteral("spots have a sigma of %1 pixels (%2 spots on %3 frames)")
                                .arg(figure(size->dfSigma))
                                .arg(size->nSpots)
                                .arg(size->nFrames);
    const double dfNarrow = std::max(size->dfSigma, dfPeakRadius.value_or(0));
    const double dfHalfWay = size->dfClosest > 0 ? size->dfClosest / 2 : HUGE_VAL;
    const double dfFree = g_dfWideToNarrow * dfNarrow;
    const double dfWide = std::max(g_dfLeastWideToNarrow * dfNarrow, std::min(dfFree, 0.99 * dfHalfWay));
    const QString strHalfWay =
        QStringLiteral("half the distance to the next spot is %1 pixels").arg(figure(dfHalfWay));
    const double dfDisc = std::ceil(g_dfDisc * size->dfSigma);
    const double dfRadius = std::max(1.0, std::min(dfDisc, std::floor(dfHalfWay)));
    const double dfRing = std::floor(size->dfClosest - g_dfFoot * size->dfSigma - dfRadius);
    const bool bRing = size->dfClosest > 0 && dfRing < g_dfRing;
    return {
        suggestedValue(&Hunt::m_dfPeakRadius, size->dfSigma, strSize),
        suggestedValue(&Hunt::m_dfBackgroundRadius, dfWide,
                       dfWide < dfFree
                           ? strHalfWay
                           : QStringLiteral("%1 times as wide as the narrow Gaussian").arg(g_dfWideToNarrow)),
        suggestedValue(&Hunt::m_dfIntegrationRadius, dfRadius, dfRadius < dfDisc ? strHalfWay : strSize),
        suggestedValue(&Hunt::m_dfIntegrationBackground, bRing ? std::max(1.0, dfRing) : g_dfRing,
                       bRing ? QStringLiteral("the next spot begins beyond that")
                             : QStringLiteral("there is no spot nearby"))};
}

std::optional<Suggestion> suggestRadii(const DataSet& dataSet, CRunReport& report,
                                       const std::optional<double>& dfPeakRadius, int nJobs)
{
    const MeasuredSpotSize measured = measureSpotSize(dataSet, report, nJobs);
    if (!measured.outcome.finished()) {
        return std::nullopt;
    }
    if (!measured.size) {
        report.addMessage(
            QStringLiteral(
                "The size of the spots cannot be determined from the frames looked at: the radii of "
                "the peak search are those of the page."),
            Severity::Info);
    }
    return suggestPeakSearch(measured.size, dfPeakRadius);
}

std::optional<Suggestion> suggestPeakSearch(const DataSet& dataSet, const PeakHuntingParameters& page,
                                            CPeakFilters& filters, CRunReport& report, int nJobs)
{
    std::optional<Suggestion> suggestion = suggestRadii(dataSet, report, std::nullopt, nJobs);
    if (!suggestion) {
        return std::nullopt;
    }
    PeakHuntingParameters parameters = page;
    ParameterRecords records{};
    std::get<PeakHuntingParameters*>(records) = &parameters;
    for (const SuggestedValue& value : qAsConst(*suggestion)) {
        parameterOf(value.member).setValue(records, value.dfValue);
    }
    const std::optional<PeakThreshold> found = estimatePeakThreshold(dataSet, parameters, filters, report,
                                                                     nJobs);
    if (found) {
        const SuggestedValue value = suggestedValue(
            &PeakHuntingParameters::m_dfPeakThreshold, found->dfThreshold,
            QStringLiteral("eight robust standard deviations of the noise with these radii"));
        if (value.dfValue > 0) {
            suggestion->append(value);
        }
    } else if (!report.goOn()) {
        return std::nullopt;
    }
    return suggestion;
}

}  // namespace tessera
