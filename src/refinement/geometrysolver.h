// Solver: the least squares of the geometry, and what its normal equations say of the numbers.
#pragma once

#include "refinement/geometryresiduals.h"

namespace tessera {

/// A set of free numbers with the values of all.
struct GeometryFit {
    CellForm form;
    GeometryNumbers numbers = {};
    std::vector<int> listFree;  ///< ascending
};

/// Fits the free numbers by the Levenberg-Marquardt method with the loss 2·(√(1 + s) − 1), where s is the
/// squared distance of a spot in the frame's plane, or of a chain along the beam, in pixels: far ones count
/// by their distance alone. Always the same result, for any number of the
/// residuals' threads.
///
/// @return false, with the fit as it was, where no step lowered the loss to a finite number
/// Source: the loss by Charbonnier, Blanc-Féraud, Aubert & Barlaud (1997), IEEE Trans. Image Process. 6,
/// 298–311.
bool solveGeometry(const CGeometryResiduals& residuals, GeometryFit& fit, int nSteps = 30);

/// Mean square of the distances in the frame's plane along one direction, its root in pixels.
double rmsInPlane(const CGeometryResiduals& residuals, const GeometryFit& fit);

/// Second derivatives of the loss by the free numbers, and its gradients chain by chain (a row for each).
///
/// Spots of a chain have much the same error, as the same reflection falls on the same pixels of frame after
/// frame: they count as one draw.
struct GeometryNormal {
    Eigen::MatrixXd matHessian;
    Eigen::MatrixXd matScore;
};
GeometryNormal geometryNormal(const CGeometryResiduals& residuals, const GeometryFit& fit);

/// Covariance of the free numbers from the residuals themselves: H⁻¹·(Σ g·gᵀ)·H⁻¹ · C/(C − p) with the
/// gradients g of C chains and p numbers.
/// Source: White (1980), Econometrica 48, 817–838; by groups Liang & Zeger (1986), Biometrika 73, 13–22.
Eigen::MatrixXd geometryCovariance(const GeometryNormal& normal);

/// Numbers that the peaks cannot tell from the others, to be fixed, and whether the cell stays determined.
struct Undetermined {
    std::vector<int> listNumber;  ///< in the order in which they were found
    bool bCell = false;           ///< the cell itself is not determined
};

/// Looks for numbers beside those of the cell whose estimates correlate by more than 0.98 with one another,
/// or that all others together imitate. Of those that go together the less usual is named.
Undetermined undeterminedNumbers(const GeometryNormal& normal, const std::vector<int>& listFree);

}  // namespace tessera
