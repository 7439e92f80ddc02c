#include "imagefiles/dm4file.h"

#include "imagefiles/dm3frames.h"
#include "tests/imagefiles/dm4builder.h"
#include "tests/imagefiles/testfiles.h"

#include <climits>
#include <cmath>

namespace tessera {

namespace {

class Dm4 : public FileTest {
protected:
    /// Pixels of the images of a file one after the other, empty when it cannot be read.
    std::vector<double> pixels(const QByteArray& bytes, int nFirst = 0, int nMaxImages = INT_MAX)
    {
        writeBytes(path("a.dm4"), bytes);
        ImageList vecImage;
        std::vector<double> vecPixel;
        const bool bRead = readDm4Frames(path("a.dm4"), nFirst, nMaxImages, vecImage, m_strReason);
        EXPECT_EQ(bRead, !vecImage.empty());
        for (const auto& pImage : vecImage) {
            vecPixel.insert(vecPixel.end(), pImage->Data(),
                            pImage->Data() + pImage->Width() * pImage->Height());
        }
        return vecPixel;
    }
    FrameHeader header(const QByteArray& bytes, int nImage = 0)
    {
        writeBytes(path("a.dm4"), bytes);
        return readDm4Header(path("a.dm4"), nImage);
    }
    QString m_strReason;
};

/// An image of bytes, a column each.
QByteArray byteRow(const QByteArray& bytes, quint32 nDataType = 6)
{
    return dm4::image({quint32(bytes.size()), 1}, nDataType, dm4::array(10, quint64(bytes.size()), bytes));
}

QByteArray listOf(const std::vector<QByteArray>& vecImage)
{
    return dm4::group("ImageList", vecImage);
}

/// Bytes that this process has read by system calls.
qint64 bytesReadSoFar()
{
    QFile file("/proc/self/io");
    return file.open(QIODevice::ReadOnly) ? file.readLine().mid(qstrlen("rchar: ")).trimmed().toLongLong()
                                          : 0;
}

}  // namespace

TEST_F(Dm4, ReadsEveryPixelTypeOfStacksInBothByteOrders)
{
    const struct {
        quint32 nDataType;
        quint64 nElementType;  ///< need not be that of the pixels
        quint64 nElementBytes;
        QByteArray (*pNumbers)(const std::vector<double>&, quint32);
        std::vector<double> vecEdge;
    } aCase[] = {{1, 2, 2, dm3::numbers<qint16>, {-32768, 32767, -2, 258, 5, 6}},
                 {2, 6, 4, dm3::numbers<float>, {-0.25, 1e30f, 3, 1.5, 5, 6}},
                 {6, 10, 1, dm3::numbers<quint8>, {0, 255, 128, 1, 5, 6}},
                 {7, 3, 4, dm3::numbers<qint32>, {-2147483648., 16909060, -1, 7, 5, 6}},
                 {9, 8, 1, dm3::numbers<qint8>, {-128, 127, -1, 0, 5, 6}},
                 {10, 2, 2, dm3::numbers<quint16>, {65535, 32768, 258, 0, 5, 6}},
                 {11, 3, 4, dm3::numbers<quint32>, {4294967040., 2147483648., 16909060, 0, 5, 6}},
                 {12, 12, 8, dm3::numbers<double>, {-0.5, 1e30f, 258.25, 0, 5, 6}}};
    for (const auto& row : aCase) {
        for (quint32 nOrder : {1u, 0u}) {
            SCOPED_TRACE(testing::Message() << "type " << row.nDataType << " order " << nOrder);
            const QByteArray data = row.pNumbers(row.vecEdge, nOrder);
            const QByteArray tagData = dm4::array(row.nElementType, quint64(data.size()) / row.nElementBytes,
                                                  data);
            const QByteArray bytes = dm4::file(
                {listOf({dm4::image({2, 1, 3}, row.nDataType, tagData, nOrder)})}, nOrder);
            EXPECT_EQ(pixels(bytes), row.vecEdge);
            EXPECT_EQ(m_strReason, "");
            EXPECT_EQ(pixels(bytes, 1, 1), std::vector<double>({row.vecEdge[2], row.vecEdge[3]}));
            EXPECT_TRUE(pixels(bytes, 3).empty());
            EXPECT_EQ(m_strReason, "image 4 of 3");
            EXPECT_EQ(header(bytes, 2).size, QSize(2, 1));
            EXPECT_EQ(header(bytes).nImages, 3);
            EXPECT_FALSE(header(bytes, 3).size.isValid());
        }
    }
    const QByteArray cut = dm4::file({listOf({dm4::image({1, 1, 2, 3}, 6, dm4::array(10, 4, "abcd"))})});
    EXPECT_EQ(pixels(cut), (std::vector<double>{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(m_strReason, "4 of 6 images are there");
    EXPECT_EQ(header(cut).listDoubt, QStringList("The file is truncated: it has 4 of 6 images"));
}

TEST_F(Dm4, TheImageIsTheFirstThatIsNoPreviewAndCanBeRead)
{
    const auto thumbnails = [](const std::vector<quint32>& vecIndex) {
        std::vector<QByteArray> vecGroup;
        for (quint32 nIndex : vecIndex) {
            vecGroup.push_back(dm4::group("", {dm4::integer("ImageIndex", nIndex)}));
        }
        return dm4::group("Thumbnails", vecGroup);
    };
    const QByteArray small = byteRow("S"), full = byteRow("FG"), colour = byteRow("RGBA", 23);
    const std::vector<double> vecSmall{'S'}, vecFull{'F', 'G'};
    EXPECT_EQ(pixels(dm4::file({listOf({small, full}), thumbnails({0})})), vecFull);
    EXPECT_EQ(pixels(dm4::file({thumbnails({0, 1}), listOf({colour, small, full})})), vecFull);
    EXPECT_EQ(pixels(dm4::file({listOf({colour, full})})), vecFull);
    EXPECT_EQ(pixels(dm4::file({listOf({small, full}), thumbnails({7})})), vecSmall);
    EXPECT_TRUE(pixels(dm4::file({listOf({byteRow("ab", 3), colour}), dm4::integer("x", 1)})).empty());
    EXPECT_EQ(m_strReason, "data type 3 (complex) is not read");
    const QByteArray image = dm4::group(  // a tag of the same name stands before that of the image
        "",
        {dm4::group("ImageTags", {dm4::array(10, 2, "XX")}),
         dm4::group("ImageData", {dm4::integer("DataType", 6), dm4::array(10, 2, "FG"),
                                  dm4::group("Dimensions", {dm4::integer("", 2), dm4::integer("", 1)})})});
    EXPECT_EQ(pixels(dm4::file({listOf({image})})), vecFull);
}

namespace {

/// A file of one image with tags of microscope and camera.
QByteArray taggedFile(quint32 nOrder, const QString& strIllumination, const QString& strUnit, quint32 nPlanes)
{
    const auto real = [&](const char* pLabel, double df) { return dm4::real(pLabel, df, nOrder); };
    const auto text = [&](const char* pLabel, const QString& str) { return dm4::text(pLabel, str, nOrder); };
    const auto axis = [&](double dfScale) {
        return dm4::group("", {real("Origin", 7), real("Scale", dfScale), text("Units", strUnit)});
    };
    const QByteArray microscope = dm4::group(
        "Microscope Info",
        {text("Illumination Mode", strIllumination), text("Imaging Mode", "DIFFRACTION"),
         real("Indicated Magnification", 1200), real("STEM Camera Length", 91), real("Voltage", 2e5),
         dm4::group("Stage Position", {real("Stage Alpha", -12.5)})});
    const QByteArray acquisition = dm4::group(
        "Acquisition",
        {dm4::group("Device", {dm4::group("CCD", {dm4::group("Pixel Size (um)", {real("", 14)})}),
                               text("Name", "Camera 1")}),
         dm4::group("Parameters", {dm4::group("High Level", {dm4::integer("Binning", 2, nOrder)})})});
    return dm4::file({listOf({dm4::image(
                         {1, 1, nPlanes}, 6, dm4::array(10, 2, "ab"), nOrder,
                         {acquisition, dm4::group("DataBar", {real("Exposure Time (s)", 0.25)}), microscope},
                         {dm4::group("Brightness", {real("Scale", 9)}),
                          dm4::group("Dimension", {axis(0.05), axis(0.06)})})})},
                     nOrder);
}

}  // namespace

TEST_F(Dm4, TellsWhatTheTagsTell)
{
    for (const quint32 nOrder : {1u, 0u}) {
        const FrameHeader one = header(taggedFile(nOrder, "TEM", "1/nm", 1));
        const FrameHeader stack = header(taggedFile(nOrder, "STEM", "nm", 2));
        EXPECT_EQ(one.kilovolts.df, 200);
        EXPECT_EQ(one.cameraLength.df, 1200);
        EXPECT_EQ(one.tilt.df, -12.5);
        EXPECT_EQ(one.exposure.df, 0.25);
        EXPECT_EQ(one.detectorPixel.df, 28);
        EXPECT_DOUBLE_EQ(one.pixelSize.df, 0.005);
        EXPECT_EQ(one.pixelSize.strSource, "Calibrations: Scale");
        EXPECT_EQ(one.strDetector, "Camera 1");
        EXPECT_EQ(one.listDoubt.size(), 2);  // binning, and pixels that are not square
        EXPECT_EQ(stack.cameraLength.df, 91);
        EXPECT_FALSE(stack.pixelSize.isTold());
        EXPECT_FALSE(stack.tilt.isTold());
        EXPECT_EQ(stack.listDoubt.size(), 2);  // binning, and one tilt of all planes
    }
}

namespace {

struct BrokenDm4File {
    QByteArray bytes;
    QString strReason;  ///< begins so
};

const QByteArray g_dm4Data = dm4::array(10, 4, "abcd");

/// A file whose list of images has this one tag.
QByteArray dm4With(const QByteArray& tag)
{
    return dm4::file({listOf({tag})});
}

class BrokenDm4 : public Dm4 {
protected:
    /// Expects that neither the image nor the header is read.
    void expectReasons(const std::vector<BrokenDm4File>& vecFile)
    {
        for (const BrokenDm4File& broken : vecFile) {
            EXPECT_TRUE(pixels(broken.bytes).empty());
            EXPECT_TRUE(m_strReason.startsWith(broken.strReason))
                << qPrintable(m_strReason + " for " + broken.strReason);
            EXPECT_FALSE(header(broken.bytes).size.isValid());
        }
    }
};

}  // namespace

TEST_F(BrokenDm4, HeadersFailWithAReason)
{
    const QByteArray sound = dm4With(dm4::image({2, 2}, 6, g_dm4Data));
    expectReasons(
        {{"", "truncated: 4 bytes at byte 0, 0 left"},
         {dm3::big(3) + sound.mid(4), "group of 65792 tags with "},
         {dm3::big(5) + sound.mid(4), "version 5; "},
         {dm3::file({dm3::group("ImageList", {dm3::image(2, 2, 6, dm3::array("Data", 10, 4, "abcd"))})}),
          "version 3; "}});
}

TEST_F(BrokenDm4, GroupsFailWithAReason)
{
    QByteArray nested;
    for (int i = 0; i < 100; ++i) {
        nested = dm4::group("", {nested.isEmpty() ? dm4::integer("", 1) : nested});
    }
    QByteArray many = dm4::group("", {});
    for (int i = 0; i < 1 << 20; ++i) {
        many += dm4::group("", {});
    }
    const QByteArray sound = dm4With(dm4::image({2, 2}, 6, g_dm4Data));
    expectReasons(
        {{sound.left(18) + dm4::big(quint64(1) << 62) + sound.mid(26), "group of 4611686018427387904 tags"},
         {dm4With(nested), "groups nested more than 64 deep"},
         {dm4::file({dm4::tag('\x14', "ImageList", QByteArray(2, 0) + dm4::big((1 << 20) + 1) + many)}),
          "more than 1048576 tags"}});
}

TEST_F(BrokenDm4, EntriesFailWithAReason)
{
    const quint64 nHuge = quint64(1) << 62;
    expectReasons(
        {{dm4::file({"\x16" + QByteArray(30, 0)}), "tag of the kind 22 at byte 26"},
         {dm4With(dm4::entry("t", {10}, "a").replace(4, 8, dm4::big(nHuge))), "truncated: tag of 4611686"},
         {dm4With(dm4::entry("t", {20, 7, nHuge}, "")), "truncated: 4611686018427387904 elements of 8 bytes"},
         {dm4With(dm4::entry("t", {20, 15, 0, 1, 0, 7, nHuge}, "")),
          "truncated: 4611686018427387904 elements"},
         {dm4With(dm4::entry("t", {}, "")), "info array of 0 words"}});
}

TEST_F(BrokenDm4, ImagesFailWithAReason)
{
    expectReasons(
        {{dm4::file({}), "no image"},
         {dm4With(dm4::integer("", 1)), "no image"},
         {dm4With(dm4::image({2}, 6, g_dm4Data)), "image of 2 x 0 pixels"},
         {dm4With(dm4::image({65536, 32768}, 6, g_dm4Data)), "image of 65536 x 32768 pixels"},
         {dm4With(dm4::image({UINT_MAX, 1}, 6, g_dm4Data)), "image of 0 x 1 pixels"},
         {dm4With(dm4::image({2, 2}, 6, dm4::group("Data", {}))), "no pixels"},
         {dm4With(dm4::image({2, 2}, 6, dm4::entry("Data", {20, 20, 1, 1}, "abcd"))),
          "2 x 2 pixels of 1 bytes, but 0"},
         {dm4With(dm4::image({1, 1}, 23, g_dm4Data)), "data type 23 (colour) is not read"},
         {dm4With(dm4::image({1, 1, 1 << 17}, 6, dm4::array(10, 1 << 17, QByteArray(1 << 17, 'a')))),
          "131072 images of 1 bytes"},
         {dm4With(dm4::image({2, 2}, 10, g_dm4Data)), "2 x 2 pixels of 2 bytes, but 4 bytes of data"}});
}

TEST_F(Dm4, FilesThatAreCutFailWithAReason)
{
    const QByteArray sound = dm4::file({listOf({dm4::image({2, 2}, 6, dm4::array(10, 4, "abcd"))})});
    ASSERT_EQ(pixels(sound), (std::vector<double>{'a', 'b', 'c', 'd'}));  // what the cases break
    ImageList vecImage;
    for (int nSize = sound.size() - 9; nSize >= 0; --nSize) {  // the last 8 bytes belong to no tag
        ASSERT_TRUE(QFile::resize(path("a.dm4"), nSize));
        EXPECT_FALSE(readDm4Frames(path("a.dm4"), 0, 1, vecImage, m_strReason)) << nSize;
        EXPECT_TRUE(vecImage.empty()) << nSize;
        EXPECT_NE(m_strReason, "") << nSize;
    }
}

TEST_F(Dm4, WhatIsNotAskedForIsNotRead)
{
    // Pixels of 2 GiB that are a hole in the file; "Thumbnails" lies behind them.
    const quint64 nSide = 1 << 15;
    const QByteArray bytes = dm4::file(
        {listOf({dm4::image({nSide, 1, nSide}, 10, dm4::array(4, 0, ""))}), dm4::integer("x", 1)});
    const int nHole = bytes.indexOf("\x15" + dm3::label("DataType"));
    const quint64 nHoleBytes = 2 * nSide * nSide;
    QByteArray head = bytes.left(nHole), tail = bytes.mid(nHole);
    head.replace(head.size() - 8, 8, dm4::big(nSide * nSide));
    // the lengths of the tags around: list, image, image data, data
    for (const char* pLabel : {"ImageList", "ImageData", "Data"}) {
        const int nLength = head.indexOf(dm3::label(pLabel)) + 2 + int(qstrlen(pLabel));
        head.replace(nLength, 8, dm4::big(qFromBigEndian<quint64>(head.constData() + nLength) + nHoleBytes));
    }
    const int nUnnamed = head.indexOf(dm3::label("ImageList")) + 2 + 9 + 8 + 10 + 3;
    head.replace(nUnnamed, 8, dm4::big(qFromBigEndian<quint64>(head.constData() + nUnnamed) + nHoleBytes));
    QFile file(path("large.dm4"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(head), head.size());
    ASSERT_TRUE(file.seek(qint64(head.size() + nHoleBytes)));
    ASSERT_EQ(file.write(tail), tail.size());
    file.close();
    const qint64 nBefore = bytesReadSoFar();
    EXPECT_EQ(readDm4Header(path("large.dm4"), 0).nImages, int(nSide));
    ImageList vecImage;
    ASSERT_TRUE(readDm4Frames(path("large.dm4"), nSide - 1, 1, vecImage, m_strReason))
        << qPrintable(m_strReason);
    EXPECT_EQ(vecImage[0]->Width(), int(nSide));
    const qint64 nRead = bytesReadSoFar() - nBefore;
    EXPECT_GT(nRead, 2 * qint64(nSide));  // the one row
    EXPECT_LT(nRead, 1000000);
}

namespace {

/// The tag values of a file of version 3 and their expected interpretation; NaN if there is none.
struct TaggedDm3 {
    QString strUnit;
    float fScale;
    double dfVolts, dfPixelSize, dfKilovolts;

    /// Three planes of 2 × 1 pixels, a to f.
    QByteArray bytes(quint32 nOrder) const
    {
        const auto real = [&](const char* pLabel, float f) {
            return dm3::entry(pLabel, {6}, dm3::number(f, nOrder));
        };
        QByteArray bytesUnit;
        for (const QChar c : strUnit) {
            bytesUnit += dm3::number(c.unicode(), nOrder);
        }
        const QByteArray axis = dm3::group(
            "", {real("Scale", fScale), dm3::array("Units", 4, quint32(strUnit.size()), bytesUnit)});
        const QByteArray image = dm3::group(
            "",
            {dm3::group("ImageData",
                        {dm3::group("Calibrations", {dm3::group("Brightness", {real("Scale", 9)}),
                                                     dm3::group("Dimension", {axis, axis})}),
                         dm3::array("Data", 10, 6, "abcdef"), dm3::integer("DataType", 6, nOrder),
                         dm3::group("Dimensions", {dm3::integer("", 2, nOrder), dm3::integer("", 1, nOrder),
                                                   dm3::integer("", 3, nOrder)})}),
             dm3::group("ImageTags",
                        {real("Voltage", 1),
                         dm3::group("Microscope Info",
                                    {dm3::entry("Voltage", {7}, dm3::number(dfVolts, nOrder))})})});
        return dm3::file({dm3::group("ImageList", {image})}, nOrder);
    }
};

/// Expects the number, or none for NaN.
void expectTold(const ToldNumber& told, double df)
{
    EXPECT_EQ(told.isTold(), std::isfinite(df));
    if (told.isTold()) {
        EXPECT_NEAR(told.df, df, 1e-9);
    }
}

}  // namespace

TEST_F(Dm4, Dm3FilesTellTheSame)
{
    const TaggedDm3 aRow[] = {
        {"1/nm", 0.05f, 200000, 0.005, 200}, {QStringLiteral("1/Å"), 0.004f, 300000, 0.004, 300},
        {"nm", 0.05f, 0, NAN, NAN},          {"1/nm", -1, -5, NAN, NAN},
        {"1/nm", NAN, INFINITY, NAN, NAN},   {"", 1, 80000, NAN, 80}};
    for (const quint32 nOrder : {1u, 2u}) {
        for (const auto& row : aRow) {
            SCOPED_TRACE(&row - aRow);
            writeBytes(path("a.dm3"), row.bytes(nOrder));
            const FrameHeader header = readDm3Header(path("a.dm3"), 0);
            expectTold(header.pixelSize, row.dfPixelSize);
            expectTold(header.kilovolts, row.dfKilovolts);
            EXPECT_EQ(header.size, QSize(2, 1));
            EXPECT_EQ(header.nImages, 3);
        }
    }
}

TEST_F(Dm4, OnePlaneOfADm3FileIsReadHoweverManyAreAskedFor)
{
    for (const quint32 nOrder : {1u, 2u}) {
        writeBytes(path("a.dm3"), TaggedDm3{"1/nm", 1, 0, 0, 0}.bytes(nOrder));
        for (int i = 0; i < 3; ++i) {
            ImageList vecImage;
            ASSERT_TRUE(readDm3Frames(path("a.dm3"), i, 3, vecImage, m_strReason)) << i;
            EXPECT_EQ(vecImage[0]->Data()[1], float('b' + 2 * i)) << i;
        }
        ImageList vecImage;
        EXPECT_FALSE(readDm3Frames(path("a.dm3"), 3, 3, vecImage, m_strReason));
        EXPECT_EQ(m_strReason, "image 4 of 3");
    }
}

}  // namespace tessera
