#include "integration/electronscattering.h"

#include <ceres/tiny_solver.h>
#include <ceres/tiny_solver_autodiff_function.h>
#include <gemmi/c4322.hpp>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr int g_nSteps = 60;
constexpr int g_nNumbers = 9;

double stepAt(int n)
{
    return g_dfMostSineOverLambda * n / g_nSteps;
}

/// The residuals at all steps. The widths are fitted as logarithms, which keeps them positive.
struct Difference {
    std::array<double, g_nSteps + 1> adfTable = {};

    template <typename T>
    bool operator()(const T* const p, T* pResidual) const
    {
        using std::exp;
        for (int n = 0; n <= g_nSteps; ++n) {
            const double dfSquare = stepAt(n) * stepAt(n);
            T sum = p[8];
            for (int i = 0; i < 4; ++i) {
                sum += p[i] * exp(-exp(p[4 + i]) * dfSquare);
            }
            pResidual[n] = sum - adfTable[n];
        }
        return true;
    }
};

/// The fit that starts with two neighbouring Gaussians of the five combined into one.
FourGaussians fitFrom(const Difference& difference, const gemmi::C4322<double>::Coef& table, int nJoined)
{
    using Function = ceres::TinySolverAutoDiffFunction<Difference, g_nSteps + 1, g_nNumbers>;
    Eigen::Matrix<double, g_nNumbers, 1> p = Eigen::Matrix<double, g_nNumbers, 1>::Zero();
    for (int n = 0; n < 5; ++n) {
        const int i = n <= nJoined ? n : n - 1;
        p[i] += table.a(n);
        p[4 + i] += table.a(n) * std::log(table.b(n));
    }
    for (int i = 0; i < 4; ++i) {
        p[4 + i] /= p[i];
    }
    const Function function(difference);
    ceres::TinySolver<Function> solver;
    solver.options.max_num_iterations = 200;
    solver.Solve(function, &p);
    FourGaussians fit;
    for (size_t i = 0; i < 4; ++i) {
        fit.a[i] = p[Eigen::Index(i)];
        fit.b[i] = std::exp(p[Eigen::Index(4 + i)]);
    }
    fit.c = p[8];
    for (int n = 0; n <= g_nSteps; ++n) {
        fit.dfWorst = std::max(fit.dfWorst, std::abs(fit.value(stepAt(n)) - difference.adfTable[n]));
    }
    return fit;
}

}  // namespace

double FourGaussians::value(double dfS) const
{
    double df = c;
    for (size_t i = 0; i < 4; ++i) {
        df += a[i] * std::exp(-b[i] * dfS * dfS);
    }
    return df;
}

double electronScattering(gemmi::El element, double dfS)
{
    return gemmi::C4322<double>::get(element).calculate_sf(dfS * dfS);
}

FourGaussians fourGaussians(gemmi::El element)
{
    const gemmi::C4322<double>::Coef& table = gemmi::C4322<double>::get(element);
    Difference difference;
    for (int n = 0; n <= g_nSteps; ++n) {
        difference.adfTable[n] = electronScattering(element, stepAt(n));
    }
    FourGaussians best = fitFrom(difference, table, 0);
    for (int nJoined = 1; nJoined < 4; ++nJoined) {
        const FourGaussians fit = fitFrom(difference, table, nJoined);
        if (fit.dfWorst < best.dfWorst) {
            best = fit;
        }
    }
    return best;
}

}  // namespace tessera
