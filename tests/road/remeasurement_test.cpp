// Intensities that are measured again on simulated frames, against those of the hunt.
#include "app/dataset/opening.h"
#include "frames/intensityextraction.h"
#include "frames/peakhunting.h"
#include "simulate/truthfile.h"

#include <gtest/gtest.h>
#include <QTemporaryDir>

TEST(Remeasurement, FindsTheIntensitiesOfTheHunt)
{
    QTemporaryDir dir;
    SimulationParameters p;
    p.strCrystal = QStringLiteral("akermanite");
    p.nFrames = 8;
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
    data.m_dfCenterX = p.dfCenterX;
    data.m_dfCenterY = p.dfCenterY;
    for (const auto& shift : series.listShift)
        data.m_listShift.append(QPointF(shift[0], shift[1]));
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
