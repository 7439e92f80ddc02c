#include "reciprocal/centreoffset.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"

#include <Eigen/Dense>

#include <cmath>
#include <cstddef>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nUnknowns = 11;
constexpr double g_dfRadian = g_dfPi / 180;
using Unknowns = Eigen::Matrix<double, g_nUnknowns, 1>;
using Normal = Eigen::Matrix<double, g_nUnknowns, g_nUnknowns>;

/// The inverse of a symmetric positive matrix, found on a scale where its diagonal is 1. None when the data
/// do not determine all unknowns.
std::optional<Normal> inverseOf(const Normal& normal)
{
    if (!(normal.diagonal().array() > 0).all()) {
        return std::nullopt;
    }
    const Unknowns scale = normal.diagonal().cwiseSqrt().cwiseInverse();
    Eigen::FullPivLU<Normal> factors(scale.asDiagonal() * normal * scale.asDiagonal());
    factors.setThreshold(1e-10);
    if (!factors.isInvertible()) {
        return std::nullopt;
    }
    return Normal(scale.asDiagonal() * factors.inverse() * scale.asDiagonal());
}

/// One reflection's part of the fit: its three rows of coefficients and its point.
struct Equations {
    Eigen::Matrix<double, 3, g_nUnknowns> rows = Eigen::Matrix<double, 3, g_nUnknowns>::Zero();
    Eigen::Vector3d point;
};

Equations equationsOf(const Peak3D& peak, double dfPixelSize, double dfAxis)
{
    // Columns of s·Rx(θ)·Rz(φ) for the two directions of the frame.
    const double dfTilt = peak.dfFrameTilt * g_dfRadian;
    const double dfCos = dfPixelSize * std::cos(dfAxis);
    const double dfSin = dfPixelSize * std::sin(dfAxis);
    Equations equations;
    equations.point << double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D);
    for (int n = 0; n < 3; ++n) {
        equations.rows(n, n * 3) = roundedIndex(peak.dfH);
        equations.rows(n, n * 3 + 1) = roundedIndex(peak.dfK);
        equations.rows(n, n * 3 + 2) = roundedIndex(peak.dfL);
    }
    equations.rows.col(9) << dfCos, dfSin * std::cos(dfTilt), dfSin * std::sin(dfTilt);
    equations.rows.col(10) << -dfSin, dfCos * std::cos(dfTilt), dfCos * std::sin(dfTilt);
    return equations;
}

/// What a round of the fit finds.
struct OffsetFit {
    CentreOffset offset;
    std::vector<double> vecDistance;  ///< how far each point is missed, Å⁻¹
};

std::optional<OffsetFit> fitOnce(const std::vector<Equations>& vecEquations)
{
    if (vecEquations.size() < 6) {
        return std::nullopt;
    }
    Normal normal = Normal::Zero();
    Unknowns right = Unknowns::Zero();
    for (const Equations& equations : vecEquations) {
        normal += equations.rows.transpose() * equations.rows;
        right += equations.rows.transpose() * equations.point;
    }
    const std::optional<Normal> inverse = inverseOf(normal);
    if (!inverse) {
        return std::nullopt;
    }
    const Unknowns solution = *inverse * right;

    OffsetFit fit;
    double dfSquares = 0;
    for (const Equations& equations : vecEquations) {
        const double dfSquare = (equations.point - equations.rows * solution).squaredNorm();
        fit.vecDistance.push_back(std::sqrt(dfSquare));
        dfSquares += dfSquare;
    }
    const double dfVariance = dfSquares / double(3 * vecEquations.size() - g_nUnknowns);
    fit.offset.dfX = solution[9];
    fit.offset.dfY = solution[10];
    fit.offset.dfErrorX = std::sqrt(dfVariance * (*inverse)(9, 9));
    fit.offset.dfErrorY = std::sqrt(dfVariance * (*inverse)(10, 10));
    fit.offset.dfRms = std::sqrt(dfSquares / double(vecEquations.size()));
    if (!std::isfinite(fit.offset.dfX) || !std::isfinite(fit.offset.dfY)) {
        return std::nullopt;
    }
    return fit;
}

}  // namespace

std::optional<CentreOffset> fitCentreOffset(const QList<Peak3D>& listPeak, double dfPixelSize,
                                            double dfRotationAxis)
{
    std::vector<Equations> vecEquations;
    for (const Peak3D& peak : listPeak) {
        vecEquations.push_back(equationsOf(peak, dfPixelSize, dfRotationAxis * g_dfRadian));
    }
    const std::optional<OffsetFit> fit = fitOnce(vecEquations);
    if (!fit) {
        return std::nullopt;
    }
    std::vector<Equations> vecNear;
    for (size_t n = 0; n < vecEquations.size(); ++n) {
        if (fit->vecDistance[n] <= 3 * fit->offset.dfRms) {
            vecNear.push_back(vecEquations[n]);
        }
    }
    const std::optional<OffsetFit> fitNear = fitOnce(vecNear);
    return fitNear ? fitNear->offset : fit->offset;
}

}  // namespace tessera
