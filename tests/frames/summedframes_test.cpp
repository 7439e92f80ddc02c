#include "frames/summedframes.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

/// A mark that drifts with the shift, over three groups of frames; the last frame has another size.
class SummedFrames : public testing::Test {
protected:
    void SetUp() override
    {
        for (int n = 0; n < 6; ++n) {
            series.add(makeImage(n == 5 ? 9 : 8, 6, [&](int x, int y) {
                return x == (3 + n) % 8 && y == 2 ? 1e6 : y == 5 ? (x == 0 ? -90 : x == 7 ? 53 : 0) : 0;
            }));
        }
        dataSet.m_listBeamTiltBreak = {0, 1, 0, 1, 2, 1};
        dataSet.m_listShift = {{0, 0}, {1.9, -0.7}, {2.2, 0}, {-0.7, 0}, {0, 0}, {0, 0}};
        dataSet.m_listOverallTilt = {-1, 0, 0.5, 1, 2, 3};
    }
    RunEnd sum(CRunReport& report)
    {
        return exportSummedFrames(dataSet, series.dir.path(), report, [&](int) { ++nShown; }).end;
    }

    FrameSeries series;
    DataSet& dataSet = series.dataSet;
    int nShown = 0;
};

TEST_F(SummedFrames, TellTheirGroupsAndWhatFailed)
{
    EXPECT_EQ(sum(series.report), RunEnd::Failed);
    EXPECT_EQ(nShown, 2);
    EXPECT_TRUE(series.content("003.mrc").isNull());
    EXPECT_TRUE(dataSet.m_vecFrameImage.empty());
    const QString strLog = series.report.log();
    EXPECT_TRUE(
        strLog.startsWith("#  1:    2    3\n#  2:    4\n#  3:    6\n"
                          "Data out of range (100000). Break.\n#001:    2    3:    0.250    0.250\n"
                          "#002:    4:    1.000    0.000\nred "));
    EXPECT_TRUE(strLog.endsWith("\nShift #002:  -1   0\nShift #003:  -2   0\nShift #004:   0   0\n"));
    CRecordingReport report;
    exportSummedFrames(dataSet, series.dir.filePath("none"), report);
    for (const QString& strFile :
         {series.dir.filePath("none/001.mrc"), series.dir.filePath("none/002.mrc")}) {
        EXPECT_TRUE(report.said("red Failed to save image:" + strFile + "\nred " + strFile +
                                ": No such file or directory\n#00"))
            << report.log().toStdString();
    }
}

TEST_F(SummedFrames, AreAlignedAndDivided)
{
    sum(series.report);
    ImageList vecImage;
    for (const char* pFile : {"001.mrc", "002.mrc"}) {
        ASSERT_TRUE(ReadMRC(series.dir.filePath(pFile), vecImage));
    }
    const auto at = [&](size_t i, int x, int y) { return vecImage.at(i)->Data()[y * 8 + x]; };
    EXPECT_EQ(at(0, 3, 2), 65535);  // both marks moved back to column 3
    EXPECT_EQ(at(1, 6, 2), 50000);  // a shift of -0.7 truncates to 0
    EXPECT_EQ(at(0, 6, 5), 0);      // 53 - 90, wrapped around the edge
    EXPECT_EQ(at(1, 7, 5), 2);      // 53 / 20, truncated
}

// Where a frame has the name of a sum, no sum is written, whichever group comes first.
TEST_F(SummedFrames, ReplaceNoFrame)
{
    sum(series.report);
    nShown = 0;
    const QByteArray bytesFrame = series.content("002.mrc");
    dataSet.m_listFrameFile[0] = series.dir.filePath("./002.mrc");
    EXPECT_TRUE(QFile::remove(series.dir.filePath("001.mrc")));
    CRecordingReport reportRefused;
    EXPECT_EQ(sum(reportRefused), RunEnd::Refused);
    EXPECT_TRUE(
        reportRefused.log().endsWith("/002.mrc is a frame of this series and would be overwritten. "
                                     "Nothing was exported."));
    EXPECT_EQ(nShown, 0);
    EXPECT_TRUE(series.content("001.mrc").isNull());
    EXPECT_EQ(series.content("002.mrc"), bytesFrame);
}

}  // namespace

}  // namespace tessera
