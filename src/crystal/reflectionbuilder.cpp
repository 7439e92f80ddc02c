#include "crystal/reflectionbuilder.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfMaxIndices = 1e9;

}  // namespace

bool CReflectionBuilder::setUnitCell(double a, double b, double c, double alpha, double beta, double gamma)
{
    a = std::fabs(a);
    b = std::fabs(b);
    c = std::fabs(c);
    alpha = std::fabs(alpha);
    beta = std::fabs(beta);
    gamma = std::fabs(gamma);
    if (alpha >= beta + gamma || beta >= alpha + gamma || gamma >= alpha + beta) {
        return false;
    }
    const double dfAlpha = radians(alpha), dfBeta = radians(beta), dfGamma = radians(gamma);
    const double dfCosA = std::cos(dfAlpha), dfCosB = std::cos(dfBeta), dfCosG = std::cos(dfGamma);
    const double dfSinB = std::sin(dfBeta);
    const double dfX = (dfCosG - dfCosA * dfCosB) / dfSinB;
    const double dfY = std::sqrt(1 - dfCosA * dfCosA - dfX * dfX);
    const std::array<DoubleVector, 3> aDirect = {DoubleVector{a * dfSinB, 0, a * dfCosB},
                                                 DoubleVector{b * dfX, b * dfY, b * dfCosA},
                                                 DoubleVector{0, 0, c}};
    const double dfVolume = dot(aDirect[0], cross(aDirect[1], aDirect[2]));
    if (!(dfVolume > 1e-6 * a * b * c) || !std::isfinite(dfVolume)) {
        return false;
    }
    m_dfA = a;
    m_dfB = b;
    m_dfC = c;
    m_dfAlpha = dfAlpha;
    m_dfBeta = dfBeta;
    m_dfGamma = dfGamma;
    m_aDirect = aDirect;
    m_dfVolume = dfVolume;
    for (std::size_t n = 0; n < 3; ++n) {
        const DoubleVector v = cross(aDirect[(n + 1) % 3], aDirect[(n + 2) % 3]);
        m_aReciprocal[n] = {v[0] / dfVolume, v[1] / dfVolume, v[2] / dfVolume};
    }
    return true;
}

bool CReflectionBuilder::build(double dfDStarMax)
{
    m_vecReflection.clear();
    m_dfDStarMax = dfDStarMax;
    if (!(m_dfVolume > 0) || !(dfDStarMax > 0) || !(expectedReflections(dfDStarMax) <= s_dfMaxReflections)) {
        return false;
    }
    double aLargest[3] = {0, 0, 0};
    for (int nPhi = 0; nPhi <= 360; nPhi += 10) {
        for (int nTheta = 0; nTheta <= 90; nTheta += 10) {
            const double dfPhi = radians(nPhi), dfTheta = radians(nTheta);
            const DoubleVector pt = {dfDStarMax * std::sin(dfTheta) * std::cos(dfPhi),
                                     dfDStarMax * std::sin(dfTheta) * std::sin(dfPhi),
                                     dfDStarMax * std::cos(dfTheta)};
            for (std::size_t n = 0; n < 3; ++n) {
                aLargest[n] = std::max(aLargest[n], std::fabs(dot(pt, m_aDirect[n])));
            }
        }
    }
    const double dfIndices = (2 * aLargest[0] + 1) * (2 * aLargest[1] + 1) * (2 * aLargest[2] + 1);
    if (!(dfIndices <= g_dfMaxIndices)) {
        return false;
    }
    const int nH = int(aLargest[0]), nK = int(aLargest[1]), nL = int(aLargest[2]);

    m_vecReflection.reserve(std::size_t(expectedReflections(dfDStarMax)) + 1);
    const auto place = [&](int h, int k, int l) {
        return (std::ptrdiff_t(h + nH) * (2 * nK + 1) + k + nK) * (2 * nL + 1) + l + nL;
    };
    std::vector<char> vecVisited(place(nH, nK, nL) + 1);
    for (int h = 0; h <= nH; ++h) {
        for (int k = -nK; k <= nK; ++k) {
            for (int l = -nL; l <= nL; ++l) {
                DoubleVector g;
                for (std::size_t n = 0; n < 3; ++n) {
                    g[n] = h * m_aReciprocal[0][n] + k * m_aReciprocal[1][n] + l * m_aReciprocal[2][n];
                }
                if ((h == 0 && k == 0 && l == 0) || !(dot(g, g) < dfDStarMax * dfDStarMax) ||
                    vecVisited[place(h, k, l)]) {
                    continue;
                }
                m_vecReflection.push_back({h, k, l});
                vecVisited[place(h, k, l)] = vecVisited[place(-h, -k, -l)] = 1;
            }
        }
    }
    const std::size_t nHalf = m_vecReflection.size();
    for (std::size_t n = 0; n < nHalf; ++n) {
        const std::array<int, 3> hkl = m_vecReflection[n];
        m_vecReflection.push_back({-hkl[0], -hkl[1], -hkl[2]});
    }
    return true;
}

double CReflectionBuilder::expectedReflections(double dfDStarMax) const
{
    return 4 * g_dfPi * std::pow(dfDStarMax, 3) / 3 * m_dfVolume;
}

}  // namespace tessera
