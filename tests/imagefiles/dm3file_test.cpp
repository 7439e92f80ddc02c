#include "imagefiles/dm3file.h"

#include "imagefiles/dm3builder.h"
#include "imagefiles/testfiles.h"

#include <climits>
#include <functional>

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
    if (read(bytes, image) != 1)
        return {};
    return {image.Data(), image.Data() + image.Width() * image.Height()};
}

QByteArray bytePixels(qint32 nWidth, qint32 nHeight, char cFirst)
{
    QByteArray bytes;
    for (int i = 0; i < nWidth * nHeight; ++i)
        bytes += static_cast<char>(cFirst + i);
    return dm3::image(nWidth, nHeight, 6, dm3::array("Data", 10, static_cast<quint32>(bytes.size()), bytes));
}

template <class T>
QByteArray imageOf(const std::vector<double>& vecValue, int nDataType, quint32 nElementType, bool bLittle)
{
    QByteArray data;
    for (double dfValue : vecValue)
        data += dm3::number(static_cast<T>(dfValue), bLittle);
    const auto nCount = static_cast<quint32>(vecValue.size());
    return dm3::file(
        {dm3::integer("InImageMode", 1, bLittle),
         dm3::group("ImageList", {dm3::image(static_cast<qint32>(nCount / 2), 2, nDataType,
                                             dm3::array("Data", nElementType, nCount, data), bLittle)})},
        bLittle);
}

using MakeFile = std::function<QByteArray(const std::vector<double>&, int, quint32, bool)>;

}  // namespace

TEST_F(Dm3, ReadsEveryPixelTypeInBothByteOrders)
{
    const struct {
        int nDataType;
        quint32 nElementType;
        MakeFile make;
        std::vector<double> vecEdge;
    } aCase[] = {{1, 2, imageOf<qint16>, {-32768, 32767, -2, 258}},
                 {2, 6, imageOf<float>, {-0.25, 1e30f, 3, 1.5}},
                 {6, 10, imageOf<quint8>, {0, 255, 128, 1}},
                 {7, 3, imageOf<qint32>, {-2147483648., 16909060, -1, 7}},
                 {9, 9, imageOf<qint8>, {-128, 127, -1, 0}},
                 {10, 4, imageOf<quint16>, {65535, 32768, 258, 0}},
                 {11, 5, imageOf<quint32>, {4294967040., 2147483648., 16909060, 0}},
                 {12, 7, imageOf<double>, {-0.5, 1e30f, 258.25, 0}}};
    for (const auto& row : aCase)
        for (bool bLittle : {true, false}) {
            SCOPED_TRACE(testing::Message() << "type " << row.nDataType << " little " << bLittle);
            std::vector<double> vecValue = row.vecEdge;
            for (int i = 0; i < 150; ++i)  // long enough for blocks and a rest
                vecValue.push_back(i % 100);
            const std::vector<float> vecPixel =
                pixels(row.make(vecValue, row.nDataType, row.nElementType, bLittle));
            EXPECT_EQ(vecPixel, std::vector<float>(vecValue.begin(), vecValue.end()));
        }
}

TEST_F(Dm3, TheImageIsTheFirstThatIsNoThumbnail)
{
    const auto fileOf = [](const std::vector<QByteArray>& vecImage, qint32 nIndex,
                           const char* pThumbnails = "Thumbnails") {
        return dm3::file({dm3::group("ImageList", vecImage),
                          dm3::group(pThumbnails, {dm3::group("", {dm3::integer("ImageIndex", nIndex)})})});
    };
    const QByteArray small = bytePixels(1, 1, 'S'), full = bytePixels(2, 1, 'F');
    const std::vector<float> vecSmall{'S'}, vecFull{'F', 'G'};
    EXPECT_EQ(pixels(fileOf({small, full}, 0)), vecFull);
    EXPECT_EQ(pixels(fileOf({full, small}, 1)), vecFull);
    EXPECT_EQ(pixels(fileOf({small, full}, 2)), vecSmall);  // no valid index
    EXPECT_EQ(pixels(fileOf({small, full}, -1)), vecSmall);
    EXPECT_EQ(pixels(fileOf({small, full}, 0, "Other")), vecSmall);
    EXPECT_EQ(pixels(fileOf({small}, 0)), std::vector<float>());
    EXPECT_EQ(pixels(fileOf({}, 0)), std::vector<float>());
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
        dm3::group("ImageList", {bytePixels(3, 1, 'a')})};
    EXPECT_EQ(pixels(dm3::file(vecTag)), (std::vector<float>{'a', 'b', 'c'}));

    const QByteArray bytes = dm3::file(vecTag);
    DM3File file;
    ASSERT_EQ(file.readBytes(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size())), 1);
    EXPECT_EQ(file.root().vecChild.size(), vecTag.size());
    for (size_t i = 0; i < vecTag.size(); ++i)
        EXPECT_EQ(file.root().vecChild[i]->nTotalSize, static_cast<uint32_t>(vecTag[i].size())) << i;
    const auto* pTwice = dynamic_cast<const TagEntry*>(DM3File::FindTag(file.root(), "twice"));
    ASSERT_NE(pTwice, nullptr);
    EXPECT_EQ(pTwice->pData.get()[0], 1);  // depth first: the nested one comes first
    EXPECT_EQ(DM3File::FindTag(file.root(), "deeper")->nKind, 0);
    EXPECT_EQ(DM3File::FindTag(file.root(), "deep"), nullptr);
    EXPECT_EQ(file.GetDimension(0), 3);
    EXPECT_EQ(file.GetDimension(1), 1);
    EXPECT_EQ(file.GetDimension(2), 0);
}

TEST_F(Dm3, BrokenFilesFailWithAReasonAndLeaveTheImage)
{
    const QByteArray data4 = dm3::array("Data", 10, 4, "abcd");
    const auto list = [](const QByteArray& image) { return dm3::file({dm3::group("ImageList", {image})}); };
    const auto lone = [](const QByteArray& tag) { return dm3::file({tag}).chopped(8); };
    QByteArray nested = "";
    for (int i = 0; i < 100000; ++i)
        nested += dm3::group("", {}).chopped(1) + '\1';  // each says that it has one child
    const QByteArray sound = list(dm3::image(2, 2, 6, data4));
    QByteArray manyTags = sound, version4 = sound.left(36);
    manyTags.replace(14, 4, "\xff\xff\xff\xff");
    version4[3] = 4;
    const struct {
        const char* pWhat;
        QByteArray bytes;
        const char* pReason;  ///< begins so
    } aCase[] = {
        {"nothing", "", "truncated: 0 of 18 header bytes"},
        {"half a header", sound.left(17), "truncated: 17 of 18 header bytes"},
        {"half a file", sound.left(sound.size() / 2), "truncated: "},
        {"version 4", version4,
         "group \"ImageList\" of 1 tags with 0 bytes left (version 4; this is a reader of version 3)"},
        {"tag count", manyTags, "group \"RootDirectory\" of 4294967295 tags"},
        {"kind", lone("\x16" + QByteArray(20, 0)), "Error: tagtype = 22 at byte 18"},
        {"label length", lone("\x15\xff\xff" + QByteArray(20, 0)), "truncated: head of a tag of 65546 bytes"},
        {"info count 0", lone(dm3::entry("a", {}, "123456")), "Error: size of infoarry  <= 0"},
        {"info count below 0", lone(dm3::entry("", {0}, "").replace(7, 4, "\xff\xff\xff\xfe")),
         "Error: size of infoarry  <= 0"},
        {"info count huge", lone(dm3::entry("", {0}, "").replace(7, 4, "\x7f\xff\xff\xff")),
         "truncated: info array of 8589934588 bytes"},
        {"info array of two", lone(dm3::entry("t", {18, 5}, "abcde")), "Unknown tag \"t\""},
        {"too few fields", lone(dm3::entry("t", {15, 0, 2, 0, 2}, "abcd")), "Unknown tag \"t\""},
        {"field count huge", lone(dm3::entry("t", {15, 0, 0x80000001, 0, 2}, "abcd")), "Unknown tag \"t\""},
        {"structures, no count", lone(dm3::entry("t", {20, 15, 0, 1, 0, 2}, "ab")), "Unknown tag \"t\""},
        {"array too long", lone(dm3::array("t", 2, 3, "abcde")),
         "truncated: entry \"t\" of 3 elements of 2 bytes, 5 bytes left"},
        {"array huge", lone(dm3::array("t", 7, 0xffffffff, "")),
         "truncated: entry \"t\" of 4294967295 elements"},
        {"structures huge", lone(dm3::entry("t", {20, 15, 0, 1, 0, 7, 0xffffffff}, "")),
         "truncated: entry \"t\""},
        {"deep", dm3::file({}).replace(14, 4, dm3::big(1)).chopped(8) + nested,
         "groups nested more than 64 deep"},
        {"empty tree", dm3::file({}), "no image"},
        {"list is an entry", dm3::file({dm3::integer("ImageList", 1)}), "no image"},
        {"image is an entry", list(dm3::integer("", 1)), "no image"},
        {"image without tags", list(dm3::group("", {})), "image of 0 x 0 pixels"},
        {"one dimension", list(dm3::group("", {dm3::group("Dimensions", {dm3::integer("", 2)})})),
         "image of 2 x 0 pixels"},
        {"dimension of 2 bytes",
         list(dm3::group("", {dm3::group("Dimensions", {dm3::entry("", {4}, "\2")})})),
         "image of 0 x 0 pixels"},
        {"no type",
         list(dm3::group("", {data4, dm3::group("Dimensions", {dm3::integer("", 2), dm3::integer("", 2)})})),
         "no data type"},
        {"no pixels", list(dm3::image(2, 2, 6, dm3::integer("Date", 1))), "no pixels"},
        {"pixels are a group", list(dm3::image(2, 2, 6, dm3::group("Data", {}))), "no pixels"},
        {"complex", list(dm3::image(1, 1, 3, data4)), "data type 3 is not read"},
        {"packed", list(dm3::image(1, 1, 23, data4)), "data type 23 is not read"},
        {"negative", list(dm3::image(-2, -2, 6, data4)), "image of -2 x -2 pixels"},
        {"2^31 pixels", list(dm3::image(65536, 32768, 6, data4)), "image of 65536 x 32768 pixels"},
        {"largest", list(dm3::image(INT_MAX, INT_MAX, 12, data4)), "image of 2147483647 x 2147483647 pixels"},
        {"a row too many", list(dm3::image(2, 3, 6, data4)), "2 x 3 pixels of 1 bytes, but 4 bytes of data"},
        {"wider type", list(dm3::image(2, 2, 10, data4)), "2 x 2 pixels of 2 bytes, but 4 bytes of data"}};
    for (const auto& row : aCase) {
        SCOPED_TRACE(row.pWhat);
        CImgObj<float> image;
        const float fOld = 7.f;
        image.Set(&fOld, 1, 1);
        QString strBytes, strFile;
        EXPECT_EQ(read(row.bytes, image, &strBytes), -1);
        writeBytes(path("broken.dm3"), row.bytes);
        EXPECT_EQ(ReadDM3(image, path("broken.dm3"), &strFile), -1);
        EXPECT_TRUE(strBytes.startsWith(row.pReason)) << qPrintable(strBytes);
        EXPECT_EQ(strFile, strBytes);
        EXPECT_EQ(image.Width(), 1);
        EXPECT_EQ(image.Data()[0], 7.f);
    }
    EXPECT_EQ(pixels(sound), (std::vector<float>{'a', 'b', 'c', 'd'}));  // what the cases break
}

TEST_F(Dm3, EveryCutOfASoundFileIsRefused)
{
    const QByteArray sound = dm3::file({dm3::group("ImageList", {bytePixels(4, 3, 'a')})});
    for (int nSize = 0; nSize < sound.size() - 8; ++nSize)  // the last 8 bytes belong to no tag
        EXPECT_TRUE(pixels(QByteArray(sound.constData(), nSize)).empty()) << nSize;
    EXPECT_EQ(pixels(sound.chopped(8)).size(), 12u);
}

TEST_F(Dm3, AReaderForgetsTheFormerFile)
{
    writeBytes(path("a.dm3"), dm3::file({dm3::group("ImageList", {bytePixels(2, 2, 'a')})}));
    DM3File file;
    ASSERT_EQ(file.Read(path("a.dm3")), 1);
    ASSERT_NE(file.GetImageTag(), nullptr);
    QString strReason;
    EXPECT_EQ(file.Read(path("absent.dm3"), &strReason), 0);
    EXPECT_NE(strReason, "");
    EXPECT_EQ(file.GetImageTag(), nullptr);
    EXPECT_EQ(file.Read(m_dir.path(), &strReason), 0);
    EXPECT_EQ(file.Read("/dev/zero", &strReason), 0);
    EXPECT_EQ(strReason, "not a file");
}
