// CSmoothCurve: a natural cubic spline through noisy points of the plane, by least squares.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

/// A curve over the frame number: the natural cubic spline on equally spaced knots that fits given points
/// best. Beyond the first and the last knot it is constant. Source: natural splines by de Boor (2001), A
/// Practical Guide to Splines, revised edition, chapter IV.
class CSmoothCurve {
public:
    /// @param dfFirst, dfLast  first and last knot
    /// @param nIntervals       intervals between knots; 1 makes a straight line, 0 a constant
    CSmoothCurve(double dfFirst, double dfLast, int nIntervals);

    /// Fits the curve to points at given frames, each with a weight for both coordinates.
    void fit(const std::vector<double>& listAt, const std::vector<FramePlace>& listPoint,
             const std::vector<double>& listWeight);
    /// The value of the curve.
    FramePlace at(double dfFrame) const;

private:
    /// The weights with which the values at the knots enter the value at a frame.
    Eigen::RowVectorXd rowAt(double dfFrame) const;

    double m_dfFirst;
    double m_dfStep;  ///< frames from knot to knot
    int m_nKnots;
    Eigen::MatrixXd m_matCurvature;  ///< second derivatives at the knots by the values there, times step²
    Eigen::MatrixX2d m_matValue;     ///< x and y at the knots
};

}  // namespace tessera
