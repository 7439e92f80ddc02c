// Texts that programs of acquisition leave beside the frames.
#include "dataset/sidetexts.h"
#include "tests/dataset/textfiles.h"
#include "tests/formatsdoc.h"

#include <QDir>
#include <QTemporaryDir>

namespace tessera {

namespace {

struct Line {
    const char* pchLine;
    ToldNumber SideTexts::*pNumber;
    double dfValue;  ///< NaN: none
    bool bDoubt;
};

void expectTold(std::initializer_list<Line> listLine)
{
    for (const Line& row : listLine) {
        SideTexts texts;
        takeSideText(row.pchLine, "x.log", texts);
        const ToldNumber& told = texts.*row.pNumber;
        EXPECT_EQ(told.isTold(), std::isfinite(row.dfValue)) << row.pchLine;
        if (told.isTold()) {
            EXPECT_NEAR(told.df, row.dfValue, 1e-6 * std::abs(row.dfValue)) << row.pchLine;
            EXPECT_TRUE(told.strSource.startsWith("x.log: ")) << told.strSource.toStdString();
        }
        EXPECT_EQ(!texts.listDoubt.isEmpty(), row.bDoubt)
            << row.pchLine << ": " << texts.listDoubt.join('\n').toStdString();
    }
}

}  // namespace

TEST(SideTexts, KeysAndUnitsInTheirManyForms)
{
    expectTold({
        {"Starting angle: -30.00 degrees", &SideTexts::tiltStart, -30, false},
        {"start_angle = 12.5", &SideTexts::tiltStart, 12.5, false},
        {"EndAngle: 0.5 rad", &SideTexts::tiltEnd, 28.64788975654116, false},
        {"Oscillation angle: 0.231 deg.", &SideTexts::tiltStep, NAN, true},
        {"Oscillation angle: 0.231 deg", &SideTexts::tiltStep, 0.231, false},
        {"tilt step (°): -1", &SideTexts::tiltStep, -1, false},
        {"Exposure Time: 500 ms", &SideTexts::exposure, 0.5, false},
        {"exposure_time_ms = 300", &SideTexts::exposure, 0.3, false},
        {"  \"camera_length\": 1.2,", &SideTexts::cameraLength, 1200, true},
        {"CAMERA LENGTH [mm]=658", &SideTexts::cameraLength, 658, false},
        {"Physical pixelsize: 55.0 um", &SideTexts::detectorPixel, 55, false},
        {"Pixel size: 55 µm", &SideTexts::detectorPixel, 55, false},
        {"Pixelsize: 0.0123 px/Angstrom", &SideTexts::pixelSize, 0.0123, true},
        {"pixel size: 0.05 1/nm", &SideTexts::pixelSize, 0.005, false},
        {"Wavelength: 2.508 pm", &SideTexts::wavelength, 0.02508, false},
        {"# Wavelength = 0.0251 Å", &SideTexts::wavelength, 0.0251, false},
        {"Accelerating voltage: 200000 V", &SideTexts::kilovolts, 200, false},
        {"HT: 300", &SideTexts::kilovolts, 300, true},
        {"Rotation axis: -2.24 radians", &SideTexts::rotationAxis, -128.34254613, true},
        {"Camera length: 0 mm", &SideTexts::cameraLength, NAN, false},
        {"Exposure time: 12:30:05", &SideTexts::exposure, NAN, false},
        {"Wavelength: 3 furlongs", &SideTexts::wavelength, NAN, true},
        {"Camera: 55 um", &SideTexts::detectorPixel, NAN, false},
    });
}

TEST(SideTexts, DecimalCommasWhereNothingElseIsMeant)
{
    expectTold({
        {"Camera length: 237,71 mm", &SideTexts::cameraLength, 237.71, false},
        {"Pixel size: 0,0025 1/Å", &SideTexts::pixelSize, 0.0025, false},
        {"Pixel size: 0.025 1/nm/px", &SideTexts::pixelSize, 0.0025, false},
        {"Wavelength (Ångstrom): 0.0251", &SideTexts::wavelength, 0.0251, false},
        {"Camera length (nominal): 400", &SideTexts::cameraLength, 400, true},
        {"\"start_angle\": \"-29,75 deg\",", &SideTexts::tiltStart, -29.75, false},
        {"Start angle (deg): -29,75", &SideTexts::tiltStart, -29.75, false},
        {"Oscillation angle: 0,231 deg", &SideTexts::tiltStep, 0.231, false},
        {"Start angle: -29,75", &SideTexts::tiltStart, NAN, true},
        {"High tension: 200,000 V", &SideTexts::kilovolts, NAN, true},
        {"Pixel size: 55,55 um", &SideTexts::detectorPixel, NAN, true},
        {"Camera length: 1,2,3 mm", &SideTexts::cameraLength, NAN, true},
    });
}

TEST(SideTexts, KeysOfTheDocumentationAreKnown)
{
    const QStringList listKey = wordsOfFormat(QStringLiteral("fields: side texts"));
    ASSERT_FALSE(listKey.isEmpty());
    ToldNumber SideTexts::*const aNumber[] = {
        &SideTexts::kilovolts,     &SideTexts::wavelength,   &SideTexts::pixelSize, &SideTexts::cameraLength,
        &SideTexts::detectorPixel, &SideTexts::rotationAxis, &SideTexts::exposure,  &SideTexts::tiltStart,
        &SideTexts::tiltEnd,       &SideTexts::tiltStep};
    for (const QString& strKey : listKey) {
        SideTexts texts;
        takeSideText((strKey + QStringLiteral(" = 0.05")).toUtf8(), "x.log", texts);
        EXPECT_TRUE(std::any_of(std::begin(aNumber), std::end(aNumber), [&](auto pNumber) {
            return (texts.*pNumber).isTold();
        })) << strKey.toStdString();
    }
}

TEST(SideTexts, TheFirstOfTwoTextsIsBelieved)
{
    SideTexts texts;
    takeSideText("Camera length: 500 mm\n", "a.txt", texts);
    takeSideText("Camera length: 501 mm\nCamera length: 50.1 cm\n", "b.txt", texts);
    EXPECT_TRUE(texts.listDoubt.isEmpty()) << "rounded";
    ASSERT_TRUE(takeSideJson("{\"scan\": {\"camera_length_mm\": 600, \"n\": [1]}}", "c.json", texts));
    EXPECT_EQ(texts.cameraLength.df, 500);
    EXPECT_TRUE(texts.listDoubt.value(0).contains("c.json: camera_length_mm is 600"))
        << texts.listDoubt.join('\n').toStdString();
    EXPECT_FALSE(takeSideJson("camera: {", "d.json", texts));
}

TEST(SideTexts, MdocOfAStackAndOfFiles)
{
    QTemporaryDir dir;
    writeBytes(dir.filePath("s.mrc"), "x");
    writeBytes(
        dir.filePath("s.mrc.mdoc"),
        "PixelSpacing = 1.2\r\nVoltage = 200\r\n\r\n[T = Tilt axis angle = -86.7, binning = 1]\r\n"
        "[ZValue = 0]\r\nTiltAngle = -3.5\r\nExposureTime = 0.4\r\n\r\n[ZValue = 1]\r\nTiltAngle = -2\r\n");
    writeBytes(dir.filePath("other.mdoc"), "[ZValue = 0]\nTiltAngle = 60\n");
    const SideTexts stack = readSideTexts({dir.filePath("s.mrc#1"), dir.filePath("s.mrc#2")});
    EXPECT_EQ(stack.kilovolts.df, 200);
    EXPECT_FALSE(stack.pixelSize.isTold()) << "that of images, Å";
    EXPECT_EQ(stack.exposure.df, 0.4);
    EXPECT_EQ(stack.hashTilt.value("s.mrc#1"), -3.5);
    EXPECT_EQ(stack.hashTilt.value("s.mrc#2"), -2);
    EXPECT_EQ(stack.rotationAxis.df, -86.7);
    EXPECT_EQ(stack.listDoubt.size(), 1) << stack.listDoubt.join('\n').toStdString();

    writeBytes(dir.filePath("t.mdoc"),
               "[ZValue = 0]\nTiltAngle = 4\nSubFramePath = D:\\data\\t_b.tif\n"
               "[ZValue = 1]\nTiltAngle = 3\nSubFramePath = D:\\data\\t_a.tif\n");
    const SideTexts files = readSideTexts({dir.filePath("t_a.tif"), dir.filePath("t_b.tif")});
    EXPECT_EQ(files.hashTilt.value("t_a.tif"), 3);
    EXPECT_EQ(files.hashTilt.value("t_b.tif"), 4);
}

TEST(SideTexts, WhatWasWrittenHereIsNoneOfThem)
{
    QTemporaryDir dir;
    for (const char* pch : {"f.log", "w_truth.json", "hotpixels.txt", "shifts.txt", "f_pos.txt"}) {
        writeBytes(dir.filePath(pch), "Camera length: 400 mm\n");
    }
    writeBytes(dir.filePath("summary.json"), "{\"reached\": true, \"wavelength\": 0.02}");
    writeBytes(dir.filePath("m.calib.json"),
               "{\"format\": \"tessera microscope calibration\", \"wavelength\": 0.02}");
    writeBytes(dir.filePath("long.txt"), QByteArray(1000001, ' ') + "\nWavelength: 0.025\n");
    writeBytes(dir.filePath("f.img"), "x");
    const SideTexts texts = readSideTexts({dir.filePath("f.img")});
    EXPECT_FALSE(texts.cameraLength.isTold()) << texts.cameraLength.strSource.toStdString();
    EXPECT_FALSE(texts.wavelength.isTold()) << texts.wavelength.strSource.toStdString();
}

}  // namespace tessera
