// Series written in other forms: headers and pixels, names that meet, files that must not be overwritten.
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smvexport.h"
#include "frameseries.h"
#include "imagefiles/imagenames.h"
#include "imagefiles/imagesaving.h"

#include <gtest/gtest.h>

#include <QImage>

namespace {

QByteArray items(const QByteArray& bytesFile)
{
    QByteArray bytesAll;
    for (const QByteArray bytesKey : {"SIZE1", "SIZE2", "PHI", "OSC_RANGE", "PIXEL_SIZE", "DISTANCE",
                                      "BEAM_CENTER_X", "DENZO_X_BEAM", "BIN"}) {
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
    CRecordingReport report;
    const float afValue[] = {-3.2f, 70000.f, 12.9f, 65534.9f, NAN, 5.f};
    for (int nWidth : {6, 8, 6})
        series.add(
            makeImage(nWidth, 4, [&](int x, int y) { return y == 0 && x < 6 ? double(afValue[x]) : 1.0; }));
    series.dataSet.m_listOverallTilt = {-1.254, -0.754, 0.5};
    series.dataSet.m_dfPixelSize = 0.004;
    series.dataSet.m_dfCenterX = 3.127;
    series.dataSet.m_dfCenterY = 2;
    EXPECT_FALSE(exportSMVImages(series.dataSet, report));
    EXPECT_EQ(report.log(), "red No shift correction data. Run shift evaluation first.");
    series.dataSet.m_listShift = {{0, 0}, {2.7, -2.7}, {-7, 4}};
    ASSERT_TRUE(exportSMVImages(series.dataSet, report));
    EXPECT_EQ(report.m_listProgress, (QStringList{"%v/%m 0..3", "1", "2", "3", "end"}));

    const QByteArray aFile[] = {series.content("f0000.img"), series.content("f0001.img"),
                                series.content("f0002.img")};
    EXPECT_TRUE(aFile[0].left(512).contains("DENZO_Y_BEAM=0.17;\n}" + QByteArray(40, '\0')));
    EXPECT_EQ(items(aFile[0]), "6 4 -1.25 0.50 0.055000 547.81 3.13 0.11 1x1 ");
    EXPECT_EQ(items(aFile[1]), "8 4 -0.75 1.25 0.055000 547.81 3.13 0.11 1x1 ");
    EXPECT_EQ(items(aFile[2]), "6 4 0.50 1.25 0.055000 547.81 3.13 0.11 1x1 ");
    const int anWanted[] = {0, 65535, 12, 65534, 0, 5};
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(pixel(aFile[0], x), anWanted[x]);
        EXPECT_EQ(pixel(aFile[1], 2 * 8 + (x + 6) % 8), anWanted[x]);  // by (-2, 2), and not by rounded ones
        EXPECT_EQ(pixel(aFile[2], (x + 1) % 6), anWanted[x]);          // (7, -4), once around both ways
    }
}

TEST(Exports, TellWhatIsMissingAndNeverOverwriteAFrame)
{
    FrameSeries series;
    for (int n = 0; n < 4; ++n)
        series.add(makeImage(20, 10, [n](int x, int) { return 100.0 * n + x; }));
    DataSet& data = series.dataSet;
    for (int n = 0; n < 4; ++n) {  // "a.b.mrc" and "a.c.mrc" give the same name up to the first dot
        const QString strName = series.dir.filePath(QStringList{"a.b.mrc", "a.c.mrc", "g.mrc", "a_s.img"}[n]);
        ASSERT_TRUE(QFile::rename(data.m_listFrameFile[n], strName));
        data.m_listFrameFile[n] = strName;
        data.m_listShift.append(QPointF());
        data.m_listOverallTilt.append(n);
    }
    ASSERT_TRUE(QDir(series.dir.path()).mkdir("g.img"));  // a folder in the file's place
    const auto run = [&](auto fnExport) {
        CRecordingReport report;
        EXPECT_FALSE(fnExport(report));
        return report.log().replace(series.dir.path(), "DIR");
    };
    const auto smv = [&](CRunReport& report) { return exportSMVImages(data, report); };
    EXPECT_EQ(run(smv),
              "red DIR/a_s.img is a frame of this series and would be overwritten. Nothing was exported.");
    EXPECT_TRUE(series.content("a.img").isEmpty());
    data.m_listFrameFile.removeLast();
    data.m_listShift.removeLast();
    const QString strSmv = run(smv);
    EXPECT_TRUE(
        strSmv.contains("red 2 frames have the name DIR/a.img; the file holds the last, DIR/a.c.mrc.\nred "
                        "1 of 3 files could not be written: DIR/g.img. DIR/g.img: "))
        << strSmv.toStdString();
    EXPECT_EQ(pixel(series.content("a.img"), 0), 100);

    // The same extension in the frames' own folder, reached by a link.
    ASSERT_TRUE(QFile::link(series.dir.path(), series.dir.path() + "/link"));
    const QByteArray bytesFrame = series.content("g.mrc");
    const QString strPictures = run([&](CRunReport& report) {
        return saveSeries(data, series.dir.filePath("link"), ".mrc", 0, 100, report);
    });
    EXPECT_EQ(strPictures,
              "red DIR/link/a.b.mrc and 2 more files are frames of this series and would be "
              "overwritten. Nothing was exported.");
    EXPECT_EQ(series.content("g.mrc"), bytesFrame);

    data.m_listFrameFile.removeFirst();
    CRecordingReport report;
    EXPECT_TRUE(exportBinnedFrames(data, 0.33, report));  // 20 × 10 to 6 × 3, truncated, of floats
    EXPECT_EQ(series.content("a_s.mrc").size() + series.content("g_s.mrc").size(), 2 * (1024 + 4 * 6 * 3));

    report.m_nStopAfter = 1;
    EXPECT_FALSE(saveSeries(data, series.dir.path(), ".png", 100, 110, report));
    EXPECT_TRUE(report.log().endsWith("red >Exporting image series stopped after 1 of 2 frames."));
    const QImage picture(series.dir.filePath("a.c.png"));
    EXPECT_FALSE(QFile::exists(series.dir.filePath("g.png")));
    EXPECT_EQ(picture.format(), QImage::Format_Grayscale8);  // so a grey table is read back
    for (int x = 0; x < 20; ++x)
        EXPECT_EQ(qRed(picture.pixel(x, 3)), x < 10 ? x * 51 / 2 : 255);
    report.m_nStopAfter = -1;
    EXPECT_FALSE(saveSeries(data, series.dir.path(), ".xyz", 100, 110, report));
    EXPECT_TRUE(report.said("red Failed to save to file: " + series.dir.filePath("a.c.xyz")));
}

TEST(Exports, CompleteTheNameOfAnImage)
{
    EXPECT_EQ(completedImageName("", "PNG Image (*.png)"), "");
    EXPECT_EQ(completedImageName("x.tif", "PNG Image (*.png)"), "x.tif.png");
    EXPECT_EQ(completedImageName("x.TIFF", "PNG Image (*.png)"), "x.TIFF");
    EXPECT_EQ(completedImageName("d.mrc/x", "All (*)"), "d.mrc/x.bmp");
    EXPECT_EQ(imageTypeExtension(imageTypeItems().last()) + imageTypeExtension("none"), ".tif");
}
