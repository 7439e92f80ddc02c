// CKnotCurve: a cubic spline on equally spaced knots, linear in its coefficients.
#pragma once

#include <array>
#include <vector>

namespace tessera {

/// A uniform cubic B-spline over a range. Source: de Boor (1978), A Practical Guide to Splines.
class CKnotCurve {
public:
    /// @param dfFirst, dfLast  ends of the range
    /// @param nIntervals       intervals between knots, at least 1
    CKnotCurve(double dfFirst, double dfLast, int nIntervals);

    /// The four successive coefficients on which the value at a place depends, and their weights.
    struct Basis {
        int nFirst = 0;  ///< index of the first of the four coefficients
        std::array<double, 4> aWeight = {};
    };
    /// The basis functions at a place. Places outside the range are moved to its nearest end.
    Basis basis(double dfAt) const;

    /// The value of the curve at a place.
    double value(double dfAt) const;
    int coefficientCount() const { return int(m_listCoefficient.size()); }  ///< intervals and three more
    std::vector<double>& coefficients() { return m_listCoefficient; }       ///< all coefficients, to be set
    const std::vector<double>& coefficients() const { return m_listCoefficient; }  ///< all coefficients

private:
    double m_dfFirst;
    double m_dfStep;
    int m_nIntervals;
    std::vector<double> m_listCoefficient;  ///< initially 0
};

}  // namespace tessera
