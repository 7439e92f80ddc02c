#include "crystals/crystalscales.h"

#include <Eigen/LU>

#include <cmath>
#include <map>

namespace tessera {

namespace {

constexpr double g_dfStrong = 3;    ///< sigmas, from which on a logarithm has a sense
constexpr int g_nForFallOff = 20;   ///< common reflections, for a B
constexpr int g_nForScale = 3;      ///< for a scale
constexpr double g_dfFarOff = 0.3;  ///< in logarithms: a third, the usual disagreement of electron data

/// One strong reflection of one crystal.
struct Point {
    int nReflection = 0;  ///< number over all crystals
    double dfLog = 0;     ///< of the intensity
    double dfSquare = 0;  ///< s², Å⁻²
    double dfWeight = 1;
};

struct Line {
    double dfOffset = 0;
    double dfSlope = 0;  ///< per Å⁻² of s²
};

double valueAt(const Line& line, double dfSquare)
{
    return line.dfOffset + line.dfSlope * dfSquare;
}

/// Numbers the reflections that several crystals have.
std::vector<std::vector<Point>> commonPoints(
    const std::vector<const std::vector<FriedelIntensity>*>& listMean, const LatticeBasis& basis,
    int& nReflections)
{
    std::map<std::array<int, 3>, int> mapCount;
    for (const std::vector<FriedelIntensity>* pMean : listMean) {
        for (const FriedelIntensity& one : *pMean) {
            if (one.dfIntensity > g_dfStrong * one.dfSigma) {
                ++mapCount[one.anIndex];
            }
        }
    }
    std::map<std::array<int, 3>, int> mapNumber;
    for (const auto& [anIndex, nCount] : mapCount) {
        if (nCount > 1) {
            mapNumber.emplace(anIndex, int(mapNumber.size()));
        }
    }
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    std::vector<std::vector<Point>> listPoints;
    for (const std::vector<FriedelIntensity>* pMean : listMean) {
        std::vector<Point> list;
        for (const FriedelIntensity& one : *pMean) {
            const auto it = mapNumber.find(one.anIndex);
            if (it != mapNumber.end() && one.dfIntensity > g_dfStrong * one.dfSigma) {
                const double dfRelative = one.dfSigma / one.dfIntensity;
                list.push_back({it->second, std::log(one.dfIntensity), squareOf(one.anIndex, matReciprocal),
                                1 / (dfRelative * dfRelative + g_dfFarOff * g_dfFarOff)});
            }
        }
        listPoints.push_back(std::move(list));
    }
    nReflections = int(mapNumber.size());
    return listPoints;
}

/// Weighted straight line through what the crystal lacks to the means.
Line fitLine(const std::vector<Point>& listPoint, const std::vector<double>& listMean, const Line& former)
{
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0;
    for (const Point& point : listPoint) {
        const double dfLacks = listMean[size_t(point.nReflection)] - point.dfLog;
        const double dfOff = (dfLacks - valueAt(former, point.dfSquare)) / g_dfFarOff;
        const double dfWeight = point.dfWeight / (1 + dfOff * dfOff);
        dfW += dfWeight;
        dfX += dfWeight * point.dfSquare;
        dfY += dfWeight * dfLacks;
        dfXX += dfWeight * point.dfSquare * point.dfSquare;
        dfXY += dfWeight * point.dfSquare * dfLacks;
    }
    if (int(listPoint.size()) < g_nForScale || dfW <= 0) {
        return former;
    }
    Line line = {dfY / dfW, 0};
    const double dfSpread = dfXX - dfX * dfX / dfW;
    if (int(listPoint.size()) >= g_nForFallOff && dfSpread > 1e-12 * dfXX) {
        line.dfSlope = (dfXY - dfX * dfY / dfW) / dfSpread;
        line.dfOffset = (dfY - line.dfSlope * dfX) / dfW;
    }
    return line;
}

std::vector<double> meansOf(const std::vector<std::vector<Point>>& listPoints,
                            const std::vector<Line>& listLine, int nReflections)
{
    std::vector<double> listSum(size_t(nReflections), 0.0), listWeight(size_t(nReflections), 0.0);
    for (size_t n = 0; n < listPoints.size(); ++n) {
        for (const Point& point : listPoints[n]) {
            listSum[size_t(point.nReflection)] += point.dfWeight *
                                                  (point.dfLog + valueAt(listLine[n], point.dfSquare));
            listWeight[size_t(point.nReflection)] += point.dfWeight;
        }
    }
    for (size_t n = 0; n < listSum.size(); ++n) {
        listSum[n] /= listWeight[n];
    }
    return listSum;
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

/// One over the mean intensity, as a logarithm.
Line lineOfMean(const std::vector<FriedelIntensity>& listMean)
{
    double dfSum = 0;
    for (const FriedelIntensity& one : listMean) {
        dfSum += std::abs(one.dfIntensity);
    }
    return {dfSum > 0 ? -std::log(dfSum / double(listMean.size())) : 0, 0};
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
    for (const std::vector<FriedelIntensity>* pMean : listMean) {
        listLine.push_back(lineOfMean(*pMean));
    }
    centre(listLine);
    const int nMostRounds = 200;
    const double dfStill = 1e-9;  // in logarithms, far below what is written
    double dfMoved = 1;
    for (int nRound = 0; nRound < nMostRounds && dfMoved > dfStill; ++nRound) {
        const std::vector<double> listReflection = meansOf(listPoints, listLine, nReflections);
        std::vector<Line> listNew;
        for (size_t n = 0; n < listLine.size(); ++n) {
            listNew.push_back(fitLine(listPoints[n], listReflection, listLine[n]));
        }
        centre(listNew);
        dfMoved = 0;
        for (size_t n = 0; n < listLine.size(); ++n) {
            dfMoved = std::max(dfMoved, std::abs(listNew[n].dfOffset - listLine[n].dfOffset) +
                                            std::abs(listNew[n].dfSlope - listLine[n].dfSlope));
        }
        listLine = listNew;
    }
    std::vector<CrystalScale> listScale;
    for (size_t n = 0; n < listLine.size(); ++n) {
        listScale.push_back(
            {std::exp(listLine[n].dfOffset), listLine[n].dfSlope / 2, int(listPoints[n].size())});
    }
    return listScale;
}

}  // namespace tessera
