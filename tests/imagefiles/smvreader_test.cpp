#include "imagefiles/smvreader.h"

#include "imagefiles/frameformats.h"
#include "tests/imagefiles/testfiles.h"

#include <QStringList>

#include <cmath>

namespace tessera {

namespace {

/// A file of 4 x 3 unsigned 16-bit pixels, unless the items say otherwise.
QByteArray smv(const QStringList& listItem, const QByteArray& bytesPixels, int nHeader = 512)
{
    QByteArray bytes = "{\nHEADER_BYTES=" + QByteArray::number(nHeader).rightJustified(5) + ";\n";
    for (const QString& strItem : listItem + QStringList{"SIZE1=4", "SIZE2=3"}) {
        bytes += strItem.toUtf8() + ";\n";
    }
    return (bytes + '}').leftJustified(nHeader, '\0') + bytesPixels;
}

QByteArray element(quint64 nBits, int nBytes, bool bBig)
{
    QByteArray bytes;
    for (int i = 0; i < nBytes; ++i) {
        bytes += static_cast<char>(nBits >> (8 * (bBig ? nBytes - 1 - i : i)));
    }
    return bytes;
}

class Smv : public FileTest {
protected:
    /// What the header of 516 x 516 pixels of 0.05 mm tells.
    FrameHeader told(const QStringList& listItem) const
    {
        const QStringList listSize{"SIZE1=516", "SIZE2=516"};
        return readSmvHeader(
            writeBytes(path("a.img"), smv(listItem + listSize, QByteArray(2 * 516 * 516, 0))), 0);
    }
};

}  // namespace

TEST_F(Smv, PixelsOfEveryTypeAndOrderBehindHeadersOfAnyLengthComeOutWithTheFirstRowOnTop)
{
    const struct {
        const char* pType;
        quint64 nBits;  // of the seventh pixel; of the others, their numbers
        int nBytes;
        float fValue;
    } aCase[] = {{"TYPE=unsigned_short", 65535, 2, 65535.f},
                 {"Data_type=unsigned short int", 40000, 2, 40000.f},
                 {"Data_type=short int", 65535, 2, -1.f},
                 {"Data_type=unsigned char", 255, 1, 255.f},
                 {"Data_type=signed char", 255, 1, -1.f},
                 {"Data_type=long int", 0xfffffffe, 4, -2.f},
                 {"Data_type=unsigned long int", 0xff000000, 4, 4278190080.f},
                 {"Data_type=float IEEE", 0x3fc00000, 4, 1.5f}};
    for (const auto& row : aCase) {
        for (const int nHeader : {512, 777, 8192}) {
            for (const bool bBig : {false, true}) {
                SCOPED_TRACE(testing::Message() << row.pType << " " << nHeader << " " << bBig);
                const bool bFloat = row.fValue == 1.5f;
                QByteArray bytesPixels;
                for (quint64 i = 0; i < 12; ++i) {
                    bytesPixels += element(i == 6 ? row.nBits : bFloat ? 0 : i, row.nBytes, bBig);
                }
                const QStringList listItem{"COMPRESSION=None", row.pType,
                                           bBig ? "BYTE_ORDER=big_endian" : "BYTE_ORDER=little_endian"};
                const QString strFile = writeBytes(path("a.img"), smv(listItem, bytesPixels, nHeader));
                EXPECT_EQ(frameFormatOf(strFile).strName, "SMV");
                ImageList vecImage;
                QString strReason = "left over";
                ASSERT_TRUE(readSmvFrames(strFile, 0, 5, vecImage, strReason)) << strReason.toStdString();
                EXPECT_EQ(strReason, "");
                ASSERT_EQ(vecImage.size(), 1u);
                ASSERT_EQ(vecImage[0]->Width(), 4);
                ASSERT_EQ(vecImage[0]->Height(), 3);
                EXPECT_EQ(readSmvHeader(strFile, 0).size, QSize(4, 3));
                for (int i = 0; i < 12; ++i) {
                    EXPECT_EQ(vecImage[0]->Data()[i], i == 6 ? row.fValue : bFloat ? 0 : float(i));
                }
            }
        }
    }
}

TEST_F(Smv, TheHeaderOfACameraFillsAllThatItTells)
{
    const FrameHeader header = told({"DIM=2", "PIXEL_SIZE=0.055", "BEAMLINE=TimePix_SU", "DETECTOR_SN=901",
                                     "TIME=1.5", "DISTANCE=1481.7449", "PHI={phi:.4f}", "OSC_START=-18.2800",
                                     "OSC_RANGE=-0.6873", "WAVELENGTH=0.025100", "BEAM_CENTER_X=243.9000",
                                     "BEAM_CENTER_Y=227.7300", "DENZO_X_BEAM=12.5252",
                                     "DENZO_Y_BEAM=13.4145"});
    EXPECT_EQ(header.wavelength.df, 0.0251);
    EXPECT_EQ(header.wavelength.strSource, "WAVELENGTH");
    EXPECT_EQ(header.cameraLength.df, 1481.7449);
    EXPECT_NEAR(header.detectorPixel.df, 55, 1e-9);
    EXPECT_EQ(header.tiltStart.df, -18.28);
    EXPECT_EQ(header.tiltStart.strSource, "OSC_START");
    EXPECT_EQ(header.tiltStep.df, -0.6873);
    EXPECT_EQ(header.exposure.df, 1.5);
    EXPECT_NEAR(header.beamX.df, 243.4, 1e-9);
    EXPECT_NEAR(header.beamY.df, 227.23, 1e-9);
    EXPECT_EQ(header.saturation.df, 65535);
    EXPECT_EQ(header.strDetector, "TimePix_SU 901");
    EXPECT_EQ(header.listDoubt,
              QStringList("WAVELENGTH 0.0251 seems to be rounded: at 200 kV it is 0.02508"));
    EXPECT_FALSE(header.rotationAxis.isTold());
    EXPECT_FALSE(header.tilt.isTold());
    EXPECT_FALSE(header.kilovolts.isTold());
}

TEST_F(Smv, TheBeamComesFromAnyDialect)
{
    const struct {
        QStringList listItem;
        double dfColumn, dfRow;  // from the outer corner of the first pixel
        int nDoubts;
    } aCase[] = {
        {{"BEAM_CENTER_X=248.28", "BEAM_CENTER_Y=263.06"}, 248.28, 263.06, 0},
        {{"BEAM_CENTER_X=12", "BEAM_CENTER_Y=20", "DENZO_X_BEAM=1", "DENZO_Y_BEAM=0.6"}, 12, 20, 0},
        {{"BEAM_CENTER_X=243.9", "BEAM_CENTER_Y=227", "DENZO_X_BEAM=3", "DENZO_Y_BEAM=9"}, 243.9, 227, 1},
        {{"BEAM_CENTER_X=12.5", "BEAM_CENTER_Y=13"}, 260, 250, 1},
        {{"BEAM_CENTER_X=12.5", "BEAM_CENTER_Y=13", "DENZO_X_BEAM=12.5", "DENZO_Y_BEAM=13"}, 260, 250, 0},
        {{"BEAM_CENTER_X=13", "BEAM_CENTER_Y=13"}, 260, 260, 0},
        {{"DENZO_X_BEAM=12.5", "DENZO_Y_BEAM=13"}, 260, 250, 0},
        {{"BEAM_CENTER_X=0", "BEAM_CENTER_Y=0"}, NAN, NAN, 0},
        {{"BEAM_CENTER_X=600", "BEAM_CENTER_Y=20"}, NAN, NAN, 1}};
    for (const auto& row : aCase) {
        for (const char* pPixelSize : {"PIXEL_SIZE=0.05", "PIXEL_SIZE=50"}) {
            SCOPED_TRACE(qPrintable(row.listItem.join(' ')));
            const FrameHeader header = told(row.listItem + QStringList(pPixelSize));
            const bool bMicrometres = header.listDoubt.join(' ').contains("micrometres");
            EXPECT_EQ(bMicrometres, pPixelSize[11] == '5');
            EXPECT_NEAR(header.detectorPixel.df, 50, 1e-9);
            EXPECT_EQ(header.listDoubt.size(), row.nDoubts + bMicrometres);
            EXPECT_EQ(header.beamX.isTold(), std::isfinite(row.dfColumn));
            if (header.beamX.isTold()) {
                EXPECT_NEAR(header.beamX.df, row.dfColumn - 0.5, 1e-9);
                EXPECT_NEAR(header.beamY.df, row.dfRow - 0.5, 1e-9);
            }
        }
    }
    EXPECT_FALSE(told({"BEAM_CENTER_X=248", "BEAM_CENTER_Y=263"}).beamX.isTold());  // no PIXEL_SIZE
}

TEST_F(Smv, WhatIsNotSoundIsNotTold)
{
    const FrameHeader headerNone = told({"WAVELENGTH=0", "TIME=nan", "DISTANCE=-1", "PHI=5", "OSC_RANGE=0"});
    EXPECT_FALSE(headerNone.wavelength.isTold());
    EXPECT_FALSE(headerNone.exposure.isTold());
    EXPECT_FALSE(headerNone.cameraLength.isTold());
    EXPECT_FALSE(headerNone.tiltStep.isTold());
    EXPECT_EQ(headerNone.tilt.df, 5);  // the stage stood still
    EXPECT_EQ(headerNone.tilt.strSource, "PHI");
    EXPECT_TRUE(headerNone.listDoubt.isEmpty());
    const FrameHeader headerFar = told({"PHI=5", "OSC_START=1e307", "OSC_RANGE=91"});
    EXPECT_EQ(headerFar.tilt.df, 5);
    EXPECT_FALSE(headerFar.tiltStart.isTold());
    EXPECT_FALSE(headerFar.tiltStep.isTold());
    EXPECT_TRUE(headerFar.listDoubt.contains("OSC_START 1e+307 is beyond 360 degrees and was not used"));
    EXPECT_TRUE(headerFar.listDoubt.contains("OSC_RANGE 91 is beyond 90 degrees and was not used"));

    const FrameHeader headerXRays = told({"WAVELENGTH=0.979340", "PHI=5", "OSC_START=6", "OSC_RANGE=1"});
    EXPECT_FALSE(headerXRays.wavelength.isTold());
    EXPECT_EQ(headerXRays.tiltStart.df, 6);
    EXPECT_EQ(headerXRays.listDoubt.size(), 2);
    EXPECT_TRUE(told({"WAVELENGTH=0.01969"}).listDoubt.isEmpty());
    EXPECT_TRUE(told({"WAVELENGTH=0.0197"}).listDoubt.join(' ').contains("300 kV"));
    EXPECT_EQ(told({"BEAMLINE=CETAD", "BIN=2x2", "IMAGE_PEDESTAL=128"}).saturation.df, 32000 - 128);
    EXPECT_EQ(told({"CCD_IMAGE_SATURATION=60000", "SATURATED_VALUE=1"}).saturation.df, 60000);

    QString strReason;
    ImageList vecImage;
    const QString strFile = writeBytes(path("a.img"), smv({"IMAGE_PEDESTAL=128"}, QByteArray(24, '\0')));
    ASSERT_TRUE(readSmvFrames(strFile, 0, 1, vecImage, strReason));
    EXPECT_EQ(vecImage[0]->Data()[11], -128);
    EXPECT_FALSE(readSmvFrames(strFile, 1, 1, vecImage, strReason));
    EXPECT_EQ(strReason, "image 2 of 1");
    EXPECT_FALSE(readSmvHeader(strFile, 1).size.isValid());
}

TEST_F(Smv, BrokenFilesGiveAReasonAndNothingElse)
{
    const QByteArray bytesPixels(24, '\1'), bytesGood = smv({}, bytesPixels);
    std::vector<std::pair<QByteArray, const char*>> vecCase = {
        {"x", "not an SMV file: it does not begin with \"{\""},
        {"OD SAPPHIRE  4.0", "an OD SAPPHIRE image, which is not read"},
        {"{\nSIZE1=4;\n}", "the header has no HEADER_BYTES"},
        {smv({}, bytesPixels, 20).replace("   20", "   35"), "the header does not end within its 35 bytes"},
        {bytesGood.left(500), "truncated: 500 of 512 header bytes"},
        {smv({"SIZE1=-4"}, bytesPixels), "-4 x 3 pixels"},
        {smv({"SIZE1=4000000000", "SIZE2=4000000000"}, bytesPixels),
         "4000000000 x 4000000000 pixels; fewer than 2147483648 can be read"},
        {smv({"SIZE1=40000", "SIZE2=50000"}, bytesPixels),
         "truncated: 536 bytes, of which 40000 x 50000 pixels need 4000000000 from byte 512 on"},
        {smv({"SIZE1=100", "SIZE2=100"}, QByteArray(40000, '\1')),
         "20000 bytes are left behind SIZE1 x SIZE2 = 100 x 100 pixels, so these are wrong"},
        {smv({"SIZE2=3e2"}, bytesPixels), "the header has no SIZE1 and SIZE2"},
        {smv({"TYPE=complex"}, bytesPixels), "pixels of the type \"complex\" are not read"},
        {smv({"BYTE_ORDER=middle"}, bytesPixels), "BYTE_ORDER \"middle\" is not known"},
        {smv({"COMPRESSION=RAXIS"}, bytesPixels), "packed pixels (COMPRESSION RAXIS) are not read"},
        {smv({"DIM=3"}, bytesPixels), "DIM 3: only images of two dimensions are read"}};
    for (int n = 0; n < bytesGood.size(); ++n) {
        vecCase.push_back({bytesGood.left(n), nullptr});
    }
    for (const auto& [bytes, pszReason] : vecCase) {
        SCOPED_TRACE(testing::Message() << bytes.size() << " bytes: " << bytes.left(80).toStdString());
        const QString strFile = writeBytes(path("a.img"), bytes);
        ImageList vecImage;
        QString strReason;
        EXPECT_FALSE(readSmvFrames(strFile, 0, 1, vecImage, strReason));
        EXPECT_TRUE(vecImage.empty());
        EXPECT_TRUE(pszReason ? strReason == pszReason : !strReason.isEmpty()) << strReason.toStdString();
        EXPECT_FALSE(readSmvHeader(strFile, 0).size.isValid());
    }
}

}  // namespace tessera
