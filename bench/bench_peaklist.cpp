// Reading and writing of a peak list of a million lines, against scanf and printf.
#include "dataset/peaklistfile.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <random>

namespace tessera {

const int g_nFrames = 1000;
const int g_nPeaksOnFrame = 1000;

namespace {

const DataSet& millionPeaks()
{
    static DataSet s_data;
    if (s_data.m_listPeakFrame.isEmpty()) {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> position(0, 4096), intensity(-10, 60000);
        for (int nFrame = 0; nFrame < g_nFrames; ++nFrame) {
            s_data.m_listFrameFile.append(QString::number(nFrame));
            s_data.m_listPeakFrame.append(QList<Peak3D>());
            s_data.m_vecPeakGroup.append(QVector<QList<int>>());
            for (int i = 0; i < g_nPeaksOnFrame; ++i) {
                Peak3D peak;
                peak.dfX2D = position(random);
                peak.dfY2D = position(random);
                peak.dfIPoint = intensity(random);
                peak.dfI2D = 30 * intensity(random);
                s_data.m_listPeakFrame.last().append(peak);
                s_data.m_vecPeakGroup.last().append(random() % 8 ? QList<int>{0} : QList<int>{0, 3});
            }
        }
    }
    return s_data;
}

void BM_WritePeakList(benchmark::State& state)
{
    QTemporaryDir folder;
    const DataSet& data = millionPeaks();
    for (auto _ : state) {
        if (writePeakList(data, folder.filePath("a.pk")) != 1) {
            state.SkipWithError("not written");
        }
    }
}
BENCHMARK(BM_WritePeakList)->Unit(benchmark::kMillisecond);

void BM_WriteByPrintf(benchmark::State& state)
{
    QTemporaryDir folder;
    const DataSet& data = millionPeaks();
    for (auto _ : state) {
        FILE* const pFile = fopen(QFile::encodeName(folder.filePath("a.pk")).constData(), "w");
        int nSerial = 0;
        for (int f = 0; f < g_nFrames; ++f) {
            for (int i = 0; i < g_nPeaksOnFrame; ++i) {
                const Peak3D& peak = data.m_listPeakFrame[f][i];
                fprintf(pFile, "%8d%5d%6d%7.1f%7.1f%9.1f%12.1f%17s\n", ++nSerial, f, i, peak.dfX2D,
                        peak.dfY2D, peak.dfIPoint, peak.dfI2D, "8000000000000000");
            }
        }
        fclose(pFile);
    }
}
BENCHMARK(BM_WriteByPrintf)->Unit(benchmark::kMillisecond);

void BM_ReadPeakList(benchmark::State& state)
{
    QTemporaryDir folder;
    if (writePeakList(millionPeaks(), folder.filePath("a.pk")) != 1) {
        state.SkipWithError("not written");
    }
    DataSet data;
    data.m_listFrameFile = millionPeaks().m_listFrameFile;
    CRunReport report;
    for (auto _ : state) {
        if (readPeakList(data, folder.filePath("a.pk"), report) != 1) {
            state.SkipWithError("not read");
        }
    }
}
BENCHMARK(BM_ReadPeakList)->Unit(benchmark::kMillisecond);

void BM_ScanByScanf(benchmark::State& state)  // the numbers alone, no store
{
    QTemporaryDir folder;
    if (writePeakList(millionPeaks(), folder.filePath("a.pk")) != 1) {
        state.SkipWithError("not written");
    }
    for (auto _ : state) {
        FILE* const pFile = fopen(QFile::encodeName(folder.filePath("a.pk")).constData(), "r");
        char aLine[128], aMask[17];
        int nSerial, nFrame, nIndex;
        float fX, fY, fI, fI2D;
        while (fgets(aLine, sizeof(aLine), pFile)) {
            benchmark::DoNotOptimize(sscanf(aLine, "%d %d %d %f %f %f %f %16s", &nSerial, &nFrame, &nIndex,
                                            &fX, &fY, &fI, &fI2D, aMask));
        }
        fclose(pFile);
    }
}
BENCHMARK(BM_ScanByScanf)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
