#include "imagefiles/mrcfile.h"

#include "tests/imagefiles/filesizelimit.h"
#include "tests/imagefiles/testfiles.h"

#include <QDir>
#include <QtEndian>

#include <climits>
#include <cstring>

namespace tessera {

namespace {

class Mrc : public FileTest {};

QByteArray header(int nX, int nY, int nZ, int nMode)
{
    QByteArray bytes(1024, '\xff');  // whatever the rest of the header holds does not matter
    const int aField[] = {nX, nY, nZ, nMode};
    for (int i = 0; i < 4; ++i) {
        qToLittleEndian<qint32>(aField[i], bytes.data() + 4 * i);
    }
    return bytes;
}

int parsed(const QByteArray& bytes, ImageList& vecImage, QString* pReason = nullptr)
{
    return readMrcBytes(reinterpret_cast<const uint8_t*>(bytes.constData()),
                        static_cast<size_t>(bytes.size()), vecImage, pReason);
}

/// Writes images with element type `T`.
template <class T>
int rewrite(const ImageList& vecRead, const QString& strFileName)
{
    std::vector<CImgObj<T>> vecImage(vecRead.size());
    std::vector<const CImgObj<T>*> vecPointer;
    for (size_t i = 0; i < vecRead.size(); ++i) {
        vecImage[i].Set(vecRead[i]->Data(), vecRead[i]->Width(), vecRead[i]->Height());
        vecPointer.push_back(&vecImage[i]);
    }
    return WriteMRC<T>(vecPointer, strFileName);
}

}  // namespace

// A hundred sections of 8.4 GB as floats, of which the file has holes alone.
TEST_F(Mrc, AsksForMemoryBeforeItReads)
{
    const qint64 nSide = 46000, nSections = 100;
    writeBytes(path("a.mrc"),
               header(int(nSide), int(nSide), int(nSections), 0).replace(92, 4, QByteArray(4, '\0')));
    if (!QFile::resize(path("a.mrc"), 1024 + nSections * nSide * nSide)) {
        GTEST_SKIP() << "no file system for a file of 200 GB";
    }
    ImageList vecImage;
    QString strReason;
    EXPECT_EQ(ReadMRC(path("a.mrc"), vecImage, &strReason), 1);
    EXPECT_TRUE(vecImage.empty());
    EXPECT_EQ(strReason, "not enough memory for 100 images of 46000 x 46000 pixels");
}

TEST_F(Mrc, ReadsEveryModeOfAnotherProgramWithTheFirstRowAtTheBottom)
{
    const struct {
        const char* pName;
        double dfFactor, dfOffset;
    } aFixture[] = {{"mode0", 2, -128},
                    {"mode1", 500, -32768},
                    {"mode2", 0.25, -3.5},
                    {"mode6", 520, 0},
                    {"mode12", 0.5, -8}};
    for (const auto& row : aFixture) {
        for (int nMax : {INT_MAX, -1, 0, 1, 2, 4}) {  // or the first sections alone
            SCOPED_TRACE(testing::Message() << row.pName << " " << nMax);
            ImageList vecImage;
            QString strReason = "left over";
            ASSERT_EQ(ReadMRC(fixture(row.pName + QString(".mrc")), vecImage, &strReason, nMax), 1);
            EXPECT_EQ(strReason, "");
            ASSERT_EQ(vecImage.size(), static_cast<size_t>(qBound(0, nMax, 3)));
            for (size_t i = 0; i < vecImage.size() * 35; ++i) {
                const CImgObj<float>& img = *vecImage[i / 35];
                const size_t x = i % 7, y = i / 7 % 5, z = i / 35;
                ASSERT_EQ(img.Width(), 7);
                ASSERT_EQ(img.Height(), 5);
                EXPECT_EQ(img.Data()[(4 - y) * 7 + x],
                          double(x + 10 * y + 40 * z) * row.dfFactor + row.dfOffset);
            }
        }
    }
}

TEST_F(Mrc, ReadsBackWideStacksOfSeveralBlocks)
{
    ImageList vecWide;
    for (int z = 0; z < 20; ++z) {
        vecWide.push_back(std::make_unique<CImgObj<float>>());
        vecWide.back()->Create(600, 100);
        for (int i = 0; i < 60000; ++i) {
            vecWide.back()->Data()[i] = static_cast<float>((i + 7 * (i / 600) + 31 * z) % 113);
        }
    }
    for (auto* pWrite : {rewrite<short>, rewrite<float>, rewrite<unsigned short>}) {
        ImageList vecImage;
        ASSERT_EQ(pWrite(vecWide, path("wide.mrc")), 1);
        ASSERT_EQ(ReadMRC(path("wide.mrc"), vecImage), 1);
        ASSERT_EQ(parsed(readBytes(path("wide.mrc")), vecImage), 1);
        ASSERT_EQ(vecImage.size(), 40u);
        for (size_t z = 0; z < 40; ++z) {
            EXPECT_EQ(std::memcmp(vecImage[z]->Data(), vecWide[z % 20]->Data(), 60000 * sizeof(float)), 0);
        }
    }
}

TEST_F(Mrc, ReadsLargeSectionsStripByStripAsItReadsThemWhole)
{
    const int nX = 701, nY = 1003;  // 1.4 MB of 16 bit, and no whole number of strips
    QByteArray bytes = header(nX, nY, 2, 1);
    bytes.resize(1024 + 2 * 2 * nX * nY);
    for (int i = 0; i < 2 * nX * nY; ++i) {
        qToLittleEndian<qint16>(qint16(i % 30011), bytes.data() + 1024 + 2 * i);
    }
    for (const int nMapR : {-1, -2}) {  // the first row at the bottom, and on top
        bytes[4 * 17] = char(nMapR);    // the other bytes of MAPR are 255 already
        writeBytes(path("large.mrc"), bytes);
        ImageList vecImage, vecWhole;
        ASSERT_EQ(ReadMRC(path("large.mrc"), vecImage), 1);
        ASSERT_EQ(parsed(bytes, vecWhole), 1);
        ASSERT_EQ(vecImage.size(), 2u);
        for (size_t z = 0; z < 2; ++z) {
            EXPECT_TRUE(std::equal(vecImage[z]->Data(), vecImage[z]->Data() + nX * nY, vecWhole[z]->Data()));
        }
    }
}

TEST_F(Mrc, WritesTheBytesThatAnotherProgramWrites)
{
    for (const auto& [pName, pWrite] :
         {std::pair("mode1.mrc", &rewrite<short>), std::pair("mode2.mrc", &rewrite<float>),
          std::pair("mode6.mrc", &rewrite<unsigned short>)}) {
        SCOPED_TRACE(pName);
        ImageList vecImage;
        ASSERT_EQ(ReadMRC(fixture(pName), vecImage), 1);
        ASSERT_EQ(pWrite(vecImage, path("out.mrc")), 1);
        const QByteArray bytesOther = readBytes(fixture(pName));
        // sizes, mode, M, cell and map axes; the other program also fills in angles, statistics and labels
        EXPECT_EQ(readBytes(path("out.mrc")), bytesOther.left(16) + QByteArray(12, 0) +
                                                  bytesOther.mid(28, 24) + QByteArray(12, 0) +
                                                  bytesOther.mid(64, 12) + QByteArray(136, 0) + "\x44\x41" +
                                                  QByteArray(810, 0) + bytesOther.mid(1024));
    }
}

TEST_F(Mrc, BrokenHeadersAndCutStacksGiveWhatIsWholeAndAReason)
{
    const QByteArray bytesPixels(70, '\1');
    const QByteArray bytesStack = readBytes(fixture("mode1.mrc"));
    const struct {
        QByteArray bytes;
        int nResult;
        size_t nImages;
        const char* pReason;
    } aCase[] = {{header(7, 5, 1, 0).left(1023), 0, 0, "truncated: 1023 of 1024 header bytes"},
                 {header(7, 5, -2, 1) + bytesPixels, 1, 0, "-2 sections"},
                 {header(2, 2, 1, 4) + bytesPixels, 1, 0, "MODE 4 (complex) is not read"},
                 {header(-7, -5, 1, 0) + bytesPixels, 1, 0, "-7 x -5 pixels"},
                 {header(65536, 32768, 1, 0) + bytesPixels, 1, 0,
                  "65536 x 32768 pixels; fewer than 2147483648 can be read"},
                 {header(46340, 46340, INT_MAX, 2) + bytesPixels, 1, 0,
                  "truncated: 1094 bytes hold 0 of 2147483647 sections of 46340 x 46340 pixels"},
                 {header(1, 1, INT_MAX, 0) + QByteArray(65537, '\1'), 1, 0, "65537 sections of 1 bytes"},
                 {header(1, 1, 65536, 0) + QByteArray(65536, '\1'), 1, 65536, ""},
                 {bytesStack.chopped(1), 1, 2, "truncated: 1233 bytes hold 2 of 3 sections of 7 x 5 pixels"},
                 {bytesStack + bytesPixels, 1, 3, ""}};
    for (const auto& row : aCase) {
        SCOPED_TRACE(row.pReason);
        writeBytes(path("broken.mrc"), row.bytes);
        ImageList vecFile, vecBytes;
        vecFile.push_back(std::make_unique<CImgObj<float>>());  // what stood in the list stays in front
        QString strFile, strBytes;
        EXPECT_EQ(ReadMRC(path("broken.mrc"), vecFile, &strFile), row.nResult);
        EXPECT_EQ(parsed(row.bytes, vecBytes, &strBytes), row.nResult);
        EXPECT_EQ(vecFile.size(), 1 + row.nImages);
        EXPECT_EQ(vecBytes.size(), row.nImages);
        EXPECT_EQ(vecFile.front()->Width(), 0);
        EXPECT_EQ(strFile, row.pReason);
        EXPECT_EQ(strBytes, row.pReason);
    }
}

TEST_F(Mrc, WritingWhatIsNoStackOrFindsNoRoom)
{
    CImgObj<float> imgA, imgB, imgLarge;
    const std::vector<float> vecPixel(10000, 1.f);
    imgA.Set(vecPixel.data(), 2, 2);
    imgB.Set(vecPixel.data(), 4, 1);
    imgLarge.Set(vecPixel.data(), 100, 100);
    const QString strFile = path("ü 帧.mrc");
    EXPECT_EQ(WriteMRC<float>({&imgA}, m_dir.path()), 0);
    EXPECT_EQ(WriteMRC<float>({&imgA}, strFile), 1);
    for (const CImgObj<float>* pImage : {&imgA, &imgLarge}) {  // within and beyond what a file object gathers
        const CFileSizeLimit limit(1000);
        EXPECT_EQ(WriteMRC<float>({pImage}, strFile), 0);
    }
    EXPECT_EQ(QFile(strFile).size(), 1040);
    EXPECT_EQ(WriteMRC<float>({&imgA, &imgB}, strFile), 1);  // sizes differ: an empty file
    EXPECT_EQ(QFile(strFile).size(), 0);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files).size(), 1);  // nothing half written is left
}

}  // namespace tessera
