// An image given by a formula, so that a moved image is made without any shift of pixels.
#pragma once

#include "imaging/complex.h"

#include <cmath>
#include <vector>

namespace tessera {

/// Six round spots of different heights on a dark ground, moved by (dfDX, dfDY) pixels; periodic.
inline std::vector<float> spotImage(int nWidth, int nHeight, double dfDX, double dfDY)
{
    const double aSpot[][3] = {{0.2, 0.3, 9e3},   {0.55, 0.5, 2e4}, {0.8, 0.15, 6e3},
                               {0.35, 0.85, 1e4}, {0.9, 0.7, 7e3},  {0.6, 0.9, 8e3}};
    const auto distance = [](double df, double dfSide) { return df - dfSide * std::round(df / dfSide); };
    std::vector<float> vec;
    for (int i = 0; i < nWidth * nHeight; ++i) {
        double df = 0.0;
        for (const auto& spot : aSpot) {
            const double dfX = distance(i % nWidth - spot[0] * nWidth - dfDX, nWidth);
            const double dfY = distance(i / nWidth - spot[1] * nHeight - dfDY, nHeight);
            df += spot[2] * std::exp(-(dfX * dfX + dfY * dfY) / (2 * 2.2 * 2.2));
        }
        vec.push_back(float(df));
    }
    return vec;
}

inline std::vector<COMPLEX> asComplex(const std::vector<float>& vecReal)
{
    std::vector<COMPLEX> vec;
    for (float f : vecReal) {
        vec.push_back({f, 0.f});
    }
    return vec;
}

}  // namespace tessera
