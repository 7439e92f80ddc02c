#include "frames/frameloader.h"

#include "frames/framesummary.h"
#include "frames/hotpixels.h"
#include "tests/frames/frameseries.h"
#include "tests/imagefiles/testfiles.h"

#include <QImage>

namespace tessera {

namespace {

class Loader : public FileTest {
protected:
    using Loaded = std::pair<int, QString>;  ///< what loadFrame() returned, and what it said
    /// Loads these bytes as a file of a name, for which the log has "%1".
    Loaded loaded(const char* pName, const QByteArray& bytes)
    {
        writeBytes(path(pName), bytes);
        m_vecImage.clear();
        CRecordingReport report;
        const int nResult = loadFrame(m_vecImage, path(pName), {{1, 1}}, report);
        return {nResult, report.log().replace(path(pName), "%1")};
    }
    QByteArray saved(const QImage& picture, const char* pName)
    {
        EXPECT_TRUE(picture.save(path(pName))) << pName;
        return readBytes(path(pName));
    }
    ImageList m_vecImage;
    CRecordingReport m_report;
};

/// 2 × 2 samples of 32 bits behind the header, then the directory: tag, type, count, value.
QByteArray tiffOfSampleFormat(int nFormat)
{
    QByteArray bytes("II*\0\x18\0\0\0", 8);
    bytes += QByteArray(16, 'x') + QByteArray("\x0a\0", 2);
    for (const auto& [nTag, nValue] : {std::pair(256, 2),
                                       {257, 2},
                                       {258, 32},
                                       {259, 1},
                                       {262, 1},
                                       {273, 8},
                                       {277, 1},
                                       {278, 2},
                                       {279, 16},
                                       {339, nFormat}}) {
        for (int n : {nTag, 4, 1, 0, nValue, 0}) {
            bytes += QByteArray(1, char(n % 256)) + QByteArray(1, char(n / 256));
        }
    }
    return bytes + QByteArray(4, '\0');
}

}  // namespace

TEST(HotPixels, AreReplacedInListOrderAwayFromTheEdge)
{
    const CImgObj<float> imgOld = makeImage(
        5, 4, [](int x, int y) { return y == 1 && (x == 1 || x == 2) ? 1000 * x : 10 * y + x; });
    const auto repaired = [&](const QList<QPoint>& listHot) {
        CImgObj<float> img;
        img.Copy(imgOld);
        repairHotPixels(img, listHot);
        return std::vector<float>(img.Data(), img.Data() + 20);
    };
    EXPECT_EQ(
        repaired({{0, 1}, {4, 2}, {2, 0}, {1, 3}, {-1, 1}, {5, 1}, {1, 4}, {1 << 30, 1}, {1, -(1 << 30)}}),
        std::vector<float>(imgOld.Data(), imgOld.Data() + 20));
    const double dfFirst = (0 + 1 + 2 + 10 + 2000 + 20 + 21 + 22) / 8.;
    EXPECT_EQ(repaired({{1, 1}, {2, 1}})[6], float(dfFirst));
    EXPECT_EQ(repaired({{1, 1}, {2, 1}})[7], float((1 + 2 + 3 + dfFirst + 13 + 21 + 22 + 23) / 8));
    EXPECT_EQ(repaired({{2, 1}, {1, 1}})[7], float((1 + 2 + 3 + 1000 + 13 + 21 + 22 + 23) / 8.));
}

TEST_F(Loader, AStackIsOneFrameWithItsFirstImageRepaired)
{
    ImageList vecImage;
    for (int nFactor : {1, 10}) {  // 1 to 9 but for a hot middle, then tenfold
        vecImage.push_back(std::make_unique<CImgObj<float>>(makeImage(
            3, 3, [&](int x, int y) { return x == 1 && y == 1 ? 1000 : (3 * y + x + 1) * nFactor; })));
    }
    ASSERT_EQ(WriteMRC(vecImage, path("a.b.MRC")), 1);
    m_vecImage.push_back(nullptr);  // loadFrame appends
    ASSERT_EQ(loadFrame(m_vecImage, path("a.b.MRC"), {{1, 1}}, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(m_vecImage[1]->Data()[4], 5.f);  // 40 / 8: linear surroundings give the middle
    EXPECT_EQ(m_vecImage[2]->Data()[4], 1000.f);
    EXPECT_EQ(m_vecImage[2]->Data()[0], 10.f);
    releaseFrameImages(m_vecImage);
    ASSERT_EQ(loadFirstImage(m_vecImage, path("a.b.MRC"), {{1, 1}}, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 1u);
    EXPECT_EQ(m_vecImage[0]->Data()[4], 5.f);
    EXPECT_EQ(m_report.log(), "");
}

TEST_F(Loader, PicturesAreWeighedByColourAndKeepTheirRows)
{
    QImage grey(4, 3, QImage::Format_Grayscale8), colour(2, 2, QImage::Format_ARGB32);
    for (int i = 0; i < 12; ++i) {
        grey.scanLine(i / 4)[i % 4] = static_cast<uchar>(i == 5 ? 255 : 10 * i);  // a hot pixel
    }
    const QRgb aColour[] = {qRgb(1, 0, 0), qRgb(0, 1, 0), qRgb(0, 0, 1), qRgba(255, 255, 255, 128)};
    for (int i = 0; i < 4; ++i) {
        colour.setPixel(i % 2, i / 2, aColour[i]);
    }
    const QByteArray bmp = saved(grey, "g.bmp");
    QByteArray bmpTop = bmp;  // the same with the first row first, all of 4 bytes
    bmpTop.replace(22, 4, "\xfd\xff\xff\xff");
    for (int nRow = 0; nRow < 3; ++nRow) {
        bmpTop.replace(bmp.size() - 12 + 4 * nRow, 4, bmp.mid(bmp.size() - 4 - 4 * nRow, 4));
    }
    for (const auto& [pName, bytes] :
         {std::pair("g.bmp", bmp), {"t.bmp", bmpTop}, {"g.TIF", saved(grey, "g.tif")}}) {
        SCOPED_TRACE(pName);
        EXPECT_EQ(loaded(pName, bytes), Loaded(1, ""));
        ASSERT_EQ(m_vecImage.size(), 1u);
        const CImgObj<float>& img = *m_vecImage[0];
        ASSERT_EQ(img.Width(), 4);
        ASSERT_EQ(img.Height(), 3);
        for (int i = 0; i < 12; ++i) {
            EXPECT_EQ(img.Data()[i], 640.f * i) << i;  // linear surroundings give the hot one back
        }
    }
    EXPECT_EQ(loaded("c.png", saved(colour, "c.png")), Loaded(1, ""));
    ASSERT_EQ(m_vecImage[0]->Width(), 2);
    ASSERT_EQ(m_vecImage[0]->Height(), 2);
    EXPECT_EQ(std::vector<float>(m_vecImage[0]->Data(), m_vecImage[0]->Data() + 4),
              (std::vector<float>{19, 38, 7, 16320}));
    QImage counts(3, 2, QImage::Format_Grayscale16);  // are no picture: they come as they are
    for (int i = 0; i < 6; ++i) {
        reinterpret_cast<quint16*>(counts.scanLine(i / 3))[i % 3] = static_cast<quint16>(13107 * (i % 5) +
                                                                                         i % 2);
    }
    EXPECT_EQ(loaded("d.png", saved(counts, "d.png")), Loaded(1, ""));
    EXPECT_EQ(std::vector<float>(m_vecImage[0]->Data(), m_vecImage[0]->Data() + 6),
              (std::vector<float>{0, 13108, 26214, 39322, 52428, 1}));
}

TEST_F(Loader, CutPicturesAreTold)
{
    QImage white(64, 48, QImage::Format_Grayscale8);
    white.fill(255);
    for (const char* pName : {"w.bmp", "w.jpg", "w.png", "w.tif"}) {
        SCOPED_TRACE(pName);
        const QByteArray bytes = saved(white, pName);
        EXPECT_EQ(loaded(pName, bytes), Loaded(1, ""));
        EXPECT_EQ(m_vecImage.at(0)->Data()[0], 16320.f);
        const bool bBmp = bytes.startsWith("BM"), bJpeg = bytes.startsWith("\xff\xd8");
        const int nLeft = bytes.size() * 9 / 10;
        const QString strBmp = QString::asprintf("%%1: truncated: %d of %d bytes", nLeft, bytes.size());
        const QString strJpeg = "%1: truncated: no end marker", strOther = "red %1: failed to load\n";
        const auto [nResult, strLog] = loaded(pName, bytes.left(nLeft));
        EXPECT_EQ(nResult, bBmp || bJpeg ? 1 : 0);
        EXPECT_TRUE(strLog.startsWith(bBmp ? strBmp : bJpeg ? strJpeg : strOther)) << qPrintable(strLog);
        if (bBmp) {  // the last row comes first in the file
            EXPECT_EQ(m_vecImage.at(0)->Data()[0], 0.f);
            EXPECT_EQ(m_vecImage.at(0)->Data()[64 * 48 - 1], 16320.f);
        } else if (bJpeg) {  // an end marker within a comment is none of the picture
            const QByteArray comment("\xff\xfe\0\6ab\xff\xd9", 8);
            EXPECT_EQ(loaded(pName, bytes.chopped(2).insert(2, comment)), Loaded(1, strJpeg));
        }
    }
}

TEST_F(Loader, EveryFailureNamesTheFileAndTheReason)
{
    QByteArray huge = saved(QImage(1, 1, QImage::Format_Grayscale8), "one.bmp");
    huge.replace(18, 8, QByteArray("\x80\x3e\0\0\x80\xc1\xff\xff", 8));  // 16000 × -16000 by its header
    const QString strFailed = "red %1: failed to load\nred %1: ";
    const auto logOfRefused = [this](const char* pName, const QByteArray& bytes) {
        const auto [nResult, strLog] = loaded(pName, bytes);
        return nResult == 0 ? strLog : QStringLiteral("loaded all the same");
    };
    EXPECT_TRUE(logOfRefused("h%2.bmp", huge).startsWith(strFailed + "16000 x -16000 pixels in a file of "));
    const QString strOfText = logOfRefused("text.tif", "no picture at all");
    EXPECT_TRUE(strOfText.startsWith(strFailed)) << qPrintable(strOfText);
    EXPECT_GT(strOfText.size(), strFailed.size());
    EXPECT_TRUE(logOfRefused("zero.mrc", "").startsWith(strFailed));
    for (const QString& strFile : {m_dir.path(), QStringLiteral("/dev/zero"), path("absent.bmp")}) {
        m_report.m_listLine.clear();
        EXPECT_EQ(loadFrame(m_vecImage, strFile, {}, m_report), 0);
        EXPECT_EQ(m_report.m_listLine.size(), 2) << qPrintable(strFile);
    }
    EXPECT_TRUE(m_vecImage.empty());

    // A reader that walks to the end of the file for the size of the picture would be long on the way.
    writeBytes(path("long.gif"),
               QByteArray::fromHex("47494638396101000100800000ffffff00000021f90401000000002c"
                                   "00000000010001000002024401003b"));
    QString strReason;
    EXPECT_EQ(loaded("short.gif", readBytes(path("long.gif"))), Loaded(1, ""));
    ASSERT_TRUE(QFile::resize(path("long.gif"), qint64(200) << 30));
    EXPECT_FALSE(areFramesAlike({path("short.gif"), path("long.gif")}, &strReason));
    EXPECT_EQ(strReason, path("long.gif") + ": 214748364800 bytes; a picture may have 17179869184");
}

TEST_F(Loader, AnotherContentThanItsNameSaysIsTold)
{
    const CImgObj<float> img = makeImage(5, 4, [](int, int) { return 1; });
    ASSERT_TRUE(WriteMRC<float>({&img}, path("f.mrc")));
    const QByteArray mrc = readBytes(path("f.mrc"));
    const QByteArray dm4 = QByteArray("\0\0\0\4\0\0\0\0\0\0\1\0\0\0\0\1\1\0", 18) + QByteArray(99, '\0');
    const struct {
        const char* pszName;
        QByteArray bytes;
        const char* pszReason;
    } aRow[] = {{"a.tif", tiffOfSampleFormat(6), "TIFF of 32 bits a sample, complex; whole numbers of "},
                {"b.tif", QByteArray("MM\0*", 4), "truncated: 4 of 8 header bytes"},
                {"c.tif", mrc, " (the content is that of a MRC file; its name has to end in \".mrc\")"},
                {"d.dm3", mrc, " (the content is that of a MRC file; "},
                {"f.dm3", dm4, "no image"},
                {"h.mrc", QByteArray(mrc).replace(12, 1, "\4"), "MODE 4 (complex) is not read"}};
    for (const auto& row : aRow) {
        const bool bOpened = QByteArray(row.pszName) == "h.mrc";  // a stack without an image
        const auto [nResult, strLog] = loaded(row.pszName, row.bytes);
        EXPECT_EQ(nResult, bOpened ? 1 : 0) << row.pszName;
        EXPECT_TRUE(strLog.contains(row.pszReason)) << row.pszName << ' ' << qPrintable(strLog);
    }
    EXPECT_TRUE(m_vecImage.empty());
}

TEST_F(Loader, ALargePictureThatPacksWellIsBelieved)
{
    QImage blank(12000, 12000, QImage::Format_Mono);
    blank.fill(1);
    EXPECT_EQ(loaded("large.png", saved(blank, "large.png")), Loaded(1, ""));
    EXPECT_EQ(m_vecImage.at(0)->Data()[12000 * 12000 - 1], 16320.f);
}

TEST_F(Loader, RunningOutOfMemoryFreesTheList)
{
    class Hungry : public CRecordingReport {
        void addMessage(const QString& strText, Severity severity) override
        {
            CRecordingReport::addMessage(strText, severity);
            if (m_listLine.size() == 1) {
                throw std::bad_alloc();  // stands for any allocation on the way
            }
        }
    } report;
    m_vecImage.push_back(std::make_unique<CImgObj<float>>());
    EXPECT_EQ(loadFrame(m_vecImage, path("absent.mrc"), {}, report), 0);
    EXPECT_TRUE(m_vecImage.empty());
    EXPECT_EQ(report.log(), "red " + path("absent.mrc") + ": failed to load\nred Error: std::bad_alloc");
}

}  // namespace tessera
