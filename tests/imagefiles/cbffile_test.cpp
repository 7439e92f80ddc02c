#include "imagefiles/cbffile.h"

#include "imagefiles/frameformats.h"
#include "tests/imagefiles/testfiles.h"

#include <QtEndian>

#include <cmath>
#include <cstdint>

namespace tessera {

namespace {

template <class T>
QByteArray little(T value)
{
    QByteArray bytes(sizeof(T), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

/// The shortest code of each difference.
QByteArray packed(const std::vector<int64_t>& vecValue)
{
    QByteArray bytes;
    int64_t nFormer = 0;
    for (const int64_t n : vecValue) {
        const int64_t nStep = n - nFormer;
        nFormer = n;
        if (std::abs(nStep) < 0x80) {
            bytes += little(static_cast<int8_t>(nStep));
        } else if (std::abs(nStep) < 0x8000) {
            bytes += little<int8_t>(INT8_MIN) + little(static_cast<int16_t>(nStep));
        } else if (std::abs(nStep) < 0x80000000LL) {
            bytes += little<int8_t>(INT8_MIN) + little<int16_t>(INT16_MIN) +
                     little(static_cast<int32_t>(nStep));
        } else {
            bytes += little<int8_t>(INT8_MIN) + little<int16_t>(INT16_MIN) + little(INT32_MIN) +
                     little(nStep);
        }
    }
    return bytes;
}

struct Cbf {
    QByteArray bytesPixels;
    QByteArray bytesType = "signed 32-bit integer";
    QByteArray bytesPacking = "x-CBF_BYTE_OFFSET";
    QByteArray bytesMore = {};  // MIME lines
    QByteArray bytesHeader = {};
    int nWidth = 4, nHeight = 2;

    QByteArray bytes(const QByteArray& bytesEnd = "\r\n") const
    {
        QByteArray bytesText = "###CBF: VERSION 1.5\n\ndata_x\n\n_array_data.header_contents\n;\n" +
                               bytesHeader +
                               "\n;\n\n_array_data.data\n;\n--CIF-BINARY-FORMAT-SECTION--\nContent-Type: "
                               "application/octet-stream;\n     conversions=\"" +
                               bytesPacking + "\"\nX-Binary-Element-Type: \"" + bytesType +
                               "\"\nX-Binary-Size-Fastest-Dimension: " + QByteArray::number(nWidth) +
                               "\nX-Binary-Size-Second-Dimension: " + QByteArray::number(nHeight) + '\n' +
                               bytesMore + "\n\n";
        return bytesText.replace('\n', bytesEnd) + "\x0c\x1a\x04\xd5" + bytesPixels;
    }
};

class CbfFile : public FileTest {
protected:
    bool read(const QByteArray& bytes)
    {
        m_vecImage.clear();
        return readCbfFrames(writeBytes(path("a.cbf"), bytes), 0, 1, m_vecImage, m_strReason);
    }
    FrameHeader told(const QByteArray& bytesLines) const
    {
        const Cbf cbf{QByteArray(8, '\0'), "signed 32-bit integer", "x-CBF_BYTE_OFFSET", {}, bytesLines};
        return readCbfHeader(writeBytes(path("a.cbf"), cbf.bytes()), 0);
    }
    /// Reads 4 x 2 pixels and compares.
    void expectPixels(const QByteArray& bytes, const std::vector<float>& vecExpected)
    {
        ASSERT_TRUE(read(bytes)) << m_strReason.toStdString();
        ASSERT_EQ(m_vecImage.size(), 1);
        ASSERT_EQ(m_vecImage[0]->Width(), 4);
        ASSERT_EQ(m_vecImage[0]->Height(), 2);
        for (size_t i = 0; i < 8; ++i) {
            const float f = m_vecImage[0]->Data()[i];
            EXPECT_TRUE(std::isnan(vecExpected[i]) ? std::isnan(f) : f == vecExpected[i]) << i << ": " << f;
        }
        EXPECT_EQ(frameFormatOf(path("a.cbf")).strName, "CBF");
        EXPECT_EQ(readCbfHeader(path("a.cbf"), 0).size, QSize(4, 2));
    }

    ImageList m_vecImage;
    QString m_strReason;
};

}  // namespace

TEST_F(CbfFile, DifferencesOfEveryLengthAreUnpacked)
{
    // codes as another program writes them: a difference of -128 needs two bytes
    expectPixels(
        Cbf{QByteArray::fromHex("00 01 8080ff 808000 808000 80008067800000 800080407fffff 00")}.bytes(),
        {0, 1, NAN, 1, 129, 33000, 40, 40});
    const std::vector<int64_t> vecWide = {0, 127, -1, -2, 32767, 1 << 24, INT32_MAX, 5};
    for (const char* pEnd : {"\r\n", "\n"}) {
        expectPixels(Cbf{packed(vecWide) + QByteArray(4095, '\0')}.bytes(pEnd),
                     {0, 127, NAN, NAN, 32767, 1 << 24, 2147483648.f, 5});
    }
    // a step that overflows 32 bits comes as 1, or as a step of 8 bytes
    const QByteArray bytesTop = packed({1, 2, 3, 4, 5, INT32_MAX}), bytesLast = packed({1});
    expectPixels(Cbf{bytesTop + "\1" + bytesLast}.bytes(), {1, 2, 3, 4, 5, 2147483648.f, NAN, NAN});
    expectPixels(Cbf{bytesTop + "\1" + bytesLast, "unsigned 32-bit integer"}.bytes(),
                 {1, 2, 3, 4, 5, 2147483648.f, 2147483648.f, 2147483648.f});
    expectPixels(Cbf{packed({0, INT32_MAX, INT32_MIN, -1, 9, 8, 7, 6})}.bytes(),
                 {0, 2147483648.f, NAN, NAN, 9, 8, 7, 6});
    expectPixels(Cbf{packed({0, 1LL << 40, 0, -1, 9, 8, 7, 65535}), "signed 64-bit integer"}.bytes(),
                 {0, 1099511627776.f, 0, NAN, 9, 8, 7, 65535});
    expectPixels(Cbf{packed({0, 65535, 2, 3, 4, 40000, 6, 7}), "unsigned 16-bit integer"}.bytes(),
                 {0, 65535, 2, 3, 4, 40000, 6, 7});
}

TEST_F(CbfFile, PlainPixelsAreReadInEitherOrder)
{
    QByteArray bytesLittle, bytesBig, bytesReal;
    for (const qint32 n : {0, 1, -1, -2, 70000, 1 << 24, 6, 7}) {
        bytesLittle += little(n);
        bytesBig += little(qbswap(n));
        bytesReal += little(n / 2.f);
    }
    const std::vector<float> vecExpected = {0, 1, NAN, NAN, 70000, 1 << 24, 6, 7};
    const QByteArray bytesInt("signed 32-bit integer");
    expectPixels(Cbf{bytesLittle, bytesInt, "x-CBF_NONE"}.bytes(), vecExpected);
    expectPixels(Cbf{bytesBig, bytesInt, "x-CBF_NONE", "X-Binary-Element-Byte-Order: BIG_ENDIAN"}.bytes("\n"),
                 vecExpected);
    expectPixels(Cbf{bytesReal, "signed 32-bit real IEEE", "x-CBF_NONE"}.bytes(),
                 {0, 0.5f, -0.5f, -1, 35000, 1 << 23, 3, 3.5f});
}

TEST_F(CbfFile, TheLinesOfACameraAreTold)
{
    const FrameHeader header = told(
        "# Detector: EIGER-like 12, S/N E-01\n# 2021-02-03T04:05:06.789\n# Pixel_size 75e-6 m x 75e-6 m\n"
        "# Exposure_time 0.25 s\n# Exposure_period 0.5 s\n# Count_cutoff = 65000 counts\n"
        "# Wavelength 0.0251 A\n# Detector_distance 0.6125 m\n# Beam_xy (2.50, 1.25) pixels\n"
        "# Start_angle -10.5 deg.\n# Angle_increment: -0.2 deg.\n# Oscillation_axis OMEGA\n# Omega 3 deg.\n"
        "# Omega_increment 1 deg.");
    EXPECT_EQ(header.strDetector, "EIGER-like 12, S/N E-01");
    EXPECT_NEAR(header.detectorPixel.df, 75, 1e-9);
    EXPECT_EQ(header.exposure.df, 0.25);
    EXPECT_EQ(header.saturation.df, 65000);
    EXPECT_EQ(header.wavelength.df, 0.0251);
    EXPECT_NEAR(header.cameraLength.df, 612.5, 1e-9);
    EXPECT_EQ(header.beamX.df, 2);
    EXPECT_EQ(header.beamY.df, 0.75);
    EXPECT_EQ(header.tiltStart.df, -10.5);
    EXPECT_EQ(header.tiltStep.df, -0.2);
    EXPECT_FALSE(header.rotationAxis.isTold());
    EXPECT_EQ(header.listDoubt,
              QStringList("Wavelength 0.0251 seems to be rounded: at 200 kV it is 0.02508"));

    const FrameHeader headerOther = told(
        "# Wavelength 1.0332 A\n# Count_cutoff 0 counts\n# Beam_xy (1030.3, 1095.8) pixels\n# Phi 3.0000 "
        "deg.\n# Phi_increment 0.1 deg.\n# Detector_distance 612.5 mm\n# Pixel_size 0.1 mm x 0.2 mm");
    EXPECT_FALSE(headerOther.wavelength.isTold());
    EXPECT_FALSE(headerOther.saturation.isTold());
    EXPECT_FALSE(headerOther.beamX.isTold());
    EXPECT_EQ(headerOther.tiltStart.df, 3);
    EXPECT_EQ(headerOther.tiltStep.strSource, "Phi_increment");
    EXPECT_NEAR(headerOther.cameraLength.df, 612.5, 1e-9);
    EXPECT_EQ(headerOther.listDoubt.size(), 3);  // X-rays, a beam beyond the frame, pixels of two sizes
    EXPECT_EQ(told("# Start_angle 7 deg.\n# Angle_increment 0 deg.").tilt.df, 7);
}

TEST_F(CbfFile, PixelsBehindLongTablesOfAxesAreReadWithADoubt)
{
    Cbf cbf{packed({0, 1, 2, 3, 4, 5, 6, 7})};
    cbf.bytesHeader = "_array_structure_list.axis" + QByteArray(100000, 'x');
    const QByteArray bytes = cbf.bytes("\n").replace("_array_data.header_contents", "_diffrn.id DS1");
    expectPixels(bytes, {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(readCbfHeader(path("a.cbf"), 0).listDoubt.size(), 1);
}

TEST_F(CbfFile, BrokenFilesGiveAReasonAndNothingElse)
{
    const QByteArray bytesPixels = packed({0, 300, 70000, 3, 1LL << 33, 5, 6, 7}),
                     bytesInt("signed 32-bit integer");
    const QByteArray bytesOffset("x-CBF_BYTE_OFFSET"), bytesGood = Cbf{bytesPixels}.bytes();
    std::vector<std::pair<QByteArray, const char*>> vecCase = {
        {"\x1f\x8b", "not a CBF file: it does not begin with \"###CBF\""},
        {"###CBF: VERSION", "no binary section in the first 15 bytes"},
        {Cbf{QByteArray(7, '\0')}.bytes(), "truncated: 7 bytes of pixels, but 4 x 2 of them"},
        {Cbf{QByteArray(7, '\0') + '\x80'}.bytes(), "truncated: 8 bytes hold 7 of 8 pixels"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, "X-Binary-Size: 10"}.bytes(),
         "truncated: 10 bytes hold 2 of 8 pixels"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, "X-Binary-Size: -1"}.bytes(),
         "truncated: 0 bytes of pixels, but 4 x 2 of them"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, "X-Binary-Number-of-Elements: 9"}.bytes(),
         "4 x 2 pixels, but 9 elements"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, "X-Binary-Size-Third-Dimension: 2"}.bytes(),
         "pixels of three dimensions are not read"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, "Content-Transfer-Encoding: BASE64"}.bytes(),
         "pixels as text (base64) are not read"},
        {Cbf{bytesPixels, bytesInt, "x-CBF_PACKED_V2"}.bytes(),
         "pixels packed by \"x-cbf_packed_v2\" are not read"},
        {Cbf{bytesPixels, "signed 32-bit complex IEEE", "x-CBF_NONE"}.bytes(),
         "pixels of the type \"signed 32-bit complex ieee\" are not read"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, {}, {}, 46341, 46341}.bytes(),
         "46341 x 46341 pixels; fewer than 2147483648 can be read"},
        {Cbf{bytesPixels, bytesInt, bytesOffset, {}, {}, 40000, 50000}.bytes(),
         "truncated: 50 bytes of pixels, but 40000 x 50000 of them"}};
    for (int n = 0; n < bytesGood.size(); ++n) {
        vecCase.push_back({bytesGood.left(n), nullptr});
    }
    for (const auto& [bytes, pszReason] : vecCase) {
        SCOPED_TRACE(testing::Message() << bytes.size() << " bytes");
        EXPECT_FALSE(read(bytes));
        EXPECT_TRUE(m_vecImage.empty());
        EXPECT_TRUE(pszReason ? m_strReason == pszReason : !m_strReason.isEmpty())
            << m_strReason.toStdString();
    }
    EXPECT_TRUE(read(bytesGood));
    EXPECT_FALSE(readCbfFrames(path("a.cbf"), 1, 1, m_vecImage, m_strReason));
    EXPECT_EQ(m_strReason, "image 2 of 1");
}

}  // namespace tessera
