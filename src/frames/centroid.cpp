#include "frames/centroid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tessera {

namespace {

struct Position {
    double dfX;
    double dfY;
};

Position centroidOf(const CImgObj<float>& img, const RefIntPara& window)
{
    const Position ptCentre{double(window.nX), double(window.nY)};
    const std::int64_t nReach = std::int64_t(window.nRadius) + window.nBackground;
    if (!img.Data() || nReach < 0 || window.nX - nReach < 0 || window.nX + nReach >= img.Width() ||
        window.nY - nReach < 0 || window.nY + nReach >= img.Height()) {
        return ptCentre;
    }
    float fSum = 0.f;
    double dfSumX = 0;
    double dfSumY = 0;
    const int nR = int(std::min(std::int64_t(window.nRadius), nReach));
    for (int nDx = -nR; nDx <= nR; ++nDx) {
        for (int nDy = -nR; nDy <= nR; ++nDy) {
            if (nDx * nDx + nDy * nDy > nR * nR) {
                continue;
            }
            const int nX = window.nX + nDx;
            const int nY = window.nY + nDy;
            const float fValue = img.Data()[std::size_t(nY) * std::size_t(img.Width()) + std::size_t(nX)];
            fSum += fValue;
            dfSumX += double(fValue * float(nX));
            dfSumY += double(fValue * float(nY));
        }
    }
    const Position pt{dfSumX / double(fSum), dfSumY / double(fSum)};
    // Half a pixel is allowed for the rounding of the products. The comparison is false for NaN, too.
    const bool bInDisc = std::hypot(pt.dfX - ptCentre.dfX, pt.dfY - ptCentre.dfY) <= nR + 0.5;
    return bInDisc ? pt : ptCentre;
}

}  // namespace

void refine2DPeakPosition(std::list<double>& listX, std::list<double>& listY, const CImgObj<float>& fImgObj,
                          const std::vector<RefIntPara>& vecRefIntPara)
{
    std::list<double> listNewX, listNewY;
    for (const RefIntPara& window : vecRefIntPara) {
        const Position pt = centroidOf(fImgObj, window);
        listNewX.push_back(pt.dfX);
        listNewY.push_back(pt.dfY);
    }
    listX.swap(listNewX);
    listY.swap(listNewY);
}

}  // namespace tessera
