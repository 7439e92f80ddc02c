// CGeometryResiduals: how far the peaks lie from where a geometry has their reflections, with derivatives.
#pragma once

#include "refinement/cellform.h"
#include "refinement/geometryspot.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// Weight of the distance along the beam against those in the frame's plane. A peak is seen while its
/// reflection crosses the sphere, so that its distance spreads over the width of the rocking curve: some
/// times the uncertainty in the plane even in the mean over its frames.
constexpr double g_dfWeightAlongBeam = 0.3;

/// The rows of the residuals, in pixels: two for each spot, in the frame's plane along and across the axis
/// (as seen less as expected); then one for each chain, along the beam, the mean of its spots weighted by the
/// intensity, times g_dfWeightAlongBeam.
class CGeometryResiduals {
public:
    /// @param listSpot  with chains; lent
    /// @param listUsed  numbers of the spots that take part; chains are those that they leave
    /// @param nJobs     threads of evaluate(); the numbers are the same for any
    CGeometryResiduals(const std::vector<GeometrySpot>& listSpot, std::vector<int> listUsed,
                       const DiffractionGeometry& fixed, double dfAzimuthZero, int nJobs = 1);

    int spots() const { return int(m_listUsed.size()); }
    int chains() const { return m_nChains; }
    int rows() const { return 2 * spots() + chains(); }
    /// For each spot that takes part, the row of its chain.
    const std::vector<int>& chainRows() const { return m_listChainRow; }

    /// @param pJacobian  may be null; becomes rows() × listFree.size()
    /// @param listFree   numbers to differentiate by, ascending
    void evaluate(const GeometryNumbers& numbers, const CellForm& form, const std::vector<int>& listFree,
                  Eigen::VectorXd& vecResidual, RowMatrix* pJacobian) const;

private:
    struct Terms;
    struct Along;
    Terms termsOf(const GeometryNumbers& numbers, const CellForm& form) const;
    /// Fills the rows in the plane of some spots, and what they add to those of their chains.
    void evaluateSpots(int nFirst, int nEnd, const Terms& terms, const std::vector<int>& listFree,
                       Eigen::VectorXd& vecResidual, RowMatrix* pJacobian, Along& along) const;

    const std::vector<GeometrySpot>& m_listSpot;
    std::vector<int> m_listUsed;
    std::vector<int> m_listChainRow;
    std::vector<double> m_listShare;  ///< of each used spot in its chain, all of one are 1 together
    std::vector<double> m_listTilt;   ///< the different tilts
    std::vector<int> m_listTiltOf;    ///< of each used spot its place among them
    int m_nChains = 0;
    DiffractionGeometry m_fixed;  ///< wavelength, size of a pixel, reference radius, middle tilt
    double m_dfCos = 1;           ///< of twice the azimuth that the ellipse counts from
    double m_dfSin = 0;
    int m_nJobs = 1;
};

}  // namespace tessera
