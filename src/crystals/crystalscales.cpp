#include "crystals/crystalscales.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessera {

namespace {

constexpr double g_dfStrong = 3;    ///< sigmas, from which on a mean is something to be compared with
constexpr int g_nForFallOff = 20;   ///< common reflections, for a B
constexpr int g_nForScale = 3;      ///< for a scale
constexpr double g_dfFarOff = 0.3;  ///< relative: a third, the usual disagreement of electron data

/// One reflection of one crystal that others have, too.
struct Point {
    int nReflection = 0;  ///< number over all crystals
    double dfIntensity = 0;
    double dfSigma = 0;
    double dfSquare = 0;  ///< s², Å⁻²
};

/// The logarithm of the factor by which the intensities of a crystal are multiplied, as a line over s².
struct Line {
    double dfOffset = 0;
    double dfSlope = 0;  ///< per Å⁻² of s²

    double factor(double dfSquare) const { return std::exp(dfOffset + dfSlope * dfSquare); }
};

/// The mean of a reflection over the crystals, on their scales.
struct Mean {
    double dfIntensity = 0;
    double dfSigma = 0;

    bool isStrong() const { return dfIntensity > g_dfStrong * dfSigma; }
};

/// Numbers the reflections that several crystals have.
std::vector<std::vector<Point>> commonPoints(
    const std::vector<const std::vector<FriedelIntensity>*>& listMean, const LatticeBasis& basis,
    int& nReflections)
{
    std::vector<std::array<int, 3>> listIndex;
    for (const std::vector<FriedelIntensity>* pMean : listMean) {
        for (const FriedelIntensity& one : *pMean) {
            listIndex.push_back(one.anIndex);
        }
    }
    std::sort(listIndex.begin(), listIndex.end());
    std::vector<std::array<int, 3>> listCommon;
    for (size_t n = 1; n < listIndex.size(); ++n) {
        if (listIndex[n] == listIndex[n - 1] && (listCommon.empty() || listCommon.back() != listIndex[n])) {
            listCommon.push_back(listIndex[n]);
        }
    }
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    std::vector<std::vector<Point>> listPoints;
    for (const std::vector<FriedelIntensity>* pMean : listMean) {
        std::vector<Point> list;
        for (const FriedelIntensity& one : *pMean) {
            const auto it = std::lower_bound(listCommon.begin(), listCommon.end(), one.anIndex);
            if (it != listCommon.end() && *it == one.anIndex) {
                list.push_back({int(it - listCommon.begin()), one.dfIntensity, one.dfSigma,
                                squareOf(one.anIndex, matReciprocal)});
            }
        }
        listPoints.push_back(std::move(list));
    }
    nReflections = int(listCommon.size());
    return listPoints;
}

/// Means with weights of the sigmas and a third of the former mean.
std::vector<Mean> meansOf(const std::vector<std::vector<Point>>& listPoints,
                          const std::vector<Line>& listLine, const std::vector<Mean>& listFormer)
{
    std::vector<double> listWeighted(listFormer.size(), 0.0), listWeight(listFormer.size(), 0.0);
    for (size_t n = 0; n < listPoints.size(); ++n) {
        for (const Point& point : listPoints[n]) {
            const auto nReflection = size_t(point.nReflection);
            const double dfFactor = listLine[n].factor(point.dfSquare);
            const double dfSigma = point.dfSigma * dfFactor,
                         dfOff = g_dfFarOff * listFormer[nReflection].dfIntensity;
            const double dfWeight = 1 / (dfSigma * dfSigma + dfOff * dfOff);
            listWeighted[nReflection] += dfWeight * point.dfIntensity * dfFactor;
            listWeight[nReflection] += dfWeight;
        }
    }
    std::vector<Mean> listMean(listFormer.size());
    for (size_t n = 0; n < listMean.size(); ++n) {
        listMean[n] = {listWeighted[n] / listWeight[n], 1 / std::sqrt(listWeight[n])};
    }
    return listMean;
}

/// A step of least squares for one crystal: the straight line through what its intensities lack to the means,
/// relative to these. So weak ones and those below 0 count as they are, which logarithms would shift.
Line improved(const std::vector<Point>& listPoint, const std::vector<Mean>& listMean, const Line& former)
{
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0;
    int nUsed = 0;
    for (const Point& point : listPoint) {
        const Mean& mean = listMean[point.nReflection];
        if (!mean.isStrong()) {
            continue;
        }
        const double dfFactor = former.factor(point.dfSquare);
        const double dfLacks = 1 - point.dfIntensity * dfFactor / mean.dfIntensity;
        const double dfSigma = point.dfSigma * dfFactor / mean.dfIntensity;
        const double dfVariance = dfSigma * dfSigma + g_dfFarOff * g_dfFarOff;
        const double dfWeight = 1 / (dfVariance + dfLacks * dfLacks);
        ++nUsed;
        dfW += dfWeight;
        dfX += dfWeight * point.dfSquare;
        dfY += dfWeight * dfLacks;
        dfXX += dfWeight * point.dfSquare * point.dfSquare;
        dfXY += dfWeight * point.dfSquare * dfLacks;
    }
    if (nUsed < g_nForScale || !(dfW > 0)) {
        return former;
    }
    Line step = {dfY / dfW, 0};
    const double dfSpread = dfXX - dfX * dfX / dfW;
    if (nUsed >= g_nForFallOff && dfSpread > 1e-12 * dfXX) {
        step.dfSlope = (dfXY - dfX * dfY / dfW) / dfSpread;
        step.dfOffset = (dfY - step.dfSlope * dfX) / dfW;
    }
    // What lacks is a logarithm for small steps alone: none that would double a scale.
    const double dfMost = 0.5;
    const double dfMiddle = dfX / dfW;
    const double dfAtMiddle = step.dfOffset + step.dfSlope * dfMiddle;
    step.dfOffset += std::clamp(dfAtMiddle, -dfMost, dfMost) - dfAtMiddle;
    return {former.dfOffset + step.dfOffset, former.dfSlope + step.dfSlope};
}

/// Takes the mean of offsets and slopes out.
void centre(std::vector<Line>& listLine)
{
    Line mean;
    for (const Line& line : listLine) {
        mean.dfOffset += line.dfOffset / double(listLine.size());
        mean.dfSlope += line.dfSlope / double(listLine.size());
    }
    for (Line& line : listLine) {
        line.dfOffset -= mean.dfOffset;
        line.dfSlope -= mean.dfSlope;
    }
}

/// The logarithm of one over the mean intensity, over the reflections in common with other crystals if there
/// are enough, otherwise over all.
Line lineOfMean(const std::vector<FriedelIntensity>& listMean, const std::vector<Point>& listPoint)
{
    double dfSum = 0, dfCount = 0;
    if (int(listPoint.size()) >= g_nForFallOff) {
        for (const Point& point : listPoint) {
            dfSum += point.dfIntensity;
            ++dfCount;
        }
    }
    if (!(dfSum > 0)) {
        dfSum = 0;
        dfCount = double(listMean.size());
        for (const FriedelIntensity& one : listMean) {
            dfSum += std::abs(one.dfIntensity);
        }
    }
    return {dfSum > 0 ? -std::log(dfSum / dfCount) : 0, 0};
}

}  // namespace

double CrystalScale::factor(double dfSquare) const
{
    return dfScale * std::exp(2 * dfB * dfSquare);
}

double squareOf(const std::array<int, 3>& anIndex, const Eigen::Matrix3d& matReciprocal)
{
    const Eigen::Vector3d vec = matReciprocal * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2]);
    return vec.squaredNorm() / 4;
}

std::vector<CrystalScale> scaleCrystals(const std::vector<const std::vector<FriedelIntensity>*>& listMean,
                                        const LatticeBasis& basis)
{
    int nReflections = 0;
    const std::vector<std::vector<Point>> listPoints = commonPoints(listMean, basis, nReflections);
    std::vector<Line> listLine;
    for (size_t n = 0; n < listMean.size(); ++n) {
        listLine.push_back(lineOfMean(*listMean[n], listPoints[n]));
    }
    centre(listLine);
    const int nMostRounds = 500;
    const double dfStill = 1e-7;  // far below what is written
    double dfMoved = 1;
    std::vector<Mean> listReflection{size_t(nReflections)};
    for (int nRound = 0; nRound < nMostRounds && dfMoved > dfStill; ++nRound) {
        listReflection = meansOf(listPoints, listLine, listReflection);
        std::vector<Line> listNew;
        for (size_t n = 0; n < listLine.size(); ++n) {
            listNew.push_back(improved(listPoints[n], listReflection, listLine[n]));
        }
        centre(listNew);
        dfMoved = 0;
        for (size_t n = 0; n < listLine.size(); ++n) {
            dfMoved = std::max(dfMoved, std::abs(listNew[n].dfOffset - listLine[n].dfOffset) +
                                            std::abs(listNew[n].dfSlope - listLine[n].dfSlope));
        }
        listLine = std::move(listNew);
    }
    std::vector<CrystalScale> listScale;
    for (size_t n = 0; n < listLine.size(); ++n) {
        const auto nCommon = std::count_if(
            listPoints[n].begin(), listPoints[n].end(),
            [&](const Point& point) { return listReflection[point.nReflection].isStrong(); });
        listScale.push_back({std::exp(listLine[n].dfOffset), listLine[n].dfSlope / 2, int(nCommon)});
    }
    return listScale;
}

}  // namespace tessera
