#include "refinement/smoothcurve.h"

#include <algorithm>

namespace tessera {

CSmoothCurve::CSmoothCurve(double dfFirst, double dfLast, int nIntervals)
    : m_dfFirst(dfFirst),
      m_dfStep(nIntervals > 0 && dfLast > dfFirst ? (dfLast - dfFirst) / nIntervals : 1),
      m_nKnots(nIntervals > 0 && dfLast > dfFirst ? nIntervals + 1 : 1),
      m_matCurvature(Eigen::MatrixXd::Zero(m_nKnots, m_nKnots)),
      m_matValue(Eigen::MatrixX2d::Zero(m_nKnots, 2))
{
    const int nInner = m_nKnots - 2;
    if (nInner < 1) {
        return;
    }
    // Continuous slopes at the inner knots: M(i-1) + 4·M(i) + M(i+1) = 6·(v(i-1) - 2·v(i) + v(i+1)).
    Eigen::MatrixXd matLeft = Eigen::MatrixXd::Zero(nInner, nInner);
    Eigen::MatrixXd matRight = Eigen::MatrixXd::Zero(nInner, m_nKnots);
    for (int n = 0; n < nInner; ++n) {
        matLeft(n, n) = 4;
        if (n > 0) {
            matLeft(n, n - 1) = matLeft(n - 1, n) = 1;
        }
        matRight(n, n) = matRight(n, n + 2) = 6;
        matRight(n, n + 1) = -12;
    }
    m_matCurvature.middleRows(1, nInner) = matLeft.ldlt().solve(matRight);
}

Eigen::RowVectorXd CSmoothCurve::rowAt(double dfFrame) const
{
    Eigen::RowVectorXd row = Eigen::RowVectorXd::Zero(m_nKnots);
    if (m_nKnots == 1) {
        row[0] = 1;
        return row;
    }
    const double dfAt = std::clamp((dfFrame - m_dfFirst) / m_dfStep, 0.0, double(m_nKnots - 1));
    const int nKnot = std::min(int(dfAt), m_nKnots - 2);
    const double dfRight = dfAt - nKnot;
    const double dfLeft = 1 - dfRight;
    row[nKnot] = dfLeft;
    row[nKnot + 1] = dfRight;
    row += (dfLeft * dfLeft * dfLeft - dfLeft) / 6 * m_matCurvature.row(nKnot);
    row += (dfRight * dfRight * dfRight - dfRight) / 6 * m_matCurvature.row(nKnot + 1);
    return row;
}

void CSmoothCurve::fit(const std::vector<double>& listAt, const std::vector<FramePlace>& listPoint,
                       const std::vector<double>& listWeight)
{
    Eigen::MatrixXd matNormal = Eigen::MatrixXd::Zero(m_nKnots, m_nKnots);
    Eigen::MatrixX2d matRight = Eigen::MatrixX2d::Zero(m_nKnots, 2);
    for (size_t n = 0; n < listAt.size(); ++n) {
        const Eigen::RowVectorXd row = rowAt(listAt[n]);
        matNormal.noalias() += listWeight[n] * row.transpose() * row;
        matRight.noalias() += listWeight[n] * row.transpose() *
                              Eigen::RowVector2d(listPoint[n].dfX, listPoint[n].dfY);
    }
    const double dfScale = matNormal.trace() / m_nKnots;
    if (!(dfScale > 0)) {
        m_matValue.setZero();
        return;
    }
    // If knots lie in a gap without frames, the straightest of the equally good curves is chosen.
    matNormal += 1e-6 * dfScale * m_matCurvature.transpose() * m_matCurvature;
    matNormal.diagonal().array() += 1e-12 * dfScale;
    m_matValue = matNormal.ldlt().solve(matRight);
}

FramePlace CSmoothCurve::at(double dfFrame) const
{
    const Eigen::RowVector2d point = rowAt(dfFrame) * m_matValue;
    return {point[0], point[1]};
}

}  // namespace tessera
