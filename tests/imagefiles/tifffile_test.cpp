#include "imagefiles/tifffile.h"

#include "tests/imagefiles/testfiles.h"
#include "tests/imagefiles/tiffbuilder.h"

#include <QDateTime>
#include <QFile>

#include <tiffio.h>

#include <climits>
#include <cmath>
#include <functional>

namespace tessera {

namespace {

using Pixels = std::vector<float>;

class Tiff : public FileTest {
protected:
    QString file() const { return path("frame.tif"); }
    void write(const CTiffBuilder& builder) { writeBytes(file(), builder.bytes()); }
    /// Reads all images, or the one from `nFirst` on; the reason stays in m_strReason.
    bool read(int nFirst = 0, int nMost = INT_MAX)
    {
        m_vecImage.clear();
        return readTiffFrames(file(), nFirst, nMost, m_vecImage, m_strReason);
    }
    Pixels pixels(size_t nImage = 0) const
    {
        const CImgObj<float>& image = *m_vecImage.at(nImage);
        return {image.Data(), image.Data() + image.Width() * image.Height()};
    }
    /// What one page of a picture comes out as.
    Pixels picture(int nBits, int nPhotometric, const QByteArray& bytes, int nWidth, int nFormat = 1,
                   int nSamples = 1)
    {
        CTiffBuilder builder;
        const quint64 nPlace = builder.add(bytes);
        builder.tag(277, {quint64(nSamples)}, 3);
        if (nPhotometric == 3) {  // red, green, blue of 16 bits each
            std::vector<quint64> vecColour(size_t(3) << nBits);
            for (size_t i = 0; i < vecColour.size(); ++i) {
                vecColour[i] = 257 * ((i * 7) % 256);
            }
            builder.tag(320, vecColour, 3);
        }
        builder.page(nWidth, 1, nBits, nFormat, {nPlace}, quint64(bytes.size()), 1, nPhotometric);
        builder.directory();
        write(builder);
        EXPECT_TRUE(read()) << qPrintable(m_strReason);
        return m_vecImage.empty() ? Pixels() : pixels();
    }
    ImageList m_vecImage;
    QString m_strReason;
};

}  // namespace

TEST_F(Tiff, PicturesFollowTheRuleAndCountsComeUnscaled)
{
    EXPECT_EQ(picture(8, 0, QByteArray("\0\1\xff", 3), 3), (Pixels{16320, 16256, 0}));
    EXPECT_EQ(picture(16, 0, QByteArray("\1\0\xff\xff", 4), 2), (Pixels{1, 65535}));
    EXPECT_EQ(picture(1, 1, "\xa0", 3), (Pixels{16320, 0, 16320}));
    EXPECT_EQ(picture(4, 1, "\x1f\x70", 3), (Pixels{1, 15, 7}));
    EXPECT_EQ(readTiffHeader(file(), 0).listDoubt.size(), 1);  // of the order of the two halves of a byte
    EXPECT_EQ(picture(12, 1, "\x12\x3f\xff\xab\xc0", 3), (Pixels{0x123, 0xfff, 0xabc}));
    EXPECT_EQ(picture(12, 1, "\x12\x3f\xff", 2, 2), (Pixels{0x123, -1}));
    EXPECT_EQ(picture(8, 2, QByteArray("\1\0\0\0\1\0\0\0\1", 9), 3, 1, 3), (Pixels{19, 38, 7}));
    EXPECT_EQ(picture(8, 2, "\xff\xff\xff\x80", 1, 1, 4), (Pixels{16320}));  // whatever its opacity
    EXPECT_EQ(picture(16, 1, QByteArray("\1\1\2\0\3\3\4\0", 8), 2, 1, 2), (Pixels{0x101, 0x303}));
    EXPECT_EQ(readTiffHeader(file(), 0).listDoubt.size(), 1);
    // A palette of 16 colours: red 7 i, green 7 (16 + i), blue 7 (32 + i)
    EXPECT_EQ(picture(4, 3, "\x02", 2), (Pixels{38. * 112 + 7 * 224, float(19 * (14 + 2 * 126) + 7 * 238)}));
}

TEST_F(Tiff, RowsAndColumnsAreWhereTheOrientationTells)
{
    // 1 2 3 / 4 5 6 as stored. As TIFF 6.0 tells where row 0 and column 0 are on the screen.
    const std::vector<Pixels> vecTurned = {{1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1},
                                           {4, 5, 6, 1, 2, 3}, {1, 4, 2, 5, 3, 6}, {4, 1, 5, 2, 6, 3},
                                           {6, 3, 5, 2, 4, 1}, {3, 6, 2, 5, 1, 4}};
    for (int nCase = 0; nCase < 24; ++nCase) {
        const int nOrientation = nCase / 3 + 1;
        const bool bPicture = nCase % 3 == 2;
        CTiffBuilder builder;
        const QByteArray pixels = bPicture ? QByteArray("\xa0\x40", 2) : QByteArray("\1\2\3\4\5\6");
        builder.tag(274, {quint64(nOrientation)}, 3);
        if (nCase % 3 == 1) {  // each row unchanged, after a byte with its length minus 1
            builder.tag(259, {COMPRESSION_PACKBITS}, 3);
            builder.page(3, 2, 8, 2, {builder.add("\2\1\2\3\2\4\5\6")}, 8, 2);
        } else {
            builder.page(3, 2, bPicture ? 1 : 8, bPicture ? 1 : 2, {builder.add(pixels)},
                         quint64(pixels.size()), 2);
        }
        builder.directory();
        write(builder);
        ASSERT_TRUE(read()) << qPrintable(m_strReason);
        const QSize size = nOrientation < 5 ? QSize(3, 2) : QSize(2, 3);
        EXPECT_EQ(QSize(m_vecImage[0]->Width(), m_vecImage[0]->Height()), size);
        EXPECT_EQ(readTiffHeader(file(), 0).size, size);
        Pixels vecExpected = vecTurned[nOrientation - 1];
        for (float& f : vecExpected) {
            f = bPicture ? (f == 1 || f == 3 || f == 5 ? 16320.f : 0.f) : f;
        }
        EXPECT_EQ(this->pixels(), vecExpected) << nCase;
    }
}

namespace {

/// Files of several pages, the first three of which that count have 2 × 2 pixels.
class TiffPages : public Tiff {
protected:
    quint64 addPage(int nSide, char ch, int nKind)
    {
        builder.tag(254, {quint64(nKind)});
        builder.page(nSide, nSide, 8, 2, {builder.add(QByteArray(nSide * nSide, ch))}, quint64(nSide * nSide),
                     nSide);
        return builder.directory();
    }
    void SetUp() override
    {
        Tiff::SetUp();
        addPage(1, '\x9', 1);  // a thumbnail, even in front
        nSecond = addPage(2, '\1', 0);
        addPage(2, '\2', 2);   // "page of many"
        addPage(3, '\x9', 4);  // a mask
        addPage(2, '\3', 0);
    }

    CTiffBuilder builder;
    quint64 nSecond = 0;  ///< place of the second directory
};

}  // namespace

TEST_F(TiffPages, AreASeriesWithoutThumbnailsAndMasks)
{
    write(builder);
    ASSERT_TRUE(read());
    EXPECT_EQ(m_strReason, "");
    ASSERT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(readTiffHeader(file(), 2).nImages, 3);
    ASSERT_TRUE(read(1, 1));
    ASSERT_EQ(m_vecImage.size(), 1u);
    EXPECT_EQ(pixels(), Pixels(4, 2.f));
    EXPECT_FALSE(read(3, 1));
    EXPECT_EQ(m_strReason, "image 4 of 3");
}

TEST_F(TiffPages, EndAtOneOfAnotherSize)
{
    addPage(3, '\4', 0);
    addPage(2, '\5', 0);
    write(builder);
    ASSERT_TRUE(read());
    EXPECT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(m_strReason, "page 6 has 3 x 3 pixels, those before it 2 x 2; it ends the series");
    EXPECT_EQ(readTiffHeader(file(), 0).listDoubt, QStringList(m_strReason));
    EXPECT_EQ(readTiffHeader(file(), 0).nImages, 3);
    ASSERT_TRUE(read(0, 3));
    EXPECT_EQ(m_strReason, "");
}

TEST_F(TiffPages, EndWhereOneLeadsBack)
{
    builder.page(2, 2, 8, 2, {8}, 4, 2);
    builder.directory(nSecond);
    write(builder);
    ASSERT_TRUE(read());
    EXPECT_EQ(m_vecImage.size(), 4u);
    EXPECT_EQ(m_strReason, "page 6 leads back to an earlier one");
}

TEST_F(Tiff, StacksOfImageJHaveOnePage)
{
    const auto stack = [&](int nImages, int nCompression) {
        CTiffBuilder builder(true);
        for (quint64 nPlace = 1;; nPlace = quint64(builder.bytes().size())) {  // the pixels come last
            const bool bKnown = nPlace > 1;
            builder = CTiffBuilder(true);
            builder.text(270, "ImageJ=1.53t\nimages=" + QByteArray::number(nImages) + "\nunit=1/nm\n");
            builder.tag(282, {200, 1}, 5);
            builder.tag(283, {200, 1}, 5);
            builder.tag(259, {quint64(nCompression)}, 3);
            builder.page(2, 2, 16, 1, {nPlace, nPlace + 4}, 4, 1);
            builder.directory();
            if (bKnown) {
                builder.add(QByteArray("\0\1\0\2\0\3\0\4\0\5\0\6\0\7\0\x8\0\x9\0\xa\0\xb\0\xc", 24));
                return write(builder);
            }
        }
    };
    stack(3, COMPRESSION_NONE);
    ASSERT_TRUE(read()) << qPrintable(m_strReason);
    EXPECT_EQ(m_strReason, "");
    ASSERT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(pixels(2), (Pixels{9, 10, 11, 12}));
    ASSERT_TRUE(read(1, 1));
    EXPECT_EQ(pixels(), (Pixels{5, 6, 7, 8}));
    EXPECT_FALSE(read(3, 1));
    const FrameHeader header = readTiffHeader(file(), 1);
    EXPECT_EQ(header.nImages, 3);
    EXPECT_DOUBLE_EQ(header.pixelSize.df, 0.0005);
    stack(1000000000, COMPRESSION_NONE);
    ASSERT_TRUE(read());
    EXPECT_EQ(m_vecImage.size(), 3u);
    EXPECT_EQ(
        m_strReason,
        QString("truncated: %1 bytes hold 3 of 1000000000 images of 2 x 2 pixels").arg(QFile(file()).size()));
    EXPECT_EQ(readTiffHeader(file(), 0).nImages, 3);
    stack(3, COMPRESSION_LZW);  // of packed images nobody knows where the next one begins
    EXPECT_EQ(readTiffHeader(file(), 0).nImages, 1);
}

// Where the pages are is remembered of a file that has not changed for a while, and of that one alone.
TEST_F(Tiff, ManyPagesAreThoseThatTheFileHasNow)
{
    const auto writePages = [&](int nPages, int nFirst, qint64 nHoursAgo) {
        CTiffBuilder builder;
        for (int i = 0; i < nPages; ++i) {
            // Each file has its pages at other places.
            const quint64 nPlace = builder.add(QByteArray(3 * nFirst + 1, char(nFirst + i))) +
                                   quint64(nFirst);
            builder.page(1, 1, 8, 2, {nPlace}, 1, 1);
            builder.directory();
        }
        write(builder);
        QFile changed(file());
        ASSERT_TRUE(changed.open(QIODevice::ReadWrite));
        ASSERT_TRUE(changed.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-3600 * nHoursAgo),
                                        QFileDevice::FileModificationTime));
    };
    const auto expectPages = [&](int nPages, int nFirst) {
        for (const int n : {nPages - 1, 20, 1}) {
            ASSERT_TRUE(read(n, 1)) << qPrintable(m_strReason);
            EXPECT_EQ(pixels(), Pixels(1, float(nFirst + n)));
            EXPECT_EQ(m_strReason, "");
        }
        EXPECT_FALSE(read(nPages, 1));
        EXPECT_EQ(m_strReason, QString("image %1 of %2").arg(nPages + 1).arg(nPages));
        EXPECT_EQ(readTiffHeader(file(), 2).nImages, nPages);
    };
    writePages(40, 0, 2);
    expectPages(40, 0);
    writePages(60, 5, 1);
    expectPages(60, 5);
    writePages(30, 7, 0);  // just now
    expectPages(30, 7);
    writePages(31, 8, 0);
    expectPages(31, 8);
}

TEST_F(Tiff, DirectoriesThatOverlapEndTheSeries)
{
    // Each directory begins two bytes behind the one before, and its first entries are those of it.
    QByteArray bytes("II\x2a\0\x08\0\0\0", 8);
    const int nEntries = 1000, nPages = 100, nSize = 2 + 12 * nEntries + 4;
    bytes.resize(8 + nSize + 2 * 12 * nPages);
    bytes.fill('\0');
    bytes.replace(0, 8, QByteArray("II\x2a\0\x08\0\0\0", 8));
    for (int i = 0; i < nPages; ++i) {
        const int nPlace = 8 + 12 * i, nNext = nPlace + 12;
        bytes[nPlace] = char(nEntries & 255);
        bytes[nPlace + 1] = char(nEntries >> 8);
        bytes[nPlace + nSize - 4] = char(nNext & 255);
        bytes[nPlace + nSize - 3] = char(nNext >> 8);
    }
    writeBytes(file(), bytes);
    EXPECT_EQ(readTiffHeader(file(), 0).listDoubt, QStringList("the directory of page 2 overlaps others"));
}

namespace {

typedef std::function<void(CTiffBuilder&)> Tags;

Tags page(int nWidth, int nHeight, int nBits, int nFormat, std::vector<quint64> vecPlace, quint64 nBytes,
          int nRows)
{
    return [=](CTiffBuilder& builder) {
        builder.page(nWidth, nHeight, nBits, nFormat, vecPlace, nBytes, nRows);
    };
}

Tags packed(int nCompression, int nWidth, int nHeight, int nBits)
{
    return [=](CTiffBuilder& builder) {
        builder.tag(259, {quint64(nCompression)});
        builder.page(nWidth, nHeight, nBits, 1, {8}, 16, nHeight);
    };
}

}  // namespace

namespace {

/// Files with an error in their tags.
class TiffErrors : public Tiff {
protected:
    struct Row {
        Tags fnTags;
        const char* pszReason;  ///< begins so
    };
    /// What libtiff says is a reason, and goes nowhere else.
    void expectRefused(const std::vector<Row>& vecRow)
    {
        testing::internal::CaptureStderr();
        for (const Row& row : vecRow) {
            CTiffBuilder builder;
            builder.add("abcdefghijklmnop");
            row.fnTags(builder);
            builder.directory();
            write(builder);
            EXPECT_FALSE(read()) << row.pszReason;
            EXPECT_FALSE(m_strReason.isEmpty()) << row.pszReason;
            EXPECT_EQ(m_strReason.left(int(strlen(row.pszReason))), row.pszReason) << qPrintable(m_strReason);
            readTiffHeader(file(), 0);
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
};

}  // namespace

TEST_F(TiffErrors, OfSizesAndPlacesAreRefused)
{
    expectRefused({
        {page(-1, 1, 16, 1, {8}, 16, 1), "4294967295 x 1 pixels; fewer than 2147483648 can be read"},
        {page(65536, 32768, 16, 1, {8}, 16, 1), "65536 x 32768 pixels; fewer than 2147483648 can be read"},
        {page(0, 4, 16, 1, {8}, 16, 4), "0 x 4 pixels; "},
        {page(2, 4, 16, 6, {8}, 16, 4), "TIFF of 16 bits a sample, complex; "},
        {page(2, 2, 24, 1, {8}, 16, 4), "TIFF of 24 bits a sample; "},
        {page(2, 2, 8, 3, {8}, 16, 4), "TIFF of 8 bits a sample, floating point; "},
        {page(46340, 46340, 64, 3, {8}, 16, 46340), "truncated: "},
        {page(2, 4, 16, 1, {4294967295U}, 16, 4), "truncated: "},
        {page(2, 4, 16, 1, {8}, 16, 0), "strips of 2 x 0 pixels"},
        {page(2, 4, 16, 1, {8, 16}, 16, 1), "places of 2 of 4 strips"},
        {page(2, 4, 16, 1, {8, 16}, 7, 2), "strip 1 of 2 has 7 of 8 bytes"},
        {page(2, 4, 16, 1, {8, 0}, 8, 2), "strip 2 of 2 has 0 of 8 bytes"},
        {[](CTiffBuilder& builder) {
             builder.tag(322, {65536});
             builder.tag(323, {65536});
             builder.page(2, 2, 16, 1, {8}, 16, 2);
         },
         "tiles of 65536 x 65536 pixels"},
    });
}

TEST_F(TiffErrors, OfPackedPixelsAreRefused)
{
    expectRefused({
        {packed(COMPRESSION_ADOBE_DEFLATE, 46340, 46340, 32), "46340 x 46340 pixels packed in 16 bytes"},
        {packed(COMPRESSION_CCITTFAX4, 46340, 46340, 1), "46340 x 46340 pixels packed in 16 bytes"},
        {packed(COMPRESSION_ADOBE_DEFLATE, 2, 4, 16), "ZIPDecode: "},
        {packed(COMPRESSION_LZW, 2, 4, 16), "Using code not yet in table"},
        {packed(COMPRESSION_PACKBITS, 2, 40, 16), "PackBitsDecode: "},
        {packed(COMPRESSION_JPEG, 2, 4, 16), ""},
        {packed(4711, 2, 4, 16), ""},
    });
}

// The pages that are whole come.
TEST_F(Tiff, AFileThatIsCutAnywhereIsNotTakenForAWholeOne)
{
    CTiffBuilder builder;
    for (char ch : {'\1', '\2'}) {
        builder.page(3, 3, 8, 2, {builder.add(QByteArray(9, ch))}, 9, 3);
        builder.directory();
    }
    for (int nSize = builder.bytes().size() - 1; nSize >= 0; --nSize) {
        writeBytes(file(), builder.bytes().left(nSize));
        const bool bRead = read();
        EXPECT_NE(m_strReason, "") << nSize;
        EXPECT_EQ(bRead, m_vecImage.size() == 1) << nSize;
    }
}

// They would grow beyond bounds.
TEST_F(Tiff, PagesThatShareTheirPixelsEndTheSeries)
{
    CTiffBuilder shared;
    shared.add(QByteArray(4096, '\1'));
    for (int i = 0; i < 100; ++i) {
        shared.page(64, 64, 8, 2, {8}, 4096, 64);
        shared.directory();
    }
    write(shared);
    EXPECT_TRUE(read());
    EXPECT_LT(m_vecImage.size(), 10u);
    EXPECT_TRUE(m_strReason.endsWith("its pixels are those of other pages"));
}

namespace {

/// Files of one pixel, 255, with the tags of a program.
class TiffTags : public Tiff {
protected:
    FrameHeader header(const Tags& fnTags)
    {
        CTiffBuilder builder;
        fnTags(builder);
        builder.page(1, 1, 8, 2, {builder.add("\xff")}, 1, 1);
        builder.directory();
        write(builder);
        EXPECT_TRUE(read());
        return readTiffHeader(file(), 0);
    }
};

}  // namespace

TEST_F(TiffTags, OfImageJTellThePixelSizeInReciprocalUnitsAlone)
{
    for (const auto& [pszUnit, df] : {std::pair("1/nm", 0.0005),
                                      {"nm^-1", 0.0005},
                                      {"1/\\u00C5", 0.005},
                                      {"1/\xc5", 0.005},
                                      {"\\u00B5m", 0.},
                                      {"nm", 0.},
                                      {"pixel", 0.}}) {
        const FrameHeader ofImageJ = header([unit = pszUnit](CTiffBuilder& builder) {
            builder.text(270, QByteArray("ImageJ=1.53t\nunit=") + unit + "\n");
            builder.tag(282, {200, 1}, 5);
            builder.tag(283, {200, 1}, 5);
        });
        EXPECT_EQ(ofImageJ.pixelSize.isTold(), df > 0) << pszUnit;
        EXPECT_TRUE(df == 0 || std::abs(ofImageJ.pixelSize.df - df) < 1e-12) << pszUnit;
        EXPECT_EQ(ofImageJ.listDoubt.size(), df > 0 || QByteArray(pszUnit) == "pixel" ? 0 : 1) << pszUnit;
    }
}

TEST_F(TiffTags, OfInstamaticTellNoUnitOfThePixelSize)
{
    const FrameHeader instamatic = header([](CTiffBuilder& builder) {
        builder.text(305, "instamatic 1.7");
        builder.text(270, "ImageCameraName: timepix\nImageExposureTime: 0.4\nImagePixelsize: 0.0123\n");
    });
    EXPECT_EQ(instamatic.strDetector, "timepix");
    EXPECT_EQ(instamatic.exposure.df, 0.4);
    EXPECT_FALSE(instamatic.pixelSize.isTold());
    EXPECT_EQ(instamatic.listDoubt.size(), 2);
    EXPECT_EQ(pixels()[0], -1);
}

TEST_F(TiffTags, OfDectrisTellTheDetectorAndItsGaps)
{
    const FrameHeader dectris = header([](CTiffBuilder& builder) {
        builder.text(
            270,
            "# Detector: PIXELS 1M, S/N 7\r\n# Pixel_size 172e-6 m x 172e-6 m\r\n"
            "# Exposure_time 0.095 s\r\n# Detector_distance 0.25 m\r\n# Count_cutoff 1000 counts\r\n");
    });
    EXPECT_EQ(dectris.strDetector, "PIXELS 1M, S/N 7");
    EXPECT_DOUBLE_EQ(dectris.detectorPixel.df, 172);
    EXPECT_DOUBLE_EQ(dectris.cameraLength.df, 250);
    EXPECT_EQ(dectris.exposure.df, 0.095);
    EXPECT_EQ(dectris.saturation.df, 1000);
    EXPECT_TRUE(std::isnan(pixels()[0]));  // a gap
}

TEST_F(TiffTags, OfDigitalMicrographTellThePixelSize)
{
    const FrameHeader dm = header([](CTiffBuilder& builder) {
        quint64 nScale;
        const double dfScale = 0.02;
        std::memcpy(&nScale, &dfScale, sizeof(nScale));
        for (int n : {0, 1}) {
            builder.text(65003 + n, "1/nm");
            builder.tag(65009 + n, {nScale}, 12);
        }
    });
    EXPECT_DOUBLE_EQ(dm.pixelSize.df, 0.002);
}

TEST_F(TiffTags, OfTvipsTellMicroscopeAndCamera)
{
    const FrameHeader tvips = header([](CTiffBuilder& builder) {
        QByteArray bytes(6312, '\0');
        const auto put = [&](int nPlace, const QByteArray& value) { bytes.replace(nPlace, 4, value); };
        put(0, builder.number(2, 4));
        put(6308, builder.number(0xaaaaaaaaU, 4));
        for (const auto& [nPlace, f] :
             {std::pair(3272, 200000.f), {3564, -12.5f}, {3928, 15000.f}, {3932, 15000.f}, {3952, 500.f}}) {
            put(nPlace, builder.element(f));
        }
        put(3944, builder.number(2, 4));
        builder.tag(37706, {builder.add(bytes)});
    });
    EXPECT_EQ(tvips.kilovolts.df, 200);
    EXPECT_EQ(tvips.tilt.df, -12.5);
    EXPECT_DOUBLE_EQ(tvips.detectorPixel.df, 30);
    EXPECT_EQ(tvips.exposure.df, 0.5);
    EXPECT_EQ(tvips.listDoubt.size(), 2);  // of units that are not told
}

TEST_F(TiffTags, OfSisTellTheCamera)
{
    const FrameHeader sis = header([](CTiffBuilder& builder) {
        QByteArray block(80, '\0');
        block.replace(10, 2, builder.number(quint64(-9), 2))
            .replace(12, 8, builder.element(1.5))
            .replace(46, 3, "CAM");
        const quint64 nBlock = builder.add(block);
        QByteArray head = QByteArray("SIS0").leftJustified(58, '\0') + builder.number(1, 2) +
                          builder.number(1, 4) + builder.number(nBlock, 4);
        builder.tag(33560, {builder.add(head)});
    });
    EXPECT_EQ(sis.strDetector, "CAM");
    EXPECT_EQ(sis.listDoubt.size(), 1);
}

}  // namespace tessera
