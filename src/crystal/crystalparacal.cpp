#include "crystal/crystalparacal.h"

#include <cmath>

#include "records/pi.h"

namespace tessera {

void CCrystalParaCal::setUnitCell(double a, double b, double c, double alpha, double beta, double gamma)
{
    constexpr double dfRadians = g_dfPi / 180.0;
    m_dfA = a;
    m_dfB = b;
    m_dfC = c;
    m_dfAlpha = alpha;
    m_dfBeta = beta;
    m_dfGamma = gamma;
    const double dfCosAlpha = std::cos(alpha * dfRadians), dfSinAlpha = std::sin(alpha * dfRadians);
    const double dfCosBeta = std::cos(beta * dfRadians), dfSinBeta = std::sin(beta * dfRadians);
    const double dfCosGamma = std::cos(gamma * dfRadians), dfSinGamma = std::sin(gamma * dfRadians);
    const double df11 = b * c * dfSinAlpha, df22 = a * c * dfSinBeta, df33 = a * b * dfSinGamma;
    m_dfS11 = df11 * df11;
    m_dfS22 = df22 * df22;
    m_dfS33 = df33 * df33;
    m_dfS12 = (dfCosBeta * dfCosAlpha - dfCosGamma) * a * b * c * c;
    m_dfS23 = (dfCosGamma * dfCosBeta - dfCosAlpha) * a * a * b * c;
    m_dfS13 = (dfCosGamma * dfCosAlpha - dfCosBeta) * a * b * b * c;
    m_dfVolume = a * b * c *
                 std::sqrt(1 - dfCosAlpha * dfCosAlpha - dfCosBeta * dfCosBeta - dfCosGamma * dfCosGamma +
                           2 * dfCosAlpha * dfCosBeta * dfCosGamma);
}

double CCrystalParaCal::calDStar(int h, int k, int l) const
{
    const double dfH = h, dfK = k, dfL = l;
    return std::sqrt(m_dfS11 * dfH * dfH + m_dfS22 * dfK * dfK + m_dfS33 * dfL * dfL +
                     2 * m_dfS12 * dfH * dfK + 2 * m_dfS23 * dfK * dfL + 2 * m_dfS13 * dfH * dfL) /
           m_dfVolume;
}

}  // namespace tessera
