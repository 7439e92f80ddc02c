#include "frames/frameloader.h"

#include "frames/hotpixels.h"
#include "imagefiles/dm3builder.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/testfiles.h"

#include <QImage>
#include <QtEndian>

namespace {

class Loader : public FileTest {
protected:
    /// Log lines, each behind its colour.
    class Report : public CRunReport {
    public:
        void addMessage(const QString& strText, Qt::GlobalColor color) override
        {
            strLog += (color == Qt::red ? "red " : color == Qt::black ? "black " : "other ") + strText + '\n';
        }
        QString strLog;
    };

    /// A stack of 3 × 3 images: 1 to 9, then tenfold in the second section.
    void writeStack(const char* pName)
    {
        ImageList vecImage;
        for (int z = 0; z < 2; ++z) {
            vecImage.push_back(std::make_unique<CImgObj<float>>());
            vecImage.back()->Create(3, 3);
            for (int i = 0; i < 9; ++i)
                vecImage.back()->Data()[i] = static_cast<float>((i + 1) * (z ? 10 : 1));
        }
        vecImage[0]->Data()[4] = 1000.f;  // hot
        vecImage[1]->Data()[4] = 1000.f;
        ASSERT_EQ(WriteMRC(vecImage, path(pName)), 1);
    }

    /// What `loadFrame` makes of these bytes: the log of its one call.
    QString logOf(const char* pName, const QByteArray& bytes, int nResult)
    {
        writeBytes(path(pName), bytes);
        m_report.strLog.clear();
        m_vecImage.clear();
        EXPECT_EQ(loadFrame(m_vecImage, path(pName), m_listHot, m_report), nResult) << pName;
        return m_report.strLog.replace(path(pName), "%1");
    }
    QByteArray saved(const QImage& picture, const char* pName)
    {
        EXPECT_TRUE(picture.save(path(pName))) << pName;
        return bytesOf(path(pName));
    }

    const QList<QPoint> m_listHot{{1, 1}};
    ImageList m_vecImage;
    Report m_report;
};

}  // namespace

TEST(HotPixels, AreReplacedInListOrderAwayFromTheEdge)
{
    const float aPixel[20] = {0,  1,    2,    3,  4,   //
                              10, 1000, 2000, 13, 14,  //
                              20, 21,   22,   23, 24,  //
                              30, 31,   32,   33, 34};
    CImgObj<float> image;
    image.Set(aPixel, 5, 4);
    repairHotPixels(image,
                    {{0, 1}, {4, 2}, {2, 0}, {1, 3}, {-1, 1}, {5, 1}, {1, 4}, {1 << 30, 1}, {1, -(1 << 30)}});
    EXPECT_EQ(std::vector<float>(image.Data(), image.Data() + 20), std::vector<float>(aPixel, aPixel + 20));

    repairHotPixels(image, {{1, 1}, {2, 1}});
    const double dfFirst = (0 + 1 + 2 + 10 + 2000 + 20 + 21 + 22) / 8.;
    EXPECT_EQ(image.Data()[6], static_cast<float>(dfFirst));
    EXPECT_EQ(image.Data()[7], static_cast<float>((1 + 2 + 3 + dfFirst + 13 + 21 + 22 + 23) / 8));
    image.Set(aPixel, 5, 4);
    repairHotPixels(image, {{2, 1}, {1, 1}});  // the other order, other values
    EXPECT_EQ(image.Data()[7], static_cast<float>((1 + 2 + 3 + 1000 + 13 + 21 + 22 + 23) / 8.));
}

TEST_F(Loader, AStackIsOneFrameWithItsFirstImageRepaired)
{
    writeStack("a.b.MRC");
    m_vecImage.push_back(nullptr);  // loadFrame appends
    ASSERT_EQ(loadFrame(m_vecImage, path("a.b.MRC"), m_listHot, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(m_vecImage[1]->Data()[4], 5.f);  // 40 / 8: linear surroundings give the middle
    EXPECT_EQ(m_vecImage[2]->Data()[4], 1000.f);
    EXPECT_EQ(m_vecImage[2]->Data()[0], 10.f);
    releaseFrameImages(m_vecImage);
    EXPECT_TRUE(m_vecImage.empty());
    ASSERT_EQ(loadFirstImage(m_vecImage, path("a.b.MRC"), m_listHot, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 1u);
    EXPECT_EQ(m_vecImage[0]->Data()[4], 5.f);
    EXPECT_EQ(m_report.strLog, "");
}

TEST_F(Loader, PicturesAreWeighedByColourAndKeepTheirRows)
{
    QImage grey(4, 3, QImage::Format_Grayscale8), colour(3, 2, QImage::Format_ARGB32);
    for (int i = 0; i < 12; ++i)
        grey.scanLine(i / 4)[i % 4] = static_cast<uchar>(i == 5 ? 255 : 10 * i);  // a hot pixel
    const QRgb aColour[] = {qRgb(1, 0, 0), qRgb(0, 1, 0), qRgb(0, 0, 1), qRgba(255, 255, 255, 128), 0, 0};
    for (int i = 0; i < 6; ++i)
        colour.setPixel(i % 3, i / 3, aColour[i]);
    QByteArray tiff("II*\0\x14\0\0\0\0\xa\x14\x1e\x28\xff\x3c\x46\x50\x5a\x64\x6e\x9\0", 22);  // pixels at 8
    const int aTag[][2] = {{256, 4}, {257, 3}, {258, 8}, {259, 1}, {262, 1},
                           {273, 8}, {277, 1}, {278, 3}, {279, 12}};
    for (const auto& tag : aTag)  // width, height, bits; packing none; 0 is black; one strip
        for (int nWord : {tag[0] | 4 << 16, 1, tag[1]})
            tiff.append(reinterpret_cast<const char*>(&(nWord = qToLittleEndian(nWord))), 4);
    tiff.append(4, '\0');
    QByteArray bmp = saved(grey, "g.bmp"), bmpTop = bmp;  // the same with the first row first, all of 4 bytes
    bmpTop.replace(22, 4, "\xfd\xff\xff\xff");
    const int nRows = bmp.size() - 12;
    bmpTop.replace(nRows, 12, bmp.mid(nRows + 8, 4) + bmp.mid(nRows + 4, 4) + bmp.mid(nRows, 4));
    QByteArray bytesNumber;
    for (int i = 0; i < 12; ++i)
        bytesNumber += dm3::number(static_cast<qint16>(i == 5 ? 32000 : 640 * i), 1);
    const QByteArray dm3File = dm3::file(
        {dm3::group("ImageList", {dm3::image(4, 3, 1, dm3::array("Data", 2, 12, bytesNumber))})});
    const struct {
        const char* pName;
        QByteArray bytes;
    } aGrey[] = {{"g.png", saved(grey, "g.png")},
                 {"g.bmp", bmp},
                 {"t.bmp", bmpTop},
                 {"g.TIF", tiff},
                 {"g.Dm3", dm3File}};
    for (const auto& row : aGrey) {
        SCOPED_TRACE(row.pName);
        EXPECT_EQ(logOf(row.pName, row.bytes, 1), "");
        ASSERT_EQ(m_vecImage.size(), 1u);
        const CImgObj<float>& img = *m_vecImage[0];
        ASSERT_TRUE(img.Width() == 4 && img.Height() == 3);
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(img.Data()[i], 640.f * i) << i;  // linear surroundings give the hot one back
    }
    EXPECT_EQ(logOf("c.png", saved(colour, "c.png"), 1), "");
    ASSERT_TRUE(m_vecImage[0]->Width() == 3 && m_vecImage[0]->Height() == 2);
    EXPECT_EQ(std::vector<float>(m_vecImage[0]->Data(), m_vecImage[0]->Data() + 4),
              (std::vector<float>{19, 38, 7, 16320}));
}

TEST_F(Loader, CutPicturesAreTold)
{
    QImage white(64, 48, QImage::Format_Grayscale8);
    white.fill(255);
    for (const char* pName : {"w.bmp", "w.jpg", "w.png", "w.tif"}) {
        SCOPED_TRACE(pName);
        const QByteArray bytes = saved(white, pName);
        EXPECT_EQ(logOf(pName, bytes, 1), "");
        EXPECT_EQ(m_vecImage.at(0)->Data()[0], 16320.f);
        m_vecImage.clear();
        const bool bBmp = bytes.startsWith("BM"), bJpeg = bytes.startsWith("\xff\xd8");
        const int nLeft = bytes.size() * 9 / 10;
        const QString strLog = logOf(pName, bytes.left(nLeft), bBmp || bJpeg);
        const QString strBmp = QString("black %1: truncated: %2 of %3 bytes\n")
                                   .arg("%1", QString::number(nLeft), QString::number(bytes.size()));
        const QString strJpeg = "black %1: truncated: no end marker\n", strOther = "red %1: failed to load\n";
        EXPECT_TRUE(strLog.startsWith(bBmp ? strBmp : bJpeg ? strJpeg : strOther)) << qPrintable(strLog);
        if (bBmp) {  // the last row comes first in the file
            EXPECT_EQ(m_vecImage.at(0)->Data()[0], 0.f);
            EXPECT_EQ(m_vecImage.at(0)->Data()[64 * 48 - 1], 16320.f);
        } else if (bJpeg) {  // an end marker within a comment is none of the picture
            const QByteArray comment("\xff\xfe\0\6ab\xff\xd9", 8);
            EXPECT_EQ(logOf(pName, bytes.chopped(2).insert(2, comment), 1), strJpeg);
        }
    }
}

TEST_F(Loader, EveryFailureNamesTheFileAndTheReason)
{
    const QImage one(1, 1, QImage::Format_Grayscale8);
    QByteArray huge = saved(one, "one.png");  // 30000 × 30000 pixels by its header, with none in it
    huge.replace(16, 8, dm3::big(30000) + dm3::big(30000));
    quint32 nCrc = 0xffffffff;  // of type and content, bitwise
    for (int i = 12; i < 29; ++i) {
        nCrc ^= static_cast<quint8>(huge[i]);
        for (int k = 0; k < 8; ++k)
            nCrc = nCrc & 1 ? nCrc >> 1 ^ 0xedb88320 : nCrc >> 1;
    }
    huge.replace(29, 4, dm3::big(~nCrc));
    QByteArray hugeTop = saved(one, "one.bmp");
    hugeTop.replace(18, 8, QByteArray("\x80\x3e\0\0\x80\xc1\xff\xff", 8));  // 16000 × -16000
    writeStack("whole.mrc");
    const QByteArray cutStack = bytesOf(path("whole.mrc")).chopped(1);
    const QString strFailed = "red %1: failed to load\nred %1: ";
    const struct {
        const char* pName;
        QByteArray bytes;
        int nResult;
        size_t nImages;
        QString strLog;  ///< begins so
    } aCase[] = {{"zero.mrc", "", 0, 0, strFailed + "truncated: 0 of 1024 header bytes\n"},
                 {"text.tif", "no picture at all", 0, 0, strFailed},
                 {"huge.png", huge, 0, 0, strFailed + "30000 x 30000 pixels in a file of "},
                 {"huge.bmp", hugeTop, 0, 0, strFailed + "16000 x -16000 pixels in a file of "},
                 {"100%2 cut.mrc", cutStack, 1, 1,
                  "black %1: truncated: 1095 bytes hold 1 of 2 sections of 3 x 3 pixels\n"}};
    for (const auto& row : aCase) {
        const QString strLog = logOf(row.pName, row.bytes, row.nResult);
        EXPECT_TRUE(strLog.startsWith(row.strLog)) << qPrintable(strLog);
        EXPECT_GT(strLog.size(), row.strLog.size() - row.strLog.endsWith('\n')) << row.pName;
        EXPECT_EQ(m_vecImage.size(), row.nImages) << row.pName;
    }
    for (const QString& strFile : {m_dir.path(), QStringLiteral("/dev/zero"), path("absent.bmp")}) {
        m_report.strLog.clear();
        EXPECT_EQ(loadFrame(m_vecImage, strFile, {}, m_report), 0);
        EXPECT_EQ(m_report.strLog.count('\n'), 2) << qPrintable(m_report.strLog);
    }
    EXPECT_EQ(m_vecImage.size(), 1u);  // of the case before
}

TEST_F(Loader, ALargePictureThatPacksWellIsBelieved)
{
    QImage blank(12000, 12000, QImage::Format_Mono);
    blank.fill(1);
    EXPECT_EQ(logOf("large.png", saved(blank, "large.png"), 1), "");
    ASSERT_EQ(m_vecImage.size(), 1u);
    EXPECT_EQ(m_vecImage[0]->Data()[12000 * 12000 - 1], 16320.f);
}

TEST_F(Loader, RunningOutOfMemoryFreesTheList)
{
    class Hungry : public Report {
        void addMessage(const QString& strText, Qt::GlobalColor color) override
        {
            Report::addMessage(strText, color);
            if (strLog.count('\n') == 1)
                throw std::bad_alloc();  // stands for any allocation on the way
        }
    } report;
    m_vecImage.push_back(std::make_unique<CImgObj<float>>());
    EXPECT_EQ(loadFrame(m_vecImage, path("absent.mrc"), {}, report), 0);
    EXPECT_TRUE(m_vecImage.empty());
    EXPECT_EQ(report.strLog, "red " + path("absent.mrc") + ": failed to load\nred Error: std::bad_alloc\n");
}
