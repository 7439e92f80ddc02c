// Images given by a formula, so that a moved image is made without any shift of pixels.
#pragma once

#include "imaging/complex.h"

#include <cmath>
#include <vector>

/// A few waves below the Nyquist frequency, moved by (dfDX, dfDY) pixels; periodic over the image.
inline std::vector<float> waveImage(int nWidth, int nHeight, double dfDX, double dfDY)
{
    const struct {
        int nX, nY;
        double dfHeight, dfPhase;
    } aWave[] = {{1, 0, 3, 0.4},    {0, 2, 2, 1.0}, {3, 1, 4, 2.2},
                 {2, -3, 2.5, 5.1}, {0, 0, 10, 0},  {1, 3, 1, 4.0}};
    std::vector<float> vec;
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++) {
            double df = 0.0;
            for (const auto& w : aWave)
                df += w.dfHeight * std::cos(2 * std::acos(-1.0) *
                                                (w.nX * (x - dfDX) / nWidth + w.nY * (y - dfDY) / nHeight) +
                                            w.dfPhase);
            vec.push_back(float(df));
        }
    return vec;
}

/// Six round spots of different heights on a dark ground, moved by (dfDX, dfDY) pixels; periodic.
inline std::vector<float> spotImage(int nWidth, int nHeight, double dfDX, double dfDY)
{
    const struct {
        double dfX, dfY, dfHeight;
    } aSpot[] = {{0.2, 0.3, 9e3},   {0.55, 0.5, 2e4}, {0.8, 0.15, 6e3},
                 {0.35, 0.85, 1e4}, {0.9, 0.7, 7e3},  {0.6, 0.9, 8e3}};
    const auto distance = [](double df, double dfSide) { return df - dfSide * std::round(df / dfSide); };
    std::vector<float> vec;
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++) {
            double df = 0.0;
            for (const auto& s : aSpot) {
                const double dfX = distance(x - s.dfX * nWidth - dfDX, nWidth);
                const double dfY = distance(y - s.dfY * nHeight - dfDY, nHeight);
                df += s.dfHeight * std::exp(-(dfX * dfX + dfY * dfY) / (2 * 2.2 * 2.2));
            }
            vec.push_back(float(df));
        }
    return vec;
}

inline std::vector<COMPLEX> asComplex(const std::vector<float>& vecReal)
{
    std::vector<COMPLEX> vec;
    for (float f : vecReal)
        vec.push_back({f, 0.f});
    return vec;
}
