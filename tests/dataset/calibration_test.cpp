// Calibration files: writing and reading, and files that are refused.
#include "dataset/calibration.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <string>

namespace tessera {

namespace {

Calibration someCalibration()
{
    Calibration calibration;
    calibration.strSeries = QString::fromUtf8("Gran\xC3\xA1t \"1\"");
    calibration.strDate = "2026-05-04T10:11:12";
    calibration.dfWavelength = 0.0251;
    calibration.dfSeriesPixelSize = 0.00838;
    calibration.dfPixelSize = 0.00838 / 3;
    calibration.dfRotationAxis = -140.0 - 1.0 / 3;
    calibration.dfStretchAmplitude = 0.7;
    calibration.dfStretchAzimuth = 100;
    calibration.distortion = {1.4, 82, 3, -0.4, 0.1, 270, 200, 0.125};
    calibration.mapError["axis"] = 0.0125;
    return calibration;
}

QByteArray without(QByteArray bytes, const char* pszFrom, const char* pszTo)
{
    const QByteArray bytesFormer = bytes;
    bytes.replace(pszFrom, pszTo);
    EXPECT_NE(bytes, bytesFormer) << pszFrom;
    return bytes;
}

}  // namespace

TEST(Calibration, ComesBackToTheBit)
{
    const QTemporaryDir dir;
    const Calibration before = someCalibration();
    ASSERT_TRUE(writeCalibration(dir.filePath("m.calib.json"), before));
    const std::optional<Calibration> after = readCalibration(dir.filePath("m.calib.json"));
    ASSERT_TRUE(after);
    EXPECT_EQ(after->strSeries, before.strSeries);
    EXPECT_EQ(after->strDate, before.strDate);
    EXPECT_EQ(after->dfWavelength, before.dfWavelength);
    EXPECT_EQ(after->dfPixelSize, before.dfPixelSize);
    EXPECT_EQ(after->dfRotationAxis, before.dfRotationAxis);
    EXPECT_EQ(after->dfStretchAmplitude, before.dfStretchAmplitude);
    EXPECT_EQ(after->dfStretchAzimuth, before.dfStretchAzimuth);
    EXPECT_EQ(after->distortion, before.distortion);
    EXPECT_EQ(after->mapError, before.mapError);
}

TEST(Calibration, IsRefusedWithItsReasonWhereItIsNone)
{
    const QByteArray bytes = calibrationText(someCalibration());
    const struct {
        QByteArray bytes;
        const char* pszReason;
    } aBad[] = {
        {"", "no calibration"},
        {"[1, 2]", "no calibration"},
        {bytes.left(bytes.size() / 2), "at byte"},
        {without(bytes, "microscope calibration", "something else"), "format"},
        {without(bytes, "\"version\": 1", "\"version\": 2"), "version"},
        {without(bytes, "\"version\": 1", "\"version\": \"1\""), "version"},
        {without(bytes, "\"wavelength\": 0.0251", "\"wavelength\": \"0.0251\""), "wavelength"},
        {without(bytes, "\"wavelength\": 0.0251", "\"wavelength\": -0.0251"), "wavelength"},
        {without(bytes, "\"wavelength\": 0.0251", "\"wavelength\": NaN"), "at byte"},
        {without(bytes, "\"wavelength\": 0.0251", "\"wavelength\": 1e999"), ""},
        {without(bytes, "\"spiral\": -0.4", "\"spiral\": -400"), "thirdOrder.spiral"},
        {without(bytes, "\"spiral\": -0.4", "\"spiral\": null"), "thirdOrder.spiral"},
        {without(bytes, "\"ellipse\"", "\"Ellipse\""), "ellipse.amplitude"},
        {without(bytes, "\"referenceRadius\": 200", "\"referenceRadius\": 0"), "referenceRadius"},
        {without(bytes, "\"pixelSize\"", "\"pixelSize\": 0, \"other\""), "pixelSize"},
        {QByteArray(2 << 20, ' ') + bytes, "too large"},
    };
    for (const auto& bad : aBad) {
        QString strReason;
        EXPECT_FALSE(calibrationOfText(bad.bytes, &strReason)) << bad.bytes.left(200).toStdString();
        EXPECT_FALSE(strReason.isEmpty()) << strReason.toStdString() << " for " << bad.pszReason;
        EXPECT_TRUE(strReason.contains(QLatin1String(bad.pszReason)))
            << strReason.toStdString() << " for " << bad.pszReason;
    }
    // What is not known, and errors that are none, do no harm.
    const std::optional<Calibration> odd = calibrationOfText(
        without(bytes, "\"axis\": 0.0125", "\"axis\": -1, \"x\": [], \"ellipseAlong\": 0.5"));
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->mapError.keys(), QStringList{"ellipseAlong"});
    QString strReason;
    EXPECT_FALSE(readCalibration("/nowhere/m.calib.json", &strReason));
    EXPECT_TRUE(strReason.contains("/nowhere/m.calib.json"));
}

TEST(Calibration, PassesFromSeriesToSeriesAndWarnsOfAnotherMicroscope)
{
    Calibration calibration = someCalibration();
    DataSet one;
    one.m_dfWavelength = 0.02508;  // as another program rounds it
    one.m_dfPixelSize = 0.0084;
    MappingParameters mapping;
    EXPECT_TRUE(takeCalibration(one, mapping, calibration).isEmpty());
    EXPECT_NEAR(one.m_dfRotationAxis, -140.3333, 1e-9) << "more decimals than a told axis has";
    EXPECT_NEAR(one.m_dfStretchAzimuth, 10, 1e-9) << "as the page counts: 90 more";
    EXPECT_TRUE(mapping.m_bApplyStretching);
    EXPECT_EQ(one.m_distortion.dfParabolicAzimuth, -90);
    EXPECT_NEAR(one.m_dfPixelSize, 0.00838 / 3, 1e-6);

    // What the series tells now, and a second one takes, is the same.
    DataSet other;
    other.m_dfWavelength = 0.0197;
    other.m_dfPixelSize = 0.004;
    other.m_dfStretchAmplitude = 3;
    MappingParameters mappingOther;
    const QStringList listWarning = takeCalibration(other, mappingOther, calibrationOf(one, mapping));
    ASSERT_EQ(listWarning.size(), 2);
    EXPECT_TRUE(listWarning[0].contains("0.0197"));
    EXPECT_TRUE(listWarning[1].contains("0.004"));
    EXPECT_EQ(other.m_dfRotationAxis, one.m_dfRotationAxis);
    EXPECT_EQ(other.m_dfStretchAmplitude, one.m_dfStretchAmplitude);
    EXPECT_NEAR(other.m_dfStretchAzimuth, one.m_dfStretchAzimuth, 1e-9);
    EXPECT_EQ(other.m_distortion, one.m_distortion);
    EXPECT_EQ(other.m_dfPixelSize, 0.004) << "nothing determined that of the first";

    // No stretching is one, too: that of the series before goes.
    calibration.dfStretchAmplitude = 0;
    EXPECT_EQ(takeCalibration(other, mappingOther, calibration).size(), 2);
    EXPECT_FALSE(mappingOther.m_bApplyStretching);
}

}  // namespace tessera
