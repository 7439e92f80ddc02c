#include "integration/framecounts.h"

#include "frames/badpixels.h"
#include "frames/median.h"
#include "geometry/angles.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

std::vector<float> ringsAround(const CImgObj<float>& img, const FramePlace& beam, int nRings)
{
    std::vector<std::vector<float>> listRing(static_cast<size_t>(nRings));
    const int nLeft = std::max(0, int(beam.dfX) - nRings), nTop = std::max(0, int(beam.dfY) - nRings);
    for (int y = nTop; y <= std::min(img.Height() - 1, int(beam.dfY) + nRings); ++y) {
        for (int x = nLeft; x <= std::min(img.Width() - 1, int(beam.dfX) + nRings); ++x) {
            const double dfX = x - beam.dfX, dfY = y - beam.dfY;
            const double dfRadius = std::sqrt(dfX * dfX + dfY * dfY);
            const float f = viewOf(img).at(x, y);
            if (dfRadius < nRings && isUsablePixel(f)) {
                listRing[size_t(dfRadius)].push_back(f);
            }
        }
    }
    std::vector<float> listMedian;
    listMedian.reserve(listRing.size());
    for (std::vector<float>& ring : listRing) {
        listMedian.push_back(ring.empty() ? 0 : medianOf(ring));
    }
    return listMedian;
}

const double g_dfSteep = 1.4;  // decrease across a disc; diffuse scattering of the specimen decreases less

double medianOfOthers(std::vector<float> list)
{
    return list.empty() ? 0 : double(medianOf(list));
}

}  // namespace

FrameCounts countFrame(const CImgObj<float>& img, const FramePlace& beam, int nRings)
{
    FrameCounts counts;
    counts.bRead = true;
    const std::ptrdiff_t nPixels = std::ptrdiff_t(img.Width()) * img.Height();
    double dfSum = 0;
    long long nUsable = 0;
    std::vector<float> listSome;
    listSome.reserve(size_t(nPixels / 16 + 1));
    counts.fGreatest = -1e30f;
    for (std::ptrdiff_t n = 0; n < nPixels; ++n) {
        const float f = img.Data()[n];
        if (isUsablePixel(f)) {
            dfSum += double(f);
            ++nUsable;
            counts.fGreatest = std::max(counts.fGreatest, f);
            if (n % 16 == 0) {
                listSome.push_back(f);
            }
        }
    }
    const float fBelow = 0.9f * counts.fGreatest;
    for (std::ptrdiff_t n = 0; n < nPixels; ++n) {
        const float f = img.Data()[n];
        if (f > fBelow) {
            counts.nAtGreatest += f == counts.fGreatest ? 1 : 0;
            counts.nJustBelow += f < counts.fGreatest ? 1 : 0;
        }
    }
    counts.dfMean = nUsable > 0 ? dfSum / double(nUsable) : 0;
    counts.dfMedian = listSome.empty() ? 0 : double(medianOf(listSome));
    counts.listAround = ringsAround(img, beam, nRings);
    return counts;
}

std::vector<char> blankFrames(const std::vector<FrameCounts>& listFrame)
{
    const int nEitherSide = 7;
    const double dfLeast = 0.25;
    const int nFrames = int(listFrame.size());
    std::vector<char> listBlank(listFrame.size());
    for (int n = 0; n < nFrames; ++n) {
        const FrameCounts& frame = listFrame[n];
        std::vector<float> listMean, listAbove;
        for (int m = std::max(0, n - nEitherSide); m <= std::min(nFrames - 1, n + nEitherSide); ++m) {
            if (m != n && listFrame[m].bRead) {
                listMean.push_back(float(listFrame[m].dfMean));
                listAbove.push_back(float(listFrame[m].dfMean - listFrame[m].dfMedian));
            }
        }
        const double dfMean = medianOfOthers(listMean), dfAbove = medianOfOthers(listAbove);
        listBlank[n] = !frame.bRead || (dfMean > 0 && frame.dfMean < dfLeast * dfMean) ||
                       (dfAbove > 0 && frame.dfMean - frame.dfMedian < dfLeast * dfAbove);
    }
    return listBlank;
}

double saturationOf(const std::vector<FrameCounts>& listFrame)
{
    float fGreatest = 0;
    for (const FrameCounts& frame : listFrame) {
        fGreatest = frame.bRead ? std::max(fGreatest, frame.fGreatest) : fGreatest;
    }
    long long nAt = 0, nBelow = 0;
    for (const FrameCounts& frame : listFrame) {
        if (frame.bRead && frame.fGreatest == fGreatest) {
            nAt += frame.nAtGreatest;
            nBelow += frame.nJustBelow;
        }
    }
    return fGreatest > 0 && nAt > 3 + 2 * nBelow ? double(fGreatest) : 0;
}

double fullFrom(double dfTold, double dfSeen)
{
    return dfTold > 0 && dfSeen > 0 ? std::min(dfTold, dfSeen) : std::max({dfTold, dfSeen, 0.0});
}

double glowRadius(const std::vector<FrameCounts>& listFrame, double dfRadius, double dfGain)
{
    size_t nRings = 0;
    for (const FrameCounts& frame : listFrame) {
        nRings = std::max(nRings, frame.listAround.size());
    }
    std::vector<double> listMean(nRings);
    int nFrames = 0;
    for (const FrameCounts& frame : listFrame) {
        if (frame.listAround.size() == nRings && nRings > 0) {
            ++nFrames;
            for (size_t n = 0; n < nRings; ++n) {
                listMean[n] += double(frame.listAround[n]);
            }
        }
    }
    const int nStep = std::max(2, int(std::lround(dfRadius)));
    const double dfPixels = g_dfPi * dfRadius * dfRadius;
    // The glow extends from the beam without a gap. Rings farther out have curvature, too, but do not belong
    // to it.
    int n = nStep;
    int nFlat = 0;
    for (; n + nStep < int(nRings) && nFrames > 0 && nFlat < nStep; ++n) {
        const size_t nAt = size_t(n), nFar = size_t(nStep);
        const double dfHere = listMean[nAt] / nFrames;
        const double dfInner = listMean[nAt - nFar], dfOuter = listMean[nAt + nFar];
        const double dfBent = (dfOuter + dfInner) / nFrames - 2 * dfHere;
        // The mean deviation of a parabola from its plane over the disc is half the sagitta.
        const double dfNoise = std::sqrt(dfPixels * dfGain * std::max(dfHere, dfGain / 250));
        const bool bSteep = dfInner > g_dfSteep * dfOuter;
        nFlat = bSteep && std::abs(dfBent) / 2 * dfPixels > dfNoise ? 0 : nFlat + 1;
    }
    return n - nFlat + dfRadius;
}

}  // namespace tessera
