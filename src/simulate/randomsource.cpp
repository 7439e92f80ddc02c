#include "simulate/randomsource.h"

#include <cmath>

namespace tessera {

CRandomSource::CRandomSource(std::uint64_t nSeed, std::uint64_t nStream)
{
    std::seed_seq seed{std::uint32_t(nSeed), std::uint32_t(nSeed >> 32), std::uint32_t(nStream),
                       std::uint32_t(nStream >> 32)};
    m_engine.seed(seed);
}

double CRandomSource::uniform()
{
    return double(m_engine() >> 11) * 0x1p-53;
}

double CRandomSource::normal()
{
    if (m_bSpare) {
        m_bSpare = false;
        return m_dfSpare;
    }
    const double dfRadius = std::sqrt(-2 * std::log(1 - uniform()));
    const double dfAngle = 2 * 3.14159265358979323846 * uniform();
    m_dfSpare = dfRadius * std::sin(dfAngle);
    m_bSpare = true;
    return dfRadius * std::cos(dfAngle);
}

double CRandomSource::poisson(double dfMean)
{
    if (dfMean <= 0) {
        return 0;
    }
    if (dfMean >= 50) {
        const double df = std::floor(dfMean + std::sqrt(dfMean) * normal() + 0.5);
        return df > 0 ? df : 0;
    }
    // Inversion: walk up the distribution until it passes one uniform number.
    const double dfU = uniform();
    double dfTerm = std::exp(-dfMean), dfSum = dfTerm;
    int n = 0;
    while (dfU >= dfSum && n < 400) {
        ++n;
        dfTerm *= dfMean / n;
        dfSum += dfTerm;
    }
    return n;
}

}  // namespace tessera
