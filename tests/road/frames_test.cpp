// Simulated frames: the counts and the noise that were asked for, formats that the program's own readers
// take, and the series that they make.
#include "dataset/opening.h"
#include "frames/frameloader.h"
#include "simulate/frameimage.h"
#include "simulate/framewriter.h"
#include "simulate/truthfile.h"
#include "tests/imagefiles/filesizelimit.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cerrno>

namespace tessera {

namespace {

SimulationParameters smallSeries()
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("akermanite");
    p.nFrames = 6;
    p.nSize = 200;
    p.dfPixelSize = 0.008;
    p.dfCenterX = 101.2;
    p.dfCenterY = 98.7;
    return p;
}

SimulatedSeries simulated(const SimulationParameters& p)
{
    QString strError;
    auto series = simulateSeries(p, strError);
    EXPECT_TRUE(series) << strError.toStdString();
    return std::move(series).value_or(SimulatedSeries());
}

}  // namespace

TEST(Frames, SpotsHoldTheirCountsAndTheNoiseIsTheOneTold)
{
    for (SpotShape shape : {SpotShape::Gaussian, SpotShape::Moffat}) {
        SimulationParameters p = smallSeries();
        p.spotShape = shape;
        p.dfBeamCounts = 0;
        p.dfSpotSigma = 2;
        p.nHotPixels = 0;
        SimulatedSeries series = simulated(p);
        // One spot alone, so that no neighbour reaches into its disc.
        const TruthSpot spot = *std::max_element(
            series.listSpot.begin(), series.listSpot.end(),
            [](const TruthSpot& a, const TruthSpot& b) { return a.dfSignalToNoise < b.dfSignalToNoise; });
        series.listDrawn.assign(p.nFrames, {});
        const std::vector<double> listBare = expectedFrame(series, spot.nFrame);
        series.listDrawn[spot.nFrame] = {spot};
        const std::vector<double> listWith = expectedFrame(series, spot.nFrame);
        const std::vector<float> listNoisy = renderFrame(series, spot.nFrame);
        const double dfRadius = spotDiscRadius(p);
        double dfCounts = 0, dfVariance = 0, dfDeviation = 0;
        for (int y = 0; y < p.nSize; ++y) {
            for (int x = 0; x < p.nSize; ++x) {
                const size_t i = size_t(y) * p.nSize + x;
                const double dfPixelVariance = listWith[i] + p.dfReadNoise * p.dfReadNoise;
                dfDeviation += std::pow(listNoisy[i] - listWith[i], 2) / dfPixelVariance;
                if (std::hypot(x - spot.dfX, y - spot.dfY) > dfRadius) {
                    continue;
                }
                dfCounts += listWith[i] - listBare[i];
                dfVariance += dfPixelVariance;
            }
        }
        // The disc's edge cuts pixels, so its area is told to a few per cent.
        EXPECT_NEAR(dfCounts / spot.dfCounts, 1, 0.02);
        EXPECT_NEAR(dfCounts / std::sqrt(dfVariance) / spot.dfSignalToNoise, 1, 0.03);
        EXPECT_NEAR(dfDeviation / (p.nSize * p.nSize), 1, 0.04);
    }
}

TEST(Frames, DependOnTheirSeedAndNotOnTheOrder)
{
    SimulationParameters p = smallSeries();
    p.dfSaturation = 500;
    const SimulatedSeries series = simulated(p);
    const std::vector<float> listThird = renderFrame(series, 3);
    renderFrame(series, 0);
    EXPECT_EQ(renderFrame(series, 3), listThird);
    for (const QPoint& pt : series.listHotPixel) {
        EXPECT_EQ(listThird[size_t(pt.y()) * p.nSize + pt.x()], 500.f);
    }
    EXPECT_EQ(*std::max_element(listThird.begin(), listThird.end()), 500.f);  // saturated
    p.nSeed = 2;
    EXPECT_NE(renderFrame(simulated(p), 3), listThird);
}

TEST(Frames, EveryFormatIsReadBackByTheFrameLoader)
{
    // Counts beyond the ranges of 16 bits; a grey step is 4 counts on writing and 64 on reading.
    const std::vector<float> listPixel = {-40000, -3.4f, 6, 30000, 40000, 70000};
    const std::pair<SimulatedFormat, std::vector<float>> aRow[] = {
        {SimulatedFormat::Mrc16, {-32768, -3, 6, 30000, 32767, 32767}},
        {SimulatedFormat::MrcU16, {0, 0, 6, 30000, 40000, 65535}},
        {SimulatedFormat::MrcFloat, listPixel},
        {SimulatedFormat::Dm3, {-40000, -3, 6, 30000, 40000, 70000}},
        {SimulatedFormat::Png8, {0, 0, 128, 16320, 16320, 16320}}};
    QTemporaryDir dir;
    for (const auto& [format, listWanted] : aRow) {
        const QString strFile = dir.filePath("frame." + frameExtension(format));
        ASSERT_EQ(writeFrame(strFile, listPixel, 3, 2, format), QString());
        ImageList listImage;
        CRunReport report;
        ASSERT_EQ(loadFrame(listImage, strFile, {}, report), 1) << strFile.toStdString();
        ASSERT_EQ(listImage.at(0)->Width(), 3);
        EXPECT_EQ(std::vector<float>(listImage[0]->Data(), listImage[0]->Data() + 6), listWanted)
            << int(format);
    }
}

TEST(Series, OfAFullDiskIsToldAndLeavesNoCutFile)
{
    for (SimulatedFormat format : {SimulatedFormat::Mrc16, SimulatedFormat::Dm3, SimulatedFormat::Png8}) {
        QTemporaryDir dir;
        SimulationParameters p = smallSeries();
        p.nSize = 32;  // less than a file object gathers before it writes
        p.nHotPixels = 0;
        p.strDirectory = dir.path();
        p.format = format;
        const SimulatedSeries series = simulated(p);
        const QString strFrame = frameFileName(series, 0);
        QString strError;
        const CFileSizeLimit limit(100);
        EXPECT_FALSE(writeSeries(series, strError));
        EXPECT_EQ(strError.toStdString(), QStringLiteral("cannot write %1: %2")
                                              .arg(dir.filePath(strFrame), qt_error_string(EFBIG))
                                              .toStdString());
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList());
    }
}

TEST(Series, OpensAsAProject)
{
    QTemporaryDir dir;
    SimulationParameters p = smallSeries();
    p.strDirectory = dir.filePath(QStringLiteral("new folder"));
    p.strName = QStringLiteral("a series");
    p.nBeamTilt = 3;
    p.dfStretchAmplitude = 1.5;
    p.dfStretchAzimuth = 40;
    const SimulatedSeries series = simulated(p);
    QString strError;
    ASSERT_TRUE(writeSeries(series, strError)) << strError.toStdString();

    DataSet data;
    MappingParameters mapping;
    CRunReport report;
    ASSERT_TRUE(openProject(data, mapping, p.strDirectory + QStringLiteral("/a series.ed3d"), report));
    EXPECT_EQ(data.m_listFrameFile.size(), p.nFrames);
    EXPECT_EQ((QList<double>{data.m_dfPixelSize, data.m_dfRotationAxis, data.m_dfStretchAzimuth}),
              (QList<double>{0.008, -38.5, 130}));
    EXPECT_EQ(data.m_listBeamTiltBreak, (QList<int>{1, 0, 0, 1, 0, 0}));
    for (int n = 0; n < p.nFrames; ++n) {
        EXPECT_TRUE(QFile::exists(data.m_listFrameFile[n]));
        EXPECT_NEAR(data.m_listStageTilt[n] + data.m_listBeamTilt[n], p.dfTiltStart + n * p.dfTiltStep, 1e-9);
    }
    EXPECT_EQ(data.m_listHotPixel.value(1), series.listHotPixel[1]);
}

}  // namespace tessera
