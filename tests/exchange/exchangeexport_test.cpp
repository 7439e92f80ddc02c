// Complete exports: the files that are written, their formats, and the cases that are refused.
#include "exchange/exchangeexport.h"
#include "exchange/correctiontable.h"
#include "exchange/dialsfiles.h"
#include "exchange/exchangeframes.h"
#include "exchange/messagepack.h"
#include "exchange/petsinput.h"
#include "imagefiles/mrcwriter.h"
#include "imagefiles/smvfile.h"
#include "records/sealedfile.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

#include <cmath>

namespace tessera {

namespace {

/// Four small frames with shifts, tilts and a mask, without a cell.
class ExchangeExport : public testing::Test {
protected:
    void SetUp() override
    {
        for (int n = 1; n <= 4; ++n) {
            writeFrame(n, 5);
            m_data.m_listFrameFile.append(m_dir.filePath(QStringLiteral("f_%1.mrc").arg(n)));
            m_data.m_listShift.append({-double(n), 0});
        }
        m_data.m_strProjectDir = m_dir.path();
        m_data.m_strProjectName = "f";
        m_data.m_listOverallTilt = {0, 1, 2, 4};  // the fourth of five is not there
        m_data.m_dfPixelSize = 0.01;
        m_data.m_dfCenterX = m_data.m_dfCenterY = 20;
        m_data.m_maskPeakHunting.listPolygon = {QPolygonF(QRectF(30, 10, 4, 4))};
    }
    void writeFrame(int n, float fHighest)
    {
        std::vector<float> vecPixel(40 * 36, 3);
        vecPixel[100] = fHighest;
        CMrcWriter<float> writer;
        ASSERT_TRUE(writer.open(m_dir.filePath(QStringLiteral("f_%1.mrc").arg(n)), 40, 36, 1));
        ASSERT_TRUE(writer.addSection(vecPixel.data()));
        ASSERT_TRUE(writer.commit());
    }
    ExchangeSource source() const
    {
        const std::optional<ExchangeSource> found = exchangeSource(m_data, {}, nullptr, nullptr);
        EXPECT_TRUE(found);
        EXPECT_FALSE(found && found->bCell);
        return found.value_or(ExchangeSource{});
    }
    /// Files below the folder but for the frames.
    QStringList made() const
    {
        QStringList list;
        QDirIterator walk(m_dir.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString strFile = QDir(m_dir.path()).relativeFilePath(walk.next());
            if (!strFile.endsWith(".mrc")) {
                list.append(strFile);
            }
        }
        list.sort();
        return list;
    }
    QByteArray read(const QString& strName) const
    {
        QFile file(m_dir.filePath(strName));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_dir;
    DataSet m_data;
};

}  // namespace

TEST_F(ExchangeExport, XdsOfASeriesWithAGap)
{
    CRecordingReport report;
    ASSERT_TRUE(exportForXds(source(), report).finished()) << report.log().toStdString();
    // The names count 1 to 4, but the last frame has turned on by two steps.
    EXPECT_EQ(made(), (QStringList{"XDS.INP", "f_smv/00001.img", "f_smv/00002.img", "f_smv/00003.img",
                                   "f_smv/00005.img"}));
    const QByteArray bytes = read("XDS.INP");
    for (const char* pszLine :
         {"NAME_TEMPLATE_OF_DATA_FRAMES= f_smv/?????.img SMV\n", "DATA_RANGE= 1 5\n",
          "EXCLUDE_DATA_RANGE= 4 4\n", "MINIMUM_VALID_PIXEL_VALUE= 1 ", "SPACE_GROUP_NUMBER= 0\n",
          // Moved to the right by 1 to 4: the mask widens, and four columns have wrapped round.
          "UNTRUSTED_RECTANGLE= 0 5 0 37\n"}) {
        EXPECT_TRUE(bytes.contains(pszLine)) << pszLine << bytes.constData();
    }

    m_data.m_listShift.removeLast();
    EXPECT_FALSE(exchangeSource(m_data, {}, nullptr, nullptr));
}

TEST_F(ExchangeExport, GapsAreFilledForProgramsThatReadAFileForEachNumber)
{
    CRecordingReport report;
    const ExchangeSource whole = source();
    const ExchangeFrames frames = chooseExchangeFrames(whole, FrameGaps::Filled);
    ASSERT_TRUE(writeExchangeFrames(whole, frames, report).finished()) << report.log().toStdString();
    EXPECT_EQ(made(), (QStringList{"f_smv/00001.img", "f_smv/00002.img", "f_smv/00003.img", "f_smv/00004.img",
                                   "f_smv/00005.img"}));
    const QByteArray bytes = read("f_smv/00004.img");
    EXPECT_TRUE(bytes.contains("SIZE1=40;"));
    EXPECT_TRUE(bytes.contains("SIZE2=36;"));
    EXPECT_EQ(bytes.mid(512), QByteArray(2 * 40 * 36, '\xff'));
    EXPECT_TRUE(report.said("saturated: 1, the first of them 00004.img"));
    // Names whose numbers follow the tilts suffice for a program to which the gap can be declared.
    m_data.m_listFrameFile[3] = m_dir.filePath("f_5.mrc");
    EXPECT_EQ(chooseExchangeFrames(source()).files().last(), m_dir.filePath("f_5.img"));
    EXPECT_EQ(chooseExchangeFrames(source(), FrameGaps::Filled).files().last(),
              m_dir.filePath("f_smv/00005.img"));
}

TEST_F(ExchangeExport, SaturationOfTheFramesIsHandedOn)
{
    CImgObj<float> image;
    ASSERT_TRUE(image.Create(40, 36));
    std::fill(image.Data(), image.Data() + 40 * 36, 7.f);
    for (int n = 0; n < 4; ++n) {
        QString strHeader = smvHeaderTemplate();
        strHeader.replace("TYPE=", "CCD_IMAGE_SATURATION=1000;\nTYPE=");
        replaceSmvItem(strHeader, "SIZE1", 40, 0);
        replaceSmvItem(strHeader, "SIZE2", 36, 0);
        m_data.m_listFrameFile[n] = m_dir.filePath(QStringLiteral("s_%1.img").arg(n + 1));
        ASSERT_TRUE(writeSmvImage(strHeader, image, m_data.m_listFrameFile[n]));
    }
    CRecordingReport report;
    QStringList listWritten;
    ExchangeSource told = source();
    told.pWritten = &listWritten;
    ASSERT_TRUE(exportForXds(told, report).finished()) << report.log().toStdString();
    EXPECT_TRUE(read("XDS.INP").contains("OVERLOAD= 999\n")) << read("XDS.INP").constData();
    EXPECT_EQ(listWritten, QStringList{m_dir.filePath("XDS.INP")});

    ExchangeGeometry geometry;
    geometry.dfDistance = 1;
    DialsOptions options;
    EXPECT_TRUE(dialsExperiment(geometry, options).simplified().contains("-1, 65534"));
    options.nHighest = highestCount({1000, "x"}, options.nHighest);
    EXPECT_TRUE(dialsExperiment(geometry, options).simplified().contains("-1, 999"));
    EXPECT_EQ(highestCount({1e6, "x"}, 65000), 65534);
}

TEST_F(ExchangeExport, WhatCannotBeDoneIsRefusedAndLeavesNothing)
{
    CRecordingReport report;
    EXPECT_EQ(exportForDials(source(), {}, report).end, RunEnd::Refused);
    EXPECT_EQ(exportZoneAxisCif(source(), {}, report).end, RunEnd::Refused);
    const ExchangeSource whole = source();
    CRecordingReport stopped;
    stopped.m_nStopAfter = 2;
    EXPECT_EQ(exportForXds(whole, stopped).end, RunEnd::Stopped);
    EXPECT_FALSE(made().contains("XDS.INP"));
    ASSERT_TRUE(QDir(m_dir.filePath("f_smv")).removeRecursively());
    ASSERT_TRUE(QFile::remove(m_dir.filePath("f_3.mrc")));
    EXPECT_EQ(exportForPets(whole, report).end, RunEnd::Failed);
    EXPECT_TRUE(report.said("f_3.mrc"));
    EXPECT_TRUE(made().isEmpty()) << made().join(' ').toStdString();
    ExchangeSource still = whole;
    still.series.listTilt.assign(4, 7);
    EXPECT_FALSE(exportForXds(still, report).finished());
    EXPECT_TRUE(report.said("no rotation"));
    EXPECT_TRUE(made().isEmpty());
}

TEST_F(ExchangeExport, PetsGetsAllFramesOfOneType)
{
    CRecordingReport report;
    const auto bitsOf = [&](const QString& strName) { return int(read(strName).at(8 + 2 + 2 * 12 + 8)); };
    ASSERT_TRUE(exportForPets(source(), report).finished()) << report.log().toStdString();
    EXPECT_EQ(made().size(), 5);
    EXPECT_EQ(bitsOf("f_pets/tiff/00005.tif"), 16);
    writeFrame(2, 70000);
    ASSERT_TRUE(exportForPets(source(), report).finished());
    EXPECT_EQ(bitsOf("f_pets/tiff/00001.tif"), 32);
    EXPECT_EQ(bitsOf("f_pets/tiff/00002.tif"), 32);
    EXPECT_TRUE(read("f.pts").contains("\nf_pets/tiff/00005.tif     4.0000     0.0000\nendimagelist\n"))
        << read("f.pts").constData();
    QFile file(m_dir.filePath("f.pts"));
    ASSERT_TRUE(file.open(QIODevice::Append));
    ASSERT_GT(file.write("# mine\n"), 0);
    file.close();
    ASSERT_TRUE(exportForPets(source(), report).finished());
    EXPECT_TRUE(read("f.pts").endsWith("# mine\n"));
    EXPECT_TRUE(made().contains("f_2.pts"));
}

TEST(PetsInput, GeometriesOfMeasurement)
{
    ExchangeGeometry geometry;
    geometry.numbering.listNumber = {1};
    geometry.sizeFrame = {100, 100};
    geometry.dfWavelength = 0.0251;
    geometry.dfWidth = 0.8;
    geometry.source.plane.axis = -140.288;
    geometry.source.dfPixelSize = 0.01;
    PetsOptions options;
    options.listFile = QStringList{"t/1.tif"};
    options.listAlpha = {-12.5};
    const struct {
        RotationMode rotation;
        const char *pszPhi, *pszGeometry;
    } aRow[] = {{{RotationKind::Continuous, 0}, "\nphi 0.4000\n", "\ngeometry continuous\n"},
                {{RotationKind::Stepped, 0}, "\nphi 0.0000\n", "\ngeometry static\n"},
                {{RotationKind::Precession, 0.9}, "\nphi 0.9000\n", "\ngeometry precession\n"}};
    for (const auto& row : aRow) {
        geometry.rotation = row.rotation;
        const QByteArray bytes = petsInput(geometry, options);
        EXPECT_TRUE(isSealed(bytes));
        EXPECT_TRUE(bytes.contains(row.pszPhi));
        EXPECT_TRUE(bytes.contains(row.pszGeometry));
        EXPECT_TRUE(bytes.contains("\nomega 219.712\n"));
        EXPECT_TRUE(bytes.contains("140.288"));
    }
}

TEST(CorrectionTable, BytesAndValuesOfTheLens)
{
    // Steps of one, two and four bytes, at their limits.
    const std::vector<int> listValue = {0, 127, 0, 128, -5, 32762, -6, -32774, 60000};
    const QByteArray bytes = byteOffsetCbf("T", listValue, {9, 1});
    const int nBegin = bytes.indexOf("\x0c\x1a\x04\xd5") + 4;
    const auto byteAt = [&](int n) { return int(static_cast<signed char>(bytes[nBegin + n])); };
    std::vector<int> listRead;
    for (int n = 0, nValue = 0; listRead.size() < listValue.size();) {
        int nStep = byteAt(n++);
        if (nStep == -128) {
            nStep = byteAt(n + 1) * 256 + (byteAt(n) & 255);
            n += 2;
        }
        if (nStep == -32768) {
            nStep = int(unsigned(byteAt(n) & 255) | unsigned(byteAt(n + 1) & 255) << 8 |
                        unsigned(byteAt(n + 2) & 255) << 16 | unsigned(byteAt(n + 3) & 255) << 24);
            n += 4;
        }
        nValue += nStep;
        listRead.push_back(nValue);
    }
    EXPECT_EQ(listRead, listValue);

    ExchangeGeometry geometry;
    geometry.sizeFrame = {60, 50};
    geometry.beam = {28.5, 22};
    geometry.source.plane.ellipseCos = -0.02;  // the pattern is longer to the right
    geometry.source.plane.centreX = 3;         // in the beam's place already
    const PlaceCorrections corrections = placeCorrections(geometry);
    const size_t nRight = 22 * 60 + 59, nBelow = 49 * 60 + 28;
    EXPECT_EQ(corrections.listColumn[nRight], -61);  // 2 % of 30.5 pixels
    EXPECT_EQ(corrections.listRow[nRight], 0);
    EXPECT_EQ(corrections.listRow[nBelow], 54);
    EXPECT_NEAR(corrections.dfMost, 0.02 * std::hypot(30.5, 27), 1e-9);
}

TEST(MessagePack, LengthsAtTheirLimits)
{
    const auto written = [](const std::function<void(CMessagePack&)>& fn) {
        CMessagePack pack;
        fn(pack);
        return pack.bytes();
    };
    EXPECT_EQ(written([](CMessagePack& pack) { pack.number(127); }), QByteArray("\x7f"));
    EXPECT_EQ(written([](CMessagePack& pack) { pack.number(128); }), QByteArray("\xcf\0\0\0\0\0\0\0\x80", 9));
    EXPECT_EQ(written([](CMessagePack& pack) { pack.text(QByteArray(31, 'a')); })[0], '\xbf');
    EXPECT_EQ(written([](CMessagePack& pack) { pack.text(QByteArray(32, 'a')); }).left(2), "\xd9\x20");
    EXPECT_EQ(written([](CMessagePack& pack) { pack.text(QByteArray(256, 'a')); }).left(5),
              QByteArray("\xdb\0\0\1\0", 5));
    EXPECT_EQ(written([](CMessagePack& pack) { pack.beginMap(16); }), QByteArray("\xdf\0\0\0\x10", 5));
    EXPECT_EQ(written([](CMessagePack& pack) { pack.beginArray(3); }), QByteArray("\x93"));
}

}  // namespace tessera
