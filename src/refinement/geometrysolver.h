// Solver: least-squares fit of the geometry, and the covariances and correlations of its numbers.
#pragma once

#include "refinement/geometryresiduals.h"

namespace tessera {

/// The values of all numbers, and which of them are free.
struct GeometryFit {
    CellForm form;                 ///< how the numbers of the cell are to be read
    GeometryNumbers numbers = {};  ///< values of all numbers
    std::vector<int> listFree;     ///< GeometryNumber: the free ones, ascending
};

/// Fits the free numbers by the Levenberg–Marquardt method with the loss 2·(√(1 + s) − 1), where s is the
/// squared distance, in pixels², of a spot in the plane of the frame or of a chain along the beam. Large
/// distances so enter linearly instead of squared. The result does not depend on the number of threads.
///
/// @param nSteps  most steps that the method takes; a fit that has not converged by then counts as done
/// @return false, with the fit unchanged, if nothing is free, there are no spots, or the loss at the start is
///         not finite
/// Source: the loss by Charbonnier, Blanc-Féraud, Aubert & Barlaud (1997), IEEE Trans. Image Process. 6,
/// 298–311.
bool solveGeometry(const CGeometryResiduals& residuals, GeometryFit& fit, int nSteps = 30);

/// Root mean square distance in the plane of the frames in one direction, pixels.
double rmsInPlane(const CGeometryResiduals& residuals, const GeometryFit& fit);

/// Derivatives by the free numbers of half the sum of the losses, which solveGeometry() minimizes. Those of a
/// distance along the beam are of the weighted one, see g_dfWeightAlongBeam.
///
/// The spots of a chain share much of their error, since one reflection falls on the same pixels of
/// successive frames. The gradients are therefore summed chain by chain, and each chain counts as one sample.
struct GeometryNormal {
    Eigen::MatrixXd matHessian;  ///< second derivatives, without those of the single distances
    Eigen::MatrixXd matScore;    ///< gradients, one row per chain
};
/// Computes these derivatives at a fit.
GeometryNormal geometryNormal(const CGeometryResiduals& residuals, const GeometryFit& fit);

/// Covariance of the free numbers, estimated from the residuals (cluster-robust "sandwich" estimator):
/// H⁻¹·(Σ g·gᵀ)·H⁻¹ · C/(C − p) with the gradients g of C chains and p free numbers.
/// Source: White (1980), Econometrica 48, 817–838; by groups Liang & Zeger (1986), Biometrika 73, 13–22.
Eigen::MatrixXd geometryCovariance(const GeometryNormal& normal);

/// Numbers that the peaks do not determine, and that are to be fixed.
struct Undetermined {
    std::vector<int> listNumber;  ///< GeometryNumber, in the order in which they were found
    bool bCell = false;           ///< whether the cell itself is undetermined
};

/// Looks for numbers, apart from those of the cell, whose estimates correlate by more than 0.98 with one
/// another or are a linear combination of all others. Of two correlated numbers the less usual one is listed.
Undetermined undeterminedNumbers(const GeometryNormal& normal, const std::vector<int>& listFree);

}  // namespace tessera
