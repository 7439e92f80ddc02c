#include "imaging/lmderfit.h"

#include "imaging/fitcovariance.h"

#include <cminpack.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace tessera {

CLmderFit::CLmderFit(int nParam)
    : m_nParam(nParam),
      m_vecParam(std::size_t(nParam), 1.0),
      m_vecStdErr(std::size_t(nParam), 0.0),
      m_vecCovariance(std::size_t(nParam) * std::size_t(nParam), 0.0),
      m_vecOpen(std::size_t(nParam), false)
{}

void CLmderFit::SetParams(const std::vector<double>& vecParam)
{
    if (vecParam.size() == std::size_t(m_nParam)) {
        m_vecParam = vecParam;
    }
}

int CLmderFit::Run(LmderFunction fcn, int m, void* pData)
{
    if (m < 1 || !fcn) {
        return -1;
    }
    const int n = m_nParam;
    const std::size_t nSize = std::size_t(n), mSize = std::size_t(m);
    std::vector<double> x = m_vecParam, fvec(mSize), fjac(mSize * nSize), diag(nSize), qtf(nSize);
    std::vector<double> wa1(nSize), wa2(nSize), wa3(nSize), wa4(mSize);
    std::vector<int> ipvt(nSize);
    // MINPACK counts columns from 1.
    std::iota(ipvt.begin(), ipvt.end(), 1);
    // ftol and xtol: of the sum of squares and of the parameters. Moré's root of the machine precision is the
    // best that can be reached. gtol is 0, so the gradient ends a fit only where it is 0.
    const double dfTolerance = std::sqrt(dpmpar(1));
    int nFev = 0, nJev = 0;
    const int nInfo = lmder(fcn, pData, m, n, x.data(), fvec.data(), fjac.data(), m, dfTolerance, dfTolerance,
                            0.0, m_nMaxFev, diag.data(), m_nMode, m_dfFactor, 0, &nFev, &nJev, ipvt.data(),
                            qtf.data(), wa1.data(), wa2.data(), wa3.data(), wa4.data());
    m_vecParam = x;
    m_vecResidual = fvec;
    m_vecOpen.assign(nSize, false);
    if (nInfo <= 0) {
        // Refused or ended from outside: there is no factored Jacobian to take errors from.
        const double dfNaN = std::numeric_limits<double>::quiet_NaN();
        m_vecStdErr.assign(nSize, dfNaN);
        m_vecCovariance.assign(nSize * nSize, dfNaN);
        return nInfo;
    }
    // fjac now has the triangular factor of the Jacobian, its columns in the order of ipvt.
    FitCovariance errors = covarianceOfFit(fvec, std::move(fjac), ipvt);
    m_vecStdErr = std::move(errors.vecStdErr);
    m_vecCovariance = std::move(errors.vecCovariance);
    m_vecOpen = std::move(errors.vecOpen);
    return nInfo;
}

}  // namespace tessera
