// Peak hunting of one frame in memory, beside bare Fourier transforms of its size, and of a series, beside
// the look at some of its frames that comes before.
#include "frames/framehunt.h"
#include "frames/peakhunting.h"
#include "frames/serieslook.h"
#include "imagefiles/mrcfile.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

namespace tessera {

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
        for (int d = -9; d <= 9; ++d) {
            for (int e = -9; e <= 9; ++e) {
                img.Data()[(nY + e) * g_nSide + nX + d] += 400.f * float(std::exp(-(d * d + e * e) / 18.0));
            }
        }
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
    for (auto _ : state) {
        nPeaks = huntFrame(img, parameters, {}, filters, work).listX.size();
    }
    state.counters["peaks"] = nPeaks;
}
BENCHMARK(huntOneFrame)->Unit(benchmark::kMillisecond);

// The yardstick: hunting should take no more than twice as long.
void threeMeasuredTransforms(benchmark::State& state)
{
    fftwf_complex* p = fftwf_alloc_complex(size_t(g_nSide) * g_nSide);
    const fftwf_plan plan = fftwf_plan_dft_2d(g_nSide, g_nSide, p, p, FFTW_FORWARD, FFTW_MEASURE);
    for (int i = 0; i < g_nSide * g_nSide; ++i) {
        p[i][0] = p[i][1] = 0.f;
    }
    for (auto _ : state) {
        for (int i = 0; i < 3; ++i) {
            fftwf_execute(plan);
        }
    }
    fftwf_destroy_plan(plan);
    fftwf_free(p);
}
BENCHMARK(threeMeasuredTransforms)->Unit(benchmark::kMillisecond);

// Counts with a halo and 25 spots that move on from frame to frame, 512 × 512, 16 bit.
bool writeSeriesFrame(int nFrame, const QString& strFile)
{
    const int nSide = 512, nReach = 6;
    std::mt19937 random(unsigned(nFrame) + 1);
    std::normal_distribution<double> noise(0, 8);
    std::uniform_int_distribution<int> place(20, nSide - 21);
    CImgObj<float> img;
    img.Create(nSide, nSide);
    for (int i = 0; i < nSide * nSide; ++i) {
        const double dfR = std::hypot(i % nSide - 255, i / nSide - 252);
        img.Data()[i] = float(60 + 2500 / (1 + dfR * dfR / 100) + noise(random));
    }
    for (int k = 0; k < 25; ++k) {
        const int nX = place(random), nY = place(random);
        for (int d = -nReach; d <= nReach; ++d) {
            for (int e = -nReach; e <= nReach; ++e) {
                img.Data()[(nY + e) * nSide + nX + d] += 400.f * float(std::exp(-(d * d + e * e) / 4.5));
            }
        }
    }
    CImgObj<qint16> imgCounts;
    return imgCounts.Set(img.Data(), nSide, nSide) && WriteMRC<qint16>({&imgCounts}, strFile);
}

// The first frames of one series on disk.
DataSet seriesOfLength(int nFrames)
{
    static const QTemporaryDir dir;
    DataSet dataSet;
    dataSet.m_strProjectDir = dir.path();
    dataSet.m_strProjectName = QStringLiteral("series");
    for (int i = 0; i < nFrames; ++i) {
        const QString strFile = dir.filePath(QStringLiteral("f%1.mrc").arg(i));
        if (QFile::exists(strFile) || writeSeriesFrame(i, strFile)) {
            dataSet.m_listFrameFile.append(strFile);
        }
    }
    return dataSet;
}

void lookAtSeriesBeforeHunting(benchmark::State& state)
{
    const DataSet dataSet = seriesOfLength(int(state.range(0)));
    CRunReport report;
    std::optional<SeriesLook> look;
    for (auto _ : state) {
        look = lookAtSeries(dataSet, {}, report);
    }
    state.counters["spots"] = look && look->size ? look->size->nSpots : 0;
}
BENCHMARK(lookAtSeriesBeforeHunting)
    ->Arg(40)
    ->Arg(120)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// The yardstick of the look: it should take no more than a tenth.
void huntSeriesAfterLook(benchmark::State& state)
{
    DataSet dataSet = seriesOfLength(int(state.range(0)));
    CRunReport report;
    PeakHuntingParameters parameters;
    parameters.m_dfPeakRadius = 1.5;
    parameters.m_dfBackgroundRadius = 4;
    parameters.m_dfPeakThreshold = 15;
    PeakHuntingOptions options;
    options.bSave = false;
    for (auto _ : state) {
        CPeakFilters filters;
        runPeakHunting(dataSet, parameters, filters, report, options);
    }
    int nPeaks = 0;
    for (const QList<Peak3D>& listPeak : qAsConst(dataSet.m_listPeakFrame)) {
        nPeaks += listPeak.size();
    }
    state.counters["peaks"] = nPeaks;
}
BENCHMARK(huntSeriesAfterLook)->Arg(40)->Arg(120)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

struct PlanDestroy {
    void operator()(fftwf_plan plan) const { fftwf_destroy_plan(plan); }
};
using Plan = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, PlanDestroy>;

// What one frame's share of tessera-batch cannot do without: two reads of its 16 bit pixels, the transforms
// of its hunting and those of its region in the drift.
void bareFrameOfTheRoad(benchmark::State& state)
{
    const int nRegion = 256;
    std::vector<char> vecFile(2 * size_t(g_nSide) * g_nSide, 1);
    QTemporaryFile file;
    if (!file.open() || file.write(vecFile.data(), qint64(vecFile.size())) != qint64(vecFile.size())) {
        state.SkipWithError("no file");
        return;
    }
    file.flush();
    float* pReal = fftwf_alloc_real(size_t(g_nSide) * g_nSide);
    fftwf_complex* pHalf = fftwf_alloc_complex(size_t(g_nSide / 2 + 1) * g_nSide);
    fftwf_complex* pFrame = fftwf_alloc_complex(size_t(g_nSide) * g_nSide);
    fftwf_complex* pRegion = fftwf_alloc_complex(size_t(nRegion) * nRegion);
    {
        const Plan real(fftwf_plan_dft_r2c_2d(g_nSide, g_nSide, pReal, pHalf, FFTW_MEASURE));
        const Plan frame(fftwf_plan_dft_2d(g_nSide, g_nSide, pFrame, pFrame, FFTW_BACKWARD, FFTW_MEASURE));
        const Plan region(fftwf_plan_dft_2d(nRegion, nRegion, pRegion, pRegion, FFTW_FORWARD, FFTW_MEASURE));
        std::fill_n(pReal, size_t(g_nSide) * g_nSide, 0.f);
        std::fill_n(pFrame[0], 2 * size_t(g_nSide) * g_nSide, 0.f);
        std::fill_n(pRegion[0], 2 * size_t(nRegion) * nRegion, 0.f);
        for (auto _ : state) {
            for (int i = 0; i < 2; ++i) {
                QFile again(file.fileName());
                again.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
                benchmark::DoNotOptimize(again.read(vecFile.data(), qint64(vecFile.size())));
            }
            fftwf_execute(real.get());
            fftwf_execute(frame.get());
            for (int i = 0; i < 2; ++i) {
                fftwf_execute(region.get());
            }
        }
    }
    for (void* p : {(void*)pReal, (void*)pHalf, (void*)pFrame, (void*)pRegion}) {
        fftwf_free(p);
    }
}
BENCHMARK(bareFrameOfTheRoad)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
