#include "integration/rotationlikelihood.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nExpected = 100;  // number of possible correlations from 0 to 1

double expectedOf(int n)
{
    return (n + 0.5) / g_nExpected;
}

/// The area of 1 / (1 + x²)² from 0 on.
double areaOfPeak(double df)
{
    return (df / (1 + df * df) + std::atan(df)) / 2;
}

/// A peak normalized between -1 and 1.
double density(double df, double dfMiddle, double dfWidth)
{
    const double dfPlace = (df - dfMiddle) / dfWidth;
    const double dfBelow = 1 + dfPlace * dfPlace;
    const double dfArea = dfWidth *
                          (areaOfPeak((1 - dfMiddle) / dfWidth) + areaOfPeak((1 + dfMiddle) / dfWidth));
    return 1 / (dfBelow * dfBelow) / dfArea;
}

/// The greatest correlation to be expected: that from the sigmas, or one that was observed.
double bestExpected(const std::vector<RotationAgreement>& listAgreement)
{
    double dfSum = 0;
    double dfPairs = 0;
    double dfReached = 0;
    for (const RotationAgreement& agreement : listAgreement) {
        if (std::isfinite(agreement.dfCorrelation)) {
            dfSum += agreement.nPairs * agreement.dfExpected;
            dfPairs += agreement.nPairs;
            dfReached = std::max(dfReached, agreement.dfCorrelation);
        }
    }
    return std::clamp(dfPairs > 0 ? std::max(dfSum / dfPairs, dfReached) : 1, 0.2, 0.98);
}

}  // namespace

CRotationLikelihood::CRotationLikelihood(const std::vector<RotationAgreement>& listAgreement)
    : m_correlations(correlations(listAgreement)), m_disagreements(disagreements(listAgreement))
{}

CRotationLikelihood::Shared CRotationLikelihood::correlations(
    const std::vector<RotationAgreement>& listAgreement)
{
    Shared shared;
    shared.listPrior.assign(g_nExpected, 0.0);
    const double dfBest = bestExpected(listAgreement);
    const double dfFall = 0.1;
    double dfSum = 0;
    for (int n = 0; n < g_nExpected; ++n) {
        const double dfBelow = dfBest - expectedOf(n);
        shared.listPrior[n] = dfBelow > -0.5 / g_nExpected ? std::exp(-dfBelow / dfFall) : 0;
        dfSum += shared.listPrior[n];
    }
    for (double& df : shared.listPrior) {
        df /= dfSum;
    }
    for (const RotationAgreement& agreement : listAgreement) {
        Rotation rotation;
        rotation.bKnown = std::isfinite(agreement.dfCorrelation);
        if (rotation.bKnown) {
            const double dfWidth = std::max(0.06, 1.5 / std::sqrt(agreement.nPairs));
            double dfLacking = 0;
            for (int n = 0; n < g_nExpected; ++n) {
                const double dfExpected = expectedOf(n);
                const double df = density(agreement.dfCorrelation, dfExpected, dfWidth);
                rotation.listLogOfHaving.push_back(std::log(df));
                dfLacking += df * 4 / g_dfPi * std::sqrt(1 - dfExpected * dfExpected) / g_nExpected;
            }
            rotation.dfLogOfLacking = std::log(dfLacking);
        }
        shared.listRotation.push_back(rotation);
    }
    return shared;
}

CRotationLikelihood::Shared CRotationLikelihood::disagreements(
    const std::vector<RotationAgreement>& listAgreement)
{
    const int nValues = 100;
    const double dfSmallest = 0.002;  // measurements never agree better
    Shared shared;
    shared.listPrior.assign(nValues, 1.0 / nValues);
    for (const RotationAgreement& agreement : listAgreement) {
        Rotation rotation;
        rotation.bKnown = agreement.dfR > 0 && std::isfinite(agreement.dfForetoldR);
        if (rotation.bKnown) {
            const double dfLog = std::log(agreement.dfR);
            const double dfWidth = 0.35 + 1.5 / std::sqrt(agreement.nPairs);
            const auto logDensity = [&](double dfDisagreement) {
                const double df = (dfLog - std::log(std::hypot(dfDisagreement, agreement.dfForetoldR))) /
                                  dfWidth;
                return -2 * std::log1p(df * df) - std::log(dfWidth * g_dfPi / 2);
            };
            double dfLacking = 0;
            for (int n = 0; n < nValues; ++n) {
                const double dfPlace = (n + 0.5) / nValues;
                rotation.listLogOfHaving.push_back(logDensity(std::pow(dfSmallest, 1 - dfPlace)));
                dfLacking += std::exp(logDensity(dfPlace)) / nValues;
            }
            rotation.dfLogOfLacking = std::log(dfLacking);
        }
        shared.listRotation.push_back(rotation);
    }
    return shared;
}

double CRotationLikelihood::logarithm(const std::vector<bool>& listHaving) const
{
    return m_correlations.logarithm(listHaving) + m_disagreements.logarithm(listHaving);
}

double CRotationLikelihood::Shared::logarithm(const std::vector<bool>& listHaving) const
{
    double dfLacking = 0;
    std::vector<double> listLog(listPrior.size(), 0.0);
    bool bHasAny = false;
    for (size_t n = 0; n < listRotation.size(); ++n) {
        if (!listRotation[n].bKnown) {
            continue;
        }
        if (!listHaving[n]) {
            dfLacking += listRotation[n].dfLogOfLacking;
            continue;
        }
        bHasAny = true;
        for (size_t i = 0; i < listLog.size(); ++i) {
            listLog[i] += listRotation[n].listLogOfHaving[i];
        }
    }
    if (!bHasAny) {
        return dfLacking;
    }
    const double dfMost = *std::max_element(listLog.begin(), listLog.end());
    double dfSum = 0;
    for (size_t i = 0; i < listLog.size(); ++i) {
        dfSum += listPrior[i] * std::exp(listLog[i] - dfMost);
    }
    return dfLacking + dfMost + std::log(dfSum);
}

}  // namespace tessera
