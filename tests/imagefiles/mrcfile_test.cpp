#include "imagefiles/mrcfile.h"

#include "imagefiles/filesizelimit.h"
#include "imagefiles/testfiles.h"

#include <QDir>
#include <QtEndian>

#include <climits>

namespace {

const struct Fixture {
    const char* pName;
    double dfFactor, dfOffset;
} FIXTURES[] = {
    {"mode0.mrc", 2, -128}, {"mode1.mrc", 500, -32768}, {"mode2.mrc", 0.25, -3.5}, {"mode6.mrc", 520, 0}};

class Mrc : public FileTest {};

QByteArray header(int nX, int nY, int nZ, int nMode)
{
    QByteArray bytes(1024, '\xff');  // whatever the rest of the header holds does not matter
    const int aField[] = {nX, nY, nZ, nMode};
    for (int i = 0; i < 4; ++i)
        qToLittleEndian<qint32>(aField[i], bytes.data() + 4 * i);
    return bytes;
}

int readBytes(const QByteArray& bytes, ImageList& vecImage, QString* pReason = nullptr)
{
    return readMrcBytes(reinterpret_cast<const uint8_t*>(bytes.constData()),
                        static_cast<size_t>(bytes.size()), vecImage, pReason);
}

float wideValue(int nX, int nY, int nZ)
{
    return static_cast<float>((nX + 7 * nY + 31 * nZ) % 113);
}

/// Sections of 600 × 100 pixels, rows bottom up.
template <class T>
QByteArray wideStack(int nMode, int nSections)
{
    QByteArray bytes = header(600, 100, nSections, nMode);
    for (int z = 0; z < nSections; ++z)
        for (int y = 99; y >= 0; --y)
            for (int x = 0; x < 600; ++x) {
                const T value = qToLittleEndian(static_cast<T>(wideValue(x, y, z)));
                bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
            }
    return bytes;
}

/// Writes what the reader made of a fixture with element type `T`.
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

TEST_F(Mrc, ReadsEveryModeOfAnotherProgramWithTheFirstRowAtTheBottom)
{
    for (const Fixture& fix : FIXTURES) {
        SCOPED_TRACE(fix.pName);
        ImageList vecImage;
        QString strReason = "left over";
        ASSERT_EQ(ReadMRC(fixture(fix.pName), vecImage, &strReason), 1);
        EXPECT_EQ(strReason, "");
        ASSERT_EQ(vecImage.size(), 3u);
        for (int i = 0; i < 3 * 35; ++i) {
            const CImgObj<float>& img = *vecImage[static_cast<size_t>(i / 35)];
            const int x = i % 7, y = i / 7 % 5, z = i / 35;
            ASSERT_TRUE(img.Width() == 7 && img.Height() == 5);
            EXPECT_EQ(img.Data()[(4 - y) * 7 + x], (x + 10 * y + 40 * z) * fix.dfFactor + fix.dfOffset) << i;
        }
        for (int nMax : {-1, 0, 1, 2, 4}) {  // the first sections alone
            vecImage.clear();
            EXPECT_EQ(ReadMRC(fixture(fix.pName), vecImage, &strReason, nMax), 1);
            EXPECT_EQ(vecImage.size(), static_cast<size_t>(qBound(0, nMax, 3)));
            EXPECT_EQ(strReason, "");
        }
    }
}

TEST_F(Mrc, ReadsStacksOfSeveralBlocks)
{
    const QByteArray aStack[] = {wideStack<qint8>(0, 20), wideStack<qint16>(1, 19), wideStack<float>(2, 9),
                                 wideStack<quint16>(6, 8)};
    for (const QByteArray& bytes : aStack) {
        ImageList vecImage;
        writeBytes(path("wide.mrc"), bytes);
        ASSERT_EQ(ReadMRC(path("wide.mrc"), vecImage), 1);
        const int nSections = bytes[8];
        ASSERT_EQ(readBytes(bytes, vecImage), 1);
        ASSERT_EQ(vecImage.size(), static_cast<size_t>(2 * nSections));
        int nWrong = 0;
        for (int z = 0; z < 2 * nSections; ++z)
            for (int i = 0; i < 60000; ++i)
                nWrong += vecImage[static_cast<size_t>(z)]->Data()[i] !=
                          wideValue(i % 600, i / 600, z % nSections);
        EXPECT_EQ(nWrong, 0) << "mode " << int(bytes[12]);
    }
}

TEST_F(Mrc, WritesTheBytesThatAnotherProgramWrites)
{
    const QString strOut = path("out.mrc");
    const struct {
        const char* pName;
        int (*pWrite)(const ImageList&, const QString&);
    } aCase[] = {{"mode1.mrc", rewrite<short>},
                 {"mode2.mrc", rewrite<float>},
                 {"mode2.mrc", WriteMRC},
                 {"mode6.mrc", rewrite<unsigned short>}};
    for (const auto& row : aCase) {
        SCOPED_TRACE(row.pName);
        ImageList vecImage;
        ASSERT_EQ(ReadMRC(fixture(row.pName), vecImage), 1);
        ASSERT_EQ(row.pWrite(vecImage, strOut), 1);
        const QByteArray bytesOther = bytesOf(fixture(row.pName));
        // sizes, mode, M, cell and map axes; the other program also fills in angles, statistics and labels
        EXPECT_EQ(bytesOf(strOut), bytesOther.left(16) + QByteArray(12, 0) + bytesOther.mid(28, 24) +
                                       QByteArray(12, 0) + bytesOther.mid(64, 12) + QByteArray(136, 0) +
                                       QByteArray("\x44\x41", 2) + QByteArray(810, 0) + bytesOther.mid(1024));
    }
}

TEST_F(Mrc, BrokenHeadersAndCutStacksGiveWhatIsWholeAndAReason)
{
    const QByteArray bytesPixels(70, '\1');
    const QByteArray bytesStack = bytesOf(fixture("mode1.mrc"));
    const struct {
        QByteArray bytes;
        int nResult;
        size_t nImages;
        const char* pReason;
    } aCase[] = {{header(7, 5, 1, 0).left(1023), 0, 0, "truncated: 1023 of 1024 header bytes"},
                 {header(7, 5, -2, 1) + bytesPixels, 1, 0, "-2 sections"},
                 {header(2, 2, 1, 4) + bytesPixels, 1, 0, "MODE 4 is not read"},
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
        EXPECT_EQ(readBytes(row.bytes, vecBytes, &strBytes), row.nResult);
        EXPECT_EQ(vecFile.size(), 1 + row.nImages);
        EXPECT_EQ(vecBytes.size(), row.nImages);
        EXPECT_EQ(vecFile.front()->Width(), 0);
        EXPECT_EQ(strFile, row.pReason);
        EXPECT_EQ(strBytes, row.pReason);
    }
    for (const QString& strFile : {path("absent.mrc"), m_dir.path(), QStringLiteral("/dev/zero")}) {
        ImageList vecImage;
        QString strReason;
        EXPECT_EQ(ReadMRC(strFile, vecImage, &strReason), 0);
        EXPECT_NE(strReason, "");
    }
}

TEST_F(Mrc, WritingWhatIsNoStackOrFindsNoRoom)
{
    CImgObj<float> imgA, imgB, imgLarge;
    const std::vector<float> vecPixel(10000, 1.f);
    imgA.Set(vecPixel.data(), 2, 2);
    imgB.Set(vecPixel.data(), 4, 1);
    imgLarge.Set(vecPixel.data(), 100, 100);
    EXPECT_EQ(WriteMRC<float>({&imgA}, m_dir.path()), 0);
    EXPECT_EQ(WriteMRC<float>({&imgA}, path("ü 帧.mrc")), 1);
    EXPECT_EQ(bytesOf(path("ü 帧.mrc")).size(), 1040);
    for (const CImgObj<float>* pImage : {&imgA, &imgLarge}) {  // within and beyond what a file object gathers
        const CFileSizeLimit limit(1000);
        EXPECT_EQ(WriteMRC<float>({pImage}, path("ü 帧.mrc")), 0);
    }
    EXPECT_EQ(bytesOf(path("ü 帧.mrc")).size(), 1040);
    EXPECT_EQ(WriteMRC<float>({&imgA, &imgB}, path("ü 帧.mrc")), 1);  // sizes differ: an empty file
    EXPECT_EQ(bytesOf(path("ü 帧.mrc")).size(), 0);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files).size(), 1);  // nothing half written is left
}
