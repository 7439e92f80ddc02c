// CLmderFit: a least-squares fit with analytic derivatives.
#pragma once

#include <vector>

namespace tessera {

/// Called by the fit. For iflag 1 it fills the m residuals `fvec`, for iflag 2 the Jacobian `fjac`, column
/// by column with `ldfjac` rows; a negative result ends the fit.
using LmderFunction = int (*)(void* pData, int m, int n, const double* x, double* fvec, double* fjac,
                              int ldfjac, int iflag);

/// Levenberg-Marquardt fit by the lmder routine of CMinpack.
///
/// The data of a fit travel by pointer, so fits may run side by side, one per object.
/// Source: Moré (1978), Lect. Notes Math. 630, 105.
class CLmderFit {
public:
    /// All parameters start at 1.
    explicit CLmderFit(int nParam);

    /// Does nothing unless `vecParam` has m_nParam entries.
    void SetParams(const std::vector<double>& vecParam);

    /// Fits `m` residuals. `pData` is handed to `fcn` as it is.
    ///
    /// s² = |r|²/(m − n) scales errors and covariance; with m = n that is a division by 0, and the errors
    /// are infinite or no numbers, as nothing is known of them. If the routine refuses its input (0) or
    /// `fcn` ended the fit (negative), errors and covariance are no numbers, and on 0 the parameters stand.
    ///
    /// @return -1 for m below 1 or no function (nothing changes), else the info value of lmder
    int Run(LmderFunction fcn, int m, void* pData = nullptr);

    int m_nParam;
    std::vector<double> m_vecParam;   ///< start values, then fitted values
    std::vector<double> m_vecStdErr;  ///< e.s.d. of each parameter after a fit
    int m_nMaxFev = 10000;
    double m_dfEpsFcn = 0;  ///< read only by a finite-difference form
    int m_nMode = 1;
    double m_dfFactor = 100.0;
    std::vector<double> m_vecCovariance;  ///< n×n, row by row
    std::vector<double> m_vecResidual;    ///< at the solution
    /// Of each parameter, whether the data leave it open: its row of the covariance is then 0, and so is its
    /// e.s.d.
    std::vector<bool> m_vecOpen;
};

}  // namespace tessera
