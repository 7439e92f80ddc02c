#include "app/dataset/opening.h"
#include "app/dataset/pagerounding.h"
#include "app/dataset/projectfile.h"
#include "recordingreport.h"
#include "textfiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>

static const QByteArray g_strGeometry = "WAVELENGTH 0.0251\nROTATIONAXIS -139\nCCDPIXELSIZE 0.002\n";
static const QByteArray g_strFrames =
    "FILELIST\nFILE a/f1.mrc -30 0 -30.5\nFILE f2.mrc -29 0.1 -29\nFILE f3.mrc -28 0 -27.5\nENDFILELIST\n";

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
    EXPECT_EQ(project.wavelength(), 0.0197);
    EXPECT_EQ(project.pixelSize(), 1e-3);
    EXPECT_EQ(project.rotationAxis(), -10.25);
    EXPECT_EQ(project.stretchingAmplitude(), 0);
    EXPECT_EQ(project.stretchingAzimuth(), 12);
    EXPECT_EQ(project.frameFiles(), QStringList({"/data/series/one.dm3", "/data/series/x/y.dm3"}));
    EXPECT_EQ(project.stageTilts(), QList<double>({1, -4}));
    EXPECT_EQ(project.beamTilts(), QList<double>({2, 5}));
    EXPECT_EQ(project.overallTilts(), QList<double>({3, 6}));
    EXPECT_EQ(project.baseName(), QString("run.1"));
    EXPECT_EQ(project.folder(), QString("/data/series"));
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
        {g_strGeometry + "FILELIST\nFILE a 1 2 3\n", "Could not find a file list in the input file."},
        {"WAVELENGTH nan\n" + g_strGeometry + g_strFrames, "The value of \"WAVELENGTH\" is no finite"},
        {"CCDPIXELSIZE 4e-7\n" + g_strGeometry + g_strFrames, "The value of \"CCDPIXELSIZE\" is 4e-07;"},
        {"WAVELENGTH -1\n" + g_strGeometry + g_strFrames, "The value of \"WAVELENGTH\" is -1;"},
        {g_strGeometry + "FILELIST\nFILE a 1 2 nan\nENDFILELIST", "A tilt of the frame a"},
        {g_strGeometry + QByteArray(1, '\0') + g_strFrames, "The file is no text file"},
        {"#" + QByteArray(5000, 'x') + "\n" + QByteArray(1023, 'y') + "\n" + g_strGeometry + g_strFrames, ""},
        {"\n" + QByteArray(1024, 'x') + "\n" + g_strGeometry + g_strFrames, "Line 2 has 1024 characters"},
        {QByteArray((64 << 20) + 1, '\n'), "The file is larger than 64 MB."},
    };
    for (const auto& row : aRow) {
        ProjectFile project;
        EXPECT_EQ(project.readBytes(row.bytesFile, "/d/p.ed3d"), row.strError.isEmpty())
            << row.bytesFile.left(80).data();
        EXPECT_EQ(project.errorText().left(row.strError.size()), row.strError);
        EXPECT_EQ(project.errorText().isEmpty(), row.strError.isEmpty()) << project.errorText().toStdString();
    }
}

class Opening : public testing::Test {
protected:
    bool open(const QByteArray& bytesProject = g_strGeometry + g_strFrames)
    {
        putFile(m_folder.filePath("p.ed3d"), bytesProject);
        m_report = CRecordingReport();
        m_listReason.clear();
        return openProject(m_data, m_parameters, m_folder.filePath("p.ed3d"), m_report, &m_listReason);
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
    putFile(path("peaklist.txt"), "1 0 0 1 1 1\n");
    putFile(path("shifts.txt"), "1 1\n1 0 0\n2 0 0\n3 0 0\n");
    putFile(path("unitcell.txt"), "a* 1 0 0\nb* 0 1 0\nc* 0 0 1\n");
    putFile(path("hotpixels.txt"), "1 4 5\n");
    ASSERT_TRUE(open());
    EXPECT_TRUE(loadUnitCellAtOpening(m_data, m_report));
    EXPECT_EQ(m_report.marked(), QStringList({"1 hot pixel positions loaded.",
                                              "1 peaks on 3 frames loaded from " + path("peaklist.txt") + ".",
                                              "Shift correction data loaded from " + path("shifts.txt") + ".",
                                              "Unit cell loaded from " + path("unitcell.txt") + "."}));
    EXPECT_EQ(m_data.m_listFrameFile[0], path("a/f1.mrc"));
    EXPECT_EQ(m_data.m_listBeamTiltBreak, QList<int>({1, 0, 0}));
    EXPECT_EQ(m_data.m_strWorkingDir, path("a"));
    EXPECT_EQ(m_data.m_listCell.size(), 3);

    putFile(path("p.pk"), "1 0 0 1 1 1\n2 2 0 1 1 1\n");
    putFile(path("p.sc"), "100.126 250.5\n1 0 0\n2 0 0\n3 0 0\n");
    putFile(path("p.uc"), "b* 1 0 0\n");
    m_data.m_bAutoContrastOnLoad = false;
    m_data.m_vecReflectionFrame = {1};
    m_data.m_maskPeakHunting.listPolygon.append(QPolygonF());
    ASSERT_TRUE(open());
    EXPECT_TRUE(m_data.m_listCell.isEmpty()) << "no cell of the data set before";
    EXPECT_TRUE(m_data.m_vecReflectionFrame.empty());
    EXPECT_TRUE(m_data.m_maskPeakHunting.listPolygon.isEmpty());
    EXPECT_TRUE(m_data.m_bAutoContrastOnLoad);
    EXPECT_EQ(m_report.marked()[1], "2 peaks on 3 frames loaded from " + path("p.pk") + ".");
    EXPECT_EQ(m_data.m_dfCenterX, 100.13) << "as the page holds it";
    EXPECT_TRUE(countsAgree(m_data));
    EXPECT_FALSE(loadUnitCellAtOpening(m_data, m_report, &m_listReason));
    EXPECT_EQ(m_report.marked().size(), 3);
    EXPECT_EQ(m_listReason, QStringList(path("p.uc") + ": no vector a* in its place"));
}

TEST_F(Opening, LeavesSideFilesOfOtherFrameCountsAside)
{
    putFile(path("p.pk"), "1 3 0 1 1 1\n");
    putFile(path("p.sc"), "1 1\n1 0 0\n");
    putFile(path("p.uc"), "a* 1 0 0\nb* 0 1 0\nc* 0 0 1\n");
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
    EXPECT_EQ(m_report.marked(), QStringList("Error reading ed3d file: Could not find keyword "
                                             "\"CCDPIXELSIZE\" in the input file."));
    for (const QString& strBad : {path("none.ed3d"), m_folder.path()}) {
        CRecordingReport report;
        EXPECT_FALSE(openProject(m_data, m_parameters, strBad, report));
        EXPECT_EQ(report.marked(), QStringList("Error reading ed3d file: Could not load file: " + strBad));
    }
    EXPECT_EQ(m_data.m_strProjectName, QString("old"));
    EXPECT_EQ(m_data.m_listPeakFrame.size(), 1);
}

TEST_F(Opening, TakesStretchingFromAHundredthOnAndTurnsItsAzimuth)
{
    const struct {
        const char* strLines;
        bool bApply;
        double dfAmplitude;
        double dfAzimuth;
    } aRow[] = {{"", false, 7, 8},
                {"STRETCHINGAMP 0.005\nSTRETCHINGAZIMUTH 5\n", false, 7, 8},
                {"STRETCHINGAMP 0.01\nSTRETCHINGAZIMUTH 5\n", true, 0.01, 95},
                {"STRETCHINGAMP 1\nSTRETCHINGAZIMUTH 90\n", true, 1, 0},
                {"STRETCHINGAMP 1\nSTRETCHINGAZIMUTH -100\n", true, 1, 170}};
    for (const auto& row : aRow) {
        m_data.m_dfStretchAmplitude = 7;
        m_data.m_dfStretchAzimuth = 8;
        m_parameters.m_bApplyStretching = false;
        ASSERT_TRUE(open(row.strLines + g_strGeometry + g_strFrames));
        EXPECT_EQ(m_parameters.m_bApplyStretching, row.bApply) << row.strLines;
        EXPECT_EQ(m_data.m_dfStretchAmplitude, row.dfAmplitude) << row.strLines;
        EXPECT_EQ(m_data.m_dfStretchAzimuth, row.dfAzimuth) << row.strLines;
    }
}

TEST_F(Opening, ImagesBecomeFramesATenthOfADegreeApart)
{
    ASSERT_TRUE(open());
    EXPECT_FALSE(openImageFiles(m_data, {}, m_report));
    EXPECT_EQ(m_data.m_listFrameFile.size(), 3);
    m_data.m_strWorkingDir = m_folder.path();
    ASSERT_TRUE(
        openImageFiles(m_data, {path("x.1.dm3"), path("x.2.dm3"), path("y.dm3"), path("z.dm3")}, m_report));
    EXPECT_EQ(m_data.m_listFrameFile.size(), 4);
    EXPECT_EQ(m_data.m_listStageTilt[3], 0.1 * 3);
    EXPECT_EQ(m_data.m_listBeamTiltBreak, QList<int>({1, 0, 0, 0}));
    EXPECT_EQ(m_data.m_dfRotationAxis, -139) << "geometry stays";

    EXPECT_EQ(openKind({"a.TXT", "b.ed3d"}), OpenKind::reflectionList);
    EXPECT_EQ(openKind({"ed3d"}), OpenKind::images);
}

TEST(PageRounding, RoundsAsASpinBoxDoes)
{
    const struct {
        double dfValue;
        int nDecimals;
        double dfMinimum, dfMaximum, dfExpected;
        // -140.55 lies beyond its tie as a double, 2.675 before it; -0.375 is a true tie
    } aRow[] = {{0.00838, 6, 0, 1e4, 0.00838},      {-140.55, 1, -180, 180, -140.6}, {-0.004, 2, 0, 1000, 0},
                {std::nan(""), 2, 0.01, 0.5, 0.01}, {INFINITY, 2, 0, 100, 100},      {2.675, 2, 0, 10, 2.67},
                {-0.375, 2, -1, 1, -0.38}};
    for (const auto& row : aRow)
        EXPECT_EQ(spinBoxValue(row.dfValue, row.nDecimals, row.dfMinimum, row.dfMaximum), row.dfExpected)
            << row.dfValue;
}

TEST(PageRounding, WrapsAngles)
{
    const struct {
        double dfAngle, dfAxis, dfAzimuth;
    } aRow[] = {{0, 0, 0},   {180, 180, 0},       {-180, -180, 0}, {190, -170, 10},    {-190, 170, 170},
                {725, 5, 5}, {-0.5, -0.5, 179.5}, {540, -180, 0},  {-1e-20, -1e-20, 0}};
    for (const auto& row : aRow) {
        EXPECT_EQ(wrappedAxis(row.dfAngle), row.dfAxis) << row.dfAngle;
        EXPECT_EQ(wrappedAzimuth(row.dfAngle), row.dfAzimuth) << row.dfAngle;
    }
}

// The parameters of the later pages are compared with the pages themselves.
TEST(PageRounding, HoldsTheParametersOfTheDataSetAndOfPeakHunting)
{
    DataSet data;
    PeakHuntingParameters hunting;
    IndexingParameters indexing;
    indexing.m_nSpaceGroup = 231;
    const struct {
        double* pdfTarget;
        double dfValue, dfExpected;
    } aRow[] = {{&data.m_dfCenterX, 248.126, 248.13},           {&data.m_dfCenterY, -1, 0},
                {&data.m_dfRotationAxis, -139.26, -139.3},      {&data.m_dfTiltRelaxation, 0.26, 0.3},
                {&data.m_dfPixelSize, 0.00838049, 0.00838},     {&data.m_dfWavelength, 0.02507934, 0.025079},
                {&data.m_dfStretchAmplitude, 1.4192, 1.42},     {&data.m_dfStretchAzimuth, 181, 180},
                {&hunting.m_dfPeakRadius, 5.006, 5.01},         {&hunting.m_dfBackgroundRadius, 2000, 1000},
                {&hunting.m_dfPeakThreshold, -0.006, -0.01},    {&hunting.m_dfIntegrationRadius, 15.06, 15.1},
                {&hunting.m_dfIntegrationBackground, 3.14, 3.1}};
    for (const auto& row : aRow)
        *row.pdfTarget = row.dfValue;
    for (int i = 0; i < 2; ++i) {  // the second time changes nothing
        roundToPages(data);
        roundToPages(hunting);
        roundToPages(indexing);
        for (const auto& row : aRow)
            EXPECT_EQ(*row.pdfTarget, row.dfExpected) << row.dfValue;
    }
    EXPECT_EQ(indexing.m_nSpaceGroup, 230);
}
