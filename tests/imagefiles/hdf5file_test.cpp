#include "imagefiles/hdf5file.h"

#include "imagefiles/bitshuffle.h"
#include "imagefiles/hdf5chunk.h"
#include "imagefiles/hdf5names.h"
#include "imagefiles/hdf5nexus.h"
#include "imagefiles/hdf5series.h"
#include "imagefiles/hdf5stamp.h"
#include "records/pi.h"
#include "tests/imagefiles/hdf5builder.h"
#include "tests/imagefiles/testfiles.h"

#include <QDir>
#include <QtEndian>

#include <climits>
#include <cmath>
#include <thread>

namespace tessera {

namespace {

class Hdf5 : public FileTest {
protected:
    /// One image, with the reason in m_strReason.
    std::unique_ptr<CImgObj<float>> image(const QString& strFile, int nImage)
    {
        ImageList vecImage;
        readHdf5Frames(strFile, nImage, 1, vecImage, m_strReason);
        return vecImage.empty() ? nullptr : std::move(vecImage[0]);
    }
    QString m_strReason;
};

/// Planes of bits, by the formula alone.
std::vector<uint8_t> shuffled(const std::vector<uint8_t>& vecBytes, size_t nSize)
{
    const size_t nCount = vecBytes.size() / nSize;
    std::vector<uint8_t> vecPlanes(vecBytes.size(), 0);
    for (size_t i = 0; i < nCount; ++i) {
        for (size_t nBit = 0; nBit < 8 * nSize; ++nBit) {
            const int nValue = vecBytes[i * nSize + nBit / 8] >> nBit % 8 & 1;
            vecPlanes[nBit * nCount / 8 + i / 8] |= uint8_t(nValue << i % 8);
        }
    }
    return vecPlanes;
}

std::vector<uint8_t> noise(size_t nBytes)
{
    std::vector<uint8_t> vecBytes(nBytes);
    uint32_t n = 12345;
    for (uint8_t& byte : vecBytes) {
        n = n * 1664525 + 1013904223;
        byte = uint8_t(n >> 24);
    }
    return vecBytes;
}

/// Pixels (z, y, x) of all test files.
int pixel(hsize_t z, hsize_t y, hsize_t x)
{
    return int((x + 7 * y + 31 * z) % 101);
}

std::vector<int> pixels(hsize_t nImages, hsize_t nRows, hsize_t nColumns)
{
    std::vector<int> vecPixel;
    for (hsize_t i = 0; i < nImages * nRows * nColumns; ++i) {
        vecPixel.push_back(pixel(i / (nRows * nColumns), i / nColumns % nRows, i % nColumns));
    }
    return vecPixel;
}

bool isImage(const CImgObj<float>* pImage, hsize_t z, int nRows, int nColumns)
{
    bool bSame = pImage && pImage->Width() == nColumns && pImage->Height() == nRows;
    for (int i = 0; bSame && i < nRows * nColumns; ++i) {
        bSame = pImage->Data()[i] == float(pixel(z, hsize_t(i / nColumns), hsize_t(i % nColumns)));
    }
    return bSame;
}

CHdf5Id chunked(const std::vector<hsize_t>& vecChunk)
{
    CHdf5Id idCreate(H5Pcreate(H5P_DATASET_CREATE));
    H5Pset_chunk(idCreate, int(vecChunk.size()), vecChunk.data());
    return idCreate;
}

constexpr int g_nSide = 6;

void writeStack(CHdf5Builder& builder, const char* pszPath, hsize_t nImages)
{
    builder.set(pszPath, H5T_STD_U16LE, {nImages, g_nSide, g_nSide}, pixels(nImages, g_nSide, g_nSide));
}

}  // namespace

TEST(Bitshuffle, UndoesTheFormula)
{
    for (size_t nSize : {1, 2, 3, 4, 8}) {
        for (size_t nCount : {8, 120, 128, 136, 2048}) {
            const std::vector<uint8_t> vecBytes = noise(nSize * nCount),
                                       vecPlanes = shuffled(vecBytes, nSize);
            std::vector<uint8_t> vecWide(vecBytes.size()), vecPlain(vecBytes.size());
            unshuffleBits(vecPlanes.data(), nCount, nSize, vecWide.data());
            unshuffleBitsPlain(vecPlanes.data(), nCount, nSize, vecPlain.data());
            EXPECT_EQ(vecWide, vecBytes) << nSize << " " << nCount;
            EXPECT_EQ(vecPlain, vecBytes) << nSize << " " << nCount;
        }
    }
}

namespace {

struct PackedChunk {
    Hdf5Filter filter;
    QByteArray bytes;
    size_t nSize;  ///< bytes a number
    std::vector<uint8_t> vecPlain;
};

/// Chunks that other programs have packed.
std::vector<PackedChunk> packedChunks()
{
    // 20 numbers (37 i + 5) mod 1000 of 16 bits by bitshuffle 0.4 with LZ4: a block of 16, and four as they
    // are; 40 cubes of 32 bits by the registered LZ4 filter in blocks of 64 bytes, two of which got no
    // smaller.
    const QByteArray bytesShuffled = QByteArray::fromHex(
        "00000000000000280000200000000022f011555566662d2db649388e6aa54c367038803f00c0000000000000000000000000"
        "550"
        "27a029f02c402");
    const QByteArray bytesLz4 = QByteArray::fromHex(
        "00000000000000a000000040000000400000000001000000080000001b000000400000007d000000d8000000570100000002"
        "0000"
        "d9020000e803000033050000c006000095080000b80a00002f0d0000000000400010000031130000c8160000cb1a0000401f"
        "0000"
        "2d24000098290000872f000000360000093d0000a8440000e34c0000c0550000455f0000786900005f740000000000200080"
        "000061"
        "8c0000889900007ba7000040b60000ddc5000058d60000b7e70000");
    std::vector<uint8_t> vecShuffled(40), vecLz4(160);
    for (size_t i = 0; i < 20; ++i) {
        qToLittleEndian<quint16>(quint16((37 * i + 5) % 1000), vecShuffled.data() + 2 * i);
    }
    for (size_t i = 0; i < 40; ++i) {
        qToLittleEndian<quint32>(quint32(i * i * i), vecLz4.data() + 4 * i);
    }
    return {{{32008, {0, 3, 2, 0, 2}}, bytesShuffled, 2, vecShuffled}, {{32004, {64}}, bytesLz4, 4, vecLz4}};
}

}  // namespace

TEST(Hdf5Chunk, ReadsWhatOtherProgramsPackedAndNothingThatIsCut)
{
    for (const PackedChunk& row : packedChunks()) {
        for (int nLength = 0; nLength <= row.bytes.size(); ++nLength) {
            // of its own, so that reading beyond it is seen by the sanitizer
            const std::vector<uint8_t> vecCut(row.bytes.begin(), row.bytes.begin() + nLength);
            for (const size_t nRoom : {row.vecPlain.size(), row.vecPlain.size() - 1}) {
                std::vector<uint8_t> vecOut(nRoom);
                QString strReason;
                const bool bGood = decodeChunk({row.filter}, 0, row.nSize, vecCut.data(), vecCut.size(),
                                               vecOut.data(), nRoom, strReason);
                const bool bWhole = nLength == row.bytes.size() && nRoom == row.vecPlain.size();
                EXPECT_EQ(bGood, bWhole) << nLength << " " << nRoom;
                EXPECT_EQ(strReason.isEmpty(), bWhole);
                if (bWhole) {
                    EXPECT_EQ(vecOut, row.vecPlain);
                }
            }
        }
    }
    EXPECT_TRUE(unknownFilter({{32008, {0, 3, 2, 0, 3}}}).contains("Zstandard"));
    EXPECT_TRUE(unknownFilter({{4, {}}}).contains("filter 4"));
}

TEST_F(Hdf5, ReadsEveryTypeAndLayout)
{
    const hid_t aType[] = {H5T_STD_U8LE,  H5T_STD_I8LE,   H5T_STD_U16LE,  H5T_STD_U16BE, H5T_STD_I16LE,
                           H5T_STD_I16BE, H5T_STD_U32LE,  H5T_STD_U32BE,  H5T_STD_I32LE, H5T_STD_U64BE,
                           H5T_STD_I64LE, H5T_IEEE_F32LE, H5T_IEEE_F32BE, H5T_IEEE_F64LE};
    for (const hid_t idType : aType) {
        for (int nLayout = 0; nLayout < 5; ++nLayout) {
            SCOPED_TRACE(testing::Message()
                         << "layout " << nLayout << ", " << H5Tget_size(idType) << " bytes");
            const QString strFile = path("types.h5");
            {
                CHdf5Builder builder(strFile);
                const CHdf5Id aCreate[] = {CHdf5Id(H5Pcreate(H5P_DATASET_CREATE)),
                                           CHdf5Id(H5Pcreate(H5P_DATASET_CREATE)), chunked({1, 9, 7}),
                                           chunked({2, 4, 5}), chunked({3, 9, 2})};
                H5Pset_layout(aCreate[1], H5D_COMPACT);
                H5Pset_shuffle(aCreate[3]);
                H5Pset_deflate(aCreate[3], 4);
                H5Pset_fletcher32(aCreate[3]);
                H5Pset_fletcher32(aCreate[4]);
                builder.set("deep/set", idType, {3, 9, 7}, pixels(3, 9, 7), aCreate[nLayout]);
                builder.set("small", idType, {3, 2, 2}, pixels(3, 2, 2));
            }
            for (int z = 0; z < 3; ++z) {
                EXPECT_TRUE(isImage(image(strFile, z).get(), hsize_t(z), 9, 7)) << m_strReason.toStdString();
            }
            const FrameHeader header = readHdf5Header(strFile, 1);
            EXPECT_EQ(header.nImages, 3);
            EXPECT_EQ(header.size, QSize(7, 9));
            EXPECT_EQ(header.listDoubt.size(), 1);  // where the images were taken from
        }
    }
}

TEST_F(Hdf5, CountsImagesAcrossDataFilesOfWhichOneIsMissing)
{
    QDir(m_dir.path()).mkdir("sub");
    for (const char* pszName : {"x_data_000001.h5", "x_data_000003.h5", "sub/../../outside.h5"}) {
        CHdf5Builder builder(path(pszName));
        writeStack(builder, "entry/data/data", 2);
        if (QString(pszName).contains("3")) {
            builder.numbers("entry/data/data", "image_nr_low", {6});
        }
    }
    {
        CHdf5Builder builder(path("x_master.h5"));
        builder.link("entry/data/data_000001", "x_data_000001.h5", "/entry/data/data");
        builder.link("entry/data/data_000002", "x_data_000002.h5", "/entry/data/data");
        builder.link("entry/data/data_000003", "x_data_000003.h5", "/entry/data/data");
        builder.link("entry/data/data_000004", "../outside.h5", "/entry/data/data");
        builder.link("entry/data/data_000005", "/etc/outside.h5", "/entry/data/data");
        builder.link("entry/data/data_000006", "x_master.h5", "/entry/data/data_000006");  // to itself
    }
    for (int i = 0; i < 5; ++i) {  // images 3 to 5 lie in the missing file, as the next one begins with 6
        const auto pImage = image(path("x_master.h5"), i < 2 ? i : i + 3);
        EXPECT_EQ(isImage(pImage.get(), hsize_t(i < 2 ? i : i - 2), g_nSide, g_nSide), i < 4)
            << i << m_strReason.toStdString();
        EXPECT_TRUE(i >= 2 || !image(path("x_master.h5"), 2 + i));
        EXPECT_TRUE(i >= 2 || m_strReason.contains("x_data_000002.h5 is missing"))
            << m_strReason.toStdString();
    }
    ImageList vecImage;
    EXPECT_TRUE(readHdf5Frames(path("x_master.h5"), 0, INT_MAX, vecImage, m_strReason));
    EXPECT_EQ(vecImage.size(), 2u);  // as those behind the gap would get its numbers
    EXPECT_TRUE(m_strReason.startsWith("image 3 of ")) << m_strReason.toStdString();
    {
        CHdf5Builder builder(path("x_data_000002.h5"));
        writeStack(builder, "entry/data/data", 3);
    }
    EXPECT_TRUE(isImage(image(path("x_master.h5"), 4).get(), 2, g_nSide, g_nSide)) << "the file came later";
    EXPECT_FALSE(image(path("x_master.h5"), 7));
    EXPECT_TRUE(m_strReason.contains("leads out of its folder")) << m_strReason.toStdString();
    QFile::remove(path("../outside.h5"));
}

namespace {

std::vector<Hdf5Block> blocks(const std::vector<std::pair<int, int>>& vecCountAndNumber)
{
    std::vector<Hdf5Block> vecBlock;
    for (const auto& pair : vecCountAndNumber) {
        Hdf5Block block;
        block.nCount = pair.first;
        block.nNumber = pair.second;
        block.strMissing = pair.first ? "" : "gone";
        vecBlock.push_back(block);
    }
    return vecBlock;
}

}  // namespace

TEST(Hdf5Series, CountsWhatIsMissing)
{
    const struct {
        std::vector<Hdf5Block> vecBlock;
        qint64 nTotal;
        std::vector<int> vecCount;
    } aCase[] = {{blocks({{10, 1}, {0, 0}, {4, 18}}), 0, {10, 7, 4}},
                 {blocks({{10, 0}, {0, 0}, {4, 0}}), 20, {10, 6, 4}},
                 {blocks({{0, 0}, {0, 0}, {10, 0}, {4, 0}}), 0, {10, 10, 10, 4}},
                 {blocks({{10, 0}, {0, 0}}), 15, {10, 5}},
                 {blocks({{10, 0}, {0, 0}}), 0, {10}},
                 {blocks({{0, 0}, {4, 0}}), 0, {}},
                 {blocks({{10, 0}, {0, 0}, {4, INT_MAX}}), 0, {10}}};
    for (auto row : aCase) {
        EXPECT_FALSE(countMissing(row.vecBlock, row.nTotal).isEmpty());
        std::vector<int> vecCount;
        for (const Hdf5Block& block : row.vecBlock) {
            vecCount.push_back(block.nCount);
        }
        EXPECT_EQ(vecCount, row.vecCount);
    }
}

// Of 300 files one is present, with 100000 images: images are reported as missing up to a limit only.
TEST(Hdf5Series, HasAnEndWhereHardlyAnythingIsThere)
{
    std::vector<std::pair<int, int>> vecMany(300, {0, 0});
    vecMany[0].first = 100000;
    std::vector<Hdf5Block> vecBlock = blocks(vecMany);
    EXPECT_TRUE(countMissing(vecBlock, 0).contains("more than 300000 images"));
    EXPECT_EQ(vecBlock.size(), 3u);
    // pieces of one data set, as of a virtual one: its images count once
    vecBlock = blocks({{90000, 0}, {90000, 0}, {120001, 0}});
    EXPECT_TRUE(countMissing(vecBlock, 0).isEmpty());
    vecBlock = blocks({{90000, 0}, {90000, 0}, {90000, 0}, {90000, 0}});
    EXPECT_FALSE(countMissing(vecBlock, 0).isEmpty());
    EXPECT_EQ(vecBlock.size(), 3u);
}

TEST(Hdf5Series, DataOfAMasterAreKnownByName)
{
    EXPECT_TRUE(isDataOfMaster("a/X_data_000012.h5", {"y.h5", "x_master.h5"}));
    EXPECT_TRUE(isDataOfMaster("x_data_1.h5", {"b/x.nxs"}));
    EXPECT_FALSE(isDataOfMaster("x_data_000001.h5", {"xx_master.h5", "x_data_000001.h5"}));
    EXPECT_FALSE(isDataOfMaster("x_master.h5", {"x_master.h5"}));
}

TEST_F(Hdf5, BeamAndWidthOfAnEiger)
{
    const QString strFile = path("e.h5");
    {
        CHdf5Builder builder(strFile);
        builder.set("entry/data/data", H5T_STD_U16LE, {3, g_nSide, g_nSide}, pixels(3, g_nSide, g_nSide));
        builder.number("entry/instrument/detector/beam_center_x", 2.5);
        builder.number("entry/instrument/detector/beam_center_y", 4);
        builder.set<double>("entry/sample/goniometer/omega", H5T_IEEE_F64LE, {3}, {1, 1.5, 2});
        builder.number("entry/sample/goniometer/omega_range_average", 0.5);
    }
    const FrameHeader header = readHdf5Header(strFile, 0);
    EXPECT_EQ(header.beamX.df, 2) << "from the outer corner to the centre of the first pixel";
    EXPECT_EQ(header.beamY.df, 3.5);
    EXPECT_EQ(header.tiltStart.strSource, "omega");
    EXPECT_EQ(header.tiltStep.strSource, "omega_range_average");
}

TEST_F(Hdf5, FollowsNoLinkOutOfItsFolder)
{
    QDir(m_dir.path()).mkdir("in");
    {
        CHdf5Builder outside(path("outside.h5")), inside(path("in/x_master.h5"));
        writeStack(outside, "g/images", 1);
        outside.link("g/x", "third.h5", "/g");
        inside.link("entry/data/data_000001", "ext.h5", "/g/images");
        inside.link("ext", "../outside.h5", "/g");
    }
    {
        const CHdf5Lock lock;
        const CHdf5Id idFile = openHdf5(path("in/x_master.h5"), m_strReason);
        const auto external = readExternal(idFile, "ext");
        ASSERT_TRUE(external);
        EXPECT_EQ(external->strFile, "../outside.h5");
        EXPECT_FALSE(readExternal(idFile, "ext/x")) << "a name that a damaged group may have";
    }
#if defined(Q_OS_UNIX)
    ASSERT_TRUE(QFile::link(path("outside.h5"), path("in/ext.h5")));
    EXPECT_FALSE(image(path("in/x_master.h5"), 0));
    EXPECT_TRUE(m_strReason.contains("leads out of its folder")) << m_strReason.toStdString();
    // a series all of whose files are in another folder, reached by links
    QDir(m_dir.path()).mkdir("links");
    ASSERT_TRUE(QFile::remove(path("in/ext.h5")));
    ASSERT_TRUE(QFile::rename(path("outside.h5"), path("in/ext.h5")));
    ASSERT_TRUE(QFile::link(path("in/ext.h5"), path("links/ext.h5")));
    ASSERT_TRUE(QFile::link(path("in/x_master.h5"), path("links/x_master.h5")));
    EXPECT_TRUE(isImage(image(path("links/x_master.h5"), 0).get(), 0, g_nSide, g_nSide))
        << m_strReason.toStdString();
#endif
}

TEST_F(Hdf5, KeepsWhatItFoundUntilTheFileChanges)
{
    const QString strFile = writeBytes(path("broken.h5"), "abc");
    const std::vector<Hdf5Stamp> vecStamp = CHdf5Faults::stampsOf(strFile);
    const QDateTime now = QDateTime::currentDateTimeUtc(), later = now.addSecs(60);
    CHdf5Faults faults;
    EXPECT_TRUE(faults.reason(strFile).isEmpty());
    faults.keep(strFile, later, vecStamp, "crashed");
    faults.keep(path("other.h5"), later, CHdf5Faults::stampsOf(path("other.h5")), "hung");
    EXPECT_EQ(faults.reason(strFile), "crashed");
    EXPECT_EQ(faults.reason(path("other.h5")), "hung");
    writeBytes(strFile, "abcd");
    EXPECT_TRUE(faults.reason(strFile).isEmpty());
    faults.keep(strFile, later, CHdf5Faults::stampsOf(strFile), "again");
    EXPECT_EQ(faults.reason(strFile), "again");

    const auto isCurrentAt = [&](qint64 nSeconds) {
        return isCurrent({stampOf(strFile)}, stampOf(strFile).time.addSecs(nSeconds));
    };
    EXPECT_TRUE(isCurrentAt(3));
    EXPECT_FALSE(isCurrentAt(1)) << "it may have changed within the tick";
    EXPECT_TRUE(isCurrentAt(-3600)) << "the clock of another computer";
}

TEST_F(Hdf5, TakesAnAxisOnceThatDependsOnItselfByALongerPath)
{
    const QString strFile = path("chain.h5");
    {
        CHdf5Builder builder(strFile);
        writeStack(builder, "entry/data/data", 2);
        for (const char* pszName : {"fast", "slow"}) {
            const QByteArray strPath = QByteArray("entry/instrument/detector/module/") + pszName +
                                       "_pixel_direction";
            builder.number(strPath, 1);
            builder.numbers(
                strPath, "vector",
                pszName[0] == 'f' ? std::vector<double>{-1, 0, 0} : std::vector<double>{0, -1, 0});
        }
        builder.text("entry/sample/depends_on", "omega", false);
        builder.set<double>("entry/sample/omega", H5T_IEEE_F64LE, {2}, {10, 11});
        builder.attribute("entry/sample/omega", "transformation_type", "rotation");
        builder.attribute("entry/sample/omega", "depends_on", "tilt");
        builder.numbers("entry/sample/omega", "vector", {0, 1, 0});
        builder.number("entry/sample/tilt", 30, "deg");
        builder.attribute("entry/sample/tilt", "transformation_type", "rotation");
        builder.attribute("entry/sample/tilt", "depends_on", "./tilt");
        builder.numbers("entry/sample/tilt", "vector", {0, 0, 1});
    }
    const FrameHeader header = readHdf5Header(strFile, 1);
    EXPECT_EQ(header.tiltStart.df, 11);
    EXPECT_NEAR(header.rotationAxis.df, 60, 1e-9) << "turned by the tilt once, by 30 degrees from 90";
}

namespace {

/// A file as a detector of electrons writes it, with numbers in many units, a mask, and axes of NeXus.
class Hdf5OfElectrons : public Hdf5 {
protected:
    void SetUp() override
    {
        Hdf5::SetUp();
        CHdf5Builder builder(strFile);
        std::vector<int> vecPixel = pixels(3, g_nSide, g_nSide);
        vecPixel[1] = 65535;
        vecPixel[2] = 65534;
        builder.set("entry/data/data", H5T_STD_U16LE, {3, g_nSide, g_nSide}, vecPixel);
        const auto at = [&](const char* psz) { return QByteArray("entry/instrument/detector/") + psz; };
        std::vector<uint32_t> vecMask(g_nSide * g_nSide, 0);
        vecMask[7] = 1u << 31;  // interpolated
        vecMask[8] = 1u << 31 | 1;
        vecMask[35] = 1 << 15;
        const CHdf5Id idPacked = chunked({g_nSide, g_nSide});
        H5Pset_deflate(idPacked, 1);
        builder.set(at("detectorSpecific/pixel_mask"), H5T_STD_U32LE, {g_nSide, g_nSide}, vecMask, idPacked);
        builder.number(at("x_pixel_size"), 0.075, "mm");
        builder.number(at("detector_distance"), 0.6, "m");
        builder.number(at("beam_center_x"), 2.5);
        builder.number(at("beam_center_y"), 0);
        builder.number(at("count_time"), 50, "ms");
        builder.number(at("saturation_value"), 9000);
        builder.number(at("detectorSpecific/countrate_correction_count_cutoff"), 8352);
        builder.number(at("detectorSpecific/photon_energy"), 200000, "eV");
        builder.text(at("description"), "Camera", true);
        for (const char* pszName : {"fast", "slow"}) {
            const QByteArray strPath = at("module/") + pszName + "_pixel_direction";
            builder.number(strPath, 1);
            builder.numbers(
                strPath, "vector",
                pszName[0] == 'f' ? std::vector<double>{-1, 0, 0} : std::vector<double>{0, -1, 0});
        }
        builder.text("entry/sample/depends_on", "t/omega", false);
        builder.set<double>("entry/sample/t/omega", H5T_IEEE_F64LE, {3}, {0.1, 0.2, 0.4});
        builder.attribute("entry/sample/t/omega", "units", "rad");
        builder.attribute("entry/sample/t/omega", "transformation_type", "rotation");
        builder.attribute("entry/sample/t/omega", "depends_on", "tilt");
        builder.numbers("entry/sample/t/omega", "vector", {0, 2, 0});
        // Turned right-handed about the beam by 30 degrees: seen from the source, that is clockwise.
        builder.number("entry/sample/t/tilt", 30, "deg");
        builder.attribute("entry/sample/t/tilt", "transformation_type", "rotation");
        builder.attribute("entry/sample/t/tilt", "depends_on", "omega");  // back into itself
        builder.numbers("entry/sample/t/tilt", "vector", {0, 0, 1});
    }

    const QString strFile = path("d.h5");
};

}  // namespace

TEST_F(Hdf5OfElectrons, HasItsMaskAndOverflowsAsGaps)
{
    const auto pImage = image(strFile, 0);
    ASSERT_TRUE(pImage) << m_strReason.toStdString();
    for (int i : {1, 8, 35}) {
        EXPECT_TRUE(std::isnan(pImage->Data()[i])) << i;
    }
    EXPECT_EQ(pImage->Data()[2], 65534);
    EXPECT_EQ(pImage->Data()[7], pixel(0, 1, 1));
}

TEST_F(Hdf5OfElectrons, TellsDetectorAndAxesInAnyUnit)
{
    const FrameHeader header = readHdf5Header(strFile, 1);
    EXPECT_EQ(header.nImages, 3);
    EXPECT_EQ(header.kilovolts.df, 200);
    EXPECT_NEAR(header.detectorPixel.df, 75, 1e-9);
    EXPECT_NEAR(header.cameraLength.df, 600, 1e-9);
    EXPECT_FALSE(header.beamX.isTold());  // one of the two alone is none
    EXPECT_NEAR(header.exposure.df, 0.05, 1e-12);
    EXPECT_EQ(header.saturation.df, 8352);
    EXPECT_EQ(header.strDetector, "Camera");
    EXPECT_NEAR(header.tiltStart.df, 0.2 * 180 / g_dfPi, 1e-9);
    EXPECT_NEAR(header.tiltStep.df, 0.2 * 180 / g_dfPi, 1e-9);
    EXPECT_NEAR(header.rotationAxis.df, 60, 1e-9);
}

TEST(Hdf5Nexus, AxesLieOnTheImageAsTheDetectorDoes)
{
    // x to the left, y up and z along the beam, seen from the source; the detector turned in its plane by
    // an angle that an axis fixed in the laboratory seems to be turned back by.
    for (double dfAxis : {0.0, 35.0, 90.0, 150.0, -120.0}) {
        for (double dfDetector : {0.0, 20.0, 90.0, 180.0}) {
            const auto towards = [](double df) {  // degrees counter-clockwise from the right
                return NexusVector{-std::cos(df * g_dfPi / 180), std::sin(df * g_dfPi / 180), 0};
            };
            QString strReason;
            const auto df = axisOnImage(towards(dfAxis), towards(dfDetector), towards(dfDetector - 90),
                                        strReason);
            ASSERT_TRUE(df) << strReason.toStdString();
            EXPECT_NEAR(std::remainder(*df - (dfAxis - dfDetector), 360), 0, 1e-9);
            EXPECT_FALSE(
                axisOnImage(towards(dfAxis), towards(dfDetector), towards(dfDetector + 90), strReason));
            EXPECT_TRUE(strReason.contains("seen from behind"));
            EXPECT_FALSE(axisOnImage({0, 0, 1}, towards(0), towards(-90), strReason));
        }
    }
}

TEST_F(Hdf5, ReadsImagesOnTheLastAxisWithTheTextOfEach)
{
    const QString strFile = path("velox.emd");
    {
        CHdf5Builder builder(strFile);
        std::vector<int> vecPixel;
        std::vector<uint8_t> vecText(400 * 3, 0);
        for (hsize_t i = 0; i < 5 * 4 * 3; ++i) {
            vecPixel.push_back(pixel(i % 3, i / 12, i / 3 % 4));
        }
        for (size_t k = 0; k < 3; ++k) {
            const QByteArray bytes =
                R"({"Optics":{"AccelerationVoltage":"300000","CameraLength":"0.5","ProjectorMode":"1"},)"
                R"("BinaryResult":{"DetectorIndex":"0","Detector":"C","PixelUnitX":"1/m",)"
                R"("PixelSize":{"width":"2e7"}},"Detectors":{"Detector-0":{"DetectorName":"C",)"
                R"("ExposureTime":"0.5"}},"CustomProperties":{"Detectors[C].SaturationPoint":)"
                R"({"value":"8425"}},"Stage":{"AlphaTilt":")" +
                QByteArray::number(-0.1 * double(k)) + "\"}}";
            for (int i = 0; i < bytes.size(); ++i) {
                vecText[size_t(i) * 3 + k] = uint8_t(bytes[i]);
            }
        }
        builder.set("Data/Image/a/Data", H5T_STD_I16LE, {5, 4, 3}, vecPixel, chunked({5, 4, 2}));
        builder.set("Data/Image/a/Metadata", H5T_STD_U8LE, {400, 3}, vecText, chunked({400, 1}));
        builder.set("Data/Image/b/Data", H5T_STD_I16LE, {50, 50, 1}, pixels(1, 50, 50));
    }
    for (int k = 0; k < 3; ++k) {
        EXPECT_TRUE(isImage(image(strFile, k).get(), hsize_t(k), 5, 4)) << m_strReason.toStdString();
        const FrameHeader header = readHdf5Header(strFile, k);
        EXPECT_NEAR(header.tilt.df, -0.1 * k * 180 / g_dfPi, 1e-4);
        EXPECT_EQ(header.nImages, 3);
        EXPECT_EQ(header.kilovolts.df, 300);
        EXPECT_EQ(header.cameraLength.df, 500);
        EXPECT_NEAR(header.pixelSize.df, 0.002, 1e-12);
        EXPECT_EQ(header.exposure.df, 0.5);
        EXPECT_EQ(header.saturation.df, 8425);
    }
}

TEST_F(Hdf5, TellsThePixelOfBerkeleyFilesInReciprocalSpace)
{
    for (const char* pszUnit : {"[n_m^-1]", "[n_m]"}) {
        {
            CHdf5Builder builder(path("b.emd"));
            writeStack(builder, "e/data", 2);
            builder.set("larger", H5T_STD_U16LE, {9, g_nSide, g_nSide}, pixels(9, g_nSide, g_nSide));
            builder.numbers("e", "emd_group_type", {1});
            builder.set<double>("e/dim3", H5T_IEEE_F64LE, {g_nSide}, {0, 0.5, 1, 1.5, 2, 2.5});
            builder.attribute("e/dim3", "units", pszUnit);
        }
        const FrameHeader header = readHdf5Header(path("b.emd"), 0);
        EXPECT_EQ(header.nImages, 2);
        EXPECT_EQ(header.pixelSize.isTold() ? header.pixelSize.df : 0,
                  pszUnit == QString("[n_m]") ? 0 : 0.05);
    }
}

TEST_F(Hdf5, ReadsVirtualDataSetsOfWholeImages)
{
    const QString strFile = path("v.h5");
    {
        CHdf5Builder builder(strFile);
        writeStack(builder, "a", 3);
        const CHdf5Id idCreate(H5Pcreate(H5P_DATASET_CREATE)),
            idTarget = CHdf5Builder::space({4, g_nSide, g_nSide}),
            idSource = CHdf5Builder::space({3, g_nSide, g_nSide});
        const hsize_t anTo[] = {2, 0, 0}, anFrom[] = {1, 0, 0}, anCount[] = {2, g_nSide, g_nSide};
        H5Sselect_hyperslab(idTarget, H5S_SELECT_SET, anTo, nullptr, anCount, nullptr);
        H5Sselect_hyperslab(idSource, H5S_SELECT_SET, anFrom, nullptr, anCount, nullptr);
        H5Pset_virtual(idCreate, idTarget, ".", "/a", idSource);
        builder.set<int>("entry/data/data", H5T_STD_U16LE, {4, g_nSide, g_nSide}, {}, idCreate);
    }
    {
        CHdf5Builder builder(path("whole.h5"));
        writeStack(builder, "a", 3);
        const CHdf5Id idCreate(H5Pcreate(H5P_DATASET_CREATE)),
            idStack = CHdf5Builder::space({3, g_nSide, g_nSide});
        H5Pset_virtual(idCreate, idStack, "whole.h5", "/a", idStack);
        builder.set<int>("entry/data/data", H5T_STD_U16LE, {3, g_nSide, g_nSide}, {}, idCreate);
    }
    EXPECT_TRUE(isImage(image(path("whole.h5"), 2).get(), 2, g_nSide, g_nSide)) << m_strReason.toStdString();
    EXPECT_EQ(readHdf5Header(strFile, 0).nImages, 4);
    EXPECT_FALSE(image(strFile, 1));
    EXPECT_TRUE(m_strReason.contains("gap")) << m_strReason.toStdString();
    EXPECT_TRUE(isImage(image(strFile, 2).get(), 1, g_nSide, g_nSide)) << m_strReason.toStdString();
    EXPECT_TRUE(isImage(image(strFile, 3).get(), 2, g_nSide, g_nSide)) << m_strReason.toStdString();
}

TEST_F(Hdf5, RefusesCutFilesAndSizesThatLie)
{
    {
        CHdf5Builder builder(path("whole.h5"));
        const CHdf5Id idPacked = chunked({1, g_nSide, g_nSide});
        H5Pset_deflate(idPacked, 6);
        builder.set("entry/data/data", H5T_STD_U16LE, {3, g_nSide, g_nSide}, pixels(3, g_nSide, g_nSide),
                    idPacked);
    }
    const QByteArray bytes = readBytes(path("whole.h5"));
    for (int nLength = 0; nLength < bytes.size(); nLength += 41) {
        EXPECT_FALSE(image(writeBytes(path("cut.h5"), bytes.left(nLength)), 0)) << nLength;
        EXPECT_FALSE(m_strReason.isEmpty());
    }
    {
        CHdf5Builder builder(path("lie.h5"));  // no chunk was ever written
        builder.set<int>("entry/data/data", H5T_STD_U16LE, {2000000000, 40000, 50000}, {},
                         chunked({1, 100, 100}));
    }
    EXPECT_FALSE(image(path("lie.h5"), 0));
    EXPECT_FALSE(m_strReason.isEmpty());
    EXPECT_LT(readHdf5Header(path("lie.h5"), 0).nImages, 2);
    {
        CHdf5Builder builder(path("sizes.h5"));
        builder.set("entry/data/data_1", H5T_STD_U16LE, {1, g_nSide, g_nSide}, pixels(1, g_nSide, g_nSide));
        builder.set("entry/data/data_2", H5T_STD_U16LE, {1, g_nSide, 5}, pixels(1, g_nSide, 5));
    }
    EXPECT_TRUE(image(path("sizes.h5"), 0));
    EXPECT_FALSE(image(path("sizes.h5"), 1));
    EXPECT_TRUE(m_strReason.contains("5 x 6 pixels among others of 6 x 6")) << m_strReason.toStdString();
}

TEST_F(Hdf5, ThreadsReadOneFileAtTheSameTime)
{
    {
        CHdf5Builder builder(path("t.h5"));
        const CHdf5Id idPacked = chunked({1, g_nSide, g_nSide});
        H5Pset_deflate(idPacked, 6);
        builder.set("entry/data/data", H5T_STD_U16LE, {20, g_nSide, g_nSide}, pixels(20, g_nSide, g_nSide),
                    idPacked);
    }
    std::vector<std::thread> vecThread;
    std::vector<int> vecGood(4, 0);
    for (size_t n = 0; n < vecGood.size(); ++n) {
        vecThread.emplace_back([&, n] {
            for (int i = 0; i < 20; ++i) {
                ImageList vecImage;
                QString strReason;
                vecGood[n] += readHdf5Frames(path("t.h5"), i, 1, vecImage, strReason) &&
                              isImage(vecImage[0].get(), hsize_t(i), g_nSide, g_nSide);
            }
        });
    }
    for (std::thread& thread : vecThread) {
        thread.join();
    }
    EXPECT_EQ(vecGood, std::vector<int>(4, 20));
}

}  // namespace tessera
