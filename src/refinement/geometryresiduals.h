// CGeometryResiduals: distances of the peaks from the places that a geometry predicts, with derivatives.
#pragma once

#include "refinement/cellform.h"
#include "refinement/geometryspot.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

/// A matrix that is stored row by row.
using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// Weight of the distance along the beam relative to the distances in the plane of the frame. A peak is seen
/// all the while its reflection crosses the Ewald sphere, so its distance along the beam scatters by the
/// width of the rocking curve: several times the uncertainty in the plane, even averaged over its frames.
constexpr double g_dfWeightAlongBeam = 0.3;

/// The rows of the residuals, in pixels: two for each spot, measured less expected along and across the axis
/// in the plane of the frame; then one for each chain, the distance along the beam averaged over its spots
/// with their intensities as weights, times g_dfWeightAlongBeam.
class CGeometryResiduals {
public:
    /// @param listSpot  spots with numbered chains; must outlive this object
    /// @param listUsed  indices of the spots that take part; chains without such a spot have no row
    /// @param nJobs     threads of evaluate(); the result is the same for every number
    CGeometryResiduals(const std::vector<GeometrySpot>& listSpot, std::vector<int> listUsed,
                       const DiffractionGeometry& fixed, double dfAzimuthZero, int nJobs = 1);

    int spots() const { return int(m_listUsed.size()); }  ///< spots that take part
    int chains() const { return m_nChains; }              ///< chains of these spots
    int rows() const { return 2 * spots() + chains(); }   ///< length of the residual vector
    /// For each spot that takes part, the row of its chain.
    const std::vector<int>& chainRows() const { return m_listChainRow; }

    /// Computes the residuals and, if asked to, their derivatives.
    /// @param listFree     GeometryNumber: numbers to differentiate by, ascending
    /// @param vecResidual  becomes rows() long
    /// @param pJacobian    may be null; becomes rows() × listFree.size()
    void evaluate(const GeometryNumbers& numbers, const CellForm& form, const std::vector<int>& listFree,
                  Eigen::VectorXd& vecResidual, RowMatrix* pJacobian) const;

private:
    struct Terms;
    struct Along;
    Terms termsOf(const GeometryNumbers& numbers, const CellForm& form) const;
    /// Fills the in-plane rows of the spots nFirst to nEnd − 1, and sums their contributions to the rows of
    /// their chains.
    void evaluateSpots(int nFirst, int nEnd, const Terms& terms, const std::vector<int>& listFree,
                       Eigen::VectorXd& vecResidual, RowMatrix* pJacobian, Along& along) const;

    const std::vector<GeometrySpot>& m_listSpot;
    std::vector<int> m_listUsed;
    std::vector<int> m_listChainRow;
    std::vector<double> m_listShare;  ///< weight of each used spot within its chain; they add up to 1
    std::vector<double> m_listTilt;   ///< the distinct tilts, degrees
    std::vector<int> m_listTiltOf;    ///< for each used spot, the index of its tilt in m_listTilt
    int m_nChains = 0;
    DiffractionGeometry m_fixed;  ///< wavelength, size of a pixel, reference radius, middle tilt
    double m_dfCos = 1;           ///< cosine of twice the azimuth from which the ellipse is counted
    double m_dfSin = 0;           ///< sine of the same
    int m_nJobs = 1;
};

}  // namespace tessera
