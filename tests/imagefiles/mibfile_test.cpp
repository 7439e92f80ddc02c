#include "imagefiles/mibfile.h"

#include "tests/imagefiles/testfiles.h"

#include <QtEndian>

#include <cmath>
#include <functional>
#include <limits>

namespace tessera {

namespace {

constexpr int g_nAll = std::numeric_limits<int>::max(), g_nChip = 256;

/// Counts that fit the depth, and are another picture when mirrored or turned.
quint32 countOf(int x, int y, int nDepth)
{
    const quint32 n = (quint32(x) * 2654435761U) ^ (quint32(y) * 40503U + 977U);
    return (n ^ (n >> 15)) & ((1U << nDepth) - 1);
}

/// The text before a frame as the camera writes it; of the settings of the chips one.
QByteArray header(int nColumns, int nRows, const char* pKind, const char* pLayout, int nDepth,
                  int nBytes = 384)
{
    const int nChips = QByteArray(pLayout).contains("2x2") ? 4 : 1;
    const QString str =
        QString(
            "MQ1,000001,%1,%2,%3,%4,%5,%6,0F,2021-04-15 14:43:47.008505,0.025000,0,0,0,2.0E+0,5.1E+2,0.0E+0,"
            "0.0E+0,0.0E+0,0.0E+0,0.0E+0,0.0E+0,3RX,011,MQ1A,2021-04-15T13:43:47.008505401Z,25000000ns,%7,")
            .arg(nBytes, 5, 10, QChar('0'))
            .arg(nChips, 2, 10, QChar('0'))
            .arg(nColumns, 4, 10, QChar('0'))
            .arg(nRows, 4, 10, QChar('0'))
            .arg(pKind)
            .arg(pLayout, 6)
            .arg(nDepth);
    return str.toLatin1().leftJustified(nBytes, '\0', true);
}

/// The bytes of a number, the largest first.
QByteArray bigEndian(quint32 n, int nBytes)
{
    QByteArray bytes(4, 0);
    qToBigEndian(n, bytes.data());
    return bytes.right(nBytes);
}

/// Pixels in the order of the chips: groups of 64 bits, whose bytes are stored in reverse.
QByteArray rawBytes(const std::vector<quint32>& vecCount, int nDepth)
{
    const int nBits = nDepth == 1 ? 1 : nDepth == 6 ? 8 : 16;
    QByteArray bytes;
    for (size_t n = 0; n < vecCount.size(); n += size_t(64 / nBits)) {
        QByteArray group(8, 0);
        for (int nBit = 0; nBit < 64; ++nBit) {
            const bool bSet = (vecCount[n + size_t(nBit / nBits)] >> (nBit % nBits)) & 1;
            group[7 - nBit / 8] = char(group[7 - nBit / 8] | (bSet ? 1 << (nBit % 8) : 0));
        }
        bytes += group;
    }
    return bytes;
}

class MibFile : public FileTest {
protected:
    /// Reads one image and compares it with countOf(), whose row 0 the camera has at the bottom.
    void expectCounts(const QByteArray& bytes, const QSize& size, int nDepth, int nImage = 0)
    {
        const QString strFile = writeBytes(path("f.mib"), bytes);
        ImageList vecImage;
        QString strReason;
        ASSERT_TRUE(readMibFrames(strFile, nImage, 1, vecImage, strReason)) << qPrintable(strReason);
        ASSERT_EQ(vecImage.size(), 1U);
        ASSERT_EQ(QSize(vecImage[0]->Width(), vecImage[0]->Height()), size);
        EXPECT_EQ(readMibHeader(strFile, nImage).size, size);
        const float* pf = vecImage[0]->Data();
        for (int y = size.height() - 1; y >= 0; --y) {
            for (int x = 0; x < size.width(); ++x) {
                ASSERT_EQ(*pf++, float(countOf(x, y, nDepth))) << x << ' ' << y;
            }
        }
    }
};

}  // namespace

TEST_F(MibFile, ProcessedFrames)
{
    const std::tuple<const char*, int, int> aKind[] = {
        {"U08", 1, 1}, {"U08", 1, 6}, {"U16", 2, 12}, {"U32", 4, 24}};
    for (const auto& [pKind, nBytes, nDepth] : aKind) {
        QByteArray bytes;
        for (int i = 0; i < 7 * 3; ++i) {
            bytes += bigEndian(countOf(i % 7, i / 7, nDepth), nBytes);
        }
        const QByteArray bytesFrame = header(7, 3, pKind, "1x1", nDepth) + bytes;
        expectCounts(bytesFrame, {7, 3}, nDepth);
        expectCounts(header(7, 3, pKind, "1x1", nDepth) + QByteArray(bytes.size(), '\1') + bytesFrame, {7, 3},
                     nDepth, 1);
    }
    const FrameHeader told = readMibHeader(path("f.mib"), 1);
    EXPECT_EQ(told.nImages, 2);
    EXPECT_EQ(told.saturation.df, 16777215);
    EXPECT_EQ(told.exposure.df, 0.025);
    EXPECT_EQ(told.detectorPixel.df, 55);
    EXPECT_EQ(told.strDetector, "Medipix 3RX");
    EXPECT_TRUE(told.listDoubt.isEmpty());
}

TEST_F(MibFile, RawFrames)
{
    for (const int nDepth : {1, 6, 12, 24}) {
        for (const int nChips : {1, 4}) {
            const int nRows = 5, nAcross = nChips == 4 ? 2 : 1;
            std::vector<quint32> vecCount, vecUpper;
            for (int y = 0; y < nRows; ++y) {
                for (int n = nChips; n > 0; --n) {  // the last chip first; the third and fourth turned
                    for (int x = 0; x < g_nChip; ++x) {
                        const bool bTurned = n > 2;
                        const int nX = (n % 2 == 0 ? g_nChip : 0) + (bTurned ? g_nChip - 1 - x : x);
                        vecCount.push_back(countOf(nX, bTurned ? 2 * nRows - 1 - y : y, nDepth));
                        vecUpper.push_back(vecCount.back() >> 12);
                        vecCount.back() &= 4095;
                    }
                }
            }
            const int nColumns = nChips * g_nChip * (nDepth == 24 ? 2 : 1);
            const QByteArray upper = nDepth == 24 ? rawBytes(vecUpper, nDepth) : QByteArray();
            expectCounts(header(nColumns, nRows, "R64", nChips == 4 ? "2x2" : "1x1", nDepth) + upper +
                             rawBytes(vecCount, nDepth),
                         {nAcross * g_nChip, nAcross * nRows}, nDepth);
        }
    }
    ImageList vecImage;
    QString strReason;
    for (const QByteArray& head : {header(512, 1, "R64", "2x1", 12), header(256, 1, "R64", "1x1", 7),
                                   header(255, 1, "R64", "1x1", 1), header(1024, 257, "R64", "2x2", 1)}) {
        writeBytes(path("f.mib"), head + QByteArray(50000, 0));
        EXPECT_FALSE(readMibFrames(path("f.mib"), 0, 1, vecImage, strReason));
        EXPECT_TRUE(strReason.startsWith("raw frame")) << qPrintable(strReason);
    }
}

TEST_F(MibFile, SeamsBetweenChips)
{
    const int nSide = 2 * g_nChip + 2;
    const QString strFile = writeBytes(
        path("g.mib"), header(nSide, nSide, "U08", "2x2G", 6, 768) + QByteArray(nSide * nSide, '\1'));
    const auto countMasked = [&] {
        ImageList vecImage;
        QString strReason;
        EXPECT_TRUE(readMibFrames(strFile, 0, g_nAll, vecImage, strReason));
        int nMasked = 0;
        for (int i = 0; i < nSide * nSide; ++i) {
            const int nX = i % nSide, nY = i / nSide;
            const bool bSeam = nX == 256 || nX == 257 || nY == 256 || nY == 257;
            nMasked += std::isnan(vecImage.at(0)->Data()[i]);
            EXPECT_TRUE(bSeam || !std::isnan(vecImage.at(0)->Data()[i]));
        }
        return nMasked;
    };
    EXPECT_EQ(countMasked(), 0);
    writeBytes(path("g.hdr"),
               "HDR,\t\r\nGap Fill Mode:\tInterpolate\r\nFrames in Acquisition (Number):\t3\r\nEnd\t");
    EXPECT_EQ(countMasked(), 0);
    const QStringList listDoubt = readMibHeader(strFile, 0).listDoubt;
    ASSERT_EQ(listDoubt.size(), 2);
    EXPECT_TRUE(listDoubt[0].contains("Interpolate"));
    EXPECT_TRUE(listDoubt[1].contains("3 images"));
    writeBytes(path("g.hdr"), "HDR,\t\r\nGap Fill Mode:\tZero Fill\r\nEnd\t");
    EXPECT_EQ(countMasked(), 4 * nSide - 4);
}

TEST_F(MibFile, WhatIsNotSoundGivesAReason)
{
    const QByteArray frame = header(7, 3, "U08", "1x1", 6) + QByteArray(21, '\5');
    const auto read = [&](const QByteArray& bytes, QString& strReason) {
        ImageList vecImage;
        const bool bRead = readMibFrames(writeBytes(path("f.mib"), bytes), 0, g_nAll, vecImage, strReason);
        EXPECT_EQ(bRead, !vecImage.empty());
        readMibHeader(path("f.mib"), 1);
        return int(vecImage.size());
    };
    QString strReason;
    for (int n = 0; n < 2 * frame.size(); ++n) {
        EXPECT_EQ(read((frame + frame).left(n), strReason), n / frame.size()) << n;
        EXPECT_EQ(strReason.isEmpty(), n == frame.size()) << n;
    }
    EXPECT_EQ(read(frame + header(3, 7, "U08", "1x1", 6) + QByteArray(21, 0), strReason), 1);
    EXPECT_EQ(strReason, "image 2 is of another kind than the first");
    const std::pair<const char*, const char*> aLie[] = {
        {",00384,", ",00000,"}, {",00384,", ",99999,"},
        {",0007,", ",0000,"},   {",0007,", ",99999999,"},
        {",0003,", ",-003,"},   {",0003,", ",    ,"},
        {",U08,", ",U64,"},     {",0007,0003,", ",65536,65536,"},
        {"MQ1,", "MQ2,"},       {",U08,", "\0"}};
    for (const auto& [pOld, pNew] : aLie) {
        QByteArray bytes = frame;
        EXPECT_EQ(read(bytes.replace(pOld, QByteArray(pNew)), strReason), 0) << pNew;
        EXPECT_FALSE(strReason.isEmpty()) << pNew;
    }
}

}  // namespace tessera
