// The stage that refines the geometry: its files, its summary, and what it leaves alone.

#include "dataset/opening.h"
#include "dataset/unitcellfile.h"
#include "geometry/angles.h"
#include "records/wholefile.h"
#include "refinement/geometryofseries.h"
#include "road/refinedproject.h"
#include "road/road.h"
#include "road/roadjson.h"
#include "tests/batch/batchprogram.h"
#include "tests/recordingreport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

namespace tessera {

namespace {

QByteArray bytesOf(const QString& strFile)
{
    QFile file(strFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

RoadResults runTo(const QTemporaryDir& dir, RoadStage from, RoadStage to)
{
    RoadOptions options;
    options.listInput = QStringList{dir.filePath("q.ed3d")};
    options.strOutDir = dir.filePath("out");
    options.stageFrom = from;
    options.stageTo = to;
    options.nJobs = 2;
    CRecordingReport report;
    DataSet data;
    RoadState state(options, data, report);
    runRoad(state);
    EXPECT_TRUE(state.results.end.finished()) << state.results.end.strReason.toStdString();
    return state.results;
}

}  // namespace

TEST(GeometryStage, WritesTheRefinedProjectAndCellAndLeavesTheOtherFiles)
{
    QTemporaryDir dir;
    ASSERT_EQ(simulateQuartz(dir.path()).nStatus, 0);
    EXPECT_EQ(RoadOptions().stageTo, RoadStage::Integrate) << "a part of the road unless less is asked for";
    runTo(dir, RoadStage::Shifts, RoadStage::Index);
    const QDir out(dir.filePath("out"));
    const QStringList listBefore = out.entryList(QDir::Files, QDir::Name);
    EXPECT_FALSE(listBefore.contains("q_refined.uc"));
    const QByteArray bytesCell = bytesOf(out.filePath("q.uc")), bytesPeaks = bytesOf(out.filePath("q.ipf"));

    const RoadResults results = runTo(dir, RoadStage::Geometry, RoadStage::Geometry);
    EXPECT_EQ(results.lastStage, RoadStage::Geometry);
    ASSERT_TRUE(results.geometry) << results.geometry->strReason.toStdString();
    ASSERT_TRUE(results.geometry->done()) << results.geometry->strReason.toStdString();
    QStringList listAfter = listBefore + QStringList{"q_refined.ed3d", "q_refined.sc", "q_refined.uc"};
    listAfter.sort();
    EXPECT_EQ(out.entryList(QDir::Files, QDir::Name), listAfter);
    EXPECT_EQ(bytesOf(out.filePath("q.uc")), bytesCell);
    EXPECT_EQ(bytesOf(out.filePath("q.ipf")), bytesPeaks);

    const QJsonObject object = roadSummary(results)["geometry"].toObject();
    EXPECT_TRUE(object["refined"].toBool());
    EXPECT_LE(object["rmsPixels"].toDouble(), object["before"].toObject()["rmsPixels"].toDouble());
    EXPECT_LT(object["rmsPixels"].toDouble(), 0.6);
    EXPECT_EQ(object["cell"].toObject()["parameters"].toArray().size(), 6);
    for (const char* pszKey : {"axis", "axisOutOfPlane", "stretching", "ellipse", "thirdOrder", "centre",
                               "tiltScale", "after", "fixed"}) {
        EXPECT_TRUE(object.contains(QLatin1String(pszKey))) << pszKey;
    }
    // The cell of the file is that of the model, to the digits of single precision.
    const QList<Vec3D> listVector = readUnitCellFile(out.filePath("q_refined.uc"));
    ASSERT_EQ(listVector.size(), 3);
    EXPECT_NEAR(listVector[1].y, results.geometry->best().geometry.aBasis[1][1], 2e-8);
    // The project opens, with the frames and the axis of the model.
    DataSet data;
    MappingParameters mapping;
    CRecordingReport report;
    ASSERT_TRUE(openProject(data, mapping, out.filePath("q_refined.ed3d"), report));
    EXPECT_EQ(data.m_listFrameFile.size(), results.open->nFrames);
    EXPECT_TRUE(QFile::exists(data.m_listFrameFile.first()));
    EXPECT_NEAR(data.m_dfRotationAxis, object["axis"].toDouble(), 0.51e-4);
}

namespace {

DataSet elevenFrames(const QTemporaryDir& dir)
{
    DataSet series;
    series.m_strProjectDir = dir.path();
    series.m_dfWavelength = 0.0251;
    series.m_dfPixelSize = 0.004;
    series.m_dfCenterX = 250;
    series.m_dfCenterY = 260;
    for (int n = 0; n < 11; ++n) {
        series.m_listFrameFile.append(dir.filePath(QStringLiteral("f%1.mrc").arg(n)));
        series.m_listStageTilt.append(n - 5);
        series.m_listBeamTilt.append(0);
        series.m_listOverallTilt.append(n - 5);
        series.m_listShift.append(QPointF(0.25 * n, 0));
    }
    return series;
}

/// A geometry with a lens of every order, and an ellipse or a stretching.
GeometryModel modelOfALens(bool bEllipse)
{
    GeometryModel model;
    model.bEllipse = bEllipse;
    PlaneTerms<double>& plane = model.geometry.plane;
    plane.axis = -77.3215;
    (bEllipse ? plane.ellipseCos : plane.stretchingCos) = 0.015 * std::cos(radians(80));
    (bEllipse ? plane.ellipseSin : plane.stretchingSin) = 0.015 * std::sin(radians(80));
    plane.radial = 0.03;
    plane.parabolicSin = -0.004;
    plane.centreX = -1.5;
    model.geometry.turn.outOfPlane = 0.2;
    model.geometry.turn.scale = 1.01;
    return model;
}

}  // namespace

/// Azimuths in files count from the long direction of the pattern; opening turns that of the stretching.
TEST(RefinedProject, ComesBackWhenItIsOpened)
{
    QTemporaryDir dir;
    const DataSet series = elevenFrames(dir);
    for (const bool bEllipse : {false, true}) {
        const GeometryModel model = modelOfALens(bEllipse);
        const QString strFile = dir.filePath("s.ed3d");
        const std::optional<QByteArray> bytes = refinedProjectText(series, model, strFile);
        ASSERT_TRUE(bytes);
        ASSERT_TRUE(writeWholeFile(strFile, *bytes, nullptr));
        ASSERT_TRUE(
            writeWholeFile(dir.filePath("s.sc"), shiftFileText(refinedShifts(series, model)), nullptr));
        DataSet data;
        data.m_dfStretchAmplitude = 0.7;  // of a series before
        MappingParameters mapping;
        mapping.m_bApplyStretching = true;
        CRecordingReport report;
        ASSERT_TRUE(openProject(data, mapping, strFile, report));
        EXPECT_EQ(data.m_listFrameFile, series.m_listFrameFile);
        EXPECT_NEAR(data.m_listOverallTilt.last(), 5.05, 1e-9);
        EXPECT_EQ(data.m_listShift, series.m_listShift);
        EXPECT_EQ(mapping.m_bApplyStretching, !bEllipse);

        data.m_listCell = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
        const DiffractionGeometry back = geometryOfSeries(data, mapping).value();
        EXPECT_NEAR(back.plane.axis, -77.3215, 1e-9);
        EXPECT_EQ(back.turn.outOfPlane, 0.2);
        for (const FramePlace place : {FramePlace{200, 30}, FramePlace{-20, 240}}) {
            // the centre has gone to the shifts
            const FramePlace ofBeam = {place.dfX + 250 - data.m_dfCenterX,
                                       place.dfY + 260 - data.m_dfCenterY};
            const auto one = undistorted(model.geometry.plane, model.geometry.dfRadius, place);
            const auto other = undistorted(back.plane, back.dfRadius, ofBeam);
            EXPECT_NEAR(one[0], other[0], 1e-3);
            EXPECT_NEAR(one[1], other[1], 1e-3);
        }
    }
}

TEST(RefinedProject, IsNotWrittenWithANameThatItCannotHold)
{
    QTemporaryDir dir;
    DataSet series = elevenFrames(dir);
    GeometryModel model;
    series.m_listFrameFile[2] = dir.filePath("with blank.mrc");
    EXPECT_FALSE(refinedProjectText(series, model, dir.filePath("s.ed3d")));
}

}  // namespace tessera
