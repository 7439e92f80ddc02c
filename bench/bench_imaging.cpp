// Transforms against FFTW's own 2D plans, the bytes for display, and the fit of the direct beam.
#include "imaging/acmlfft.h"
#include "imaging/cdf2.h"
#include "imaging/contrast.h"
#include "imaging/correlation.h"
#include "imaging/imagefilters.h"
#include "imaging/peakfit2d.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <vector>

namespace tessera {

namespace {

std::vector<COMPLEX> testImage(int nSide)
{
    std::vector<COMPLEX> vec;
    vec.reserve(size_t(nSide) * size_t(nSide));
    for (int i = 0; i < nSide * nSide; ++i) {
        vec.push_back({float(i % 1009 * 7919 % 1009), 0.f});
    }
    return vec;
}

// Forward and backward in turn, so that the values stay in range; one transform per iteration.
void acmlFft(benchmark::State& state)
{
    const int nSide = int(state.range(0));
    auto vec = testImage(nSide);
    CAcmlFft fft;
    fft.Init(nSide, nSide);
    int nDirection = -1;
    for (auto _ : state) {
        fft.Transform(vec.data(), nSide, nSide, nDirection);
        nDirection = -nDirection;
        benchmark::DoNotOptimize(vec.data());
    }
}
BENCHMARK(acmlFft)->Arg(512)->Arg(1024)->Arg(1000)->Arg(2048)->Unit(benchmark::kMillisecond);

// A 2D plan of FFTW itself. The wisdom of measured plans is dropped, so that it helps nobody else.
void fftwPlan2D(benchmark::State& state, unsigned nFlag)
{
    const int nSide = int(state.range(0));
    fftwf_complex* pData = fftwf_alloc_complex(std::size_t(nSide) * std::size_t(nSide));
    const fftwf_plan plan = fftwf_plan_dft_2d(nSide, nSide, pData, pData, FFTW_FORWARD, nFlag);
    const auto vec = testImage(nSide);
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(vec.begin(), vec.end(), reinterpret_cast<COMPLEX*>(pData));
        state.ResumeTiming();
        fftwf_execute(plan);
        benchmark::DoNotOptimize(pData);
    }
    fftwf_destroy_plan(plan);
    fftwf_free(pData);
    fftwf_forget_wisdom();
}
BENCHMARK_CAPTURE(fftwPlan2D, estimate, unsigned(FFTW_ESTIMATE))
    ->Arg(1024)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fftwPlan2D, measure, unsigned(FFTW_MEASURE))
    ->Arg(1024)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

void mixedRadixFft(benchmark::State& state)
{
    const int nSide = int(state.range(0));
    auto vec = testImage(nSide);
    CDF2 df2;
    int nDirection = 0;
    for (auto _ : state) {
        df2.fft2d(nSide, nSide, vec.data(), nDirection);
        nDirection = 1 - nDirection;
        benchmark::DoNotOptimize(vec.data());
    }
}
BENCHMARK(mixedRadixFft)->Arg(1000)->Unit(benchmark::kMillisecond);

void correlateSpectra(benchmark::State& state)
{
    const int nSide = int(state.range(0));
    const auto vec = testImage(nSide);
    double dfPeak, dfX, dfY;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Correlate(vec.data(), vec.data(), nSide, nSide, 1, dfPeak, dfX, dfY, true));
    }
}
BENCHMARK(correlateSpectra)->Arg(256)->Unit(benchmark::kMillisecond);

void floatToByte(benchmark::State& state)
{
    std::vector<float> vec;
    for (const COMPLEX& c : testImage(1024)) {
        vec.push_back(c.re);
    }
    std::vector<unsigned char> vecByte(vec.size());
    for (auto _ : state) {
        if (state.range(0)) {
            FloatToByteScaled(vec.data(), vecByte.data(), int(vec.size()), 0.001f, 0.001f, 1000, 0.f, 255.f);
        } else {
            FloatToByte(vec.data(), vecByte.data(), int(vec.size()), 100.f, 900.f, 0.f, 255.f);
        }
        benchmark::DoNotOptimize(vecByte.data());
    }
}
BENCHMARK(floatToByte)->ArgName("scaled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void makeGaussian(benchmark::State& state)
{
    CImgObj<float> img;
    for (auto _ : state) {
        benchmark::DoNotOptimize(MakeGaussian(img, 1024, 1024, 3.f));
    }
}
BENCHMARK(makeGaussian)->Unit(benchmark::kMillisecond);

void fitPeak2D(benchmark::State& state)
{
    CImgObj<float> img;
    img.Create(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            img.Data()[y * 256 + x] = 5000.f / (1 + (x - 128.3f) * (x - 128.3f) / 30 +
                                                (y - 126.8f) * (y - 126.8f) / 25) +
                                      float((x * 31 + y * 17) % 13);
        }
    }
    for (auto _ : state) {
        double x = 127.0;
        double y = 128.0;
        benchmark::DoNotOptimize(FitPeak2D(img, x, y, int(state.range(0)), 100000.0));
    }
}
BENCHMARK(fitPeak2D)->ArgName("half")->Arg(20)->Arg(64)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
