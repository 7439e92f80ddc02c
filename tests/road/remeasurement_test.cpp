// What is measured again on simulated frames: the direct beam against the truth, intensities against the
// hunt.
#include "app/dataset/opening.h"
#include "frames/directbeamfit.h"
#include "frames/intensityextraction.h"
#include "frames/peakhunting.h"
#include "simulate/truthfile.h"

#include <gtest/gtest.h>
#include <QTemporaryDir>

TEST(Remeasurement, FindsTheTrueBeamAndTheIntensitiesOfTheHunt)
{
    QTemporaryDir dir;
    SimulationParameters p;
    p.strCrystal = QStringLiteral("akermanite");
    p.nFrames = 8;
    p.dfBeamCounts = 150000;  // 2650 in the highest pixel, below what the fit takes for saturated
    p.nHotPixels = 0;
    p.strDirectory = dir.path();
    SimulatedSeries series;
    QString strError;
    ASSERT_TRUE(simulateSeries(p, series, strError) && writeSeries(series, strError))
        << strError.toStdString();
    DataSet data;
    MappingParameters mapping;
    CRunReport report;
    ASSERT_TRUE(openProject(data, mapping, dir.filePath(QStringLiteral("series.ed3d")), report));
    // Whole pixels, so that a fit that leaves the beam where it is expected shows.
    data.m_dfCenterX = std::floor(p.dfCenterX);
    data.m_dfCenterY = std::floor(p.dfCenterY);
    data.m_listShift.clear();
    for (const auto& shift : series.listShift)
        data.m_listShift.append(QPointF(std::floor(shift[0]), std::floor(shift[1])));
    int nFitted = 0;
    EXPECT_TRUE(fitDirectBeam(data, report, [&](const DirectBeamOnFrame& beam) {
        const auto& shift = series.listShift[size_t(beam.nFrame)];
        EXPECT_NEAR(beam.ptFitted.x(), p.dfCenterX + shift[0], 0.1) << beam.nFrame;
        EXPECT_NEAR(beam.ptFitted.y(), p.dfCenterY + shift[1], 0.1) << beam.nFrame;
        ++nFitted;
    }));
    EXPECT_EQ(nFitted, p.nFrames);

    PeakHuntingParameters hunting;
    hunting.m_dfPeakRadius = 2;
    hunting.m_dfBackgroundRadius = 6;
    hunting.m_dfIntegrationRadius = 7;
    CPeakFilters filtersHunt, filters;
    ASSERT_TRUE(runPeakHunting(data, hunting, filtersHunt, report));
    QVector<QList<Peak3D>> vecPeak = data.m_listPeakFrame.toVector();
    for (QList<Peak3D>& listPeak : vecPeak)
        for (Peak3D& peak : listPeak)
            peak.dfIPoint = peak.dfI2D = -1;
    bool bFinished = false;
    ASSERT_TRUE(extractIntensity(data, vecPeak, hunting, {7, 3, 1}, filters, report, {}, &bFinished));
    EXPECT_TRUE(bFinished);
    EXPECT_GT(data.m_listPeakMerged.size(), 500);
    for (int n = 0; n < vecPeak.size(); ++n)
        for (int i = 0; i < vecPeak[n].size(); ++i) {
            EXPECT_EQ(vecPeak[n][i].dfIPoint, data.m_listPeakFrame[n][i].dfIPoint);
            EXPECT_EQ(vecPeak[n][i].dfI2D, data.m_listPeakFrame[n][i].dfI2D);
        }
}
