#include "imaging/viewhistogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

constexpr int g_nSamples = 200000;  // are counted within a few milliseconds
constexpr double g_dfTwoDecades = 100;
constexpr double g_dfLeastUnit = 1e-6;  // of the axis, where half of the samples are the same

}  // namespace

CValueAxis::CValueAxis(double dfFirst, double dfLast, double dfUnit)
    : m_dfFirst(dfFirst), m_dfLast(dfLast > dfFirst ? dfLast : dfFirst + 1), m_dfUnit(std::max(dfUnit, 0.0))
{}

double CValueAxis::place(double dfValue) const
{
    const double dfWay = m_dfLast - m_dfFirst;
    const double df = std::clamp(dfValue - m_dfFirst, 0.0, dfWay);
    return isLogarithmic() ? std::log1p(df / m_dfUnit) / std::log1p(dfWay / m_dfUnit) : df / dfWay;
}

double CValueAxis::value(double dfPlace) const
{
    const double dfWay = m_dfLast - m_dfFirst;
    const double df = std::clamp(dfPlace, 0.0, 1.0);
    return m_dfFirst +
           (isLogarithmic() ? m_dfUnit * std::expm1(df * std::log1p(dfWay / m_dfUnit)) : df * dfWay);
}

ViewHistogram viewHistogram(const float* pData, int n, int nBins)
{
    ViewHistogram histogram;
    if (!pData || n < 1 || nBins < 1) {
        return histogram;
    }
    std::vector<float> vec;
    const int nStep = 1 + n / g_nSamples;
    vec.reserve(std::size_t(n / nStep) + 1);
    for (std::ptrdiff_t i = 0; i < n; i += nStep) {
        if (std::isfinite(pData[i])) {
            vec.push_back(pData[i]);
        }
    }
    if (vec.empty()) {
        return histogram;
    }
    const auto rank = [&](std::size_t nPart) {
        const auto it = vec.begin() + std::ptrdiff_t((vec.size() - 1) * nPart / 1000);
        std::nth_element(vec.begin(), it, vec.end());
        return double(*it);
    };
    const double dfFirst = rank(1), dfMedian = rank(500);
    const double dfLast = double(*std::max_element(vec.begin(), vec.end()));
    const double dfUnit = std::max(dfMedian - dfFirst, g_dfLeastUnit * (dfLast - dfFirst));
    histogram.axis = CValueAxis(dfFirst, dfLast, dfLast - dfFirst > g_dfTwoDecades * dfUnit ? dfUnit : 0);
    histogram.vecCount.assign(std::size_t(nBins), 0);
    for (const float f : vec) {
        const auto nBin = std::size_t(histogram.axis.place(double(f)) * nBins);
        histogram.vecCount[std::min(nBin, std::size_t(nBins - 1))]++;
    }
    return histogram;
}

}  // namespace tessera
