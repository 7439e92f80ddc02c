// The reciprocal volume compared with a plain loop over the pixels, and its export.
#include "reciprocal/volumeexport.h"

#include "reciprocal/mapping.h"
#include "records/availablememory.h"
#include "tests/frames/frameseries.h"
#include "tests/reciprocal/plainvolume.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace tessera {

namespace {

/// All voxels, slice by slice and row by row.
std::vector<float> voxels(const CReciprocalVolume& volume)
{
    std::vector<float> vecVoxel;
    for (const CImgObj<float>* pSlice : volume.m_listSlice) {
        vecVoxel.insert(vecVoxel.end(), pSlice->Data(), pSlice->Data() + pSlice->Width() * pSlice->Height());
    }
    return vecVoxel;
}

}  // namespace

TEST(ReciprocalVolume, IsThatOfThePlainLoopToTheLastBit)
{
    // Combinations of volumes, axes (degrees), tilts (degrees), wavelengths (Å) and pixel sizes (Å⁻¹), also
    // ones that no microscope has: the fast way leaves out pixels that cannot reach the volume, and must
    // leave out none that does. Most runs have the usual wavelength and pixel size, so that many voxels are
    // filled.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(-1, 1);
    const double adfAxis[] = {0, 90, -38.5, 180, 45, -90, 127}, adfTilt[] = {0, 90, -60, 13.7, 180, -89.97};
    const double adfWavelength[] = {0.0251, 1e-6, 1.5, 30, -0.0251, 0},
                 adfPixel[] = {0.001, 0.02, 1e-6, 3, -0.01};
    int nWellFilled = 0;  // volumes in which more than 50 voxels hold a pixel
    for (int n = 0; n < 400; ++n) {
        CReciprocalVolume fast, plain;
        for (CReciprocalVolume* pVolume : {&fast, &plain}) {
            ASSERT_TRUE(n % 5 ? pVolume->create(24, 24, 24) : pVolume->create(17 + n % 40, 30, 9));
            pVolume->setRotationAxis(adfAxis[n % 7]);
            pVolume->setWavelength(n % 3 ? 0.0251 : adfWavelength[n / 3 % 6]);
            pVolume->setPixelSize(n % 4 ? 0.02 : adfPixel[n / 4 % 5]);
        }
        for (int nFrame = 0; nFrame < 2; ++nFrame) {  // one degree apart, so that they share voxels
            // Wide or high frames, with negative pixels too.
            const CImgObj<float> img = makeImage(n % 2 ? 40 : 140, n % 2 ? 131 : 33, [&](int, int) {
                return std::round(5 + 15 * uniform(random));
            });
            // The direct beam is exactly on a pixel, or anywhere, also outside the frame.
            const bool bOnPixel = n % 3 == 0;
            const QPointF ptBeam(bOnPixel ? 18 : 20 + 30 * uniform(random),
                                 bOnPixel ? 15 : 16 + 30 * uniform(random));
            const double dfTilt = adfTilt[n % 6] + nFrame;
            EXPECT_TRUE(fast.addFrame(&img, ptBeam, dfTilt));
            plainAddFrame(plain, img, ptBeam, dfTilt);
        }
        const std::vector<float> vecPlain = voxels(plain);
        ASSERT_EQ(voxels(fast), vecPlain) << n;
        nWellFilled += std::count_if(vecPlain.begin(), vecPlain.end(), [](float f) { return f > 0; }) > 50;
    }
    EXPECT_GT(nWellFilled, 250);  // or else equal volumes would prove nothing
}

// With distortions and an axis out of the plane, a pixel is in the voxel of the point of reciprocal space to
// which the mapping moves a peak at its place.
TEST(ReciprocalVolume, UndoesWhatThePeaksAreFreedOf)
{
    DataSet data;
    data.m_dfPixelSize = 0.02;
    data.m_dfRotationAxis = -38.5;
    // In the order of SeriesDistortion; far stronger than in any microscope, to move pixels to other voxels.
    data.m_distortion = {9, 40, 20, -8, 6, 130, 40, 5};
    CReciprocalVolume volume;
    ASSERT_TRUE(volume.create(60, 60, 60));
    volume.setRotationAxis(-38.5);
    volume.setPixelSize(0.02);
    volume.setDistortion(data.m_distortion);
    const QPointF ptCentre(24.5, 26);
    float fValue = 0;  // another for each pixel, to tell them apart
    int nMoved = 0;    // pixels that would be in another voxel without the distortions
    for (const QPoint& pt : {QPoint(3, 40), QPoint(24, 26), QPoint(45, 7), QPoint(30, 45)}) {
        ++fValue;
        const CImgObj<float> img = makeImage(
            50, 50, [&](int x, int y) { return x == pt.x() && y == pt.y() ? double(fValue) : 0; });
        EXPECT_TRUE(volume.addFrame(&img, ptCentre, 31));
        const auto voxelOf = [&](const DataSet& series) {
            Peak3D peak;
            peak.dfX2D = pt.x();
            peak.dfY2D = pt.y();
            mapPeakTo3D(peak, ptCentre, rotationZ(-38.5),
                        rotationAboutAxis(31, series.m_distortion.dfAxisOutOfPlane), series, false);
            const auto index = [](float f) { return int(double(f) / 0.02 + 30); };  // 30: half the edge
            return std::array<int, 3>{index(peak.fX3D), index(peak.fY3D), index(peak.fZ3D)};
        };
        const auto [x, y, z] = voxelOf(data);
        EXPECT_EQ(volume.m_listSlice[z]->Data()[y * 60 + x], fValue) << pt.x();
        nMoved += voxelOf(data) != voxelOf(DataSet());
    }
    EXPECT_GE(nMoved, 3);
}

TEST(ReciprocalVolume, KnowsItsLimits)
{
    CReciprocalVolume volume;
    ASSERT_TRUE(volume.create(10, 10, 10));
    EXPECT_FALSE(volume.addFrame(nullptr, QPointF(), 0));
    volume.setPixelSize(0.02);
    const CImgObj<float> marked = makeImage(9, 9, [](int x, int y) {
        return x > 6 ? INFINITY : y > 6 ? 1e31 : 2;
    });
    EXPECT_TRUE(volume.addFrame(&marked, QPointF(4, 4), 0));
    const std::vector<float> vecVoxel = voxels(volume);
    EXPECT_EQ(*std::max_element(vecVoxel.begin(), vecVoxel.end()), 2) << "pixels without a usable number";
    EXPECT_FALSE(hasMemoryFor(availableMemory()));  // a reserve is left to the machine
    // Asked for 25 TB, it refuses without an attempt, and has freed its former slices.
    EXPECT_FALSE(volume.create(40000, 40000, 4000));
    EXPECT_TRUE(volume.m_listSlice.isEmpty());
    EXPECT_FALSE(volume.create(0, 5, 5));
    EXPECT_FALSE(volume.create(5, 5, -1));
    EXPECT_FALSE(volume.create(65536, 65536, 1));  // a slice of more pixels than an int counts
}

namespace {

/// A series of two frames with a hot pixel, and the parameters of an export to the file "v.mrc".
class VolumeExport : public testing::Test {
protected:
    void SetUp() override
    {
        for (int n = 0; n < 2; ++n) {
            series.add(
                makeImage(30, 30, [n](int x, int y) { return x == 9 && y == 9 ? 1e6 : x + y + 10.0 * n; }));
        }
        data.m_listHotPixel = {QPoint(9, 9)};
        data.m_listOverallTilt = {0, 30};
        data.m_listShift = {{0, 0}, {1, 1}};
        data.m_dfCenterX = data.m_dfCenterY = 15;
        data.m_strProjectName = "v";
        parameters.nEdge = 20;
    }
    /// Exports the volume, and expects that the run finishes, or that it does not and gives a reason.
    /// @param nStopAfter  number of goOn() that are answered with yes; −1: all
    /// @return the log, with DIR for the folder of the series
    QString run(bool bFinishes, int nStopAfter = -1)
    {
        CRecordingReport report;
        report.m_nStopAfter = nStopAfter;
        const RunOutcome outcome = exportReciprocalVolume(data, parameters, report);
        EXPECT_EQ(outcome.finished(), bFinishes);
        EXPECT_EQ(outcome.strReason.isEmpty(), bFinishes) << "why it did not finish";
        return report.log().replace(series.dir.path(), "DIR");
    }

    FrameSeries series;
    DataSet& data = series.dataSet;
    VolumeExportParameters parameters;
};

}  // namespace

TEST_F(VolumeExport, IsOneFileOfTheProjectsName)
{
    // Without a project the series is named after a frame, whose file must not be overwritten.
    data.m_strProjectName = "f0001";
    EXPECT_TRUE(run(true).endsWith("DIR/f0001_volume.mrc"));
    data.m_strProjectName = "v";
    data.m_listShift.clear();
    EXPECT_EQ(run(false), "red No shift correction data. Run shift evaluation first.");
}

TEST_F(VolumeExport, IsWrittenWhereItIsNotStopped)
{
    for (int nStopAfter : {1, 10}) {  // before the second frame, and between the 20 slices in writing
        EXPECT_TRUE(run(false, nStopAfter).endsWith(" was stopped. Nothing was saved."));
    }
    EXPECT_TRUE(series.content("v.mrc").isEmpty());
    EXPECT_TRUE(run(true).endsWith("blue >Reciprocal space volume saved to file: DIR/v.mrc"));
    ImageList vecSlice;
    ASSERT_TRUE(ReadMRC(series.dir.filePath("v.mrc"), vecSlice));
    for (const auto& pSlice : vecSlice) {
        EXPECT_LT(*std::max_element(pSlice->Data(), pSlice->Data() + 400), 100.f) << "a hot pixel";
    }
}

TEST_F(VolumeExport, HasWhatCouldBeAddedAndTellsWhatCouldNot)
{
    ASSERT_TRUE(QFile::remove(data.m_listFrameFile[1]));
    // The first frame was added, and the volume is saved with it alone.
    const QString strPartial = run(false);
    EXPECT_TRUE(strPartial.contains("red Failed to load: DIR/f0001.mrc\n"));
    EXPECT_TRUE(strPartial.contains("saved to file"));
    const QByteArray bytesPartial = series.content("v.mrc");
    ASSERT_TRUE(QFile::remove(data.m_listFrameFile[0]));
    EXPECT_TRUE(run(false).endsWith("red No frame could be added. DIR/v.mrc was not written."));
    EXPECT_EQ(series.content("v.mrc"), bytesPartial);
    // A frame that can be loaded, but a folder that does not exist.
    series.add(makeImage(30, 30, [](int, int) { return 1.0; }));
    data.m_listFrameFile = QStringList(data.m_listFrameFile.last());
    data.m_listShift = {QPointF()};
    data.m_strProjectName = "none/v";
    EXPECT_TRUE(run(false).contains("red Reciprocal space volume could not be saved: DIR/none/v.mrc: "));
}

}  // namespace tessera
