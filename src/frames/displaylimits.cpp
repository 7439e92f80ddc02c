#include "frames/displaylimits.h"

#include "frames/badpixels.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfLowShare = 0.01, g_dfHighShare = 0.997;
constexpr int g_nRadiiPerSide = 16;
// The side of a block is a quarter of the radius of the disc, so that the corners of the brightest block
// are well inside.
constexpr int g_nBlocksPerSide = 64;
constexpr int g_nLeastBlock = 4;  // pixels; a single pixel is no beam
// Brighter pixels count as this quantile, as otherwise a single hot pixel could win.
constexpr double g_dfClipShare = 0.999;

double meanOfBlock(const CImgObj<float>& image, int x0, int y0, int nSide, double dfMost)
{
    const int x1 = std::min(x0 + nSide, image.Width()), y1 = std::min(y0 + nSide, image.Height());
    double dfSum = 0;
    int nUsable = 0;
    for (int y = y0; y < y1; ++y) {
        const float* pRow = viewOf(image).row(y);
        for (int x = x0; x < x1; ++x) {
            if (isUsablePixel(pRow[x])) {
                dfSum += std::min(double(pRow[x]), dfMost);
                ++nUsable;
            }
        }
    }
    // At least half of a block must be usable. The mean of a few pixels beside a gap could be high by
    // chance.
    return 2 * nUsable >= (x1 - x0) * (y1 - y0) && nUsable > 0 ? dfSum / nUsable : -INFINITY;
}

std::vector<float> usablePixels(const CImgObj<float>& image, const std::optional<FrameDisc>& disc)
{
    std::vector<float> vec;
    vec.reserve(image.Data() ? std::size_t(image.Width()) * std::size_t(image.Height()) : 0);
    for (int y = 0; image.Data() && y < image.Height(); ++y) {
        const float* pRow = viewOf(image).row(y);
        for (int x = 0; x < image.Width(); ++x) {
            const bool bInside = disc &&
                                 std::hypot(x - disc->ptCentre.x(), y - disc->ptCentre.y()) <= disc->dfRadius;
            if (!bInside && isUsablePixel(pRow[x])) {
                vec.push_back(pRow[x]);
            }
        }
    }
    return vec;
}

double takeRank(std::vector<float>& vec, double dfShare)
{
    const auto it = vec.begin() + std::ptrdiff_t(dfShare * double(vec.size() - 1));
    std::nth_element(vec.begin(), it, vec.end());
    return double(*it);
}

}  // namespace

std::optional<FrameDisc> brightestDisc(const CImgObj<float>& image)
{
    const int nShort = std::min(image.Width(), image.Height());
    if (!image.Data() || nShort < 1) {
        return {};
    }
    const int nSide = std::max(g_nLeastBlock, nShort / g_nBlocksPerSide);
    std::vector<float> vec = usablePixels(image, {});
    if (vec.empty()) {
        return {};
    }
    const double dfMost = takeRank(vec, g_dfClipShare);
    double dfBest = -INFINITY;
    FrameDisc disc;
    for (int y = 0; y < image.Height(); y += nSide) {
        for (int x = 0; x < image.Width(); x += nSide) {
            const double dfMean = meanOfBlock(image, x, y, nSide, dfMost);
            if (dfMean > dfBest) {
                dfBest = dfMean;
                disc.ptCentre = QPointF(x + (nSide - 1) / 2.0, y + (nSide - 1) / 2.0);
            }
        }
    }
    if (!std::isfinite(dfBest)) {
        return {};
    }
    disc.dfRadius = double(nShort) / g_nRadiiPerSide;
    return disc;
}

std::optional<DisplayLimits> displayLimits(const CImgObj<float>& image, const std::optional<FrameDisc>& disc)
{
    std::vector<float> vec = usablePixels(image, disc);
    if (vec.empty()) {
        return {};
    }
    const DisplayLimits limits{takeRank(vec, g_dfLowShare), takeRank(vec, g_dfHighShare)};
    return limits.dfLow < limits.dfHigh ? std::optional<DisplayLimits>(limits) : std::nullopt;
}

}  // namespace tessera
