#include "imaging/lmdiffit.h"

#include "imaging/fitcovariance.h"

#include <cminpack.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

namespace tessera {

int CLmdifFit::Run(Residuals pResiduals, int m, std::vector<double>& vecPara, void* pContext)
{
    const int n = int(vecPara.size());
    m_vecStdErr.clear();
    m_vecCovariance.clear();
    m_nFev = 0;
    if (!pResiduals || m < 1 || n < 1) {
        return 0;
    }
    const std::size_t nPara = vecPara.size();
    const double dfInfinity = std::numeric_limits<double>::infinity();
    m_vecStdErr.assign(nPara, dfInfinity);
    m_vecCovariance.assign(nPara * nPara, dfInfinity);
    if (m < n) {
        return 0;  // as lmdif itself answers
    }

    const std::size_t nRow = std::size_t(m);
    std::vector<double> fvec(nRow), fjac(nRow * nPara), wa4(nRow);
    std::vector<double> qtf(nPara), diag(nPara), wa1(nPara), wa2(nPara), wa3(nPara);
    std::vector<int> ipvt(nPara);
    std::iota(ipvt.begin(), ipvt.end(), 1);
    const double dfTol = std::sqrt(dpmpar(1));
    const int nInfo = lmdif(pResiduals, pContext, m, n, vecPara.data(), fvec.data(), dfTol, dfTol, 0.0,
                            m_nMaxFev, m_dfEpsFcn, diag.data(), m_nMode, m_dfFactor, 0, &m_nFev, fjac.data(),
                            m, ipvt.data(), qtf.data(), wa1.data(), wa2.data(), wa3.data(), wa4.data());
    if (m == n) {
        return nInfo;
    }

    FitCovariance errors = covarianceOfFit(fvec, std::move(fjac), ipvt);
    m_vecStdErr = std::move(errors.vecStdErr);
    m_vecCovariance = std::move(errors.vecCovariance);
    return nInfo;
}

}  // namespace tessera
