#include "imagefiles/tvipsfile.h"

#include "tests/imagefiles/testfiles.h"

#include <QtEndian>

#include <limits>

namespace tessera {

namespace {

constexpr int g_nAll = std::numeric_limits<int>::max();
constexpr int g_nWidth = 5, g_nHeight = 3, g_nImageHeader = 80;

void put(QByteArray& bytes, int nOffset, quint32 n)
{
    qToLittleEndian(n, bytes.data() + nOffset);
}
void put(QByteArray& bytes, int nOffset, float f)
{
    qToLittleEndian(f, bytes.data() + nOffset);
}

/// The header of a series of 5 x 3 pixels of 16 bits, for a test to change.
QByteArray seriesHeader(quint32 nVersion = 2)
{
    QByteArray bytes(256, '\x7f');
    const quint32 aWord[] = {256,   nVersion, g_nWidth, g_nHeight,     16, 0, 0, 2, 2,
                             15500, 200,      0,        g_nImageHeader};
    for (int i = 0; i < 13; ++i) {
        put(bytes, 4 * i, aWord[i]);
    }
    return bytes;
}

float pixelOf(int nImage, int x, int y)
{
    return float(60000 + 1000 * nImage + 10 * y + x);
}

/// An image of version 2 in diffraction mode, tilted by 1.5° a number.
QByteArray image(int nImage)
{
    QByteArray bytes(g_nImageHeader, 0);
    put(bytes, 0, quint32(nImage));
    put(bytes, 20, quint32(850));
    put(bytes, 24, quint32(2));
    put(bytes, 40, -30 + 1.5F * float(nImage));
    for (int i = 0; i < g_nWidth * g_nHeight; ++i) {
        const auto n = quint16(pixelOf(nImage, i % g_nWidth, i / g_nWidth));
        bytes += char(n & 0xff);
        bytes += char(n >> 8);
    }
    return bytes;
}

class TvipsFile : public FileTest {
protected:
    QString series() const
    {
        writeBytes(path("a_001.tvips"), image(2) + image(3));
        writeBytes(path("a_002.tvips"), image(4));
        return writeBytes(path("a_000.tvips"), seriesHeader() + image(0) + image(1));
    }
    /// How many images come, each the one that it should be.
    static int read(const QString& strFile, int nFirst, int nMost, QString& strReason)
    {
        ImageList vecImage(1);  // what was there stays
        const bool bRead = readTvipsFrames(strFile, nFirst, nMost, vecImage, strReason);
        EXPECT_EQ(bRead, vecImage.size() > 1);
        EXPECT_TRUE(bRead || !strReason.isEmpty());
        for (size_t i = 1; i < vecImage.size(); ++i) {
            for (int n = 0; n < g_nWidth * g_nHeight; ++n) {
                EXPECT_EQ(vecImage[i]->Data()[n], pixelOf(nFirst + int(i) - 1, n % g_nWidth, n / g_nWidth));
            }
        }
        return int(vecImage.size()) - 1;
    }
};

}  // namespace

TEST_F(TvipsFile, ASeriesRunsOverItsFiles)
{
    QString strReason;
    const QString strFile = series();
    EXPECT_EQ(read(strFile, 0, g_nAll, strReason), 5);
    EXPECT_EQ(read(strFile, 1, 2, strReason), 2);
    EXPECT_EQ(read(strFile, 4, g_nAll, strReason), 1);
    EXPECT_EQ(strReason, QString());
    EXPECT_EQ(read(strFile, 5, 1, strReason), 0);
    EXPECT_EQ(strReason, "image 6 of 5");
    EXPECT_TRUE(isContinuation(path("a_002.tvips")));
    EXPECT_FALSE(isContinuation(strFile));
    EXPECT_EQ(read(path("a_001.tvips"), 0, 1, strReason), 0);
    EXPECT_TRUE(strReason.contains("a_000.tvips")) << qPrintable(strReason);

    writeBytes(path("a_002.tvips"), seriesHeader() + image(0));  // another series
    EXPECT_FALSE(isContinuation(path("a_002.tvips")));
    EXPECT_EQ(readTvipsHeader(strFile, 0).nImages, 4);
    series();
    QFile::resize(path("a_001.tvips"), image(2).size() + 7);
    EXPECT_EQ(read(strFile, 0, 3, strReason), 3);
    EXPECT_EQ(strReason, QString());
    ImageList vecImage;
    EXPECT_TRUE(readTvipsFrames(strFile, 0, g_nAll, vecImage, strReason));
    EXPECT_EQ(vecImage.size(), 4U);
    EXPECT_EQ(strReason, "truncated: a_001.tvips ends within image 4");
    QFile::remove(path("a_001.tvips"));
    EXPECT_EQ(read(strFile, 0, g_nAll, strReason), 2);
    EXPECT_EQ(strReason, "a_001.tvips is missing");
    QFile::remove(strFile);
    EXPECT_FALSE(isContinuation(path("a_002.tvips")));
}

TEST_F(TvipsFile, HeadersTellTheMicroscope)
{
    const FrameHeader header = readTvipsHeader(series(), 3);
    EXPECT_EQ(header.size, QSize(g_nWidth, g_nHeight));
    EXPECT_EQ(header.nImages, 5);
    EXPECT_EQ(header.kilovolts.df, 200);
    EXPECT_EQ(header.tilt.df, -25.5);
    EXPECT_EQ(header.cameraLength.df, 850);
    EXPECT_EQ(header.detectorPixel.df, 31);  // 15.5 µm, binned by 2
    EXPECT_EQ(header.listDoubt.size(), 2);
    EXPECT_FALSE(readTvipsHeader(path("a_000.tvips"), 5).size.isValid());

    QByteArray bytes = seriesHeader() + image(0);
    put(bytes, 36, quint32(2));  // 1/nm in diffraction
    EXPECT_FLOAT_EQ(float(readTvipsHeader(writeBytes(path("b.tvips"), bytes), 0).pixelSize.df), 0.2F);
    put(bytes, 256 + 24, quint32(1));
    put(bytes, 256 + 40, 0.0F);  // no stage
    const FrameHeader inImageMode = readTvipsHeader(writeBytes(path("b.tvips"), bytes), 0);
    EXPECT_FALSE(inImageMode.pixelSize.isTold());
    EXPECT_FALSE(inImageMode.cameraLength.isTold());
    EXPECT_FALSE(inImageMode.tilt.isTold());
    EXPECT_TRUE(inImageMode.listDoubt.value(0).contains("image mode"));
}

TEST_F(TvipsFile, VersionOneAndBytes)
{
    QByteArray bytes = seriesHeader(1);
    put(bytes, 16, quint32(8));
    bytes += QByteArray(12, '\x11') + QByteArray("\0\1\2\3\4\5\6\7\x8\x9\xa\xb\xc\xd\xff", 15);
    ImageList vecImage;
    QString strReason;
    ASSERT_TRUE(readTvipsFrames(writeBytes(path("v_000.tvips"), bytes), 0, g_nAll, vecImage, strReason));
    ASSERT_EQ(vecImage.size(), 1U);
    EXPECT_EQ(vecImage[0]->Data()[5], 5);
    EXPECT_EQ(vecImage[0]->Data()[14], 255);
    EXPECT_FALSE(readTvipsHeader(path("v_000.tvips"), 0).tilt.isTold());
}

TEST_F(TvipsFile, WhatIsNotSoundGivesAReason)
{
    const QByteArray bytesWhole = seriesHeader() + image(0) + image(1);
    const int nImage = image(0).size();
    QString strReason;
    for (int n = 0; n < bytesWhole.size(); ++n) {
        const QString strFile = writeBytes(path("c_000.tvips"), bytesWhole.left(n));
        EXPECT_EQ(read(strFile, 0, g_nAll, strReason), qMax(n - 256, 0) / nImage) << n;
        EXPECT_EQ(strReason.isEmpty(), n == 256 + nImage) << n;
        EXPECT_EQ(readTvipsHeader(strFile, 0).size.isValid(), n >= 256 + nImage) << n;
    }
    const std::pair<int, quint32> aLie[] = {{8, 0},   {8, 0x80000000}, {8, 0x40000000}, {12, 0xffffffff},
                                            {16, 32}, {16, 0},         {48, 0},         {48, 0xffffff00}};
    for (const auto& [nOffset, nValue] : aLie) {
        QByteArray bytes = bytesWhole;
        put(bytes, nOffset, nValue);
        EXPECT_EQ(read(writeBytes(path("c_000.tvips"), bytes), 0, g_nAll, strReason), 0) << nOffset;
        EXPECT_FALSE(readTvipsHeader(path("c_000.tvips"), 0).size.isValid()) << nOffset;
    }
}

}  // namespace tessera
