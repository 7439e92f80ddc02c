#include "imaging/lmdiffit.h"

#include <cminpack.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace tessera {

int CLmdifFit::Run(Residuals pResiduals, int m, std::vector<double>& vecPara, void* pContext)
{
    const int n = int(vecPara.size());
    m_vecStdErr.clear();
    m_vecCovariance.clear();
    m_nFev = 0;
    if (!pResiduals || m < 1 || n < 1)
        return 0;
    const std::size_t nPara = vecPara.size();
    const double dfInfinity = std::numeric_limits<double>::infinity();
    m_vecStdErr.assign(nPara, dfInfinity);
    m_vecCovariance.assign(nPara * nPara, dfInfinity);
    if (m < n)
        return 0;  // lmdif's own answer to it

    const std::size_t nRow = std::size_t(m);
    std::vector<double> fvec(nRow), fjac(nRow * nPara), wa4(nRow);
    std::vector<double> qtf(nPara), diag(nPara), wa1(nPara), wa2(nPara), wa3(nPara);
    std::vector<int> ipvt(nPara);
    std::iota(ipvt.begin(), ipvt.end(), 1);
    const double dfTol = std::sqrt(dpmpar(1));
    const int nInfo = lmdif(pResiduals, pContext, m, n, vecPara.data(), fvec.data(), dfTol, dfTol, 0.0,
                            m_nMaxFev, m_dfEpsFcn, diag.data(), m_nMode, m_dfFactor, 0, &m_nFev, fjac.data(),
                            m, ipvt.data(), qtf.data(), wa1.data(), wa2.data(), wa3.data(), wa4.data());
    if (m == n)
        return nInfo;

    const double dfNorm = enorm(m, fvec.data());
    const double dfVariance = dfNorm * dfNorm / (m - n);
    covar(n, fjac.data(), m, ipvt.data(), dpmpar(1), wa1.data());
    for (std::size_t i = 0; i < nPara; i++) {
        m_vecStdErr[i] = std::sqrt(dfVariance * fjac[i * (nRow + 1)]);
        for (std::size_t j = 0; j < nPara; j++)
            m_vecCovariance[i * nPara + j] = dfVariance * fjac[j * nRow + i];
    }
    return nInfo;
}

}  // namespace tessera
