#include "integration/prediction.h"

#include "imaging/sidebyside.h"
#include "integration/latticecentring.h"
#include "integration/passagegeometry.h"
#include "integration/reflectionflags.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tessera {

namespace {

const int64_t g_nMostPieces = 4096;  // number of pieces into which the rows along l are divided for threads
// Fraction of a rocking curve that may be missing; a sum is corrected for it.
const double g_dfMostLost = 0.005;

/// Predicts the passages of reflections, one reflection at a time.
class CPredictor {
public:
    CPredictor(const CPassageGeometry& passages, const PredictionOptions& options)
        : m_passages(passages),
          m_options(options),
          m_curve(rockingCurveOf(options, passages.series().rotation))
    {}

    void predict(const std::array<int, 3>& anIndex, std::vector<Observation>& list) const
    {
        const DoubleVector point = m_passages.pointOf(anIndex);
        const int nBeyond = m_options.bBeyondEnds ? int(m_options.dfMostFrames) : 0;
        const std::vector<SphereCrossing> listCrossing = m_passages.crossings(point, nBeyond);
        for (const SphereCrossing& crossing : listCrossing) {
            if (!reachesIn(point, crossing)) {
                continue;
            }
            Observation observation;
            observation.anIndex = anIndex;
            observation.dfFrame = crossing.dfFrame;
            observation.dfTilt = crossing.dfTilt;
            observation.dfSpeed = crossing.dfSpeed;
            observation.dfDStar = std::sqrt(dot(point, point));
            if (isSeen(point, observation)) {
                list.push_back(observation);
            }
        }
    }

private:
    /// Whether a crossing outside the series is close enough to be recorded at its end.
    bool reachesIn(const DoubleVector& point, const SphereCrossing& crossing) const
    {
        const int nFrames = m_passages.frameCount();
        const bool bBefore = crossing.dfFrame < -0.5;
        if (!bBefore && crossing.dfFrame <= nFrames - 0.5) {
            return true;
        }
        const double dfAtEnd = m_passages.excitationAtStart(point, bBefore ? 0 : nFrames);
        return std::abs(dfAtEnd) < m_curve.reachAt(std::sqrt(dot(point, point)), m_options.dfRockingReach);
    }

    /// Sets frames, place and flags.
    /// @return false if nothing of the passage is on a frame of the series
    bool isSeen(const DoubleVector& point, Observation& observation) const
    {
        spread(point, observation);
        const int nLast = m_passages.frameCount() - 1;
        observation.nFirstFrame = std::max(observation.nFirstFrame, 0);
        observation.nLastFrame = std::min(observation.nLastFrame, nLast);
        if (observation.nFirstFrame > observation.nLastFrame) {
            return false;
        }
        const int nFrame = std::clamp(int(std::lround(observation.dfFrame)), 0, nLast);
        const std::optional<FramePlace> place = m_passages.placeOn(observation.anIndex, nFrame);
        if (!place) {
            return false;
        }
        observation.place = *place;
        const double dfRadius = m_options.dfDiscRadius;
        const QSize size = m_passages.series().sizeFrame;
        if (place->dfX < -dfRadius || place->dfY < -dfRadius || place->dfX > size.width() - 1 + dfRadius ||
            place->dfY > size.height() - 1 + dfRadius) {
            return false;
        }
        if (place->dfX < dfRadius || place->dfY < dfRadius || place->dfX > size.width() - 1 - dfRadius ||
            place->dfY > size.height() - 1 - dfRadius) {
            observation.nFlags |= FlagOffFrame;
        }
        return true;
    }

    /// Finds the frames on which the passage is recorded, from the crossing outwards, and the parts outside
    /// the series.
    void spread(const DoubleVector& point, Observation& observation) const
    {
        const double dfReach = m_curve.reachAt(observation.dfDStar, m_options.dfRockingReach);
        const int nFrame = int(std::lround(observation.dfFrame));
        const int nMost = int(std::ceil(m_options.dfMostFrames));
        int nFirst = nFrame, nLast = nFrame;
        double dfLast = std::abs(m_passages.excitationAtStart(point, nFirst));
        bool bTurns = false;  // turns back before it has left the sphere
        while (dfLast < dfReach && nFrame - nFirst <= nMost) {
            --nFirst;
            const double df = std::abs(m_passages.excitationAtStart(point, nFirst));
            bTurns = bTurns || df <= dfLast;
            dfLast = df;
        }
        dfLast = std::abs(m_passages.excitationAtEnd(point, nLast));
        while (dfLast < dfReach && nLast - nFrame <= nMost) {
            ++nLast;
            const double df = std::abs(m_passages.excitationAtEnd(point, nLast));
            bTurns = bTurns || df <= dfLast;
            dfLast = df;
        }
        observation.nFirstFrame = nFirst;
        observation.nLastFrame = nLast;
        if (bTurns || nLast - nFirst + 1 > nMost) {
            observation.nFlags |= FlagSlow;
        }
        if (nFirst < 0 && partOf(point, observation, nFirst, -1) > g_dfMostLost) {
            observation.nFlags |= FlagBeginsBefore;
        }
        const int nFrames = m_passages.frameCount();
        if (nLast >= nFrames && partOf(point, observation, nFrames, nLast) > g_dfMostLost) {
            observation.nFlags |= FlagEndsAfter;
        }
        if (partInHoles(point, observation, nFirst, nLast) > g_dfMostLost) {
            observation.nFlags |= FlagEndsAfter;
        }
    }

    /// The fraction that was not recorded because frames were left out.
    double partInHoles(const DoubleVector& point, const Observation& observation, int nFirst, int nLast) const
    {
        double dfPart = 0;
        for (int n = nFirst - 1; n <= nLast; ++n) {  // a passage within the gap reaches no frame
            if (m_passages.isHoleBehind(n)) {
                const double dfEnd = m_passages.excitationAtEnd(point, n);
                const double dfStart = m_passages.excitationAtStart(point, n + 1);
                dfPart += m_curve.part(dfEnd, (dfEnd + dfStart) / 2, dfStart, observation.dfDStar);
            }
        }
        return dfPart;
    }

    double partOf(const DoubleVector& point, const Observation& observation, int nFirst, int nLast) const
    {
        double dfPart = 0;
        for (int n = nFirst; n <= nLast; ++n) {
            dfPart += m_curve.part(m_passages.excitationAtStart(point, n), m_passages.excitationAt(point, n),
                                   m_passages.excitationAtEnd(point, n), observation.dfDStar);
        }
        return dfPart;
    }

    const CPassageGeometry& m_passages;
    const PredictionOptions& m_options;
    const RockingCurve m_curve;
};

/// The greatest d* of the points that are considered, Å⁻¹.
double furthestDStar(const CPassageGeometry& passages, const PredictionOptions& options)
{
    const double dfReach = passages.reach();
    // Places near the corners may be slightly beyond d* of the corners, but by less than a fifth.
    const double dfWanted = options.dfMaxDStar > 0 ? std::min(options.dfMaxDStar, 1.2 * dfReach) : dfReach;
    return std::min(dfWanted, 2 / passages.series().geometry.dfWavelength);
}

/// The greatest index along each axis within a d*: the length of the direct axis times d*.
std::array<int, 3> greatestIndices(const DiffractionGeometry& geometry, double dfMaxDStar)
{
    std::array<int, 3> anMost = {};
    const auto& [a, b, c] = geometry.aBasis;
    const double dfVolume = std::abs(dot(a, cross(b, c)));
    const std::array<DoubleVector, 3> aNormal = {cross(b, c), cross(c, a), cross(a, b)};
    for (size_t n = 0; n < 3; ++n) {
        const double dfLength = std::sqrt(dot(aNormal[n], aNormal[n])) / dfVolume;
        const double dfMost = 1e6;  // far beyond any prediction, but within the range of int
        anMost[n] = int(std::min(dfLength * dfMaxDStar, dfMost));
    }
    return anMost;
}

bool isCell(const DiffractionGeometry& geometry)
{
    const auto& [a, b, c] = geometry.aBasis;
    const double dfVolume = std::abs(dot(a, cross(b, c)));
    const double dfBox = std::sqrt(dot(a, a) * dot(b, b) * dot(c, c));
    return std::isfinite(dfVolume) && dfVolume > 1e-6 * dfBox;
}

}  // namespace

RockingCurve rockingCurveOf(const PredictionOptions& options, const RotationMode& rotation)
{
    return {rotation, options.dfRockingWidth, options.dfMosaicity};
}

QString whyNotPredicted(const CPassageGeometry& passages, const PredictionOptions& options)
{
    const double dfMostPoints = 3e7;  // takes some seconds, and one or two GB if most of them cross
    const DiffractionGeometry& geometry = passages.series().geometry;
    if (!isCell(geometry) || !(geometry.dfWavelength > 0)) {
        return QStringLiteral("The vectors of the basis are co-planar: nothing can be predicted from it.");
    }
    const double dfMaxDStar = furthestDStar(passages, options);
    double dfPoints = 1;
    for (const int nMost : greatestIndices(geometry, dfMaxDStar)) {
        dfPoints *= 2.0 * nMost + 1;
    }
    if (dfPoints <= dfMostPoints) {
        return {};
    }
    return QStringLiteral(
               "To d = %1 Å this cell has some %2 million lattice points; the limit is %3 million. A wrong "
               "cell, wavelength or pixel size causes this; a large cell can be integrated to a lower "
               "resolution.")
        .arg(1 / dfMaxDStar, 0, 'g', 3)
        .arg(dfPoints / 1e6, 0, 'f', 0)
        .arg(dfMostPoints / 1e6, 0, 'f', 0);
}

std::vector<Observation> predictObservations(const SeriesGeometry& series, const PredictionOptions& options)
{
    return predictObservations(CPassageGeometry(series), options);
}

std::vector<Observation> predictObservations(const CPassageGeometry& passages,
                                             const PredictionOptions& options, int nJobs)
{
    if (passages.frameCount() < 2 || !whyNotPredicted(passages, options).isEmpty()) {
        return {};
    }
    const double dfMaxDStar = furthestDStar(passages, options);
    const std::array<int, 3> anMost = greatestIndices(passages.series().geometry, dfMaxDStar);
    const CPredictor predictor(passages, options);
    const int64_t nRowsOfPlane = 2 * anMost[1] + 1;
    const int64_t nRows = (2 * anMost[0] + 1) * nRowsOfPlane;
    std::vector<std::vector<Observation>> listOfPiece(size_t(std::min<int64_t>(nRows, g_nMostPieces)));
    const auto predictRow = [&](int64_t nRow, std::vector<Observation>& listFound) {
        const int h = int(nRow / nRowsOfPlane) - anMost[0];
        const int k = int(nRow % nRowsOfPlane) - anMost[1];
        for (int l = -anMost[2]; l <= anMost[2]; ++l) {
            const std::array<int, 3> anIndex = {h, k, l};
            const DoubleVector point = passages.pointOf(anIndex);
            const double dfSquare = dot(point, point);
            if (dfSquare > 0 && dfSquare <= dfMaxDStar * dfMaxDStar &&
                dfSquare >= options.dfMinDStar * options.dfMinDStar &&
                isLatticePoint(options.chCentring, anIndex)) {
                predictor.predict(anIndex, listFound);
            }
        }
    };
    const int64_t nPieces = int64_t(listOfPiece.size());
    const auto predictPiece = [&](int nPiece) {
        for (int64_t nRow = nPiece * nRows / nPieces; nRow < (nPiece + 1) * nRows / nPieces; ++nRow) {
            predictRow(nRow, listOfPiece[nPiece]);
        }
    };
    sideBySide(int(nPieces), nJobs, [&] { return FnPiece(predictPiece); });
    std::vector<Observation> list;
    for (const std::vector<Observation>& listFound : listOfPiece) {
        list.insert(list.end(), listFound.begin(), listFound.end());
    }
    std::stable_sort(list.begin(), list.end(), [](const Observation& one, const Observation& other) {
        return one.dfFrame != other.dfFrame ? one.dfFrame < other.dfFrame : one.anIndex < other.anIndex;
    });
    return list;
}

}  // namespace tessera
