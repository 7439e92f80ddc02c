#include "integration/spotoffsets.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

double medianOr0(std::vector<double> list)
{
    if (list.empty()) {
        return 0;
    }
    const auto middle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), middle, list.end());
    return *middle;
}

}  // namespace

CSpotOffsets::CSpotOffsets(const std::vector<SpotOffset>& listOffset, int nFrames, double dfSize)
    : m_dfSize(dfSize / 2), m_listFrame(size_t(nFrames))
{
    // Ten spots per coefficient keep the cubic from fitting noise.
    const size_t nSpots = listOffset.size();
    m_nTerms = nSpots >= 100 ? 10 : nSpots >= 30 ? 3 : nSpots >= 10 ? 1 : 0;
    std::vector<char> listKept(nSpots, 1);
    for (int nRound = 0; nRound < 5 && m_nTerms > 0; ++nRound) {
        Eigen::MatrixXd mat = Eigen::MatrixXd::Zero(m_nTerms, m_nTerms);
        Eigen::MatrixXd matRight = Eigen::MatrixXd::Zero(m_nTerms, 2);
        for (size_t n = 0; n < nSpots; ++n) {
            if (listKept[n]) {
                const SpotOffset& spot = listOffset[n];
                const FramePlace& frame = m_listFrame[spot.nFrame];
                const Eigen::VectorXd term = termsOf(spot.place).head(m_nTerms);
                mat += term * term.transpose();
                matRight.col(0) += term * (spot.off.dfX - frame.dfX);
                matRight.col(1) += term * (spot.off.dfY - frame.dfY);
            }
        }
        mat.diagonal().array() += 1e-6 * double(nSpots);
        const Eigen::MatrixXd matSolution = mat.ldlt().solve(matRight);
        m_vecX.head(m_nTerms) = matSolution.col(0);
        m_vecY.head(m_nTerms) = matSolution.col(1);

        std::vector<std::vector<double>> listX(m_listFrame.size()), listY(m_listFrame.size());
        for (size_t n = 0; n < nSpots; ++n) {
            if (listKept[n]) {
                const FramePlace field = fieldAt(listOffset[n].place);
                listX[size_t(listOffset[n].nFrame)].push_back(listOffset[n].off.dfX - field.dfX);
                listY[size_t(listOffset[n].nFrame)].push_back(listOffset[n].off.dfY - field.dfY);
            }
        }
        for (size_t n = 0; n < m_listFrame.size(); ++n) {
            // The shift of a frame with few spots is drawn towards that of the series.
            const double dfOwn = double(listX[n].size()) / (double(listX[n].size()) + 3);
            m_listFrame[n] = {dfOwn * medianOr0(listX[n]), dfOwn * medianOr0(listY[n])};
        }
        std::vector<double> listRest;
        for (const SpotOffset& spot : listOffset) {
            const FramePlace place = corrected(spot.nFrame, spot.place);
            listRest.push_back(std::hypot(spot.place.dfX + spot.off.dfX - place.dfX,
                                          spot.place.dfY + spot.off.dfY - place.dfY));
        }
        m_dfRest = medianOr0(listRest) / 1.1774;  // median of a distance in a plane, in sigmas
        for (size_t n = 0; n < nSpots; ++n) {
            listKept[n] = listRest[n] <= std::max(3 * m_dfRest, 0.05);
        }
    }
}

CSpotOffsets::Terms CSpotOffsets::termsOf(const FramePlace& place) const
{
    const double x = place.dfX / m_dfSize - 1, y = place.dfY / m_dfSize - 1;
    Terms terms;
    terms << 1, x, y, x * x, x * y, y * y, x * x * x, x * x * y, x * y * y, y * y * y;
    return terms;
}

FramePlace CSpotOffsets::fieldAt(const FramePlace& place) const
{
    if (m_nTerms == 0) {
        return {};
    }
    const Terms terms = termsOf(place);
    return {terms.dot(m_vecX), terms.dot(m_vecY)};
}

FramePlace CSpotOffsets::corrected(int nFrame, const FramePlace& place) const
{
    const FramePlace field = fieldAt(place);
    const FramePlace frame = size_t(nFrame) < m_listFrame.size() ? m_listFrame[nFrame] : FramePlace();
    return {place.dfX + field.dfX + frame.dfX, place.dfY + field.dfY + frame.dfY};
}

}  // namespace tessera
