#include "frames/shiftjumps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tessera {

QList<int> findShiftJumps(const QList<QPointF>& listShift, double dfLimit)
{
    QList<int> listJump;
    const int nFrames = listShift.size();
    if (nFrames < 5) {
        return listJump;
    }
    for (int n = 0; n < nFrames; ++n) {
        // Near the ends the window is moved inwards, so that it always has four other frames.
        const int nFirst = std::clamp(n - 2, 0, nFrames - 5);
        std::array<double, 4> adfX;
        std::array<double, 4> adfY;
        int nCount = 0;
        for (int i = nFirst; i < nFirst + 5; ++i) {
            if (i != n) {
                adfX[nCount] = listShift[i].x();
                adfY[nCount++] = listShift[i].y();
            }
        }
        std::sort(adfX.begin(), adfX.end());
        std::sort(adfY.begin(), adfY.end());
        const double dfX = listShift[n].x() - (adfX[1] + adfX[2]) / 2;
        const double dfY = listShift[n].y() - (adfY[1] + adfY[2]) / 2;
        if (std::abs(dfX) > dfLimit || std::abs(dfY) > dfLimit) {
            listJump.append(n);
        }
    }
    return listJump;
}

}  // namespace tessera
