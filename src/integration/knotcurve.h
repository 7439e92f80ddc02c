// CKnotCurve: a cubic spline on even knots, linear in its coefficients.
#pragma once

#include <array>
#include <vector>

namespace tessera {

/// A uniform cubic B-spline over a range. Source: de Boor (1978), A Practical Guide to Splines.
class CKnotCurve {
public:
    /// @param nIntervals  1 or more
    CKnotCurve(double dfFirst, double dfLast, int nIntervals);

    /// The four coefficients that a place depends on, and with what weights; places outside the range count
    /// as its ends.
    struct Basis {
        int nFirst = 0;
        std::array<double, 4> aWeight = {};
    };
    Basis basis(double dfAt) const;

    double value(double dfAt) const;
    int coefficientCount() const { return int(m_listCoefficient.size()); }
    std::vector<double>& coefficients() { return m_listCoefficient; }
    const std::vector<double>& coefficients() const { return m_listCoefficient; }

private:
    double m_dfFirst;
    double m_dfStep;
    int m_nIntervals;
    std::vector<double> m_listCoefficient;  ///< one for each interval and three more, 0 at first
};

}  // namespace tessera
