#include "imagefiles/mrcfile.h"

#include "imagefiles/testfiles.h"

#include <QDir>
#include <QtEndian>

#include <climits>
#include <cstring>

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
        ImageList vecFile, vecBytes;
        QString strReason = "left over";
        ASSERT_EQ(ReadMRC(fixture(fix.pName), vecFile, &strReason), 1);
        EXPECT_EQ(strReason, "");
        ASSERT_EQ(readBytes(bytesOf(fixture(fix.pName)), vecBytes), 1);
        for (const ImageList* pList : {&vecFile, &vecBytes}) {
            ASSERT_EQ(pList->size(), 3u);
            for (int z = 0; z < 3; ++z) {
                const CImgObj<float>& img = *(*pList)[z];
                ASSERT_EQ(img.Width(), 7);
                ASSERT_EQ(img.Height(), 5);
                for (int y = 0; y < 5; ++y)
                    for (int x = 0; x < 7; ++x)
                        EXPECT_EQ(img.Data()[(4 - y) * 7 + x],
                                  (x + 10 * y + 40 * z) * fix.dfFactor + fix.dfOffset)
                            << x << ' ' << y << ' ' << z;
            }
        }
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
        const QByteArray bytes = bytesOf(strOut), bytesOther = bytesOf(fixture(row.pName));
        ASSERT_EQ(bytes.size(), bytesOther.size());
        EXPECT_EQ(bytes.mid(1024), bytesOther.mid(1024));
        // sizes, mode, M, cell and map axes; the other program also fills in angles, statistics and labels
        const QByteArray bytesExpected = bytesOther.left(16) + QByteArray(12, 0) + bytesOther.mid(28, 24) +
                                         QByteArray(12, 0) + bytesOther.mid(64, 12) + QByteArray(136, 0) +
                                         QByteArray("\x44\x41", 2) + QByteArray(810, 0);
        EXPECT_EQ(bytes.left(1024), bytesExpected);
    }
}

TEST_F(Mrc, BrokenHeadersAndCutStacksGiveWhatIsWholeAndAReason)
{
    const QByteArray bytesPixels(70, '\1');
    const QByteArray bytesStack = bytesOf(fixture("mode1.mrc"));
    const struct {
        const char* pWhat;
        QByteArray bytes;
        int nResult;
        size_t nImages;
        const char* pReason;
    } aCase[] = {{"nothing", QByteArray(), 0, 0, "truncated: 0 of 1024 header bytes"},
                 {"12 bytes", header(7, 5, 1, 0).left(12), 0, 0, "truncated: 12 of 1024 header bytes"},
                 {"1023 bytes", header(7, 5, 1, 0).left(1023), 0, 0, "truncated: 1023 of 1024 header bytes"},
                 {"no section", header(7, 5, 0, 1), 1, 0, "0 sections"},
                 {"NZ below 0", header(7, 5, -2, 1) + bytesPixels, 1, 0, "-2 sections"},
                 {"complex", header(2, 2, 1, 4) + bytesPixels, 1, 0, "MODE 4 is not read"},
                 {"MODE below 0", header(2, 2, 1, -1) + bytesPixels, 1, 0, "MODE -1 is not read"},
                 {"no column", header(0, 5, 1, 1) + bytesPixels, 1, 0, "0 x 5 pixels"},
                 {"negative sides", header(-7, -5, 1, 0) + bytesPixels, 1, 0, "-7 x -5 pixels"},
                 {"2^31 pixels", header(65536, 32768, 1, 0) + bytesPixels, 1, 0,
                  "65536 x 32768 pixels; fewer than 2147483648 can be read"},
                 {"largest numbers", header(INT_MAX, INT_MAX, INT_MAX, 2) + bytesPixels, 1, 0,
                  "2147483647 x 2147483647 pixels; fewer than 2147483648 can be read"},
                 {"large frame, short file", header(46340, 46340, INT_MAX, 2) + bytesPixels, 1, 0,
                  "truncated: 1094 bytes hold 0 of 2147483647 sections of 46340 x 46340 pixels"},
                 {"NZ huge, two sections", header(7, 5, INT_MAX, 0) + bytesPixels, 1, 2,
                  "truncated: 1094 bytes hold 2 of 2147483647 sections of 7 x 5 pixels"},
                 {"last byte missing", bytesStack.left(bytesStack.size() - 1), 1, 2,
                  "truncated: 1233 bytes hold 2 of 3 sections of 7 x 5 pixels"},
                 {"bytes behind the sections", bytesStack + bytesPixels, 1, 3, ""}};
    for (const auto& row : aCase) {
        SCOPED_TRACE(row.pWhat);
        writeBytes(path("broken.mrc"), row.bytes);
        ImageList vecFile, vecBytes;
        vecFile.push_back(std::make_unique<CImgObj<float>>());  // what stood in the list stays in front
        vecBytes.push_back(nullptr);
        QString strFile, strBytes;
        EXPECT_EQ(ReadMRC(path("broken.mrc"), vecFile, &strFile), row.nResult);
        EXPECT_EQ(readBytes(row.bytes, vecBytes, &strBytes), row.nResult);
        EXPECT_EQ(vecFile.size(), 1 + row.nImages);
        EXPECT_EQ(vecBytes.size(), 1 + row.nImages);
        EXPECT_EQ(vecFile.front()->Width(), 0);
        EXPECT_EQ(strFile, row.pReason);
        EXPECT_EQ(strBytes, row.pReason);
    }
}

TEST_F(Mrc, TheFirstSectionsAloneCanBeRead)
{
    for (int nMax : {-1, 0, 1, 2, 4}) {
        ImageList vecImage;
        QString strReason;
        EXPECT_EQ(ReadMRC(fixture("mode6.mrc"), vecImage, &strReason, nMax), 1);
        EXPECT_EQ(vecImage.size(), static_cast<size_t>(qBound(0, nMax, 3)));
        EXPECT_EQ(strReason, "");
    }
}

TEST_F(Mrc, PathsThatCannotBeOpenedFail)
{
    ImageList vecImage;
    QString strReason;
    EXPECT_EQ(ReadMRC(path("absent.mrc"), vecImage, &strReason), 0);
    EXPECT_NE(strReason, "");
    EXPECT_EQ(ReadMRC(m_dir.path(), vecImage, &strReason), 0);
    EXPECT_EQ(strReason, "not a file");
    EXPECT_EQ(ReadMRC("/dev/zero", vecImage, &strReason), 0);
    EXPECT_TRUE(vecImage.empty());
}

TEST_F(Mrc, WritingWhatIsNoStack)
{
    CImgObj<float> imgA, imgB;
    const float aPixel[] = {1, 2, 3, 4};
    imgA.Set(aPixel, 2, 2);
    imgB.Set(aPixel, 4, 1);
    EXPECT_EQ(WriteMRC<float>({}, path("none.mrc")), 0);
    EXPECT_FALSE(QFile::exists(path("none.mrc")));
    EXPECT_EQ(WriteMRC<float>({&imgA}, path("no/such/folder.mrc")), 0);
    EXPECT_EQ(WriteMRC<float>({&imgA}, m_dir.path()), 0);

    EXPECT_EQ(WriteMRC<float>({&imgA}, path("ü 帧.mrc")), 1);
    EXPECT_EQ(bytesOf(path("ü 帧.mrc")).size(), 1040);
    EXPECT_EQ(WriteMRC<float>({&imgA, &imgB}, path("ü 帧.mrc")),
              1);  // sizes differ: replaced by an empty file
    EXPECT_EQ(bytesOf(path("ü 帧.mrc")).size(), 0);
    EXPECT_EQ(WriteMRC<float>({&imgA, nullptr}, path("null.mrc")), 1);
    EXPECT_EQ(bytesOf(path("null.mrc")).size(), 0);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files).size(), 2);  // nothing half written is left
}
