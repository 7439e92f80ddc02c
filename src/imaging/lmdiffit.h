// CLmdifFit: least-squares fits without derivatives, with standard errors.
#pragma once

#include <vector>

namespace tessera {

/// Levenberg-Marquardt fit by CMinpack's lmdif, with forward differences for the Jacobian.
///
/// Settings: ftol = xtol = √ε of a double, gtol 0, at most 10000 evaluations, scaling chosen by the
/// routine, step bound factor 100. What the residuals need comes through the context pointer, so fits
/// may run side by side, each with an object of its own.
///
/// Source: Moré (1978), Lect. Notes Math. 630, 105; Moré, Garbow & Hillstrom (1980), ANL-80-74.
class CLmdifFit {
public:
    /// Writes m residuals for n parameters. Called with nFlag 0 it returns 0 and does nothing; a
    /// negative result ends the fit, and Run returns it.
    using Residuals = int (*)(void* pContext, int m, int n, const double* pPara, double* pResidual,
                              int nFlag);

    /// Refines the start parameters in place against m residuals.
    ///
    /// @return info of lmdif: 1 to 4 convergence, 5 to 8 limits of the routine, 0 bad input (m below
    ///         the number of parameters, for instance); 0 with nothing done for m < 1 or no parameters
    int Run(Residuals pResiduals, int m, std::vector<double>& vecPara, void* pContext = nullptr);

    /// Relative error of the residual function, which sets the steps of the forward differences: their
    /// relative size is its root, and at least √ε.
    void SetFunctionError(double dfEpsFcn) { m_dfEpsFcn = dfEpsFcn; }
    /// Evaluations of the residuals in the last run, those for the Jacobian included.
    int Evaluations() const { return m_nFev; }

    /// Standard errors of the parameters, from the covariance at the solution with the residual
    /// variance Σr²/(m − n). With m ≤ n the data say nothing of the errors: all are +infinity.
    const std::vector<double>& StdErr() const { return m_vecStdErr; }
    /// n × n covariances, row by row; all +infinity with m ≤ n.
    const std::vector<double>& Covariance() const { return m_vecCovariance; }

private:
    int m_nFev = 0;
    int m_nMaxFev = 10000;
    double m_dfEpsFcn = 0.0;
    int m_nMode = 1;
    double m_dfFactor = 100.0;
    std::vector<double> m_vecStdErr;
    std::vector<double> m_vecCovariance;
};

}  // namespace tessera
