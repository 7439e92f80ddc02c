#include "integration/ringmedian.h"

#include "frames/badpixels.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>

namespace tessera {

void takeOffRings(CImgObj<float>& image, const FramePlace& beam, const std::vector<char>& listMasked)
{
    const int nWidth = image.Width(), nHeight = image.Height();
    const double dfFarX = std::max(std::fabs(beam.dfX), std::fabs(nWidth - beam.dfX));
    const double dfFarY = std::max(std::fabs(beam.dfY), std::fabs(nHeight - beam.dfY));
    const double dfFarthest = 1e6;  // pixels; a beam farther away has no rings on this frame
    if (!(std::hypot(dfFarX, dfFarY) < dfFarthest)) {
        return;
    }
    const auto nRings = size_t(std::hypot(dfFarX, dfFarY)) + 2;
    const auto ringAt = [&](int x, int y) {
        return size_t(std::lround(std::hypot(x - beam.dfX, y - beam.dfY)));
    };
    std::vector<std::vector<float>> listRing(nRings);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            const size_t nPixel = size_t(y) * size_t(nWidth) + size_t(x);
            if (!listMasked[nPixel] && isUsablePixel(image.Data()[nPixel])) {
                listRing[ringAt(x, y)].push_back(image.Data()[nPixel]);
            }
        }
    }
    std::vector<float> listMedian;
    for (std::vector<float>& listValue : listRing) {
        const auto it = listValue.begin() + std::ptrdiff_t(listValue.size() / 2);
        if (!listValue.empty()) {
            std::nth_element(listValue.begin(), it, listValue.end());
        }
        listMedian.push_back(listValue.empty() ? 0.f : *it);
    }
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            viewOf(image).at(x, y) -= listMedian[ringAt(x, y)];
        }
    }
}

}  // namespace tessera
