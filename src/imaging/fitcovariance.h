// Covariance of a least-squares fit: what the data say of the errors of its parameters.
#pragma once

#include <vector>

namespace tessera {

/// What a fit says of the errors of its parameters.
struct FitCovariance {
    std::vector<double> vecStdErr;      ///< of each parameter
    std::vector<double> vecCovariance;  ///< n × n, row by row
    /// Of each parameter, whether the data leave it open: its row of the covariance is then 0, and so is its
    /// standard error.
    std::vector<bool> vecOpen;
};

/// The covariance at the solution of a fit of lmdif or lmder, s²·(JᵀJ)⁻¹ with s² = Σr²/(m − n) for m
/// residuals and n parameters. With m = n that is a division by 0, and the errors are infinite or no numbers.
///
/// @param vecResidual   m residuals at the solution
/// @param vecJacobian   m × n, column by column, as the routine leaves it: the factor R above the diagonal
/// @param vecPivot      the permutation of the n columns, counted from 1
/// Source: covar of MINPACK, Moré, Garbow & Hillstrom (1980), ANL-80-74.
FitCovariance covarianceOfFit(const std::vector<double>& vecResidual, std::vector<double> vecJacobian,
                              const std::vector<int>& vecPivot);

}  // namespace tessera
