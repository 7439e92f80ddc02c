#include "simulate/crossings.h"

#include "simulate/angles.h"
#include "simulate/simulatedseries.h"
#include "simulate/spotprofile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {
constexpr double g_dfWidths = 3;  // a Gaussian has 0.3 % of its area farther out

// What the passages of a series have in common.
struct CrossingFinder {
    const SimulatedSeries& series;
    const CRotationProjection& projection;
    const CExposureMode mode;
    const std::array<double, 2> adfRecorded;
    const double dfMeanSquareF;

    double frameOf(double dfTilt) const
    {
        return (dfTilt - series.listOverall.front()) / series.parameters.dfTiltStep;
    }

    int nearestFrame(double dfFrame) const
    {
        return std::max(0, std::min(series.parameters.nFrames - 1, int(std::lround(dfFrame))));
    }

    // Place of the spot at the passage, and whether its disc is clear of the edges and of the direct beam.
    bool placeSpot(const Vector3& vecLattice, double dfTilt, Crossing& crossing, bool& bClear) const
    {
        const SimulationParameters& p = series.parameters;
        const auto offset = distorted(projection.spotOffset(projection.turned(vecLattice, dfTilt)), p.lens);
        const size_t nFrame = size_t(nearestFrame(crossing.dfFrame));
        const auto ptPattern = series.patternOffset(int(nFrame));
        crossing.dfX = p.dfCenterX + series.listShift[nFrame][0] + ptPattern[0] + offset[0];
        crossing.dfY = p.dfCenterY + series.listShift[nFrame][1] + ptPattern[1] + offset[1];
        const double dfRadius = spotDiscRadius(p), dfMost = p.nSize - 1;
        bClear = std::min(crossing.dfX, crossing.dfY) >= dfRadius &&
                 std::max(crossing.dfX, crossing.dfY) <= dfMost - dfRadius &&
                 std::hypot(offset[0] + ptPattern[0], offset[1] + ptPattern[1]) >=
                     6 * p.dfBeamSigma + dfRadius;
        return crossing.dfX >= 0 && crossing.dfY >= 0 && crossing.dfX <= dfMost && crossing.dfY <= dfMost;
    }

    bool hasBlankFrame(double dfFirst, double dfLast) const
    {
        const auto [dfLow, dfHigh] = std::minmax({frameOf(dfFirst), frameOf(dfLast)});
        for (int n = nearestFrame(dfLow); n <= nearestFrame(dfHigh); ++n) {
            if (series.listScale[n] == 0) {
                return true;
            }
        }
        return false;
    }

    // Counts of the passage and their ratio to the noise of the frames that it takes.
    void fillCounts(const Reflection& reflection, double dfSpeed, double dfFrames, Crossing& crossing) const
    {
        const SimulationParameters& p = series.parameters;
        const size_t nFrame = size_t(nearestFrame(crossing.dfFrame));
        const double dfRadius = spotDiscRadius(p), dfDiscPixels = g_dfPi * dfRadius * dfRadius;
        const double dfDecay = std::exp(-series.listDecay[nFrame] * reflection.dfDStar * reflection.dfDStar /
                                        2);
        // Area of the rocking curve over the excitation error of one frame's turn.
        const double dfArea = std::sqrt(2 * g_dfPi) * mode.width(reflection.dfDStar) /
                              (dfSpeed * std::abs(p.dfTiltStep));
        const double dfShare = crossing.nLattice == 0 ? 1 : p.dfSecondShare;
        crossing.dfCounts = dfShare * series.listScale[nFrame] * dfDecay * p.dfExposure *
                            reflection.dfSquareF / dfMeanSquareF * dfArea * spotShareWithin(p, dfRadius);
        const double dfDistance = std::hypot(crossing.dfX - p.dfCenterX - series.listShift[nFrame][0],
                                             crossing.dfY - p.dfCenterY - series.listShift[nFrame][1]);
        const double dfBackground = p.dfGain * diffuseBackground(p, dfDistance) +
                                    p.dfReadNoise * p.dfReadNoise;
        crossing.dfSignalToNoise = crossing.dfCounts /
                                   std::sqrt(p.dfGain * crossing.dfCounts +
                                             std::max(1.0, dfFrames) * dfDiscPixels * dfBackground);
    }

    void add(const Reflection& reflection, const Vector3& vecLattice, int nLattice,
             std::vector<Crossing>& listCrossing) const
    {
        const CSpherePath path(vecLattice, series.parameters.dfWavelength);
        const double dfMiddle = (adfRecorded[0] + adfRecorded[1]) / 2;
        const double dfReach = g_dfWidths * mode.width(reflection.dfDStar) +
                               mode.precessionReach(reflection.dfDStar);
        for (int nPassage : {0, 1}) {
            const double dfTilt = path.tiltOf(nPassage, 0, dfMiddle);
            if (!(dfTilt >= adfRecorded[0] && dfTilt <= adfRecorded[1])) {
                continue;
            }
            Crossing crossing;
            crossing.nH = reflection.nH;
            crossing.nK = reflection.nK;
            crossing.nL = reflection.nL;
            crossing.nLattice = nLattice;
            crossing.dfFrame = frameOf(dfTilt);
            bool bClear = false;
            if (!placeSpot(vecLattice, dfTilt, crossing, bClear)) {
                continue;
            }
            const double dfIn = path.tiltOf(nPassage, dfReach, dfTilt);
            const double dfOut = path.tiltOf(nPassage, -dfReach, dfTilt);
            const bool bWhole = std::isfinite(dfIn) && std::isfinite(dfOut);
            crossing.bInside = bClear && bWhole && std::min(dfIn, dfOut) >= adfRecorded[0] &&
                               std::max(dfIn, dfOut) <= adfRecorded[1] && !hasBlankFrame(dfIn, dfOut);
            fillCounts(reflection, path.speed(),
                       bWhole ? std::abs(dfIn - dfOut) / std::abs(series.parameters.dfTiltStep) : 1,
                       crossing);
            listCrossing.push_back(crossing);
        }
    }
};
}  // namespace

CSpherePath::CSpherePath(const Vector3& vecLattice, double dfWavelength)
    : m_dfSquare(dotProduct(vecLattice, vecLattice)),
      m_dfPath(std::hypot(vecLattice[1], vecLattice[2])),
      m_dfPhase(std::atan2(vecLattice[1], vecLattice[2])),
      m_dfEwaldRadius(1 / dfWavelength)
{}

double CSpherePath::tiltOf(int nPassage, double dfExcitation, double dfNear) const
{
    // With |k + g| = K - s, the height over the plane through the origin is (g² + 2Ks - s²) / 2K; turned by
    // the tilt it is R cos(tilt + phase).
    const double dfHeight = (m_dfSquare + 2 * m_dfEwaldRadius * dfExcitation - dfExcitation * dfExcitation) /
                            (2 * m_dfEwaldRadius);
    const double dfAngle = std::acos(dfHeight / m_dfPath);  // not finite beyond the circle
    const double dfTilt = degrees((nPassage == 0 ? dfAngle : -dfAngle) - m_dfPhase);
    return dfTilt + 360 * std::round((dfNear - dfTilt) / 360);
}

double CSpherePath::speed() const
{
    // On the sphere ds = dz: the two lengths in the excitation error are both K there.
    const double dfHeight = m_dfSquare / (2 * m_dfEwaldRadius);
    return radians(std::sqrt(std::max(0.0, m_dfPath * m_dfPath - dfHeight * dfHeight)));
}

std::vector<Crossing> findCrossings(const SimulatedSeries& series,
                                    const std::vector<Reflection>& listReflection, double dfMeanSquareF,
                                    const CRotationProjection& projection)
{
    const CExposureMode mode(series.parameters, projection);
    const CrossingFinder finder{series, projection, mode, mode.recordedTilts(series.listOverall),
                                dfMeanSquareF};
    std::vector<Crossing> listCrossing;
    if (series.parameters.dfTiltStep == 0) {
        return listCrossing;  // without a rotation no reflection crosses the sphere
    }
    for (int nLattice = 0; nLattice < series.latticeCount(); ++nLattice) {
        for (const Reflection& reflection : listReflection) {
            finder.add(reflection,
                       Vector3{double(reflection.nH), double(reflection.nK), double(reflection.nL)} *
                           series.basis(nLattice),
                       nLattice, listCrossing);
        }
    }
    return listCrossing;
}

}  // namespace tessera
