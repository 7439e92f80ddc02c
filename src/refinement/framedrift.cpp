#include "refinement/framedrift.h"

#include "refinement/smoothcurve.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tessera {

namespace {

const int g_nFewestOnFrame = 6;
// Median of the squared distance in a plane, in units of the variance in one direction.
const double g_dfMedianSquare = 2 * std::log(2.0);

double square(const FramePlace& place)
{
    return place.dfX * place.dfX + place.dfY * place.dfY;
}

FramePlace operator-(const FramePlace& one, const FramePlace& other)
{
    return {one.dfX - other.dfX, one.dfY - other.dfY};
}

FramePlace operator*(double df, const FramePlace& place)
{
    return {df * place.dfX, df * place.dfY};
}

double medianOf(std::vector<double> listValue)
{
    if (listValue.empty()) {
        return 0;
    }
    const auto itMiddle = listValue.begin() + std::ptrdiff_t(listValue.size() / 2);
    std::nth_element(listValue.begin(), itMiddle, listValue.end());
    return *itMiddle;
}

/// The loss of the geometry fit: quadratic for small distances, linear for large ones.
double lossOf(double dfSquare)
{
    return 2 * (std::sqrt(1 + dfSquare) - 1);
}

/// The mean of the peaks, started from the medians, with weights that vanish for peaks far off (pixels)
/// (redescending estimator). Source: Geman & McClure (1987), Bull. Int. Stat. Inst. 52, 5–21.
FramePlace middleOf(const std::vector<FramePlace>& listPoint)
{
    std::vector<double> listX, listY;
    for (const FramePlace& point : listPoint) {
        listX.push_back(point.dfX);
        listY.push_back(point.dfY);
    }
    FramePlace middle = {medianOf(std::move(listX)), medianOf(std::move(listY))};
    for (int nStep = 0; nStep < 20; ++nStep) {
        FramePlace sum;
        double dfSum = 0;
        for (const FramePlace& point : listPoint) {
            const double dfWeight = std::pow(1 + square(point - middle), -2);
            sum = {sum.dfX + dfWeight * point.dfX, sum.dfY + dfWeight * point.dfY};
            dfSum += dfWeight;
        }
        middle = 1 / dfSum * sum;
    }
    return middle;
}

/// The common displacement of the peaks of a frame.
struct FrameMiddle {
    int nFrame = 0;
    int nPeaks = 0;
    FramePlace middle;
};

/// The frames with the distances of their peaks, in ascending order.
using FramePeaks = std::map<int, std::vector<FrameDistance>>;

/// @param nHalf  which half of the chains is used, 0 or 1; −1: all chains
std::vector<FrameMiddle> middlesOf(const FramePeaks& mapFrame, int nHalf)
{
    std::vector<FrameMiddle> listMiddle;
    for (const auto& [nFrame, listPeak] : mapFrame) {
        std::vector<FramePlace> listPoint;
        for (const FrameDistance& peak : listPeak) {
            if (nHalf < 0 || peak.nChain % 2 == nHalf) {
                listPoint.push_back(peak.off);
            }
        }
        if (!listPoint.empty()) {
            listMiddle.push_back({nFrame, int(listPoint.size()), middleOf(listPoint)});
        }
    }
    return listMiddle;
}

/// Fits the curve to the centres of some frames. A frame that deviates, relative to the error that the number
/// of its peaks implies, has little weight: Cauchy weights with 95 % efficiency at 2.385 standard deviations.
CSmoothCurve curveOf(const std::vector<FrameMiddle>& listMiddle, int nFirst, int nLast, int nIntervals)
{
    std::vector<double> listAt, listWeight;
    std::vector<FramePlace> listPoint;
    for (const FrameMiddle& frame : listMiddle) {
        listAt.push_back(frame.nFrame);
        listPoint.push_back(frame.middle);
        listWeight.push_back(frame.nPeaks);
    }
    CSmoothCurve curve(nFirst, nLast, nIntervals);
    const std::vector<double> listPeaks = listWeight;
    for (int nStep = 0; nStep < 15; ++nStep) {
        curve.fit(listAt, listPoint, listWeight);
        std::vector<double> listSquare;
        for (size_t n = 0; n < listAt.size(); ++n) {
            listSquare.push_back(listPeaks[n] * square(listPoint[n] - curve.at(listAt[n])));
        }
        const double dfVariance = medianOf(listSquare) / g_dfMedianSquare;
        for (size_t n = 0; n < listAt.size() && dfVariance > 0; ++n) {
            listWeight[n] = listPeaks[n] / (1 + listSquare[n] / (2.385 * 2.385 * dfVariance));
        }
    }
    return curve;
}

class CFrameDrift {
public:
    CFrameDrift(const std::vector<FrameDistance>& listDistance, CRunReport& report)
        : m_nPeaks(int(listDistance.size())), m_report(report)
    {
        std::vector<int> listChain;
        for (const FrameDistance& distance : listDistance) {
            m_mapFrame[distance.nFrame].push_back(distance);
            listChain.push_back(distance.nChain);
        }
        std::sort(listChain.begin(), listChain.end());
        m_nChains = int(std::unique(listChain.begin(), listChain.end()) - listChain.begin());
        m_nFirst = m_mapFrame.begin()->first;
        m_nLast = m_mapFrame.rbegin()->first;
        for (size_t n = 0; n < m_alistMiddle.size(); ++n) {
            m_alistMiddle[n] = middlesOf(m_mapFrame, int(n) - 1);
        }
    }

    FrameDrift drift(int nFrames)
    {
        FrameDrift drift;
        drift.nIntervals = intervals();
        m_curve = curveOf(all(), m_nFirst, m_nLast, drift.nIntervals);
        measureErrors();
        drift.dfScatter = scatter();
        std::vector<FramePlace> listOffset;
        listOffset.reserve(nFrames);
        for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
            listOffset.push_back(m_curve.at(nFrame));
        }
        for (const FrameMiddle& frame : all()) {
            const FramePlace beside = frame.middle - m_curve.at(frame.nFrame);
            const bool bJump = jumps(frame, drift.dfScatter);
            const double dfShare = std::max(scatterShare(frame, drift.dfScatter),
                                            bJump ? jumpShare(frame, drift.dfScatter) : 0);
            FramePlace& offset = listOffset[frame.nFrame];
            offset = offset - -dfShare * beside;
            drift.nJumps += bJump;
        }
        if (drift.nIntervals > 0 || drift.dfScatter > 0 || drift.nJumps > 0) {
            drift.listOffset = centred(std::move(listOffset));
        }
        return drift;
    }

private:
    const std::vector<FrameMiddle>& all() const { return m_alistMiddle[0]; }

    /// Mean loss of the peaks on the odd or even frames under the curve fitted to the other frames.
    double unseenLoss(int nIntervals) const
    {
        double dfSum = 0;
        for (const int nHalf : {0, 1}) {
            std::vector<FrameMiddle> listSeen;
            std::copy_if(all().begin(), all().end(), std::back_inserter(listSeen),
                         [&](const FrameMiddle& frame) { return frame.nFrame % 2 == nHalf; });
            const CSmoothCurve curve = curveOf(listSeen, m_nFirst, m_nLast, nIntervals);
            for (const auto& [nFrame, listPeak] : m_mapFrame) {
                const FramePlace offset = curve.at(nFrame);
                for (const FrameDistance& peak : listPeak) {
                    dfSum += nFrame % 2 == nHalf ? 0 : lossOf(square(peak.off - offset));
                }
            }
        }
        return dfSum / m_nPeaks;
    }

    int intervals() const
    {
        // Each half of the frames has at least two frames per interval.
        const int nMost = int(all().size()) / 4;
        int nBest = 0;
        double dfBest = unseenLoss(0);
        const double dfConstant = dfBest;
        for (int nIntervals = 1; nIntervals <= nMost;
             nIntervals = std::max(nIntervals + 1, nIntervals * 3 / 2)) {
            const double dfLoss = unseenLoss(nIntervals);
            // The peaks of a chain share their error and are in both halves, so that superfluous parameters
            // lower the loss by half their number per chain.
            const double dfEnough = 1 - 2.0 * (nIntervals - nBest) / std::max(1, m_nChains);
            if (dfLoss < dfEnough * dfBest) {
                dfBest = dfLoss;
                nBest = nIntervals;
            }
        }
        m_report.addMessage(
            QStringLiteral("Geometry with a smooth drift of the beam: %1 of up to %2 "
                           "intervals, loss of frames not fitted to %3 px² instead of %4 px².")
                .arg(nBest)
                .arg(nMost)
                .arg(dfBest, 0, 'f', 4)
                .arg(dfConstant, 0, 'f', 4));
        return nBest;
    }

    /// Variance of a peak about the centre of its frame, in one direction.
    void measureErrors()
    {
        std::vector<double> listSquare;
        for (const FrameMiddle& frame : all()) {
            for (const FrameDistance& peak : m_mapFrame.at(frame.nFrame)) {
                if (frame.nPeaks >= g_nFewestOnFrame) {
                    listSquare.push_back(square(peak.off - frame.middle) * frame.nPeaks / (frame.nPeaks - 1));
                }
            }
        }
        m_dfVariance = medianOf(std::move(listSquare)) / g_dfMedianSquare;
    }

    /// Variance of the centre of a frame, in one direction.
    double varianceOf(const FrameMiddle& frame) const { return m_dfVariance / frame.nPeaks; }

    double scatterShare(const FrameMiddle& frame, double dfScatter) const
    {
        const double dfSquare = dfScatter * dfScatter;
        return frame.nPeaks < g_nFewestOnFrame || dfSquare <= 0 ? 0
                                                                : dfSquare / (dfSquare + varianceOf(frame));
    }

    /// λ²: the squared length that some frame exceeds by chance in one series out of twenty.
    double limitOf(const FrameMiddle& frame, double dfScatter) const
    {
        const double dfSpread = std::max(m_dfSpread, dfScatter);
        return 2 * std::log(20 * double(all().size())) * (dfSpread * dfSpread + varianceOf(frame));
    }

    double jumpShare(const FrameMiddle& frame, double dfScatter) const
    {
        const double dfSquare = square(frame.middle - m_curve.at(frame.nFrame));
        return dfSquare > 0 ? std::max(0.0, 1 - limitOf(frame, dfScatter) / dfSquare) : 0;
    }

    /// Whether a frame deviates significantly, in both halves of its chains.
    bool jumps(const FrameMiddle& frame, double dfScatter) const
    {
        if (frame.nPeaks < g_nFewestOnFrame || jumpShare(frame, dfScatter) <= 0) {
            return false;
        }
        double dfGain = 0;
        for (const int nHalf : {0, 1}) {
            const FrameMiddle* pHalf = halfOf(frame.nFrame, nHalf);
            if (!pHalf) {
                return false;
            }
            dfGain += gainOf(frame.nFrame, 1 - nHalf, pHalf->middle);
        }
        return dfGain > 0;
    }

    const FrameMiddle* halfOf(int nFrame, int nHalf) const
    {
        const std::vector<FrameMiddle>& listMiddle = m_alistMiddle[size_t(nHalf) + 1];
        const auto it = std::lower_bound(listMiddle.begin(), listMiddle.end(), nFrame,
                                         [](const FrameMiddle& frame, int n) { return frame.nFrame < n; });
        const bool bFound = it != listMiddle.end() && it->nFrame == nFrame &&
                            it->nPeaks >= g_nFewestOnFrame / 2;
        return bFound ? &*it : nullptr;
    }

    /// The decrease of the loss of half of the chains on a frame if the curve is replaced by an offset.
    double gainOf(int nFrame, int nHalf, const FramePlace& offset) const
    {
        const FramePlace smooth = m_curve.at(nFrame);
        double dfGain = 0;
        for (const FrameDistance& peak : m_mapFrame.at(nFrame)) {
            if (peak.nChain % 2 == nHalf) {
                dfGain += lossOf(square(peak.off - smooth)) - lossOf(square(peak.off - offset));
            }
        }
        return dfGain;
    }

    /// The scatter of the frames beyond their errors; 0 unless one half of the chains predicts the other half
    /// better with it.
    double scatter()
    {
        std::vector<const FrameMiddle*> listFrame;
        for (const FrameMiddle& frame : all()) {
            if (frame.nPeaks >= g_nFewestOnFrame) {
                listFrame.push_back(&frame);
            }
        }
        const auto median = [&](double dfSquare) {
            std::vector<double> listRatio;
            listRatio.reserve(listFrame.size());
            for (const FrameMiddle* pFrame : listFrame) {
                listRatio.push_back(square(pFrame->middle - m_curve.at(pFrame->nFrame)) /
                                    (dfSquare + varianceOf(*pFrame)));
            }
            return medianOf(std::move(listRatio));
        };
        if (!(m_dfVariance > 0) || median(0) <= g_dfMedianSquare) {
            return 0;
        }
        double dfLow = 0, dfHigh = 1;
        while (median(dfHigh) > g_dfMedianSquare) {
            dfHigh *= 2;
        }
        for (int n = 0; n < 50; ++n) {
            const double dfMiddle = (dfLow + dfHigh) / 2;
            (median(dfMiddle) > g_dfMedianSquare ? dfLow : dfHigh) = dfMiddle;
        }
        m_dfSpread = std::sqrt(dfHigh);
        const bool bTold = isScatterTold(m_dfSpread);
        m_report.addMessage(QStringLiteral("Geometry with an offset of each frame's beam: scatter %1 px, of "
                                           "a peak %2 px; %3.")
                                .arg(m_dfSpread, 0, 'f', 3)
                                .arg(std::sqrt(m_dfVariance), 0, 'f', 3)
                                .arg(QLatin1String(bTold ? "taken" : "left out")));
        return bTold ? m_dfSpread : 0;
    }

    /// Whether an offset from one half of the chains improves the fit of the other half, by more than twice
    /// the standard error over the frames.
    bool isScatterTold(double dfScatter) const
    {
        double dfSum = 0, dfSquares = 0;
        for (const FrameMiddle& frame : all()) {
            for (const int nHalf : {0, 1}) {
                const FrameMiddle* pHalf = halfOf(frame.nFrame, nHalf);
                if (!pHalf) {
                    continue;
                }
                const double dfSquare = dfScatter * dfScatter;
                const FramePlace smooth = m_curve.at(frame.nFrame);
                const double dfShare = dfSquare / (dfSquare + varianceOf(*pHalf));
                const FramePlace offset = smooth - -dfShare * (pHalf->middle - smooth);
                const double dfGain = gainOf(frame.nFrame, 1 - nHalf, offset);
                dfSum += dfGain;
                dfSquares += dfGain * dfGain;
            }
        }
        return dfSum > 2 * std::sqrt(dfSquares);
    }

    std::vector<FramePlace> centred(std::vector<FramePlace> listOffset) const
    {
        FramePlace sum;
        for (const auto& [nFrame, listPeak] : m_mapFrame) {
            const FramePlace& offset = listOffset[nFrame];
            const double dfPeaks = double(listPeak.size());
            sum = {sum.dfX + dfPeaks * offset.dfX, sum.dfY + dfPeaks * offset.dfY};
        }
        for (FramePlace& offset : listOffset) {
            offset = offset - 1.0 / m_nPeaks * sum;
        }
        return listOffset;
    }

    int m_nPeaks;
    int m_nChains = 0;
    CRunReport& m_report;
    FramePeaks m_mapFrame;
    std::array<std::vector<FrameMiddle>, 3> m_alistMiddle;  ///< from all chains, and from each half of them
    int m_nFirst = 0;
    int m_nLast = 0;
    CSmoothCurve m_curve = {0, 0, 0};
    double m_dfVariance = 0;  ///< variance of a peak in one direction, pixels²
    double m_dfSpread = 0;    ///< scatter of the frames about the curve beyond their errors, pixels
};

}  // namespace

FrameDrift frameDrift(const std::vector<FrameDistance>& listDistance, int nFrames, CRunReport& report)
{
    std::vector<FrameDistance> listInside;
    std::copy_if(listDistance.begin(), listDistance.end(), std::back_inserter(listInside),
                 [&](const FrameDistance& distance) {
                     return distance.nFrame >= 0 && distance.nFrame < nFrames &&
                            std::isfinite(square(distance.off));
                 });
    return listInside.empty() ? FrameDrift() : CFrameDrift(listInside, report).drift(nFrames);
}

}  // namespace tessera
