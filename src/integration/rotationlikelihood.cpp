#include "integration/rotationlikelihood.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nExpected = 100;  // correlations from 0 to 1

double expectedOf(int n)
{
    return (n + 0.5) / g_nExpected;
}

/// The area of 1 / (1 + x²)² from 0 on.
double areaOfPeak(double df)
{
    return (df / (1 + df * df) + std::atan(df)) / 2;
}

/// A peak of unit area between -1 and 1.
double density(double df, double dfMiddle, double dfWidth)
{
    const double dfPlace = (df - dfMiddle) / dfWidth;
    const double dfBelow = 1 + dfPlace * dfPlace;
    const double dfArea = dfWidth *
                          (areaOfPeak((1 - dfMiddle) / dfWidth) + areaOfPeak((1 + dfMiddle) / dfWidth));
    return 1 / (dfBelow * dfBelow) / dfArea;
}

/// The best correlation that can be expected: by the sigmas, or one that was reached.
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
    : m_listPrior(g_nExpected, 0.0)
{
    const double dfBest = bestExpected(listAgreement);
    const double dfFall = 0.1;
    double dfSum = 0;
    for (int n = 0; n < g_nExpected; ++n) {
        const double dfBelow = dfBest - expectedOf(n);
        m_listPrior[size_t(n)] = dfBelow > -0.5 / g_nExpected ? std::exp(-dfBelow / dfFall) : 0;
        dfSum += m_listPrior[size_t(n)];
    }
    for (double& df : m_listPrior) {
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
        m_listRotation.push_back(rotation);
    }
}

double CRotationLikelihood::logarithm(const std::vector<bool>& listHaving) const
{
    double dfLacking = 0;
    std::vector<double> listLog(m_listPrior.size(), 0.0);
    bool bHasAny = false;
    for (size_t n = 0; n < m_listRotation.size(); ++n) {
        if (!m_listRotation[n].bKnown) {
            continue;
        }
        if (!listHaving[n]) {
            dfLacking += m_listRotation[n].dfLogOfLacking;
            continue;
        }
        bHasAny = true;
        for (size_t i = 0; i < listLog.size(); ++i) {
            listLog[i] += m_listRotation[n].listLogOfHaving[i];
        }
    }
    if (!bHasAny) {
        return dfLacking;
    }
    const double dfMost = *std::max_element(listLog.begin(), listLog.end());
    double dfSum = 0;
    for (size_t i = 0; i < listLog.size(); ++i) {
        dfSum += m_listPrior[i] * std::exp(listLog[i] - dfMost);
    }
    return dfLacking + dfMost + std::log(dfSum);
}

}  // namespace tessera
