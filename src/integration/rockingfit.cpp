#include "integration/rockingfit.h"

#include "geometry/angles.h"
#include "imaging/lmdiffit.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Data for the residuals. The fitted numbers are the total over its start, the position in start widths, and
/// the logarithm of the width over its start.
struct CurveFit {
    const std::vector<SpotMeasure>& listMeasure;
    RockingCurve curve;
    double dfDStar;
    double dfTotal, dfStartWidth;
    std::vector<double> listWeight;  // 1/sigma

    RockingFit fitOf(const double* pNumber, int nNumbers) const
    {
        const double dfMost = 2;  // e-folds: greatest change of the width from the start
        const double dfFold = nNumbers > 2 ? std::clamp(pNumber[2], -dfMost, dfMost) : 0;
        return {dfTotal * pNumber[0], dfStartWidth * pNumber[1], dfStartWidth * std::exp(dfFold), 0};
    }
    double counts(const RockingFit& fit, size_t n) const
    {
        RockingCurve shape = curve;
        shape.dfWidth = fit.dfWidth;
        shape.dfMosaicity = 0;
        const double* p = listMeasure[n].dfExcitation;
        return fit.dfTotal * listMeasure[n].dfInDisc *
               shape.part(p[0] - fit.dfOff, p[1] - fit.dfOff, p[2] - fit.dfOff, dfDStar);
    }
};

int curveResiduals(void* pContext, int m, int n, const double* pNumber, double* pResidual, int nFlag)
{
    if (nFlag != 0) {
        const CurveFit& fit = *static_cast<const CurveFit*>(pContext);
        const RockingFit numbers = fit.fitOf(pNumber, n);
        for (int i = 0; i < m; ++i) {
            pResidual[i] = (fit.counts(numbers, size_t(i)) - fit.listMeasure[i].dfSum) * fit.listWeight[i];
        }
    }
    return 0;
}

}  // namespace

std::optional<RockingFit> fitRocking(const std::vector<SpotMeasure>& listMeasure, const RockingCurve& curve,
                                     double dfDStar, double dfGain, RockingWidth width)
{
    const bool bFitWidth = width == RockingWidth::Fitted;
    CurveFit fit{listMeasure, curve, dfDStar, 0, curve.widthAt(dfDStar), {}};
    double dfMiddle = 0, dfGreatest = 0;
    for (const SpotMeasure& measure : listMeasure) {
        fit.dfTotal += std::max(measure.dfSum, 0.0);
        dfMiddle += std::max(measure.dfSum, 0.0) * measure.dfExcitation[1];
        dfGreatest = std::max(dfGreatest, measure.dfSum);
    }
    if (!(fit.dfTotal > 0) || listMeasure.size() < 3) {
        return std::nullopt;
    }
    for (const SpotMeasure& measure : listMeasure) {
        const double dfShape = 0.03 * dfGreatest;  // real curves deviate from a Gaussian by some per cent
        fit.listWeight.push_back(
            1 / std::sqrt(measure.dfSumVariance + dfGain * std::max(measure.dfSum, 0.0) + dfShape * dfShape));
    }
    std::vector<double> listNumber = {1, std::clamp(dfMiddle / fit.dfTotal / fit.dfStartWidth, -2.0, 2.0)};
    if (bFitWidth) {
        listNumber.push_back(0);
    }
    CLmdifFit solver;
    const int nInfo = solver.Run(curveResiduals, int(listMeasure.size()), listNumber, &fit);
    RockingFit result = fit.fitOf(listNumber.data(), int(listNumber.size()));
    double dfSquares = 0;
    for (size_t n = 0; n < listMeasure.size(); ++n) {
        dfSquares += std::pow(fit.counts(result, n) - listMeasure[n].dfSum, 2);
    }
    result.dfMisfit = std::sqrt(dfSquares / double(listMeasure.size())) / dfGreatest;
    const bool bRanAway = bFitWidth && !(std::abs(listNumber[2]) < 2);
    if (nInfo < 1 || nInfo > 4 || bRanAway || !(result.dfTotal > 0) || !(std::abs(listNumber[1]) < 4)) {
        return std::nullopt;
    }
    return result;
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
    // A width that were purely proportional to d* would vanish at low d*.
    const double dfConstant = std::max(dfY / dfW - dfSlope * dfX / dfW, dfLeast / 4);
    curve.dfWidth = std::sqrt(dfConstant);
    curve.dfMosaicity = degrees(std::sqrt(dfSlope));
}

}  // namespace tessera
