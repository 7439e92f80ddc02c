// CSmoothCurve: a natural cubic spline through noisy points of the plane, by least squares.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

/// A curve over the frame number: the natural cubic spline whose values at equally spaced knots fit points
/// best. Beyond the first and the last knot it keeps the value that it has there.
/// Source: natural splines by de Boor (2001), A Practical Guide to Splines, revised edition, chapter IV.
class CSmoothCurve {
public:
    /// A straight line for one interval, a constant for none.
    CSmoothCurve(double dfFirst, double dfLast, int nIntervals);

    /// Least squares of points at some frames with their weights, both coordinates in common.
    void fit(const std::vector<double>& listAt, const std::vector<FramePlace>& listPoint,
             const std::vector<double>& listWeight);
    FramePlace at(double dfFrame) const;

private:
    /// What each knot's value is worth at a frame.
    Eigen::RowVectorXd rowAt(double dfFrame) const;

    double m_dfFirst;
    double m_dfStep;  ///< frames from knot to knot
    int m_nKnots;
    Eigen::MatrixXd m_matCurvature;  ///< second derivatives at the knots by the values there, times step²
    Eigen::MatrixX2d m_matValue;     ///< x and y at the knots
};

}  // namespace tessera
