// Series written in other forms: headers and pixels, names that meet, files that must not be overwritten.
#include "frames/frametargets.h"
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smoothedimage.h"
#include "frames/smvexport.h"
#include "imagefiles/framename.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

QByteArray items(const QByteArray& bytesFile)
{
    QByteArray bytesAll;
    for (const QByteArray bytesKey :
         {"SIZE1", "SIZE2", "PHI", "OSC_RANGE", "PIXEL_SIZE", "DISTANCE", "BEAM_CENTER_X", "DENZO_X_BEAM"}) {
        const int nFrom = bytesFile.indexOf('\n' + bytesKey + '=') + bytesKey.size() + 2;
        bytesAll += bytesFile.mid(nFrom, bytesFile.indexOf(';', nFrom) - nFrom) + ' ';
    }
    return bytesAll;
}

int pixel(const QByteArray& bytesFile, int n)
{
    return uchar(bytesFile[512 + 2 * n]) + 256 * uchar(bytesFile[513 + 2 * n]);
}

}  // namespace

TEST(Exports, SmvImagesHaveTheirOwnSizesTiltsAndShifts)
{
    FrameSeries series;
    const float afValue[] = {-3.2f, 70000.f, 12.9f, 65534.9f, NAN, 5.f};
    const int anWanted[] = {0, 65535, 12, 65534, 0, 5}, anWidth[] = {6, 8, 6};
    for (int nWidth : anWidth) {
        series.add(makeImage(nWidth, 4, [&](int x, int y) { return y == 0 && x < 6 ? afValue[x] : 1; }));
    }
    series.dataSet.m_listOverallTilt = {-1.254, -0.754, 0.5};
    series.dataSet.m_dfPixelSize = 0.004;
    series.dataSet.m_dfCenterX = 3.127;
    series.dataSet.m_dfCenterY = 2;
    EXPECT_EQ(exportSMVImages(series.dataSet, series.report).end, RunEnd::Refused);
    EXPECT_EQ(series.report.log(), "red No shift correction data. Run shift evaluation first.");
    series.dataSet.m_listShift = {{0, 0}, {2.7, -2.7}, {-7, 4}};  // truncated, around both ways
    for (double* pdfZero : {&series.dataSet.m_dfPixelSize, &series.dataSet.m_dfWavelength}) {
        const double df = std::exchange(*pdfZero, 0);
        EXPECT_EQ(exportSMVImages(series.dataSet, series.report).end, RunEnd::Refused);
        EXPECT_TRUE(series.report.log().endsWith("as pixel size or wavelength is 0. Nothing was exported."));
        EXPECT_TRUE(series.content("f0000.img").isNull());
        *pdfZero = df;
    }
    ASSERT_EQ(exportSMVImages(series.dataSet, series.report).end, RunEnd::Finished);
    EXPECT_TRUE(series.report.log().endsWith("\n3 files written to " + series.dir.path() +
                                             ".\nblue >Exporting SMV files finished."));
    EXPECT_EQ(series.report.m_listProgress, (QStringList{"%v/%m 0..3", "1", "2", "3", "end"}));
    const char* const apOwn[] = {"6 4 -1.25 0.50", "8 4 -0.75 1.25", "6 4 0.50 1.25"};
    const int anX[] = {0, 6, 1}, anY[] = {0, 2, 0};  // where the first pixel went
    for (int n = 0; n < 3; ++n) {
        const QByteArray bytesFile = series.content(QString("f000%1.img").arg(n));
        EXPECT_EQ(items(bytesFile), QByteArray(apOwn[n]) + " 0.055000 547.81 3.13 0.11 ");
        for (int x = 0; x < 6; ++x) {
            EXPECT_EQ(pixel(bytesFile, anY[n] * anWidth[n] + (x + anX[n]) % anWidth[n]), anWanted[x]);
        }
    }
    EXPECT_TRUE(series.content("f0000.img").contains("DENZO_Y_BEAM=0.17;\n}" + QByteArray(40, '\0')));
}

namespace {

/// Frames with the same base name (two have "a" up to the first dot), and a folder with the name of a file to
/// be written.
class ExportsOfNames : public testing::Test {
protected:
    void SetUp() override
    {
        for (const char* pName : {"a.b.mrc", "a.c.mrc", "g.mrc"}) {
            add(pName);
        }
        ASSERT_TRUE(QDir(series.dir.path()).mkdir("g.img"));
    }
    void add(const char* pName)
    {
        series.add(makeImage(20, 10, [&](int x, int) { return 100 * data.m_listShift.size() + x; }));
        ASSERT_TRUE(QFile::rename(data.m_listFrameFile.last(), series.dir.filePath(pName)));
        data.m_listFrameFile.last() = series.dir.filePath(pName);
        data.m_listShift.append(QPointF());
    }
    /// The log of an export that ends so.
    QString log(const std::function<RunOutcome(CRecordingReport&)>& fnExport, RunEnd end)
    {
        CRecordingReport report;
        const RunOutcome outcome = fnExport(report);
        EXPECT_EQ(outcome.end, end);
        EXPECT_EQ(outcome.strReason.isEmpty(), end == RunEnd::Stopped);
        return report.log().replace(series.dir.path(), "DIR");
    }
    QString smv(RunEnd end)
    {
        return log([this](CRecordingReport& report) { return exportSMVImages(data, report); }, end);
    }
    QString pictures(const char* pFolder, const char* pType, RunEnd end)
    {
        return log(
            [&](CRecordingReport& report) {
                report.m_nStopAfter = 1;
                return saveSeries(data, series.dir.filePath(pFolder), pType, 100, 110, report);
            },
            end);
    }

    FrameSeries series;
    DataSet& data = series.dataSet;
};

}  // namespace

TEST_F(ExportsOfNames, SmvImagesTellWhichNamesMeetAndWhatWasNotWritten)
{
    const QString strSmv = smv(RunEnd::Failed);
    EXPECT_TRUE(
        strSmv.contains("red 2 frames have the name DIR/a.img; the file holds the last, DIR/a.c.mrc.\nred "
                        "1 of 3 files could not be written: DIR/g.img. DIR/g.img: "))
        << strSmv.toStdString();
    EXPECT_EQ(pixel(series.content("a.img"), 0), 100);
}

// Also where a link leads to their folder or to one of them.
TEST_F(ExportsOfNames, AFrameIsNeverOverwritten)
{
    add("a_s.img");
    EXPECT_EQ(smv(RunEnd::Refused),
              "red DIR/a_s.img is a frame of this series and would be overwritten. Nothing was exported.");
    EXPECT_TRUE(series.content("a.img").isEmpty());
    data.m_listFrameFile.removeLast();
    ASSERT_TRUE(QFile::link(series.dir.path(), series.dir.path() + "/link"));
    const QByteArray bytesFrame = series.content("g.mrc");
    EXPECT_EQ(pictures("link", ".mrc", RunEnd::Refused),
              "red DIR/link/a.b.mrc and 2 more files are frames of this series and would be "
              "overwritten. Nothing was exported.");
    ASSERT_TRUE(QFile::link(series.dir.filePath("g.mrc"), series.dir.filePath("g.png")));
    EXPECT_TRUE(
        pictures(".", ".png", RunEnd::Refused).startsWith("red DIR/./g.png is a frame of this series"));
    EXPECT_EQ(series.content("g.mrc"), bytesFrame);
}

TEST_F(ExportsOfNames, PicturesTellAStopAndAFailure)
{
    EXPECT_TRUE(pictures(".", ".png", RunEnd::Stopped)
                    .endsWith("red >Exporting image series stopped after 1 of 3 frames."));
    EXPECT_TRUE(QFile::exists(series.dir.filePath("a.b.png")));
    EXPECT_FALSE(QFile::exists(series.dir.filePath("g.png")));
    EXPECT_TRUE(pictures(".", ".xyz", RunEnd::Failed).contains("red Failed to save to file: DIR/./a.b.xyz"));
}

TEST_F(ExportsOfNames, BinnedFramesHaveWholePixelsOfFloats)
{
    data.m_listFrameFile.removeFirst();
    EXPECT_EQ(exportBinnedFrames(data, 0.33, series.report).end,
              RunEnd::Finished);  // 20 × 10 to 6 × 3, truncated, of floats
    EXPECT_EQ(series.content("a_s.mrc").size() + series.content("g_s.mrc").size(), 2 * (1024 + 4 * 6 * 3));
}

TEST(Exports, ImagesOfOneStackGetFilesOfTheirOwn)
{
    FrameSeries series;
    ImageList vecImage;
    for (int n = 1; n <= 3; ++n) {
        vecImage.push_back(std::make_unique<CImgObj<float>>(makeImage(8, 4, [&](int, int) { return n; })));
    }
    const QString strStack = series.dir.filePath("s.1.mrc");
    ASSERT_EQ(WriteMRC(vecImage, strStack), 1);
    series.dataSet.m_listFrameFile = QStringList({nameOfImage(strStack, 2), nameOfImage(strStack, 0)});
    series.dataSet.m_listShift = {QPointF(), QPointF()};
    const QByteArray bytesStack = series.content("s.1.mrc");
    EXPECT_EQ(exportSMVImages(series.dataSet, series.report).end, RunEnd::Finished);
    EXPECT_EQ(pixel(series.content("s.1_0003.img"), 5), 3);
    EXPECT_EQ(pixel(series.content("s.1_0001.img"), 5), 1);
    EXPECT_EQ(saveSeries(series.dataSet, series.dir.path(), ".png", 0, 10, series.report).end,
              RunEnd::Finished);
    EXPECT_EQ(exportBinnedFrames(series.dataSet, 1, series.report).end, RunEnd::Finished);
    for (const char* pName : {"s.1_0003.png", "s.1_0001.png", "s.1_0003_s.mrc", "s.1_0001_s.mrc"}) {
        EXPECT_FALSE(series.content(pName).isEmpty()) << pName;
    }
    CPeakFilters filters;
    EXPECT_TRUE(outputSmoothedImage(*vecImage[1], {}, filters, nameOfImage(strStack, 1), series.report));
    EXPECT_FALSE(series.content("Ns.1_0002.mrc").isEmpty());
    EXPECT_EQ(frameAmongTargets({strStack}, series.dataSet.m_listFrameFile), strStack);
    EXPECT_EQ(series.content("s.1.mrc"), bytesStack);

    series.dataSet.m_listFrameFile.append(nameOfImage(strStack, 3));
    EXPECT_EQ(exportBinnedFrames(series.dataSet, 1, series.report).end, RunEnd::Failed);
    EXPECT_TRUE(series.report.log().contains("s.1.mrc#4: ")) << series.report.log().toStdString();
    EXPECT_TRUE(series.report.log().contains("image 4")) << series.report.log().toStdString();
}

}  // namespace tessera
