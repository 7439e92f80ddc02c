// A model in the data set, back again, and in files; and the calibration that it makes.
#include "road/seriesgeometry.h"

#include "dataset/calibration.h"
#include "dataset/opening.h"
#include "reciprocal/mapping.h"
#include "records/wholefile.h"
#include "refinement/geometryofseries.h"
#include "road/calibrating.h"
#include "road/geometrystate.h"
#include "road/road.h"
#include "road/savedproject.h"
#include "tests/batch/batchprogram.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace tessera {

namespace {

/// Eleven frames with a peak each, a cell, and a stretching.
DataSet someSeries(const QTemporaryDir& dir)
{
    DataSet data;
    data.m_strProjectDir = dir.path();
    data.m_strProjectName = "told";
    data.m_dfPixelSize = 0.004;
    data.m_dfRotationAxis = -40;
    data.m_dfStretchAmplitude = 0.7;
    data.m_dfStretchAzimuth = 25;
    data.m_dfCenterX = 128;
    data.m_dfCenterY = 130;
    for (int n = 0; n < 11; ++n) {
        data.m_listFrameFile.append(dir.filePath(QStringLiteral("f%1.mrc").arg(n)));
        EXPECT_TRUE(writeWholeFile(data.m_listFrameFile.last(), "frame"));
        data.m_listStageTilt.append(n - 5);
        data.m_listBeamTilt.append(0);
        data.m_listOverallTilt.append(n - 5);
        data.m_listShift.append({0.25 * n, -0.5 * n});
        Peak3D peak;
        peak.nFrame = n;
        peak.dfX2D = 60 + 9 * n;
        peak.dfY2D = 200 - 7 * n;
        peak.dfIPoint = 100;
        data.m_listPeakFrame.append(QList<Peak3D>{peak});
    }
    data.m_listCellFound = data.m_listCell = {{0.1f, 0, 0}, {0, 0.09f, 0}, {0, 0, 0.08f}};
    return data;
}

GeometryModel someModel()
{
    GeometryModel model;
    DiffractionGeometry& geometry = model.geometry;
    geometry.aBasis = {DoubleVector{0.1001, 0.0002, 0}, DoubleVector{0, 0.0899, 0.0003},
                       DoubleVector{0, 0, 0.0801}};
    geometry.dfWavelength = 0.0251;
    geometry.dfPixelSize = 0.004;
    geometry.plane.axis = -38.1234;
    geometry.plane.centreX = 0.5;
    geometry.plane.centreY = -1.25;
    geometry.plane.ellipseCos = 0.01;
    geometry.plane.ellipseSin = -0.008;
    geometry.plane.radial = 0.03;
    geometry.plane.spiral = -0.004;
    geometry.plane.parabolicCos = 0.001;
    geometry.plane.parabolicSin = 0.002;
    geometry.turn.outOfPlane = 0.2;
    geometry.turn.scale = 1.01;
    model.bEllipse = true;
    return model;
}

QList<Vec3D> pointsOf(const DataSet& data)
{
    QList<Vec3D> listPoint;
    for (const QList<Peak3D>& listPeak : data.m_listPeakFrame) {
        for (const Peak3D& peak : listPeak) {
            listPoint.append(peak.point());
        }
    }
    return listPoint;
}

}  // namespace

TEST(SeriesGeometry, AModelMapsThePeaksAndGoesWithoutATrace)
{
    const QTemporaryDir dir;
    DataSet data = someSeries(dir);
    MappingParameters mapping;
    mapping.m_bApplyStretching = true;
    CRecordingReport report;
    ASSERT_TRUE(transformPeaksTo3D(data, mapping, report));
    const QList<Vec3D> listBefore = pointsOf(data);
    const PeakMapping mappingBefore = *data.m_peakMapping;
    const CGeometryState state(data, mapping);

    const GeometryModel model = someModel();
    takeGeometry(data, mapping, model);
    EXPECT_FALSE(mapping.m_bApplyStretching) << "the ellipse is in its place";
    EXPECT_NEAR(data.m_dfRotationAxis, -38.1234, 1e-9);
    ASSERT_TRUE(transformPeaksTo3D(data, mapping, report));
    // The model's own way, from the measured place and the told tilt.
    for (int n = 0; n < 11; ++n) {
        const Peak3D& peak = data.m_listPeakFrame[n][0];
        const FramePlace place = {peak.dfX2D - (128 + 0.25 * n), peak.dfY2D - (130 - 0.5 * n)};
        const DoubleVector point = pointOfPlace(model.geometry, place, n - 5);
        EXPECT_NEAR(double(peak.fX3D), point[0], 2e-5);
        EXPECT_NEAR(double(peak.fY3D), point[1], 2e-5);
        EXPECT_NEAR(double(peak.fZ3D), point[2], 2e-5);
    }
    EXPECT_NE(pointsOf(data), listBefore);
    EXPECT_NEAR(double(data.m_listCell[1].z), 0.0003, 1e-9);

    ASSERT_TRUE(state.putBack(data, mapping));
    EXPECT_EQ(pointsOf(data), listBefore);
    EXPECT_TRUE(mapping.m_bApplyStretching);
    EXPECT_EQ(currentPeakMapping(data, mapping), mappingBefore);
    EXPECT_EQ(data.m_listCell[1].z, 0);

    // Other peaks: the geometry alone goes back.
    takeGeometry(data, mapping, model);
    data.m_listPeakFrame[3][0].dfX2D += 1;
    const QList<Vec3D> listOther = pointsOf(data);
    EXPECT_FALSE(state.putBack(data, mapping));
    EXPECT_EQ(pointsOf(data), listOther);
    EXPECT_EQ(currentPeakMapping(data, mapping), mappingBefore);
}

TEST(SeriesGeometry, ASavedProjectOpensWithTheGeometryInForce)
{
    const QTemporaryDir dir;
    DataSet data = someSeries(dir);
    MappingParameters mapping;
    QString strReason;
    const QByteArray bytesTold = "the told project";
    ASSERT_TRUE(writeWholeFile(dir.filePath("told.ed3d"), bytesTold));
    EXPECT_FALSE(saveSeriesAsProject(data, mapping, dir.filePath("./told.ed3d"), &strReason));
    EXPECT_TRUE(strReason.contains("told.ed3d"));
    EXPECT_EQ(readBytes(dir.filePath("told.ed3d")), bytesTold);

    CRecordingReport report;
    takeGeometry(data, mapping, someModel());
    ASSERT_TRUE(transformPeaksTo3D(data, mapping, report));
    QStringList listFile;
    ASSERT_TRUE(saveSeriesAsProject(data, mapping, dir.filePath("new.ed3d"), &strReason, &listFile))
        << strReason.toStdString();
    EXPECT_EQ(listFile.size(), 4);
    DataSet opened;
    opened.m_dfStretchAmplitude = 5;  // of a series before
    MappingParameters mappingOpened;
    mappingOpened.m_bApplyStretching = true;
    ASSERT_TRUE(openProject(opened, mappingOpened, dir.filePath("new.ed3d"), report));
    ASSERT_TRUE(transformPeaksTo3D(opened, mappingOpened, report));
    const QList<Vec3D> listPoint = pointsOf(data), listAgain = pointsOf(opened);
    ASSERT_EQ(listAgain.size(), listPoint.size());
    for (int n = 0; n < listPoint.size(); ++n) {
        EXPECT_LT(length(listPoint[n] - listAgain[n]), 2e-5f);
    }
    ASSERT_TRUE(loadUnitCellAtOpening(opened, report));
    EXPECT_NEAR(double(opened.m_listCell[0].y), 0.0002, 1e-8);
}

TEST(SeriesGeometry, AKnownCellDeterminesTheSizeOfAPixel)
{
    const CellParameters errors = {0.001, 0.001, 0.001, 0, 0, 0};
    const CellParameters cube = {12.1, 12.1, 12.1, 90, 90, 90};
    // 1 % too long means pixels 1 % too small.
    const auto size = determinedPixelSize(0.004, cube, errors,
                                          {12.1 / 1.01, 12.1 / 1.01, 12.1 / 1.01, 90, 90, 90});
    ASSERT_TRUE(size);
    EXPECT_NEAR(size->dfSize, 0.004 * 1.01, 1e-9);
    EXPECT_NEAR(size->dfError, 0.004 * 1.01 * 0.001 / 12.1, 1e-12);
    // The primitive cell of the body-centred one has half its volume.
    const double dfEdge = 12.1 * std::sqrt(3.0) / 2, dfAngle = 109.471220634;
    const auto primitive = determinedPixelSize(0.004, {dfEdge, dfEdge, dfEdge, dfAngle, dfAngle, dfAngle},
                                               errors, cube);
    ASSERT_TRUE(primitive);
    EXPECT_NEAR(primitive->dfSize, 0.004, 1e-8);
    EXPECT_FALSE(determinedPixelSize(0.004, cube, errors, {10.8, 10.8, 10.8, 90, 90, 90}))
        << "another crystal";
    EXPECT_FALSE(determinedPixelSize(0.004, cube, errors, {9, 9, 21.9, 90, 90, 90}))
        << "another crystal with the same volume";
    EXPECT_FALSE(determinedPixelSize(0.004, {}, errors, cube));
}

/// The way from one crystal to the next: the driver writes a calibration, and a series that is told wrongly
/// takes it.
TEST(SeriesGeometry, TheDriverPassesACalibrationOn)
{
    QTemporaryDir dir;
    ASSERT_EQ(simulateQuartz(dir.path()).nStatus, 0);
    const QString strFile = dir.filePath("m.calib.json");
    BatchOutcome outcome = runBatch({dir.filePath("q.ed3d"), "--save-calibration", strFile});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const std::optional<Calibration> calibration = readCalibration(strFile);
    ASSERT_TRUE(calibration) << outcome.strText.toStdString();
    EXPECT_NEAR(calibration->dfRotationAxis, -38.5, 0.2);
    EXPECT_GT(calibration->mapError["axis"], 0);
    EXPECT_FALSE(calibration->dfPixelSize);

    QByteArray bytesProject = readBytes(dir.filePath("q.ed3d"));
    bytesProject.replace("-38.5", "-30.5");
    writeBytes(dir.filePath("wrong.ed3d"), bytesProject);
    RoadOptions options;
    options.listInput = QStringList{dir.filePath("wrong.ed3d")};
    options.strCalibrationFile = strFile;
    options.stageTo = RoadStage::Shifts;
    CRecordingReport report;
    DataSet data;
    RoadState state(options, data, report);
    runRoad(state);
    EXPECT_TRUE(state.results.end.finished()) << state.results.end.strReason.toStdString();
    EXPECT_NEAR(data.m_dfRotationAxis, calibration->dfRotationAxis, 1e-4);

    writeBytes(strFile, "{}");
    outcome = runBatch({dir.filePath("wrong.ed3d"), "--calibration", strFile, "--to", "shifts"});
    EXPECT_NE(outcome.nStatus, 0);
    EXPECT_TRUE(outcome.strText.contains("m.calib.json: no calibration")) << outcome.strText.toStdString();
    for (const QStringList& listBad : {QStringList{"--save-calibration", dir.filePath("wrong.ed3d")},
                                       QStringList{"--save-calibration", "x", "--to", "index"},
                                       QStringList{"--calibration", strFile, "--axis", "auto"}}) {
        EXPECT_EQ(runBatch(QStringList{dir.filePath("wrong.ed3d")} + listBad).nStatus, 2)
            << listBad.join(' ').toStdString();
    }
}

}  // namespace tessera
