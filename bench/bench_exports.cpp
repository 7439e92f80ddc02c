// Frames into a volume of reciprocal space: runs of pixels beside one pixel after the other.
#include "tests/reciprocal/plainvolume.h"

#include <benchmark/benchmark.h>

#include <random>

namespace tessera {

namespace {

// Counts with a background, which all reach the voxels, and a drifting beam.
template <class Add>
void addFrames(benchmark::State& state, const Add& fnAdd)
{
    const int nSide = 1024, nEdge = int(state.range(0));
    std::mt19937 random(1);
    std::poisson_distribution<int> noise(40);
    CImgObj<float> img;
    img.Create(nSide, nSide);
    for (int i = 0; i < nSide * nSide; ++i) {
        img.Data()[i] = float(noise(random));
    }
    CReciprocalVolume volume;
    if (!volume.create(nEdge, nEdge, nEdge)) {
        state.SkipWithError("not enough memory");
        return;
    }
    volume.setWavelength(0.0251);
    volume.setPixelSize(0.001);
    volume.setRotationAxis(double(state.range(1)));
    const int nFrames = 400;
    int n = 0;
    for (auto _ : state) {
        fnAdd(volume, img, QPointF(511.3 + 0.01 * (n % nFrames), 508.7 - 0.02 * (n % nFrames)),
              -50 + 0.25 * (n % nFrames));
        n += 7;  // spread over the tilts
    }
}

void volumeByRuns(benchmark::State& state)
{
    addFrames(state, [](CReciprocalVolume& volume, const CImgObj<float>& img, const QPointF& pt,
                        double dfTilt) { volume.addFrame(&img, pt, dfTilt); });
}
BENCHMARK(volumeByRuns)->ArgsProduct({{500, 1000}, {0, 38, 90}})->Unit(benchmark::kMillisecond);

void volumeByPixels(benchmark::State& state)
{
    addFrames(state, plainAddFrame);
}
BENCHMARK(volumeByPixels)->ArgsProduct({{500, 1000}, {0, 38, 90}})->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
