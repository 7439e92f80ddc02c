#include "imaging/fitcovariance.h"

#include <cminpack.h>

#include <cmath>
#include <cstddef>

namespace tessera {

FitCovariance covarianceOfFit(const std::vector<double>& vecResidual, std::vector<double> vecJacobian,
                              const std::vector<int>& vecPivot)
{
    const std::size_t nRows = vecResidual.size(), nParams = vecPivot.size();
    const int m = int(nRows), n = int(nParams);
    const double dfNorm = enorm(m, vecResidual.data());
    const double dfVariance = dfNorm * dfNorm / (m - n);
    std::vector<double> vecWork(nParams);
    covar(n, vecJacobian.data(), m, vecPivot.data(), dpmpar(1), vecWork.data());

    FitCovariance result;
    result.vecStdErr.resize(nParams);
    result.vecCovariance.resize(nParams * nParams);
    result.vecOpen.resize(nParams);
    for (std::size_t i = 0; i < nParams; ++i) {
        const double dfDiagonal = vecJacobian[i * (nRows + 1)];
        result.vecOpen[i] = dfDiagonal == 0;
        result.vecStdErr[i] = std::sqrt(dfVariance * dfDiagonal);
        for (std::size_t j = 0; j < nParams; ++j) {
            result.vecCovariance[i * nParams + j] = dfVariance * vecJacobian[i * nRows + j];
        }
    }
    return result;
}

}  // namespace tessera
