#include "imagefiles/dm3file.h"

#include "tests/imagefiles/dm3builder.h"
#include "tests/imagefiles/testfiles.h"

#include <sys/resource.h>

#include <climits>

namespace tessera {

namespace {

class Dm3 : public FileTest {};

int read(const QByteArray& bytes, CImgObj<float>& image, QString* pReason = nullptr)
{
    return readDm3Bytes(reinterpret_cast<const uint8_t*>(bytes.constData()),
                        static_cast<size_t>(bytes.size()), image, pReason);
}

/// Pixels of the image of a file, empty when it cannot be read.
std::vector<float> pixels(const QByteArray& bytes)
{
    CImgObj<float> image;
    if (read(bytes, image) != 1) {
        return {};
    }
    return {image.Data(), image.Data() + image.Width() * image.Height()};
}

/// An image of one row, a byte per pixel.
QByteArray byteRow(const QByteArray& bytes, quint32 nOrder = 1, qint32 nDataType = 6)
{
    return dm3::image(bytes.size(), 1, nDataType, dm3::array("Data", 10, quint32(bytes.size()), bytes),
                      nOrder);
}

}  // namespace

TEST_F(Dm3, ReadsEveryPixelTypeInBothByteOrders)
{
    const struct {
        int nDataType;
        quint32 nElementType;
        QByteArray (*pNumbers)(const std::vector<double>&, quint32);
        std::vector<double> vecEdge;
    } aCase[] = {{1, 2, dm3::numbers<qint16>, {-32768, 32767, -2, 258}},
                 {2, 6, dm3::numbers<float>, {-0.25, 1e30f, 3, 1.5}},
                 {6, 10, dm3::numbers<quint8>, {0, 255, 128, 1}},
                 {7, 3, dm3::numbers<qint32>, {-2147483648., 16909060, -1, 7}},
                 {9, 9, dm3::numbers<qint8>, {-128, 127, -1, 0}},
                 {10, 4, dm3::numbers<quint16>, {65535, 32768, 258, 0}},
                 {11, 5, dm3::numbers<quint32>, {4294967040., 2147483648., 16909060, 0}},
                 {12, 7, dm3::numbers<double>, {-0.5, 1e30f, 258.25, 0}}};
    CImgObj<float> image;  // one for files of two sizes
    for (const auto& row : aCase) {
        for (quint32 nOrder : {1u, 0u, 2u}) {
            SCOPED_TRACE(testing::Message() << "type " << row.nDataType << " order " << nOrder);
            std::vector<double> vecValue = row.vecEdge;
            vecValue.resize(nOrder == 1 ? 154 : 102, 77);  // long enough for blocks and a rest
            const auto nCount = static_cast<quint32>(vecValue.size());
            const QByteArray tagData = dm3::array("Data", row.nElementType, nCount,
                                                  row.pNumbers(vecValue, nOrder));
            ASSERT_EQ(read(dm3::file({dm3::group("ImageList", {dm3::image(int(nCount / 2), 2, row.nDataType,
                                                                          tagData, nOrder)})},
                                     nOrder),
                           image),
                      1);
            ASSERT_EQ(image.Width(), int(nCount / 2));
            ASSERT_EQ(image.Height(), 2);
            EXPECT_EQ(std::vector<double>(image.Data(), image.Data() + nCount), vecValue);
        }
    }
}

TEST_F(Dm3, TheImageIsTheFirstThatIsNoThumbnail)
{
    for (quint32 nOrder : {1u, 0u, 2u}) {
        const auto pixelsOf = [&](const std::vector<QByteArray>& vecImage, qint32 nIndex,
                                  const char* pThumbnails = "Thumbnails") {
            const QByteArray index = dm3::group("", {dm3::integer("ImageIndex", nIndex, nOrder)});
            return pixels(
                dm3::file({dm3::group("ImageList", vecImage), dm3::group(pThumbnails, {index})}, nOrder));
        };
        const QByteArray small = byteRow("S", nOrder), full = byteRow("FG", nOrder);
        const std::vector<float> vecSmall{'S'}, vecFull{'F', 'G'};
        EXPECT_EQ(pixelsOf({small, full}, 0), vecFull);
        EXPECT_EQ(pixelsOf({byteRow("RGBA", nOrder, 23), full}, 0), vecFull);  // packed colours come first
        EXPECT_EQ(pixelsOf({full, small}, 1), vecFull);
        EXPECT_EQ(pixelsOf({small, full}, 2), vecSmall);  // no valid index
        EXPECT_EQ(pixelsOf({small, full}, 0, "Other"), vecSmall);
        EXPECT_TRUE(pixelsOf({small}, 0).empty());
    }
}

TEST_F(Dm3, WalksOverEveryFormOfEntry)
{
    // With a wrong size for any of these, the walk would miss the image behind it.
    const std::vector<QByteArray> vecTag = {
        dm3::entry("text", {18}, ""),
        dm3::array("texts", 18, 1000, ""),
        dm3::entry("structure", {15, 0, 3, 0, 7, 0, 2, 0, 8}, QByteArray(11, 'x')),
        dm3::entry("structures", {20, 15, 0, 2, 0, 4, 0, 6, 5}, QByteArray(30, 'x')),
        dm3::array("empty", 6, 0, ""),
        dm3::entry("double", {7}, QByteArray(8, 'x')),
        dm3::group("group", {dm3::group("", {}), dm3::group("deeper", {dm3::integer("twice", 1)})}),
        dm3::integer("twice", 2),
        dm3::group("ImageList", {byteRow("abc")})};
    const QByteArray sound = dm3::file(vecTag);
    EXPECT_EQ(pixels(sound.chopped(8)), (std::vector<float>{'a', 'b', 'c'}));
    for (int nSize = 0; nSize < sound.size() - 8; ++nSize) {  // the last 8 bytes belong to no tag
        EXPECT_TRUE(pixels(sound.left(nSize)).empty()) << nSize;
    }

    writeBytes(path("a.dm3"), sound);
    DM3File file;
    ASSERT_EQ(file.Read(path("a.dm3")), 1);
    const auto* pTwice = dynamic_cast<const TagEntry*>(DM3File::FindTag(file.root(), "twice"));
    ASSERT_NE(pTwice, nullptr);
    EXPECT_EQ(pTwice->pData.get()[0], 1);  // depth first: the nested one comes first
    EXPECT_EQ(DM3File::FindTag(file.root(), "deep"), nullptr);
    EXPECT_EQ(file.Read(m_dir.path()), 0);
    EXPECT_EQ(file.GetImageTag(), nullptr) << "the former tree is gone";
}

namespace {

QByteArray dm3With(const QByteArray& image)
{
    return dm3::file({dm3::group("ImageList", {image})});
}

/// A file of one tag and nothing behind it.
QByteArray dm3OfTag(const QByteArray& tag)
{
    return dm3::file({tag}).chopped(8);
}

struct BrokenDm3File {
    QByteArray bytes;
    QString strReason;  ///< begins so
};

const QByteArray g_dm3Data = dm3::array("Data", 10, 4, "abcd");

class BrokenDm3 : public Dm3 {
protected:
    /// Expects that none is read, neither from memory nor from a file, and that the image stays as it was.
    void expectReasons(const std::vector<BrokenDm3File>& vecFile)
    {
        CImgObj<float> image;
        const float fOld = 7.f;
        image.Set(&fOld, 1, 1);
        for (const BrokenDm3File& broken : vecFile) {
            QString strBytes, strFile;
            EXPECT_EQ(read(broken.bytes, image, &strBytes), -1);
            writeBytes(path("broken.dm3"), broken.bytes);
            EXPECT_EQ(ReadDM3(image, path("broken.dm3"), &strFile), -1);
            EXPECT_TRUE(strBytes.startsWith(broken.strReason))
                << qPrintable(strBytes + " for " + broken.strReason);
            EXPECT_EQ(strFile, strBytes);
            ASSERT_EQ(image.Width(), 1);
            EXPECT_EQ(image.Data()[0], fOld);
        }
    }
};

}  // namespace

TEST_F(BrokenDm3, HeadersFailWithAReason)
{
    const QByteArray sound = dm3With(dm3::image(2, 2, 6, g_dm3Data));
    EXPECT_EQ(pixels(sound), (std::vector<float>{'a', 'b', 'c', 'd'}));  // what the files break
    expectReasons(
        {{"", "truncated: 0 of 18 header bytes"},
         {sound.left(sound.size() / 2), "truncated: "},
         {dm3::big(4) + sound.mid(4, 32),
          "group \"ImageList\" of 1 tags with 0 bytes left (version 4; this is a reader of version 3)"}});
}

TEST_F(BrokenDm3, GroupsFailWithAReason)
{
    QByteArray nested;
    for (int i = 0; i < 100000; ++i) {
        nested += dm3::group("", {}).chopped(1) + '\1';  // each says that it has one child
    }
    const QByteArray groups = dm3::group("", std::vector<QByteArray>(600000, dm3::group("", {})));
    expectReasons(
        {{dm3::big(3) + QByteArray(10, 0) + dm3::big(UINT_MAX) +
              dm3With(dm3::image(2, 2, 6, g_dm3Data)).mid(18),
          "group \"RootDirectory\" of 4294967295 tags"},
         {dm3::file({groups, groups}), "more than 1048576 tags"},
         {dm3::file({}).replace(14, 4, dm3::big(1)).chopped(8) + nested, "groups nested more than 64 deep"}});
}

TEST_F(BrokenDm3, EntriesFailWithAReason)
{
    expectReasons(
        {{dm3OfTag("\x16" + QByteArray(20, 0)), "Error: tagtype = 22 at byte 18"},
         {dm3OfTag("\x15\xff\xff" + QByteArray(20, 0)), "truncated: head of a tag of 65546 bytes"},
         {dm3OfTag(dm3::entry("", {0}, "").replace(7, 4, dm3::big(UINT_MAX))),
          "Error: size of infoarry  <= 0"},
         {dm3OfTag(dm3::entry("", {0}, "").replace(7, 4, dm3::big(INT_MAX))),
          "truncated: info array of 8589934588 bytes"},
         {dm3OfTag(dm3::entry("t", {15, 0, 0x80000001, 0, 2}, "abcd")), "Unknown tag \"t\" with"},
         {dm3OfTag(dm3::entry("a\n\xe4" + QByteArray(38, 'b'), {18, 5}, "")),
          "Unknown tag \"a??" + QString(37, 'b') + "...\" with"},
         {dm3OfTag(dm3::array("t", 7, UINT_MAX, "")), "truncated: entry \"t\" of 4294967295 elements"},
         {dm3OfTag(dm3::entry("t", {20, 15, 0, 1, 0, 7, UINT_MAX}, "")), "truncated: entry \"t\""}});
}

TEST_F(BrokenDm3, ImagesFailWithAReason)
{
    expectReasons(
        {{dm3::file({}), "no image"},
         {dm3With(dm3::group("", {dm3::group("Dimensions", {dm3::integer("", 2)})})),
          "image of 2 x 0 pixels"},
         {dm3With(dm3::image(2, 2, 6, dm3::group("Data", {}))), "no pixels"},
         {dm3With(dm3::image(1, 1, 3, g_dm3Data)), "data type 3 (complex) is not read"},
         {dm3With(dm3::image(-2, -2, 6, g_dm3Data)), "image of -2 x -2 pixels"},
         {dm3With(dm3::image(65536, 32768, 6, g_dm3Data)), "image of 65536 x 32768 pixels"},
         {dm3With(dm3::image(INT_MAX, INT_MAX, 12, g_dm3Data)), "image of 2147483647 x 2147483647 pixels"},
         {dm3With(dm3::image(2, 2, 10, g_dm3Data)), "2 x 2 pixels of 2 bytes, but 4 bytes of data"}});
}

TEST_F(Dm3, ALargeFileOfAnotherKindIsNotReadWhole)
{
    for (const QByteArray& head : {dm3::file({"\x16"}), dm3::file({})}) {
        writeBytes(path("large.dm3"), head);
        ASSERT_TRUE(QFile::resize(path("large.dm3"), qint64(1) << 30));
        rusage before = {}, after = {};
        getrusage(RUSAGE_SELF, &before);
        CImgObj<float> image;
        EXPECT_EQ(ReadDM3(image, path("large.dm3")), -1);
        getrusage(RUSAGE_SELF, &after);
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100000) << "KiB";
    }
}

}  // namespace tessera
