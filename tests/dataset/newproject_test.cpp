// A project made from frames: wavelength, tilts, the order of the frames, and the file.
#include "dataset/newproject.h"
#include "crystal/electronwavelength.h"
#include "dataset/framefiles.h"
#include "dataset/projectfile.h"
#include "tests/dataset/textfiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <functional>

namespace tessera {

TEST(NewProject, WavelengthAndPixelSize)
{
    // Williams & Carter, table 1.2.
    const double aPublished[][2] = {{80, 0.04176}, {100, 0.03701}, {200, 0.02508}, {300, 0.01969}};
    for (const auto& row : aPublished) {
        EXPECT_NEAR(electronWavelength(row[0]), row[1], 0.5e-5) << row[0] << " kV";
    }
    EXPECT_EQ(electronWavelength(0), 0);
    EXPECT_EQ(electronWavelength(-511), 0);
    // A ring of d = 2 Å stands R = L λ / d from the beam; R in pixels times their size is 1 / d.
    const double dfRadius = 1000 * 0.025 / 2;  // mm
    EXPECT_NEAR(dfRadius / 0.024 * pixelSizeFromCameraLength(1000, 24, 0.025), 0.5, 1e-12);
    EXPECT_EQ(pixelSizeFromCameraLength(0, 24, 0.025), 0);
}

TEST(NewProject, FramesInTheOrderOfTheirNumbers)
{
    QTemporaryDir dir;
    for (const char* pch : {"s10.mrc", "S9.MRC", "s009.mrc", "s2a.mrc", "s1.png", "readme.txt", "a12b3.mrc",
                            "a012b20.mrc", "s2.mrc", "s2_s.mrc", "Ns2.mrc", "s.mrc", "s.ed3d"}) {
        writeBytes(dir.filePath(pch), "x");
    }
    QStringList listName;
    for (const QString& strFile : framesInFolder(dir.path())) {
        listName += QFileInfo(strFile).fileName();
    }
    EXPECT_EQ(listName,
              QStringList({"a12b3.mrc", "a012b20.mrc", "s2.mrc", "s2a.mrc", "S9.MRC", "s009.mrc", "s10.mrc"}))
        << listName.join(' ').toStdString();
    EXPECT_EQ(proposedProjectFile({"/d/ab_001.mrc", "/d/ab_012.mrc"}), QString("/d/ab.ed3d"));
    EXPECT_EQ(proposedProjectFile({"/d/001.mrc", "/d/102.mrc"}), QString("/d/d.ed3d"));
}

TEST(NewProject, Tilts)
{
    EXPECT_FALSE(readTilts("# of the log\r\n-30,5\n\n -29.5; 0.5 -29\n"));
    const auto tilts = readTilts("# of the log\r\n-30,0.5,-29.5\n\n 1e1\xC2\xB0\r-2;0 -2.25");
    ASSERT_TRUE(tilts);
    EXPECT_EQ(tilts->listStage, QList<double>({-30, 10, -2}));
    EXPECT_EQ(tilts->listBeam, QList<double>({0.5, 0, 0}));
    EXPECT_EQ(tilts->listOverall, QList<double>({-29.5, 10, -2.25}));
    QString strReason;
    for (const char* pch : {"1\n2 3\n", "1\nx\n", "1\nnan\n", "1\n2 3 4 5\n", "1\n2°x\n", "1\n2,-30,0.5"}) {
        EXPECT_FALSE(readTilts(pch, &strReason)) << pch;
        EXPECT_TRUE(strReason.startsWith("Tilt 2 is")) << strReason.toStdString();
    }
    EXPECT_FALSE(readTilts("# 1\n", &strReason));
    EXPECT_DOUBLE_EQ(tiltStep(121, -60, 60), 1);
}

namespace {

const QString g_strFile = QStringLiteral("/data/set/x.ed3d");

NewProject threeFrames()
{
    NewProject project;
    project.listFrame = QStringList{"/data/set/frames/a%1_1.mrc", "/data/set/b.mrc", "/data/c.mrc"};
    project.tilts = evenTilts(3, -1.7, 0.1, 2);
    project.dfWavelength = electronWavelength(300);
    project.dfPixelSize = 0.0031415926;
    project.dfRotationAxis = -139.25;
    project.dfStretchAmplitude = 1.5;
    project.dfStretchAzimuth = 33;
    return project;
}

}  // namespace

TEST(NewProject, FileHoldsWhatWasMeant)
{
    NewProject project = threeFrames();
    const QString& strFile = g_strFile;
    QString strReason;
    std::optional<QByteArray> text = makeProjectText(project, strFile, &strReason);
    ASSERT_TRUE(text) << strReason.toStdString();
    const QByteArray bytes = *text;
    EXPECT_TRUE(
        bytes.contains("FILE frames/a%1_1.mrc -1.7 0 -1.7\nFILE b.mrc -1.7 0.1 -1.6\n"
                       "FILE ../c.mrc -1.5 0 -1.5\n"))
        << bytes.toStdString();
    EXPECT_TRUE(bytes.contains("\nROTATIONAXIS -139.25\nCCDPIXELSIZE 0.0031415926\nSTRETCHINGAMP 1.5\n"));

    EXPECT_FALSE(bytes.contains("ELLIPSE")) << "a lens that nobody told has no lines";
    project.distortion = {1.25, 10, -2, 0.5, 0.3, -160, 300, 0.25};
    text = makeProjectText(project, strFile, &strReason);
    ASSERT_TRUE(text) << strReason.toStdString();
    ProjectFile read;
    ASSERT_TRUE(read.readBytes(*text, strFile));
    EXPECT_EQ(read.distortion(), project.distortion);
    EXPECT_EQ(read.stretchingAmplitude(), 1.5);
}

TEST(NewProject, FileIsRefusedThatCannotHoldWhatWasMeant)
{
    const struct {
        std::function<void(NewProject&)> fnSpoil;
        const char* pchReason;
    } aRow[] = {
        {[](NewProject& p) { p.dfWavelength = 0; }, "Give the accelerating voltage"},
        {[](NewProject& p) { p.dfPixelSize = -1; }, "Give the pixel size"},
        {[](NewProject& p) { p.dfWavelength = 200; }, "200 Å is no wavelength"},
        {[](NewProject& p) { p.dfPixelSize = 40; }, "40 Å⁻¹ cannot be"},
        {[](NewProject& p) { p.dfPixelSize = 1e-7; }, "The value of \"CCDPIXELSIZE\""},
        {[](NewProject& p) { p.dfRotationAxis = INFINITY; }, "The value of \"ROTATIONAXIS\""},
        {[](NewProject& p) { p.distortion = {1.25, 10, -2, 0.5, 0.3, -160, -1, 0.25}; },
         "The value of \"THIRDORDERRADIUS\""},
        {[](NewProject& p) { p.listFrame[1] = "/data/set/b c.mrc"; }, "\"b c.mrc\" contains a blank"},
        {[](NewProject& p) { p.listFrame[1] = "/data/set/ENDFILELIST.mrc"; }, "A project file cannot hold"},
        {[](NewProject& p) { p.listFrame[1] = "/data/" + QString(1100, 'x'); }, "Line "},
    };
    for (const auto& row : aRow) {
        NewProject spoiled = threeFrames();
        row.fnSpoil(spoiled);
        QString strReason;
        EXPECT_FALSE(makeProjectText(spoiled, g_strFile, &strReason)) << row.pchReason;
        EXPECT_TRUE(strReason.startsWith(row.pchReason)) << strReason.toStdString();
    }
}

TEST(NewProject, NamesFramesFromBehindALink)
{
    QTemporaryDir dir;
    for (const char* pch : {"deep", "deep/project", "frames"}) {
        ASSERT_TRUE(QDir(dir.path()).mkdir(pch));
    }
    writeBytes(dir.filePath("frames/a.mrc"), "x");
    ASSERT_TRUE(QFile::link(dir.filePath("deep/project"), dir.filePath("link")));
    NewProject project;
    project.listFrame = QStringList(dir.filePath("frames/a.mrc"));
    project.tilts = evenTilts(1, 0, 1, 1);
    project.dfWavelength = 0.025;
    project.dfPixelSize = 0.001;
    QString strReason;
    const std::optional<QByteArray> bytes = makeProjectText(project, dir.filePath("link/a.ed3d"), &strReason);
    ASSERT_TRUE(bytes) << strReason.toStdString();
    ProjectFile read;
    ASSERT_TRUE(read.readBytes(*bytes, dir.filePath("link/a.ed3d")));
    EXPECT_TRUE(QFileInfo::exists(read.frameFiles().value(0))) << bytes->toStdString();
}

TEST(NewProject, RotationModeHasALineWhereItIsNotContinuous)
{
    NewProject project;
    project.listFrame = QStringList{"/d/a.mrc"};
    project.tilts.append(0, 0, 0);
    project.dfWavelength = 0.025;
    project.dfPixelSize = 0.003;
    std::optional<QByteArray> bytes = makeProjectText(project, "/d/a.ed3d");
    ASSERT_TRUE(bytes);
    EXPECT_FALSE(bytes->contains("ROTATIONMODE"));
    for (const char* pszMode : {"stepped", "precession,0.85"}) {
        project.rotation = *rotationModeOf(QLatin1String(pszMode));
        bytes = makeProjectText(project, "/d/a.ed3d");
        ASSERT_TRUE(bytes);
        EXPECT_TRUE(bytes->contains(QByteArray("\nROTATIONMODE ") + pszMode + "\nFILELIST\n"));
        ProjectFile read;
        ASSERT_TRUE(read.readBytes(*bytes, "/d/a.ed3d"));
        EXPECT_EQ(read.rotation(), project.rotation);
    }
    ProjectFile read;
    EXPECT_FALSE(read.readBytes(bytes->replace("precession,0.85", "sideways"), "/d/a.ed3d"));
    EXPECT_TRUE(read.errorText().contains("ROTATIONMODE"));
}

}  // namespace tessera
