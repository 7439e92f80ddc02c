#include "dataset/opening.h"
#include "dataset/pagerounding.h"
#include "dataset/projectfile.h"
#include "imagefiles/mrcfile.h"
#include "tests/dataset/textfiles.h"
#include "tests/recordingreport.h"

#include <QDataStream>
#include <QTemporaryDir>

#include <cmath>
#include <tuple>

namespace tessera {

const QByteArray g_strGeometry = "WAVELENGTH 0.02507934\nROTATIONAXIS -139.26\nCCDPIXELSIZE 0.00238049\n";
const QByteArray g_strFrames =
    "FILELIST\nFILE a/f1.mrc -30 0 -30.5\nFILE f2.mrc -29 0.1 -29\nFILE f3.mrc -28 0 -27.5\nENDFILELIST\n";
static const QByteArray g_strCell = "a* 1 0 0\nb* 0 1 0\nc* 0 0 1\n";

TEST(ProjectFile, FindsKeywordsAnywhereAndPassesOverWhatIsNoNumber)
{
    ProjectFile project;
    ASSERT_TRUE(
        project.readBytes("\xEF\xBB\xBF#WAVELENGTH 9\r\nmyWAVELENGTHs about 1\r\n\r\n"
                          "THE_WAVELENGTH 0.0197A\r\nWAVELENGTH 5\r\nCCDPIXELSIZE\t1e-3 x\r"
                          "wavelength 7\nROTATIONAXIS -10.25\nSTRETCHINGAZIMUTH 12\n" +
                              QByteArray("XFILELIST of it\nFILE one.dm3 1 2 3 4\nFILE two words.dm3 1 2 3\n"
                                         "# FILE no.dm3 1 2 3\nfile no.dm3 1 2 3\nFILE no.dm3 1 2\n"
                                         "PROFILE x/y.dm3 -4 5 6e0\n ENDFILELIST\nFILE late.dm3 1 2 3\n"),
                          "/data/series/run.1.ed3d"))
        << project.errorText().toStdString();
    const QList<double> listNumber = {project.wavelength(), project.pixelSize(), project.rotationAxis(),
                                      project.stretchingAmplitude(), project.stretchingAzimuth()};
    EXPECT_EQ(listNumber, QList<double>({0.0197, 1e-3, -10.25, 0, 12}));
    EXPECT_EQ(project.frameFiles(), QStringList({"/data/series/one.dm3", "/data/series/x/y.dm3"}));
    EXPECT_EQ(project.stageTilts() + project.beamTilts() + project.overallTilts(),
              QList<double>({1, -4, 2, 5, 3, 6}));
    EXPECT_EQ(project.folder() + " " + project.baseName(), QString("/data/series run.1"));
}

TEST(ProjectFile, RefusesWhatCannotBeUsed)
{
    const struct {
        QByteArray bytesFile;
        QString strError;  // its beginning; empty: no error
    } aRow[] = {
        {g_strGeometry + g_strFrames, ""},
        {g_strGeometry + "FILELIST\nENDFILELIST", ""},  // a data set of no frames
        {"CCDPIXELSIZE 1\nROTATIONAXIS 0\n", "Could not find keyword \"WAVELENGTH\" in the input file."},
        {g_strGeometry + "ENDFILELIST\nFILELIST\nFILE a 1 2 3\n",
         "Could not find a file list in the input file."},
        {"WAVELENGTH nan\n" + g_strGeometry + g_strFrames, "The value of \"WAVELENGTH\" is no finite"},
        {"CCDPIXELSIZE 4e-7\n" + g_strGeometry + g_strFrames, "The value of \"CCDPIXELSIZE\" is 4e-07;"},
        {"WAVELENGTH -1\n" + g_strGeometry + g_strFrames, "The value of \"WAVELENGTH\" is -1;"},
        {g_strGeometry + "FILELIST\nFILE a 1 2 nan\nENDFILELIST", "A tilt of the frame a"},
        {g_strGeometry + QByteArray(1, '\0') + g_strFrames, "The file is no text file"},
        {"#" + QByteArray(5000, 'x') + "\n" + QByteArray(1023, 'y') + "\n" + g_strGeometry + g_strFrames, ""},
        {"AXISOUTOFPLANE inf\n" + g_strGeometry + g_strFrames,
         "The value of \"AXISOUTOFPLANE\" is no finite"},
        {"THIRDORDERRADIUS 0\n" + g_strGeometry + g_strFrames, "The value of \"THIRDORDERRADIUS\" is 0;"},
        {"\n" + QByteArray(1024, 'x') + "\n" + g_strGeometry + g_strFrames, "Line 2 has 1024 characters"},
        {QByteArray((64 << 20) + 1, '\n'), "The file is larger than 64 MB."},
    };
    for (const auto& row : aRow) {
        ProjectFile project;
        EXPECT_EQ(project.readBytes(row.bytesFile, "/d/p.ed3d"), row.strError.isEmpty());
        EXPECT_TRUE(row.strError.isEmpty() ? project.errorText().isEmpty()
                                           : project.errorText().startsWith(row.strError))
            << project.errorText().toStdString() << " for " << row.bytesFile.left(80).data();
    }
}

namespace {

/// A TIFF of some pages, each of the same 4 × 3 grey pixels.
QByteArray tiffOfPages(quint32 nPages)
{
    const quint32 nPixels = 8, nFirst = 20, nTags = 8, nDirectory = 2 + 12 * nTags + 4;
    const quint32 aTag[nTags][2] = {{256, 4}, {257, 3},       {258, 8}, {259, 1},
                                    {262, 1}, {273, nPixels}, {278, 3}, {279, 12}};
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << quint16(0x4949) << quint16(42) << nFirst << quint32(0) << quint32(1) << quint32(2);
    for (quint32 n = 1; n <= nPages; ++n) {
        stream << quint16(nTags);
        for (const auto& tag : aTag) {
            stream << quint16(tag[0]) << quint16(4) << quint32(1) << tag[1];
        }
        stream << (n < nPages ? nFirst + n * nDirectory : quint32(0));
    }
    return bytes;
}

}  // namespace

class Opening : public testing::Test {
protected:
    bool open(const QByteArray& bytesProject = g_strGeometry + g_strFrames)
    {
        writeBytes(path("p.ed3d"), bytesProject);
        m_report = CRecordingReport();
        m_listReason.clear();
        return openProject(m_data, m_parameters, path("p.ed3d"), m_report, &m_listReason);
    }
    QString path(const char* strName) const { return m_folder.filePath(strName); }

    QTemporaryDir m_folder;
    DataSet m_data;
    MappingParameters m_parameters;
    CRecordingReport m_report;
    QStringList m_listReason;
};

TEST_F(Opening, TakesOwnSideFilesBeforeTheFixedNames)
{
    writeBytes(path("peaklist.txt"), "1 0 0 1 1 1\n");
    writeBytes(path("shifts.txt"), "1 1\n1 0 0\n2 0 0\n3 0 0\n");
    writeBytes(path("unitcell.txt"), g_strCell);
    writeBytes(path("hotpixels.txt"), "1 4 5\n");
    ASSERT_TRUE(open());
    EXPECT_TRUE(loadUnitCellAtOpening(m_data, m_report));
    EXPECT_EQ(m_report.marked(), QStringList({"1 hot pixel positions loaded.",
                                              "1 peaks on 3 frames loaded from " + path("peaklist.txt") + ".",
                                              "Shift correction data loaded from " + path("shifts.txt") + ".",
                                              "Unit cell loaded from " + path("unitcell.txt") + "."}));
    EXPECT_EQ(m_data.m_listFrameFile[0], path("a/f1.mrc"));
    EXPECT_EQ(m_data.m_listBeamTiltBreak, QList<int>({1, 0, 0}));

    writeBytes(path("p.pk"), "1 0 0 1 1 1\n2 2 0 1 1 1\n");
    writeBytes(path("p.sc"), "100.126 250.5\n1 0 0\n2 0 0\n3 0 0\n");
    writeBytes(path("p.uc"), "b* 1 0 0\n");
    m_data.m_vecReflectionFrame = {1};
    m_data.m_maskPeakHunting.listPolygon.append(QPolygonF());
    ASSERT_TRUE(open());
    EXPECT_TRUE(m_data.m_listCell.isEmpty()) << "nothing of the data set before";
    EXPECT_TRUE(m_data.m_vecReflectionFrame.empty()) << "nothing of the data set before";
    EXPECT_TRUE(m_data.m_maskPeakHunting.listPolygon.isEmpty()) << "nothing of the data set before";
    EXPECT_EQ(m_report.marked()[1], "2 peaks on 3 frames loaded from " + path("p.pk") + ".");
    EXPECT_EQ(QList<double>(
                  {m_data.m_dfCenterX, m_data.m_dfWavelength, m_data.m_dfRotationAxis, m_data.m_dfPixelSize}),
              QList<double>({100.13, 0.025079, -139.3, 0.00238}))
        << "as the pages hold them";
    EXPECT_FALSE(loadUnitCellAtOpening(m_data, m_report, &m_listReason));
    EXPECT_EQ(m_report.marked().size(), 3);
    EXPECT_EQ(m_listReason, QStringList(path("p.uc") + ": no vector a* in its place"));
}

TEST_F(Opening, LeavesSideFilesOfOtherFrameCountsAside)
{
    writeBytes(path("p.pk"), "1 3 0 1 1 1\n");
    writeBytes(path("p.sc"), "1 1\n1 0 0\n");
    writeBytes(path("p.uc"), g_strCell);
    ASSERT_TRUE(open());
    EXPECT_FALSE(loadUnitCellAtOpening(m_data, m_report));
    EXPECT_EQ(m_report.marked(),
              QStringList({"No hot pixel positions were loaded.",
                           "red This peak list file does not match the current ed3d file in frame numbers.",
                           "No peaks loaded.",
                           "red ED shift data is not used because the ED shift data is from 1 frames, while "
                           "there are 3 frames in the current dataset.",
                           "No shift data loaded.",
                           "Frame counts of ED shift, peaks and input ed3d file do not match."}));
    EXPECT_TRUE(m_data.m_listShift.isEmpty());
    EXPECT_EQ(m_listReason.size(), 2);
    ASSERT_TRUE(open(g_strGeometry + "FILELIST\nENDFILELIST\n"));
    EXPECT_FALSE(countsAgree(m_data)) << "no frames, nothing to map";
}

TEST_F(Opening, FailsWithoutTouchingTheDataSet)
{
    m_data.m_listPeakFrame.append(QList<Peak3D>());
    m_data.m_strProjectName = "old";
    EXPECT_FALSE(open("WAVELENGTH 1"));
    EXPECT_FALSE(openProject(m_data, m_parameters, m_folder.path(), m_report));
    const QString strError = "Error reading ed3d file: Could not ";
    EXPECT_EQ(m_report.marked(), QStringList({strError + "find keyword \"CCDPIXELSIZE\" in the input file.",
                                              strError + "load file: " + m_folder.path()}));
    EXPECT_FALSE(openImageFiles(m_data, {}, m_report));
    EXPECT_EQ(m_data.m_strProjectName, QString("old"));
    EXPECT_EQ(m_data.m_listPeakFrame.size(), 1);
}

TEST_F(Opening, TakesStretchingFromAHundredthOnAndTurnsItsAzimuth)
{
    using Stretching = std::tuple<bool, double, double>;
    const Stretching old{false, 7, 8};
    auto stretching = std::tie(m_parameters.m_bApplyStretching, m_data.m_dfStretchAmplitude,
                               m_data.m_dfStretchAzimuth);
    for (const auto& [strLines, expected] :
         {std::pair("", old), std::pair("STRETCHINGAMP 0.005\nSTRETCHINGAZIMUTH 5\n", old),
          std::pair("STRETCHINGAMP 0.01\nSTRETCHINGAZIMUTH 5\n", Stretching(true, 0.01, 95)),
          std::pair("STRETCHINGAMP 1\nSTRETCHINGAZIMUTH -100\n", Stretching(true, 1, 170))}) {
        stretching = old;
        ASSERT_TRUE(open(strLines + g_strGeometry + g_strFrames));
        EXPECT_EQ(Stretching(stretching), expected) << strLines;
        EXPECT_FALSE(m_report.said("stretching"));
        stretching = Stretching(true, 7, 8);
        ASSERT_TRUE(open(strLines + g_strGeometry + g_strFrames));
        EXPECT_EQ(
            m_report.said("red The stretching set before stays on, as this data set tells none: 7 % at 8°."),
            expected == old)
            << strLines;
    }
}

// A project defines its lens distortions completely: those of the series before are never kept.
TEST_F(Opening, TakesTheLensOfItsProjectAlone)
{
    const QByteArray bytesLens =
        "ELLIPSEAMP 1.25\nELLIPSEAZIMUTH 190\n THIRDORDERRADIAL -2.00004\nTHIRDORDERSPIRAL 0.5\n"
        "THIRDORDERRADIUS 300\nPARABOLICAMP 0.3\nPARABOLICAZIMUTH 200\nAXISOUTOFPLANE 0.25\n";
    m_parameters.m_bApplyStretching = true;
    m_data.m_dfStretchAmplitude = 7;
    ASSERT_TRUE(open(bytesLens + g_strGeometry + g_strFrames));
    const SeriesDistortion expected = {1.25, 10, -2, 0.5, 0.3, -160, 300, 0.25};
    EXPECT_EQ(m_data.m_distortion, expected);
    EXPECT_EQ(m_data.m_dfRotationAxis, -139.26) << "a refined axis keeps its decimals";
    EXPECT_FALSE(m_parameters.m_bApplyStretching) << "it would come on top";
    EXPECT_EQ(m_data.m_dfStretchAmplitude, 0);
    EXPECT_FALSE(m_report.said("stays on"));
    ASSERT_TRUE(
        open("ELLIPSEAMP 0\nSTRETCHINGAMP 1.5\nSTRETCHINGAZIMUTH 20\n" + g_strGeometry + g_strFrames));
    EXPECT_EQ(m_data.m_distortion, SeriesDistortion());
    EXPECT_TRUE(m_parameters.m_bApplyStretching) << "both may be told";
    // Names of frames, and words that only contain a keyword, are not keywords.
    m_data.m_distortion = expected;
    ASSERT_TRUE(open("FILELIST\nFILE 3ELLIPSEAMP 5 5 5\nENDFILELIST\nXAXISOUTOFPLANE 4\n" + g_strGeometry));
    EXPECT_EQ(m_data.m_distortion, SeriesDistortion());
    EXPECT_EQ(m_data.m_dfRotationAxis, -139.3);
    EXPECT_TRUE(m_parameters.m_bApplyStretching) << "what was before stays without a lens";
    m_data.m_distortion = expected;
    ASSERT_TRUE(openImageFiles(m_data, {path("a.mrc")}, m_report));
    EXPECT_EQ(m_data.m_distortion, SeriesDistortion());
}

TEST(FileOfProject, NamesOfRefinedProjectsDoNotGrow)
{
    const auto name = [](const char* pszProject, ResultFile file) {
        DataSet data;
        data.m_strProjectDir = "/d";
        data.m_strProjectName = pszProject;
        return fileOfProject(data, file);
    };
    EXPECT_EQ(name("q", ResultFile::RefinedProject), "/d/q_refined.ed3d");
    EXPECT_EQ(name("q_refined", ResultFile::RefinedProject), "/d/q_refined2.ed3d");
    EXPECT_EQ(name("q_refined2", ResultFile::RefinedCell), "/d/q_refined3.uc");
    EXPECT_EQ(name("q_refined9", ResultFile::RefinedShifts), "/d/q_refined10.sc");
    EXPECT_EQ(name("q_refined", ResultFile::Cell), "/d/q_refined.uc");
    EXPECT_EQ(name("q_refined_b", ResultFile::RefinedCell), "/d/q_refined_b_refined.uc");
}

TEST_F(Opening, ImagesBecomeFramesATenthOfADegreeApart)
{
    ASSERT_TRUE(
        openImageFiles(m_data, {path("x.1.dm3"), path("x.2.dm3"), path("y.dm3"), path("z.dm3")}, m_report));
    EXPECT_EQ(m_data.m_listFrameFile.size(), 4);
    EXPECT_EQ(m_data.m_listStageTilt[3], 0.1 * 3);
    EXPECT_EQ(m_data.m_listBeamTiltBreak, QList<int>({1, 0, 0, 0}));
    EXPECT_EQ(m_data.m_strProjectDir, m_folder.path());
    EXPECT_EQ(m_data.m_strProjectName, QString("x.1"));
    EXPECT_EQ(openKind({"a.TXT", "b.ed3d"}), OpenKind::reflectionList);
    EXPECT_EQ(openKind({"ed3d"}), OpenKind::images);
}

TEST_F(Opening, TakesImagesOfAStackByTheirNumbers)
{
    CImgObj<float> img;
    img.Create(4, 3);
    ASSERT_EQ(WriteMRC<float>({&img, &img, &img}, path("s.mrc")), 1);
    writeBytes(path("d.dat"), QByteArray("\0\0\0\3 the content tells", 21));
    EXPECT_EQ(reasonNotToOpen(path("d.dat")), QString());
    ASSERT_TRUE(open(g_strGeometry + "FILELIST\nFILE s.mrc#3 1 0 1\nFILE s.mrc#1 2 0 2\nENDFILELIST\n"));
    EXPECT_EQ(m_data.m_listFrameFile, QStringList({path("s.mrc#3"), path("s.mrc#1")}));
    EXPECT_EQ(missingFrames(m_data.m_listFrameFile), QStringList());
    EXPECT_EQ(missingFrames({path("s.mrc"), path("t.mrc#2"), path("t.mrc")}),
              QStringList({path("t.mrc#2"), path("t.mrc")}));
    EXPECT_EQ(reasonNotToOpen(path("s.mrc#2")), QString());
    EXPECT_EQ(reasonNotToOpen(QStringList{path("s.mrc#2"), path("s.mrc"), path("gone.mrc#7")}), QString());
    EXPECT_EQ(reasonNotToOpen(path("t.mrc#2")), path("t.mrc#2 does not exist."));
    EXPECT_EQ(reasonNotToOpen(path("p.ed3d#1")), path("p.ed3d#1 is neither a project nor an image."));
    // A stack that is named without a number stays one frame of several images.
    ASSERT_TRUE(openImageFiles(m_data, {path("s.mrc")}, m_report));
    EXPECT_EQ(m_data.m_listFrameFile, QStringList(path("s.mrc")));
    ASSERT_TRUE(openImageFiles(m_data, {path("s.mrc#2"), path("s.mrc#3")}, m_report));
    EXPECT_EQ(m_data.m_strProjectDir + m_data.m_strProjectName, m_folder.path() + "s");
}

TEST_F(Opening, TakesAFileOfManyImagesApart)
{
    writeBytes(path("five.tif"), tiffOfPages(5));
    writeBytes(path("three.dat"), tiffOfPages(3));  // the content tells
    writeBytes(path("two.tif"), tiffOfPages(2));
    ASSERT_TRUE(openImageFiles(m_data, {path("five.tif"), path("three.dat")}, m_report));
    ASSERT_EQ(m_data.m_listFrameFile.size(), 8);
    EXPECT_EQ(m_data.m_listStageTilt.size(), 8);
    EXPECT_EQ(m_data.m_listFrameFile[4], path("five.tif#5"));
    EXPECT_EQ(m_data.m_listFrameFile[5], path("three.dat#1"));
    EXPECT_TRUE(m_report.said(path("five.tif holds 5 images: each is a frame of the series.")));
    for (const QStringList& listFile :
         {QStringList{path("two.tif")}, QStringList{path("five.tif"), path("two.tif")},
          QStringList{path("five.tif#1"), path("five.tif#2"), path("five.tif#4")}}) {
        EXPECT_EQ(framesOfImageFiles(listFile), listFile);
    }
    EXPECT_EQ(missingFrames({path("five.tif#5"), path("five.tif#6"), path("two.tif#1")}),
              QStringList(path("five.tif#6 (the file holds 5 images)")));
}

// The rounding is compared with the pages themselves.
TEST(PageRounding, WrapsAngles)
{
    const double aRow[][3] = {{180, 180, 180}, {-180, -180, 0},     {190, -170, 10}, {-190, 170, 170},
                              {725, 5, 5},     {-0.5, -0.5, 179.5}, {540, -180, 0},  {-1e-20, -1e-20, 0}};
    for (const auto& [dfAngle, dfAxis, dfAzimuth] : aRow) {
        EXPECT_EQ(wrappedAxis(dfAngle), dfAxis) << dfAngle;
        EXPECT_EQ(wrappedAzimuth(dfAngle), dfAzimuth) << dfAngle;
    }
    EXPECT_EQ(spinBoxValue(INFINITY, 2, 0, 100), 100);
    EXPECT_EQ(spinBoxValue(NAN, 2, 0.01, 0.5), 0.01);
}

}  // namespace tessera
