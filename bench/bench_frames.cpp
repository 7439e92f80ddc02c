// Peak hunting of one frame in memory, beside bare Fourier transforms of its size.
#include "frames/framehunt.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <random>

namespace {

const int g_nSide = 1024;

// Noise, a halo and some 400 spots, as a frame of a good series has.
CImgObj<float> syntheticFrame()
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(100.f, 10.f);
    std::uniform_int_distribution<int> place(20, g_nSide - 21);
    CImgObj<float> img;
    img.Create(g_nSide, g_nSide);
    for (int i = 0; i < g_nSide * g_nSide; ++i) {
        const double dfR = std::hypot(i % g_nSide - 510, i / g_nSide - 505);
        img.Data()[i] = noise(random) + float(5000 / (1 + dfR * dfR / 400));
    }
    for (int k = 0; k < 400; ++k) {
        const int nX = place(random), nY = place(random);
        for (int d = -9; d <= 9; ++d)
            for (int e = -9; e <= 9; ++e)
                img.Data()[(nY + e) * g_nSide + nX + d] += 400.f * float(std::exp(-(d * d + e * e) / 18.0));
    }
    return img;
}

void huntOneFrame(benchmark::State& state)
{
    const CImgObj<float> img = syntheticFrame();
    PeakHuntingParameters parameters;
    parameters.m_dfPeakRadius = 3;
    parameters.m_dfBackgroundRadius = 7;
    parameters.m_dfPeakThreshold = 20;
    CPeakFilters filters;
    FrameHuntWork work;
    int nPeaks = 0;
    huntFrame(img, parameters, {}, filters, work);  // the filters are made once for a series
    for (auto _ : state)
        nPeaks = huntFrame(img, parameters, {}, filters, work).listX.size();
    state.counters["peaks"] = nPeaks;
}
BENCHMARK(huntOneFrame)->Unit(benchmark::kMillisecond);

// The yardstick: hunting should take no more than twice as long.
void threeMeasuredTransforms(benchmark::State& state)
{
    fftwf_complex* p = fftwf_alloc_complex(size_t(g_nSide) * g_nSide);
    const fftwf_plan plan = fftwf_plan_dft_2d(g_nSide, g_nSide, p, p, FFTW_FORWARD, FFTW_MEASURE);
    for (int i = 0; i < g_nSide * g_nSide; ++i)
        p[i][0] = p[i][1] = 0.f;
    for (auto _ : state)
        for (int i = 0; i < 3; ++i)
            fftwf_execute(plan);
    fftwf_destroy_plan(plan);
    fftwf_free(p);
}
BENCHMARK(threeMeasuredTransforms)->Unit(benchmark::kMillisecond);

}  // namespace
