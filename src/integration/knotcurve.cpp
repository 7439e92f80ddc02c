#include "integration/knotcurve.h"

#include <algorithm>
#include <cmath>

namespace tessera {

CKnotCurve::CKnotCurve(double dfFirst, double dfLast, int nIntervals)
    : m_dfFirst(dfFirst),
      m_dfStep(std::max(dfLast - dfFirst, 1e-9) / std::max(1, nIntervals)),
      m_nIntervals(std::max(1, nIntervals)),
      m_listCoefficient(size_t(m_nIntervals) + 3, 0.0)
{}

CKnotCurve::Basis CKnotCurve::basis(double dfAt) const
{
    const double dfPlace = std::clamp((dfAt - m_dfFirst) / m_dfStep, 0.0, double(m_nIntervals));
    Basis basis;
    basis.nFirst = std::min(int(dfPlace), m_nIntervals - 1);
    const double t = dfPlace - basis.nFirst;
    const double s = 1 - t;
    basis.aWeight = {s * s * s / 6, (3 * t * t * t - 6 * t * t + 4) / 6, (3 * s * s * s - 6 * s * s + 4) / 6,
                     t * t * t / 6};
    return basis;
}

double CKnotCurve::value(double dfAt) const
{
    const Basis at = basis(dfAt);
    double dfSum = 0;
    for (size_t n = 0; n < 4; ++n) {
        dfSum += at.aWeight[n] * m_listCoefficient[size_t(at.nFirst) + n];
    }
    return dfSum;
}

}  // namespace tessera
