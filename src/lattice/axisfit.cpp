#include "lattice/axisfit.h"

#include "geometry/angles.h"

#include <array>
#include <cmath>
#include <map>

namespace tessera {

namespace {

// The unknowns are the nine components of the reciprocal basis, the azimuth in radians, and the curvature.
constexpr int g_nUnknowns = 11;
constexpr int g_nAzimuth = 9;
constexpr int g_nCurvature = 10;
using Unknowns = Eigen::Matrix<double, g_nUnknowns, 1>;
using Normal = Eigen::Matrix<double, g_nUnknowns, g_nUnknowns>;
using Derivatives = Eigen::Matrix<double, 3, g_nUnknowns>;

/// The equation of one peak in a round of the fit.
struct Equation {
    std::array<int, 3> aIndex = {};
    Eigen::Vector3d error;    ///< distance of the point from its lattice point, Å⁻¹
    Derivatives derivatives;  ///< of that distance with respect to the unknowns
};

std::vector<Equation> equationsOf(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                  const AxisFit& fit, double dfTolerance)
{
    const Eigen::Matrix3d matReciprocal = fit.basis.inverse();
    std::vector<Equation> vecEquation;
    for (const FlatPeak& peak : vecPeak) {
        const Eigen::Vector3d sphere = onSphere(peak, geometry, fit.dfAzimuth);
        const Eigen::Vector3d bent(sphere.x(), sphere.y(), fit.dfCurvature * sphere.z());
        const Eigen::Vector3d point = turnedByTilt(bent, peak.dfTilt);
        const Eigen::Vector3d index = fit.basis * point;
        const Eigen::Vector3d whole = index.array().round();
        if (!((index - whole).cwiseAbs().maxCoeff() < dfTolerance) || whole.squaredNorm() == 0) {
            continue;
        }
        Equation equation;
        equation.aIndex = {int(whole.x()), int(whole.y()), int(whole.z())};
        equation.error = point - matReciprocal * whole;
        for (int n = 0; n < 3; ++n) {
            equation.derivatives.block<3, 3>(0, 3 * n) = whole[n] * Eigen::Matrix3d::Identity();
        }
        equation.derivatives.col(g_nAzimuth) = -turnedByTilt({-bent.y(), bent.x(), 0}, peak.dfTilt);
        equation.derivatives.col(g_nCurvature) = -turnedByTilt({0, 0, sphere.z()}, peak.dfTilt);
        vecEquation.push_back(equation);
    }
    return vecEquation;
}

/// The inverse of the normal matrix; nothing where a combination of unknowns is undetermined.
std::optional<Normal> invertedNormal(const std::vector<Equation>& vecEquation)
{
    Normal matNormal = Normal::Zero();
    for (const Equation& equation : vecEquation) {
        matNormal += equation.derivatives.transpose() * equation.derivatives;
    }
    // The unknowns have different units.
    const Unknowns scale = matNormal.diagonal().cwiseSqrt().cwiseInverse();
    if (!scale.allFinite()) {
        return std::nullopt;
    }
    const Eigen::SelfAdjointEigenSolver<Normal> solver(
        Normal(scale.asDiagonal() * matNormal * scale.asDiagonal()));
    const double dfFree = 1e-9;  // the sum of all eigenvalues is the number of unknowns
    if (!(solver.eigenvalues()[0] > dfFree)) {
        return std::nullopt;
    }
    const Normal matInverse = solver.eigenvectors() * solver.eigenvalues().cwiseInverse().asDiagonal() *
                              solver.eigenvectors().transpose();
    return Normal(scale.asDiagonal() * matInverse * scale.asDiagonal());
}

Unknowns solutionOf(const std::vector<Equation>& vecEquation, const Normal& matInverse)
{
    Unknowns right = Unknowns::Zero();
    for (const Equation& equation : vecEquation) {
        right += equation.derivatives.transpose() * equation.error;
    }
    return matInverse * right;
}

/// Standard errors from the residuals, which are first summed over the peaks of each reflection.
Unknowns standardErrors(const std::vector<Equation>& vecEquation, const Normal& matInverse)
{
    std::map<std::array<int, 3>, Unknowns> mapSum;
    for (const Equation& equation : vecEquation) {
        const auto it = mapSum.try_emplace(equation.aIndex, Unknowns::Zero()).first;
        it->second += equation.derivatives.transpose() * equation.error;
    }
    Normal matSquares = Normal::Zero();
    for (const auto& sum : mapSum) {
        matSquares += sum.second * sum.second.transpose();
    }
    return (matInverse * matSquares * matInverse).diagonal().cwiseSqrt();
}

}  // namespace

std::optional<AxisFit> fitAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                               double dfAzimuth, const LatticeBasis& basis, double dfTolerance)
{
    const int nMostRounds = 30;
    AxisFit fit;
    fit.dfAzimuth = dfAzimuth;
    fit.dfCurvature = 1;
    fit.basis = basis;
    fit.nPeaks = int(vecPeak.size());
    for (int nRound = 0; nRound < nMostRounds; ++nRound) {
        const std::vector<Equation> vecEquation = equationsOf(vecPeak, geometry, fit, dfTolerance);
        const std::optional<Normal> inverse = invertedNormal(vecEquation);
        if (!inverse) {
            return std::nullopt;
        }
        const Unknowns change = solutionOf(vecEquation, *inverse);
        const Eigen::Matrix3d matChange = Eigen::Map<const Eigen::Matrix3d>(
            change.data());  // stored by columns
        fit.nFitting = int(vecEquation.size());
        fit.basis = (fit.basis.inverse() + matChange).inverse();
        fit.dfAzimuth += degrees(change[g_nAzimuth]);
        fit.dfCurvature += change[g_nCurvature];
        const Unknowns errors = standardErrors(vecEquation, *inverse);
        fit.dfAzimuthError = degrees(errors[g_nAzimuth]);
        fit.dfCurvatureError = errors[g_nCurvature];
        if (!fit.basis.allFinite() || !(std::abs(fit.dfCurvature) < 100)) {
            return std::nullopt;
        }
        if (std::abs(change[g_nAzimuth]) < 1e-6 && std::abs(change[g_nCurvature]) < 1e-4) {
            break;
        }
    }
    return fit;
}

}  // namespace tessera
