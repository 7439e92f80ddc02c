#include "refinement/geometryresiduals.h"

#include "imaging/sidebyside.h"

#include <ceres/jet.h>

#include <algorithm>
#include <map>

namespace tessera {

namespace {

using PlaneJet = ceres::Jet<double, g_nPlaneNumbers>;
using TurnJet = ceres::Jet<double, 3>;

/// The rotation of a frame, with its derivatives by scale, offset and inclination of the axis.
struct FrameTurn {
    Eigen::Matrix3d matTurn;
    std::array<Eigen::Matrix3d, 3> aDerivative;
};

FrameTurn frameTurn(const GeometryNumbers& numbers, double dfMiddleTilt, double dfTilt)
{
    std::array<TurnJet, 3> aJet;
    for (int n = 0; n < 3; ++n) {
        aJet[n] = TurnJet(numbers[size_t(TiltScale) + size_t(n)], n);
    }
    const std::array<TurnJet, 9> aTurn = turnToLaboratory(turnTermsOf(aJet), dfMiddleTilt, dfTilt);
    FrameTurn turn;
    for (int n = 0; n < 9; ++n) {
        turn.matTurn(n / 3, n % 3) = aTurn[n].a;
        for (int m = 0; m < 3; ++m) {
            turn.aDerivative[m](n / 3, n % 3) = aTurn[n].v[m];
        }
    }
    return turn;
}

PlaneTerms<PlaneJet> planeJets(const GeometryNumbers& numbers, double dfCos, double dfSin)
{
    std::array<PlaneJet, g_nPlaneNumbers> aJet;
    for (int n = 0; n < g_nPlaneNumbers; ++n) {
        aJet[n] = PlaneJet(numbers[size_t(Axis) + size_t(n)], n);
    }
    return planeTermsOf(aJet, dfCos, dfSin);
}

PlaneTerms<double> planeValues(const GeometryNumbers& numbers, double dfCos, double dfSin)
{
    std::array<double, g_nPlaneNumbers> aValue;
    std::copy_n(numbers.begin() + Axis, g_nPlaneNumbers, aValue.begin());
    return planeTermsOf(aValue, dfCos, dfSin);
}

}  // namespace

CGeometryResiduals::CGeometryResiduals(const std::vector<GeometrySpot>& listSpot, std::vector<int> listUsed,
                                       const DiffractionGeometry& fixed, double dfAzimuthZero, int nJobs)
    : m_listSpot(listSpot),
      m_listUsed(std::move(listUsed)),
      m_fixed(fixed),
      m_dfCos(std::cos(2 * radians(dfAzimuthZero))),
      m_dfSin(std::sin(2 * radians(dfAzimuthZero))),
      m_nJobs(nJobs)
{
    std::map<int, int> mapChain;
    std::map<double, int> mapTilt;
    for (const int n : m_listUsed) {
        const GeometrySpot& spot = m_listSpot[n];
        const int nChain = mapChain.emplace(spot.nChain, int(mapChain.size())).first->second;
        m_listChainRow.push_back(2 * spots() + nChain);
        const auto [it, bNew] = mapTilt.emplace(spot.dfTilt, int(mapTilt.size()));
        if (bNew) {
            m_listTilt.push_back(spot.dfTilt);
        }
        m_listTiltOf.push_back(it->second);
    }
    m_nChains = int(mapChain.size());
    std::vector<double> listSum(m_nChains, 0.0);
    for (size_t n = 0; n < m_listUsed.size(); ++n) {
        listSum[size_t(m_listChainRow[n] - 2 * spots())] += m_listSpot[size_t(m_listUsed[n])].dfWeight;
    }
    for (size_t n = 0; n < m_listUsed.size(); ++n) {
        m_listShare.push_back(m_listSpot[size_t(m_listUsed[n])].dfWeight /
                              listSum[size_t(m_listChainRow[n] - 2 * spots())]);
    }
}

/// Quantities of one evaluation that all spots share.
struct CGeometryResiduals::Terms {
    Eigen::Matrix3d matBasis;
    std::vector<Eigen::Matrix3d> listBasisDerivative;
    std::vector<FrameTurn> listTurn;
    PlaneTerms<PlaneJet> jets;
    PlaneTerms<double> values;
};

/// The contribution of each spot to the row of its chain.
struct CGeometryResiduals::Along {
    Eigen::VectorXd vecResidual;
    RowMatrix matJacobian;
};

CGeometryResiduals::Terms CGeometryResiduals::termsOf(const GeometryNumbers& numbers,
                                                      const CellForm& form) const
{
    Terms terms;
    terms.matBasis = form.reciprocal(numbers, terms.listBasisDerivative).transpose();
    terms.listTurn.reserve(m_listTilt.size());
    for (const double dfTilt : m_listTilt) {
        terms.listTurn.push_back(frameTurn(numbers, m_fixed.dfMiddleTilt, dfTilt));
    }
    terms.jets = planeJets(numbers, m_dfCos, m_dfSin);
    terms.values = planeValues(numbers, m_dfCos, m_dfSin);
    return terms;
}

void CGeometryResiduals::evaluateSpots(int nFirst, int nEnd, const Terms& terms,
                                       const std::vector<int>& listFree, Eigen::VectorXd& vecResidual,
                                       RowMatrix* pJacobian, Along& along) const
{
    const int nFree = int(listFree.size());
    const double dfPixel = m_fixed.dfPixelSize;
    Eigen::Matrix<double, 3, Eigen::Dynamic> matDerivative(3, nFree);
    for (int n = nFirst; n < nEnd; ++n) {
        const GeometrySpot& spot = m_listSpot[size_t(m_listUsed[n])];
        const FrameTurn& turn = terms.listTurn[size_t(m_listTiltOf[n])];
        const Eigen::Vector3d vecIndex(spot.anIndex[0], spot.anIndex[1], spot.anIndex[2]);
        const Eigen::Vector3d vecPoint = terms.matBasis * vecIndex;
        // Computing derivatives is several times as expensive as computing values.
        const std::array<double, 3> seenValue = spherePoint(terms.values, m_fixed, spot.place);
        const Eigen::Vector3d vecOff = (Eigen::Vector3d(seenValue[0], seenValue[1], seenValue[2]) -
                                        turn.matTurn * vecPoint) /
                                       dfPixel;
        const double dfAlong = g_dfWeightAlongBeam * m_listShare[n];
        vecResidual.segment<2>(2 * n) = vecOff.head<2>();
        along.vecResidual[n] = dfAlong * vecOff[2];
        if (!pJacobian) {
            continue;
        }
        const std::array<PlaneJet, 3> seen = spherePoint(terms.jets, m_fixed, spot.place);
        for (int nColumn = 0; nColumn < nFree; ++nColumn) {
            const int nNumber = listFree[nColumn];
            if (isOfCell(nNumber)) {
                matDerivative.col(nColumn) = -(turn.matTurn *
                                               (terms.listBasisDerivative[nNumber].transpose() * vecIndex));
            } else if (nNumber < TiltScale) {
                const int nJet = nNumber - Axis;
                matDerivative.col(nColumn) << seen[0].v[nJet], seen[1].v[nJet], seen[2].v[nJet];
            } else {
                matDerivative.col(nColumn) = -(turn.aDerivative[nNumber - TiltScale] * vecPoint);
            }
        }
        matDerivative /= dfPixel;
        pJacobian->middleRows<2>(2 * n) = matDerivative.topRows<2>();
        along.matJacobian.row(n) = dfAlong * matDerivative.row(2);
    }
}

void CGeometryResiduals::evaluate(const GeometryNumbers& numbers, const CellForm& form,
                                  const std::vector<int>& listFree, Eigen::VectorXd& vecResidual,
                                  RowMatrix* pJacobian) const
{
    const int nSpotsOfPiece = 256;  // takes some tenths of a millisecond with derivatives
    const int nFree = int(listFree.size());
    vecResidual.setZero(rows());
    Along along;
    along.vecResidual.resize(spots());
    if (pJacobian) {
        pJacobian->setZero(rows(), nFree);
        along.matJacobian.resize(spots(), nFree);
    }
    const Terms terms = termsOf(numbers, form);
    const auto makeWorker = [&]() -> FnPiece {
        return [&](int nPiece) {
            const int nFirst = nPiece * nSpotsOfPiece;
            evaluateSpots(nFirst, std::min(nFirst + nSpotsOfPiece, spots()), terms, listFree, vecResidual,
                          pJacobian, along);
        };
    };
    sideBySide((spots() + nSpotsOfPiece - 1) / nSpotsOfPiece, m_nJobs, makeWorker);
    for (int n = 0; n < spots(); ++n) {
        const int nChainRow = m_listChainRow[n];
        vecResidual[nChainRow] += along.vecResidual[n];
        if (pJacobian) {
            pJacobian->row(nChainRow) += along.matJacobian.row(n);
        }
    }
}

}  // namespace tessera
