#include "imagefiles/mrcheader.h"

#include "imagefiles/filekind.h"
#include "imagefiles/mrcfile.h"
#include "tests/imagefiles/testfiles.h"

#include <QtEndian>

#include <climits>
#include <cmath>

namespace tessera {

namespace {

/// Bytes with fields at their places, in one order.
class CFields {
public:
    CFields(int nSize, bool bBigEndian) : m_bytes(nSize, '\0'), m_bBigEndian(bBigEndian) {}

    template <class T>
    CFields& put(int nOffset, T value)
    {
        char* const p = m_bytes.data() + nOffset;
        m_bBigEndian ? qToBigEndian<T>(value, p) : qToLittleEndian<T>(value, p);
        return *this;
    }
    CFields& text(int nOffset, const QByteArray& str)
    {
        m_bytes.replace(nOffset, str.size(), str);
        return *this;
    }
    operator QByteArray() const { return m_bytes; }

private:
    QByteArray m_bytes;
    bool m_bBigEndian;
};

CFields header(int nX, int nY, int nZ, int nMode, bool bBigEndian = false)
{
    CFields fields(1024, bBigEndian);
    fields.put(0, nX).put(4, nY).put(8, nZ).put(12, nMode);
    return fields.text(208, "MAP ").text(212, bBigEndian ? "\x11\x11" : "DD");
}

class MrcHeader : public FileTest {
protected:
    std::vector<double> pixels(const QByteArray& bytes, int nFirst = 0, int nMaxImages = INT_MAX)
    {
        writeBytes(path("a.mrc"), bytes);
        ImageList vecImage;
        std::vector<double> vecPixel;
        m_bRead = readMrcFrames(path("a.mrc"), nFirst, nMaxImages, vecImage, m_strReason);
        for (const auto& pImage : vecImage) {
            vecPixel.insert(vecPixel.end(), pImage->Data(),
                            pImage->Data() + pImage->Width() * pImage->Height());
        }
        return vecPixel;
    }
    FrameHeader headerOf(const QByteArray& bytes, int nImage = 0)
    {
        writeBytes(path("a.mrc"), bytes);
        return readMrcHeader(path("a.mrc"), nImage);
    }
    bool m_bRead = false;
    QString m_strReason;
};

template <class T>
QByteArray pixelBytes(const std::vector<T>& vecPixel, bool bBigEndian)
{
    CFields fields(int(vecPixel.size() * sizeof(T)), bBigEndian);
    for (size_t i = 0; i < vecPixel.size(); ++i) {
        fields.put(int(i * sizeof(T)), vecPixel[i]);
    }
    return fields;
}

QString named(const ToldNumber& told)
{
    return QStringLiteral("%1 %2").arg(told.strSource).arg(told.df);
}

}  // namespace

/// A file of three sections of 1 × 2 pixels in one of the modes.
struct ThreeSections {
    int nMode;
    bool bBig;
    int nExtended;
    bool bStamp;
    QByteArray pixels;
    std::vector<double> vecPixel;  ///< the rows upwards

    QByteArray bytes() const
    {
        CFields fields = header(1, 2, 3, nMode, bBig).put(92, nExtended);
        if (!bStamp) {
            fields.text(212, "\x3f\x3f");
        }
        return fields + QByteArray(nExtended, '\x55') + pixels;
    }
};

/// Every mode in both orders, with and without an extended header and the stamp of the order.
std::vector<ThreeSections> threeSections()
{
    const quint16 anHalf[] = {0x3c00, 0xc000, 0x7bff, 0x0001, 0x7c00, 0x03ff};  // IEEE 754, by hand
    const std::vector<double> vecHalf = {1, -2, 65504, std::ldexp(1., -24), INFINITY, std::ldexp(1023., -24)};
    std::vector<ThreeSections> vec;
    for (int n = 0; n < 8; ++n) {
        const bool b = n & 1, bStamp = n & 4;
        const int nExtended = n & 2 ? 40 : 0;
        vec.insert(
            vec.end(),
            {{1, b, nExtended, bStamp, pixelBytes<qint16>({-3, 258, 5, 6, 7, 8}, b), {-3, 258, 5, 6, 7, 8}},
             {2,
              b,
              nExtended,
              bStamp,
              pixelBytes<float>({-.5f, 1e20f, 5, 6, 7, 8}, b),
              {-.5, double(1e20f), 5, 6, 7, 8}},
             {6,
              b,
              nExtended,
              bStamp,
              pixelBytes<quint16>({65535, 258, 5, 6, 7, 8}, b),
              {65535, 258, 5, 6, 7, 8}},
             {12, b, nExtended, bStamp, pixelBytes<quint16>({anHalf, anHalf + 6}, b), vecHalf}});
    }
    return vec;
}

void PrintTo(const ThreeSections& file, std::ostream* pStream)
{
    *pStream << "mode " << file.nMode << (file.bBig ? ", big-endian" : "") << ", extended by "
             << file.nExtended << (file.bStamp ? "" : ", without a stamp");
}

class MrcSections : public MrcHeader, public testing::WithParamInterface<ThreeSections> {};

INSTANTIATE_TEST_SUITE_P(AllModes, MrcSections, testing::ValuesIn(threeSections()));

TEST_P(MrcSections, AreReadFromTheOneAskedFor)
{
    const QByteArray bytes = GetParam().bytes();
    const std::vector<double>& v = GetParam().vecPixel;
    EXPECT_EQ(pixels(bytes), (std::vector<double>{v[1], v[0], v[3], v[2], v[5], v[4]}));
    EXPECT_EQ(pixels(bytes, 1, 1), (std::vector<double>{v[3], v[2]}));
    EXPECT_EQ(pixels(bytes, 2, INT_MAX), (std::vector<double>{v[5], v[4]}));
    EXPECT_TRUE(m_bRead);
    EXPECT_EQ(m_strReason, "");
    EXPECT_TRUE(pixels(bytes, 3, 1).empty());
    EXPECT_FALSE(m_bRead);
    EXPECT_EQ(m_strReason, "image 4 of 3");
    EXPECT_EQ(headerOf(bytes, 2).size, QSize(1, 2));
    EXPECT_EQ(headerOf(bytes).nImages, 3);
    EXPECT_FALSE(headerOf(bytes, 3).size.isValid());
}

TEST_P(MrcSections, ThatAreWholeAreReadFromAFileThatIsCut)
{
    const QByteArray bytes = GetParam().bytes();
    const int nHeader = 1024 + GetParam().nExtended;
    writeBytes(path("a.mrc"), bytes);
    for (int n = bytes.size() - 1; n >= nHeader; --n) {
        ASSERT_TRUE(QFile::resize(path("a.mrc"), n));
        const int nWhole = 3 * (n - nHeader) / GetParam().pixels.size();
        ImageList vecImage;
        EXPECT_TRUE(readMrcFrames(path("a.mrc"), 0, 3, vecImage, m_strReason));
        EXPECT_EQ(vecImage.size(), size_t(nWhole));
        EXPECT_TRUE(m_strReason.startsWith("truncated: ")) << qPrintable(m_strReason);
        EXPECT_EQ(readMrcHeader(path("a.mrc"), 0).size.isValid(), nWhole > 0);
    }
}

TEST_F(MrcHeader, AnExtendedHeaderThatCannotBeIsNone)
{
    const auto file = [](int nExtended, const char* pKind, int nBytes) {
        return header(2, 2, 1, 0).put(92, nExtended).text(104, pKind) +
               QByteArray("abcdefghijkl").left(nBytes);
    };
    const std::vector<double> vecFirst{'c', 'd', 'a', 'b'}, vecLater{'g', 'h', 'e', 'f'};
    EXPECT_EQ(pixels(file(-4, "", 8)), vecFirst);
    EXPECT_EQ(pixels(file(9, "", 8)), vecFirst);
    EXPECT_EQ(pixels(file(INT_MAX, "FEI1", 8)), vecFirst);
    EXPECT_EQ(pixels(file(4, "", 4)), vecFirst) << "as long as without";
    EXPECT_EQ(pixels(file(4, "", 8)), vecLater);
    EXPECT_EQ(pixels(file(4, "", 9)), vecLater);
    EXPECT_TRUE(pixels(file(4, "SERI", 4)).empty()) << "cut";
}

const int g_nSignature = 1146047817;  // of IMOD, in the field of its stamp

TEST_F(MrcHeader, RowsRunDownwardsWhereTheProgramWroteThemSo)
{
    const auto rows = [](int nVersion, const char* pKind, int nStamp, int nAxis) {
        return header(1, 2, 1, 1)
                   .text(104, pKind)
                   .put(108, nVersion)
                   .put(152, nStamp)
                   .put(64, 1)
                   .put(68, nAxis)
                   .put(72, 3) +
               QByteArray("\1\0\2\0", 4);
    };
    const std::vector<double> vecDown{1, 2}, vecUp{2, 1};
    EXPECT_EQ(pixels(rows(20140, "FEI1", 0, 2)), vecDown);
    EXPECT_EQ(headerOf(rows(20140, "FEI2", 0, 2)).listDoubt.size(), 1);
    EXPECT_EQ(pixels(rows(20140, "FEI2", g_nSignature, 2)), vecUp);
    EXPECT_EQ(pixels(rows(20141, "FEI2", 0, 2)), vecUp);
    EXPECT_EQ(pixels(rows(20140, "SERI", 0, 2)), vecUp);
    EXPECT_EQ(pixels(rows(0, "", 0, -2)), vecDown);
}

TEST_F(MrcHeader, BytesHaveASignByFlagOrByTheirLimits)
{
    const struct {
        int nStamp, nFlags;
        float fMin, fMax;
        double dfPixel;
        bool bGuessed;
    } aSign[] = {{g_nSignature, 1, 0, 200, -56, false},
                 {g_nSignature, 0, -9, 9, 200, false},
                 {0, 1, 0, 200, 200, false},
                 {0, 0, -100, 100, -56, false},
                 {0, 0, -50, 200, 200, true},
                 {0, 0, -120, 140, -56, true},
                 {0, 0, 0, 0, -56, true},
                 {0, 0, 9, -9, -56, true},
                 {0, 0, 0, NAN, -56, true}};
    for (const auto& row : aSign) {
        const QByteArray bytes =
            header(1, 1, 1, 0).put(152, row.nStamp).put(156, row.nFlags).put(76, row.fMin).put(80, row.fMax) +
            QByteArray("\xc8");
        EXPECT_EQ(pixels(bytes), std::vector<double>{row.dfPixel}) << row.fMin << " " << row.fMax;
        EXPECT_EQ(headerOf(bytes).listDoubt.size(), int(row.bGuessed)) << row.fMin << " " << row.fMax;
    }
}

TEST_F(MrcHeader, HalfBytesArePixels)
{
    const QByteArray bytesPacked("\x21\x03\x54\x06");
    EXPECT_EQ(pixels(header(3, 2, 1, 101) + bytesPacked), (std::vector<double>{4, 5, 6, 1, 2, 3}));
    for (const CFields& fields : {header(2, 2, 1, 0).text(240, "data with 4 bits packed"),
                                  header(2, 2, 1, 0).put(152, g_nSignature).put(156, 32)}) {
        EXPECT_EQ(pixels(fields + bytesPacked), (std::vector<double>{4, 5, 6, 0, 1, 2, 3, 0}));
        EXPECT_EQ(headerOf(fields + bytesPacked).size, QSize(4, 2));
    }
    EXPECT_TRUE(pixels(header(INT_MAX, 1, 1, 0).text(240, "4 bits packed") + bytesPacked).empty());
}

TEST_F(MrcHeader, AFileOfBeforeTheMarkIsKnownByItsLength)
{
    QByteArray old = header(2, 2, 1, 0) + QByteArray("abcd");
    writeBytes(path("old.img"), old.replace(208, 4, QByteArray(4, 0)));
    EXPECT_EQ(misnamedHint(path("old.img")).count("MRC"), 1);
    writeBytes(path("old.img"), old + 'x');
    EXPECT_EQ(misnamedHint(path("old.img")), "");
}

/// Records of FEI, in one byte order.
class FeiRecords : public MrcHeader, public testing::WithParamInterface<bool> {
protected:
    static CFields record(double dfAlpha, bool bMasks = true)
    {
        CFields fields(888, GetParam());
        for (const int nMask : {8, 297, 490, 748}) {
            fields.put(nMask, bMasks ? quint32(0xffffffff) : quint32(0));
        }
        fields.put(0, 888)
            .text(68, "3.7")
            .put(84, 2e5)
            .put(100, dfAlpha)
            .put(140, 85.)
            .put(156, 2.5e7)
            .put(164, 2.6e7)
            .put(248, 1)
            .put(301, 0.75)
            .put(419, 0.5)
            .text(435, "Camera 1");
        return fields.put(820, -20.).put(828, 10.).put(836, 15.).put(852, 1).put(856, 0);
    }
    static QByteArray file(const QByteArray& records, int nImages = 2)
    {
        return header(2, 1, nImages, 1, GetParam()).put(92, 4096).text(104, "FEI2") + records +
               QByteArray(4096 - records.size(), '\0') + QByteArray(8, '\1');
    }
};

INSTANTIATE_TEST_SUITE_P(BothByteOrders, FeiRecords, testing::Bool());

TEST_P(FeiRecords, TellTheMicroscopeAndTheRangeOfTilts)
{
    const FrameHeader one = headerOf(file(record(-3) + record(12.5)), 1);
    EXPECT_EQ(one.nImages, 2);
    EXPECT_EQ(named(one.kilovolts), "FEI2: HT 200");
    EXPECT_EQ(named(one.cameraLength), "FEI2: camera length 750");
    EXPECT_EQ(named(one.pixelSize), "FEI2: pixel size X 0.0025");
    EXPECT_EQ(named(one.exposure), "FEI2: integration time 0.5");
    EXPECT_EQ(named(one.tiltStart), "FEI2: start tilt -5");  // the range is that of both images
    EXPECT_FALSE(one.tilt.isTold());
    EXPECT_EQ(named(one.tiltStep), "FEI2: tilt per image 15");
    EXPECT_EQ(one.beamX.df, 1);
    EXPECT_EQ(one.beamY.df, 0);
    EXPECT_EQ(one.strDetector, "Camera 1");
    EXPECT_FALSE(one.rotationAxis.isTold());
    EXPECT_EQ(one.listDoubt.size(), 3);  // pixels not square, the sense of the axis, the beam's row
    const FrameHeader lone = headerOf(file(record(1).put(828, -5.), 1));  // the range is its own
    EXPECT_EQ(named(lone.tiltStart), "FEI2: start tilt -20");
}

TEST_P(FeiRecords, TellNothingThatTheirMasksDoNotAllow)
{
    const FrameHeader one = headerOf(file(record(-3, false) + record(12.5, false)), 1);
    EXPECT_EQ(one.nImages, 2);
    for (const ToldNumber& told : {one.kilovolts, one.tilt, one.beamX, one.tiltStep, one.pixelSize}) {
        EXPECT_EQ(named(told), named(ToldNumber()));
    }
    EXPECT_TRUE(one.listDoubt.isEmpty());
    EXPECT_EQ(one.strDetector, "");
}

// A step apart; a pixel in metres is that of an image.
TEST_P(FeiRecords, OfImagesThatStoodStillTellTheirTilt)
{
    const FrameHeader still = headerOf(file(record(1).put(156, 5e-9).put(248, 2).put(828, -35.)));
    EXPECT_FALSE(still.pixelSize.isTold());
    EXPECT_FALSE(still.cameraLength.isTold());
    EXPECT_FALSE(still.tiltStart.isTold());
    EXPECT_EQ(named(still.tilt), "FEI2: alpha tilt 1");
    EXPECT_EQ(still.tiltStep.df, -15);
}

TEST_P(FeiRecords, OfARunOrOfVeloxLeaveDoubts)
{
    const FrameHeader run = headerOf(file(record(1).put(828, 70.).text(68, "4.4.0.4981").put(852, 2)));
    EXPECT_FALSE(run.tiltStart.isTold());
    EXPECT_FALSE(run.beamX.isTold());
    EXPECT_NEAR(run.tilt.df, 0.0174533, 1e-6);
    EXPECT_EQ(run.listDoubt.size(), 4);  // where in the run, the tilt, square pixels, the axis
    EXPECT_EQ(headerOf(file(record(1).put(836, 0.).text(52, "Velox"))).listDoubt.size(), 4);
}

TEST_P(FeiRecords, ThatAreDamagedOrMissingTellNothing)
{
    const FrameHeader none = headerOf(
        file(record(NAN).put(84, -1.).put(156, double(INFINITY)).put(836, double(NAN))));
    EXPECT_FALSE(none.tilt.isTold());
    EXPECT_FALSE(none.kilovolts.isTold());
    EXPECT_FALSE(none.pixelSize.isTold());
    EXPECT_FALSE(none.tiltStep.isTold());
    EXPECT_FALSE(headerOf(file(record(1)), 1).kilovolts.isTold()) << "there is one for the first image";
    EXPECT_FALSE(headerOf(file(record(1).put(0, 700))).kilovolts.isTold());
}

TEST_F(MrcHeader, OtherRecordsTellTheTilt)
{
    for (const bool bBig : {false, true}) {
        const auto counts = [&](int nBytes, qint16 nFirst, qint16 nSecond, const char* pKind) {
            return header(1, 1, 2, 0, bBig)
                .put(76, -1.f)
                .put(80, 1.f)
                .put(92, nBytes)
                .text(104, pKind)
                .put(128, nFirst)
                .put(130, nSecond);
        };
        const QByteArray records = CFields(16, bBig).put<qint16>(0, -4512).put<qint16>(8, 6000);
        const QByteArray serialEm = counts(16, 8, 3, "SERI") + records + "ab";  // tilt and piece coordinates
        EXPECT_EQ(named(headerOf(serialEm).tilt), "SERI: tilt angle -45.12");
        EXPECT_EQ(named(headerOf(serialEm, 1).tilt), "SERI: tilt angle 60");
        for (const QByteArray& bytes : {QByteArray(counts(16, 6, 3, "SERI") + records + "ab"),
                                        QByteArray(counts(16, 6, 2, "SERI") + records + "ab"),
                                        QByteArray(counts(8, 8, 3, "SERI") + records.left(8) + "ab")}) {
            EXPECT_FALSE(headerOf(bytes).tilt.isTold());
        }

        CFields old(131072, bBig);
        old.put(128, -30.5f).put(128 + 32, 0.5f).put(128 + 40, 85.f).put(128 + 44, 1e7f).put(128 + 52, 3e5f);
        for (const qint16 nIntegers : {0, 128}) {
            const QByteArray bytes = counts(131072, nIntegers, 32, "") + old + "ab";
            const FrameHeader told = headerOf(bytes, 1);
            EXPECT_EQ(named(told.tilt), "FEI: alpha tilt -30.5");
            EXPECT_EQ(told.kilovolts.df, 300);
            EXPECT_EQ(told.exposure.df, 0.5);
            EXPECT_NEAR(told.pixelSize.df, 0.001, 1e-9);
            EXPECT_EQ(told.listDoubt.size(), 1);  // of the axis
            EXPECT_FALSE(headerOf(bytes, 0).tilt.isTold()) << "a record that is not filled in";
        }
        const QByteArray agard = CFields(24, bBig).put(4, 10.f).put(16, 20.f);
        EXPECT_EQ(named(headerOf(counts(24, 1, 2, "AGAR") + agard + "ab", 1).tilt), "AGAR: first number 20");
        EXPECT_FALSE(headerOf(counts(24, 1, 2, "") + agard + "ab", 1).tilt.isTold());
    }
}

}  // namespace tessera
