#include "frames/frameloader.h"

#include "frames/hotpixels.h"
#include "imagefiles/dm3builder.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/testfiles.h"

#include <QImage>

#include <thread>

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

    CImgObj<float> imgEmpty;
    repairHotPixels(imgEmpty, {{1, 1}});
    EXPECT_EQ(imgEmpty.Data(), nullptr);
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

TEST_F(Loader, ADm3FrameKeepsItsRows)
{
    writeBytes(
        path("f.Dm3"),
        dm3::file({dm3::group(
            "ImageList",
            {dm3::image(3, 3, 6, dm3::array("Data", 10, 9, QByteArray("\1\2\3\4\xff\6\7\x8\x9", 9)))})}));
    ASSERT_EQ(loadFrame(m_vecImage, path("f.Dm3"), m_listHot, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 1u);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(m_vecImage[0]->Data()[i], i + 1);
    EXPECT_EQ(m_report.strLog, "");
}

TEST_F(Loader, PicturesAreWeighedByColour)
{
    QImage grey(3, 3, QImage::Format_Grayscale8), colour(2, 2, QImage::Format_ARGB32);
    for (int i = 0; i < 9; ++i)
        grey.scanLine(i / 3)[i % 3] = static_cast<uchar>(i == 4 ? 255 : i == 8 ? 255 : 10 * i);
    colour.setPixel(0, 0, qRgb(1, 0, 0));
    colour.setPixel(1, 0, qRgb(0, 1, 0));
    colour.setPixel(0, 1, qRgb(0, 0, 1));
    colour.setPixel(1, 1, qRgba(255, 255, 255, 128));
    ASSERT_TRUE(grey.save(path("grey.png")));
    ASSERT_TRUE(colour.save(path("colour.png")));

    ASSERT_EQ(loadFrame(m_vecImage, path("grey.png"), {}, m_report), 1);
    ASSERT_EQ(loadFrame(m_vecImage, path("grey.png"), m_listHot, m_report), 1);
    ASSERT_EQ(loadFrame(m_vecImage, path("colour.png"), {}, m_report), 1);
    ASSERT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(m_vecImage[0]->Data()[8], 16320.f);
    EXPECT_EQ(m_vecImage[0]->Data()[5], 64.f * 50);
    EXPECT_EQ(m_vecImage[1]->Data()[4], (10 + 20 + 30 + 50 + 60 + 70 + 255) * 8.f);
    const CImgObj<float>& img = *m_vecImage[2];
    EXPECT_EQ(std::vector<float>(img.Data(), img.Data() + 4), (std::vector<float>{19, 38, 7, 16320}));
    EXPECT_EQ(m_report.strLog, "");
}

TEST_F(Loader, EveryFailureNamesTheFileAndTheReason)
{
    QByteArray huge;  // a PNG of 30000 × 30000 pixels by its header, with none in it
    {
        QImage(1, 1, QImage::Format_Grayscale8).save(path("one.png"));
        huge = bytesOf(path("one.png"));
        huge.replace(16, 8, dm3::big(30000) + dm3::big(30000));
        quint32 nCrc = 0xffffffff;  // of type and content, bitwise
        for (int i = 12; i < 29; ++i) {
            nCrc ^= static_cast<quint8>(huge[i]);
            for (int k = 0; k < 8; ++k)
                nCrc = nCrc & 1 ? nCrc >> 1 ^ 0xedb88320 : nCrc >> 1;
        }
        huge.replace(29, 4, dm3::big(~nCrc));
    }
    QByteArray complexMrc(1024 + 32, 0);
    complexMrc[0] = complexMrc[4] = 2;
    complexMrc[8] = 1;
    complexMrc[12] = 4;
    writeStack("whole.mrc");
    const QByteArray cutStack = bytesOf(path("whole.mrc")).chopped(1);
    const struct {
        const char* pName;
        QByteArray bytes;
        int nResult;
        size_t nImages;
        QString strLog;  ///< %1 the file
    } aCase[] = {
        {"zero.mrc", "", 0, 0, "red %1: failed to load\nred %1: truncated: 0 of 1024 header bytes\n"},
        {"zero.dm3", "", 0, 0, "red %1: failed to load\nred %1: truncated: 0 of 18 header bytes\n"},
        {"zero.png", "", 0, 0, "red %1: failed to load\nred %1: "},
        {"zero", "", 0, 0, "red %1: failed to load\nred %1: "},
        {"text.tif", "no picture at all", 0, 0, "red %1: failed to load\nred %1: "},
        {"huge.png", huge, 0, 0, "red %1: failed to load\nred %1: 30000 x 30000 pixels in a file of "},
        {"complex.mrc", complexMrc, 1, 0, "red %1: MODE 4 is not read\n"},
        {"100%2 cut.mrc", cutStack, 1, 1,
         "black %1: truncated: 1095 bytes hold 1 of 2 sections of 3 x 3 pixels\n"}};
    for (const auto& row : aCase) {
        SCOPED_TRACE(row.pName);
        writeBytes(path(row.pName), row.bytes);
        m_report.strLog.clear();
        m_vecImage.clear();
        m_vecImage.push_back(nullptr);
        EXPECT_EQ(loadFrame(m_vecImage, path(row.pName), m_listHot, m_report), row.nResult);
        EXPECT_EQ(m_vecImage.size(), 1 + row.nImages);
        QString strExpected = row.strLog;
        strExpected.replace("%1", path(row.pName));
        EXPECT_TRUE(m_report.strLog.startsWith(strExpected)) << qPrintable(m_report.strLog);
        EXPECT_GT(m_report.strLog.size(), strExpected.size() - (strExpected.endsWith('\n') ? 1 : 0));
    }
    for (const QString& strFolder :
         {m_dir.path(), QStringLiteral("/dev/zero"), path("absent.dm3"), path("absent.bmp")}) {
        m_report.strLog.clear();
        EXPECT_EQ(loadFrame(m_vecImage, strFolder, {}, m_report), 0);
        EXPECT_EQ(m_report.strLog.count('\n'), 2) << qPrintable(m_report.strLog);
    }
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

TEST_F(Loader, FramesLoadSideBySide)
{
    writeStack("s.mrc");
    QImage grey(64, 64, QImage::Format_Grayscale8);
    grey.fill(255);
    ASSERT_TRUE(grey.save(path("g.png")));
    int aGood[4] = {};
    std::vector<std::thread> vecThread;
    for (int t = 0; t < 4; ++t)
        vecThread.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                ImageList vecImage;
                Report report;
                if (loadFrame(vecImage, path(i % 2 ? "s.mrc" : "g.png"), m_listHot, report) == 1 &&
                    vecImage[0]->Data()[4] == (i % 2 ? 5.f : 16320.f) && report.strLog.isEmpty())
                    ++aGood[t];
            }
        });
    for (std::thread& thread : vecThread)
        thread.join();
    for (int nGood : aGood)
        EXPECT_EQ(nGood, 50);
}
