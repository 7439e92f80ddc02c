// How near peak positions come to the truth, and what their fits cost.
//
// Spots of sigma 1.5 pixels (Gaussian, or Moffat with tails as a Lorentzian has) at random places between the
// pixels, under Poisson and read noise, on a background of 60 counts that is even or slopes. The counters are
// root mean squares per coordinate in pixels: of the hunted whole pixel, of the Lorentzian and of the
// Lorentzian with a constant background, each of the spots that stay within 3 pixels; lost ones are in per
// cent.
#include "frames/framehunt.h"
#include "imaging/peakfit2d.h"
#include "records/pi.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

namespace tessera {

namespace {

const int g_nTile = 64;  // boxes of 41 pixels do not meet
const int g_nTileMiddle = g_nTile / 2;
const int g_nTiles = 14;
const int g_nSide = g_nTile * g_nTiles;
const double g_dfSigma = 1.5;
const double g_dfBackground = 60;
const double g_dfReadNoise = 1.5;

struct SpotFrame {
    CImgObj<float> img;
    std::vector<double> vecX, vecY;  // truth
};

// The counts of a spot with this signal-to-noise ratio in a disc of three sigma.
double countsFor(double dfSignalToNoise)
{
    const double dfNoise = g_dfPi * 9 * g_dfSigma * g_dfSigma *
                           (g_dfBackground + g_dfReadNoise * g_dfReadNoise);
    const double dfSquare = dfSignalToNoise * dfSignalToNoise;
    return (dfSquare + std::sqrt(dfSquare * dfSquare + 4 * dfSquare * dfNoise)) / 2;
}

SpotFrame spotFrame(double dfSignalToNoise, double dfSlope, bool bMoffat)
{
    SpotFrame frame;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> fraction(-0.5, 0.5);
    const double dfCounts = countsFor(dfSignalToNoise);
    const double dfA2 = g_dfSigma * g_dfSigma * 2 * std::log(2.0) / (std::sqrt(2.0) - 1);  // same half width
    std::vector<double> vecExpected(size_t(g_nSide) * g_nSide);
    for (int ty = 0; ty < g_nTiles; ++ty) {
        for (int tx = 0; tx < g_nTiles; ++tx) {
            const double dfX = tx * g_nTile + g_nTileMiddle + fraction(random);
            const double dfY = ty * g_nTile + g_nTileMiddle + fraction(random);
            frame.vecX.push_back(dfX);
            frame.vecY.push_back(dfY);
            for (int y = ty * g_nTile; y < (ty + 1) * g_nTile; ++y) {
                for (int x = tx * g_nTile; x < (tx + 1) * g_nTile; ++x) {
                    const double dfR2 = (x - dfX) * (x - dfX) + (y - dfY) * (y - dfY);
                    const double dfSpot = bMoffat ? 1 / (g_dfPi * dfA2 * std::pow(1 + dfR2 / dfA2, 2))
                                                  : std::exp(-dfR2 / (2 * g_dfSigma * g_dfSigma)) /
                                                        (2 * g_dfPi * g_dfSigma * g_dfSigma);
                    // up in one tile, down in the next, so that no step stands between them
                    const double dfBackground = g_dfBackground + dfSlope * (tx % 2 ? -1 : 1) *
                                                                     (x - tx * g_nTile - g_nTileMiddle + 0.5);
                    vecExpected[size_t(y) * g_nSide + size_t(x)] = dfBackground + dfCounts * dfSpot;
                }
            }
        }
    }
    std::normal_distribution<double> read(0, g_dfReadNoise);
    frame.img.Create(g_nSide, g_nSide);
    for (size_t i = 0; i < vecExpected.size(); ++i) {
        frame.img.Data()[i] = float(std::poisson_distribution<int>(std::max(vecExpected[i], 1e-9))(random) +
                                    read(random));
    }
    return frame;
}

// The hunted peak nearest to each spot; spots without one within 3 pixels are dropped.
void keepHunted(SpotFrame& frame, std::vector<double>& vecX, std::vector<double>& vecY)
{
    PeakHuntingParameters parameters;
    parameters.m_dfPeakRadius = 2;
    parameters.m_dfBackgroundRadius = 6;
    CPeakFilters filters;
    FrameHuntWork work;
    const FramePeaks peaks = huntFrame(frame.img, parameters, {}, filters, work);
    std::vector<double> vecTrueX, vecTrueY;
    for (size_t i = 0; i < frame.vecX.size(); ++i) {
        int nBest = -1;
        double dfBest = 3;
        for (int j = 0; j < peaks.listX.size(); ++j) {
            const double df = std::hypot(peaks.listX[j] - frame.vecX[i], peaks.listY[j] - frame.vecY[i]);
            if (df < dfBest) {
                dfBest = df;
                nBest = j;
            }
        }
        if (nBest < 0) {
            continue;
        }
        vecTrueX.push_back(frame.vecX[i]);
        vecTrueY.push_back(frame.vecY[i]);
        vecX.push_back(peaks.listX[nBest]);
        vecY.push_back(peaks.listY[nBest]);
    }
    frame.vecX = vecTrueX;
    frame.vecY = vecTrueY;
}

void countErrors(benchmark::State& state, const char* pName, const SpotFrame& frame,
                 const std::vector<double>& vecX, const std::vector<double>& vecY)
{
    double dfSquares = 0;
    int nKept = 0;
    for (size_t i = 0; i < vecX.size(); ++i) {
        const double df = std::hypot(vecX[i] - frame.vecX[i], vecY[i] - frame.vecY[i]);
        if (df <= 3) {
            dfSquares += df * df;
            ++nKept;
        }
    }
    state.counters[pName] = std::sqrt(dfSquares / (2 * nKept));
    state.counters[std::string(pName) + "_lost"] = 100.0 * (double(vecX.size()) - nKept) /
                                                   double(vecX.size());
}

// Arguments: signal to noise, slope in hundredths of a count per pixel, 1 for Moffat spots.
void spotPositions(benchmark::State& state)
{
    SpotFrame frame = spotFrame(double(state.range(0)), double(state.range(1)) / 100, state.range(2) != 0);
    std::vector<double> vecX, vecY;
    keepHunted(frame, vecX, vecY);
    for (auto _ : state) {
        countErrors(state, "1_pixel", frame, vecX, vecY);
        for (bool bConstant : {false, true}) {
            std::vector<double> vecFitX = vecX, vecFitY = vecY;
            FitPeakList(frame.img, vecFitX, vecFitY, 20, 3500, bConstant);
            countErrors(state, bConstant ? "3_constant" : "2_plain", frame, vecFitX, vecFitY);
        }
    }
    state.counters["spots"] = double(vecX.size());
}
BENCHMARK(spotPositions)
    ->ArgsProduct({{5, 10, 20, 100}, {0, 50, 150}, {0, 1}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// Fits in boxes of 41 x 41 pixels; the counter is what 10 000 of them take. Arguments: signal to noise,
// constant background, jobs.
void fitPeaks(benchmark::State& state)
{
    SpotFrame frame = spotFrame(double(state.range(0)), 0, false);
    std::vector<double> vecX, vecY;
    keepHunted(frame, vecX, vecY);
    double dfPeaks = 0;
    for (auto _ : state) {
        std::vector<double> vecFitX = vecX, vecFitY = vecY;
        benchmark::DoNotOptimize(
            FitPeakList(frame.img, vecFitX, vecFitY, 20, 3500, state.range(1) != 0, int(state.range(2))));
        dfPeaks += double(vecX.size());
    }
    state.counters["s_per_10000"] = benchmark::Counter(
        dfPeaks / 10000, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(fitPeaks)->ArgsProduct({{20, 100}, {0, 1}, {1}})->Unit(benchmark::kMillisecond);
BENCHMARK(fitPeaks)->ArgsProduct({{20, 100}, {0, 1}, {2}})->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
