#include "integration/rockingfit.h"

#include "geometry/angles.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The counts that a curve makes of the frames, by three numbers: total, place, logarithm of the width.
class CCurveModel {
public:
    CCurveModel(const std::vector<SpotMeasure>& listMeasure, const RockingCurve& curve, double dfDStar)
        : m_listMeasure(listMeasure), m_curve(curve), m_dfDStar(dfDStar)
    {
        m_curve.dfMosaicity = 0;
    }

    Eigen::VectorXd counts(const Eigen::Vector3d& number)
    {
        m_curve.dfWidth = std::exp(number[2]);
        Eigen::VectorXd vec(Eigen::Index(m_listMeasure.size()));
        for (size_t n = 0; n < m_listMeasure.size(); ++n) {
            const double* p = m_listMeasure[n].dfExcitation;
            vec[Eigen::Index(n)] = number[0] * m_listMeasure[n].dfInDisc *
                                   m_curve.part(p[0] - number[1], p[1] - number[1], p[2] - number[1],
                                                m_dfDStar);
        }
        return vec;
    }

private:
    const std::vector<SpotMeasure>& m_listMeasure;
    RockingCurve m_curve;
    double m_dfDStar;
};

}  // namespace

std::optional<RockingFit> fitRocking(const std::vector<SpotMeasure>& listMeasure, RockingCurve curve,
                                     double dfDStar, double dfGain, bool bFitWidth)
{
    const Eigen::Index nFrames = Eigen::Index(listMeasure.size());
    Eigen::VectorXd vecCounts(nFrames), vecWeight(nFrames);
    double dfTotal = 0, dfMiddle = 0, dfGreatest = 0;
    for (Eigen::Index n = 0; n < nFrames; ++n) {
        const SpotMeasure& measure = listMeasure[size_t(n)];
        vecCounts[n] = measure.dfSum;
        dfTotal += std::max(measure.dfSum, 0.0);
        dfMiddle += std::max(measure.dfSum, 0.0) * measure.dfExcitation[1];
        dfGreatest = std::max(dfGreatest, measure.dfSum);
    }
    if (!(dfTotal > 0) || nFrames < 3) {
        return std::nullopt;
    }
    for (Eigen::Index n = 0; n < nFrames; ++n) {
        // No curve is a Gaussian to better than some per cent.
        const double dfShape = 0.03 * dfGreatest;
        vecWeight[n] = 1 / (listMeasure[size_t(n)].dfSumVariance + dfGain * std::max(vecCounts[n], 0.0) +
                            dfShape * dfShape);
    }
    const double dfStart = curve.widthAt(dfDStar);
    Eigen::Vector3d number(dfTotal, std::clamp(dfMiddle / dfTotal, -2 * dfStart, 2 * dfStart),
                           std::log(dfStart));
    CCurveModel model(listMeasure, curve, dfDStar);
    const int nFree = bFitWidth ? 3 : 2;
    const auto lossOf = [&](const Eigen::VectorXd& vecModel) {
        return ((vecCounts - vecModel).array().square() * vecWeight.array()).sum();
    };
    Eigen::VectorXd vecModel = model.counts(number);
    double dfLoss = lossOf(vecModel), dfDamping = 1e-3;
    for (int nStep = 0; nStep < 20 && dfDamping < 1e6; ++nStep) {
        Eigen::MatrixXd mat(nFrames, nFree);
        const double adfStep[3] = {0.001 * std::max(std::abs(number[0]), 1.0), 0.01 * std::exp(number[2]),
                                   0.01};
        for (int n = 0; n < nFree; ++n) {
            Eigen::Vector3d other = number;
            other[n] += adfStep[n];
            mat.col(n) = (model.counts(other) - vecModel) / adfStep[n];
        }
        Eigen::MatrixXd matNormal = mat.transpose() * vecWeight.asDiagonal() * mat;
        matNormal.diagonal() *= 1 + dfDamping;
        const Eigen::VectorXd vecStep = matNormal.ldlt().solve(mat.transpose() * vecWeight.asDiagonal() *
                                                               (vecCounts - vecModel));
        Eigen::Vector3d other = number;
        other.head(nFree) += vecStep;
        other[2] = std::clamp(other[2], std::log(dfStart) - 2, std::log(dfStart) + 2);
        const Eigen::VectorXd vecOther = model.counts(other);
        const double dfOther = lossOf(vecOther);
        if (std::isfinite(dfOther) && dfOther < dfLoss) {
            const bool bEnough = dfLoss - dfOther < 1e-6 * dfLoss;
            number = other;
            vecModel = vecOther;
            dfLoss = dfOther;
            dfDamping = std::max(dfDamping / 5, 1e-9);
            if (bEnough) {
                break;
            }
        } else {
            dfDamping *= 10;
        }
    }
    RockingFit fit{number[0], number[1], std::exp(number[2]), 0};
    fit.dfMisfit = std::sqrt((vecCounts - vecModel).squaredNorm() / double(nFrames)) / dfGreatest;
    if (!(number[0] > 0) || !(std::abs(fit.dfOff) < 4 * dfStart) ||
        std::abs(number[2] - std::log(dfStart)) > 1.99) {
        return std::nullopt;
    }
    return fit;
}

void learnWidth(std::vector<WidthAtDStar> listWidth, RockingCurve& curve)
{
    if (listWidth.size() < 10) {
        return;
    }
    std::stable_sort(
        listWidth.begin(), listWidth.end(),
        [](const WidthAtDStar& one, const WidthAtDStar& other) { return one.dfDStar < other.dfDStar; });
    const size_t nGroups = std::clamp<size_t>(listWidth.size() / 10, 1, 8);
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0, dfLeast = 0;
    for (size_t nGroup = 0; nGroup < nGroups; ++nGroup) {
        std::vector<double> listDStar, listOne;
        for (size_t n = nGroup * listWidth.size() / nGroups; n < (nGroup + 1) * listWidth.size() / nGroups;
             ++n) {
            listDStar.push_back(listWidth[n].dfDStar);
            listOne.push_back(listWidth[n].dfWidth);
        }
        std::nth_element(listOne.begin(), listOne.begin() + std::ptrdiff_t(listOne.size() / 2),
                         listOne.end());
        const double dfSquare = std::pow(listOne[listOne.size() / 2], 2);
        const double dfAt = std::pow(listDStar[listDStar.size() / 2], 2);
        const double dfWeight = 1 / (dfSquare * dfSquare);
        dfW += dfWeight;
        dfX += dfWeight * dfAt;
        dfY += dfWeight * dfSquare;
        dfXX += dfWeight * dfAt * dfAt;
        dfXY += dfWeight * dfAt * dfSquare;
        dfLeast = nGroup == 0 ? dfSquare : std::min(dfLeast, dfSquare);
    }
    const double dfSpread = dfXX / dfW - dfX * dfX / (dfW * dfW);
    double dfSlope = dfSpread > 0 && nGroups > 2 ? (dfXY / dfW - dfX * dfY / (dfW * dfW)) / dfSpread : 0;
    dfSlope = std::max(dfSlope, 0.0);
    // What grows with d* alone would leave those at low d* no width.
    const double dfConstant = std::max(dfY / dfW - dfSlope * dfX / dfW, dfLeast / 4);
    curve.dfWidth = std::sqrt(dfConstant);
    curve.dfMosaicity = degrees(std::sqrt(dfSlope));
}

}  // namespace tessera
