// A folder of frames without a project: the headers have all values, or the driver names the missing ones.
#include "tests/batch/batchprogram.h"
#include "tests/smvbytes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>

namespace tessera {

namespace {

const int g_nSide = 320;

/// The frames of simulateQuartz() as a camera would have written them, each from half a step before its tilt
/// on.
class FrameFolder : public testing::Test {
protected:
    void SetUp() override
    {
        QTemporaryDir simulated;
        const BatchOutcome outcome = runProgram(
            "tessera-simulate",
            {"--crystal",    "quartz", "--frames",    "40",     "--size",       QString::number(g_nSide),
             "--tilt-start", "-20",    "--tilt-step", "1",      "--pixel-size", "0.008",
             "--axis",       "-38.5",  "--format",    "mrcu16", "--out",        simulated.path(),
             "--name",       "q"});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        ASSERT_TRUE(QDir(m_dir.path()).mkdir("run"));
        for (int i = 0; i < 40; ++i) {
            const QByteArray bytesMrc = readBytes(
                simulated.filePath(QString("q_%1.mrc").arg(i + 1, 4, 10, QChar('0'))));
            ASSERT_EQ(bytesMrc.size(), 1024 + 2 * g_nSide * g_nSide);
            // A pixel of 0.008 Å⁻¹ at 0.02508 Å: 0.05 mm at 249.2 mm.
            writeBytes(frame(i), smvBytes(smvLines(-20.5 + i, 1, 0.05, 0.05 / (0.008 * 0.02508)), g_nSide,
                                          g_nSide, pixelsFromTop(bytesMrc, g_nSide)));
        }
    }
    QString frame(int i) const { return path(QString("f_%1.img").arg(i + 1, 3, 10, QChar('0'))); }
    QString path(const QString& strName) const { return m_dir.filePath("run/" + strName); }
    QTemporaryDir m_dir;
};

}  // namespace

TEST_F(FrameFolder, GoesToTheCellWithoutAnOption)
{
    const QString strJson = m_dir.filePath("s.json");
    BatchOutcome outcome = runBatch({path(""), "--json", strJson, "--to", "index"});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.right(2000).toStdString();
    for (const char* pch : {"Wavelength 0.02508 Å, from the frames (WAVELENGTH)", "Pixel size 0.008 Å⁻¹",
                            "Tilts -20° to 19°", "f.ed3d"}) {
        EXPECT_TRUE(outcome.strText.contains(QString::fromUtf8(pch))) << pch;
    }
    const QJsonObject summary = QJsonDocument::fromJson(readBytes(strJson)).object();
    const QJsonArray cell = summary["cell"].toObject()["parameters"].toArray();
    std::vector<double> vecEdge = {cell[0].toDouble(), cell[1].toDouble(), cell[2].toDouble()};
    std::sort(vecEdge.begin(), vecEdge.end());
    EXPECT_NEAR(vecEdge[0], 4.913, 0.05) << readBytes(strJson).left(3000).toStdString();
    EXPECT_NEAR(vecEdge[2], 5.405, 0.05);
    // The truth has the axis at -38.5, which also tells that rows and sense came out right.
    EXPECT_NEAR(summary["axis"].toObject()["azimuth"].toDouble(), -38.5, 0.3);
    const QByteArray bytesMade = readBytes(path("f.ed3d"));
    EXPECT_TRUE(bytesMade.contains("\nROTATIONAXIS -38."));
    EXPECT_TRUE(bytesMade.contains("FILE f_001.img -20 0 -20\n")) << bytesMade.left(400).toStdString();

    // A second run makes it anew; a user's own project, and its results, stay.
    outcome = runBatch({path(""), "--to", "shifts"});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const QByteArray bytesOwn =
        "WAVELENGTH 0.025\nROTATIONAXIS 1\nCCDPIXELSIZE 0.01\nFILELIST\nENDFILELIST\n";
    writeBytes(path("f.ed3d"), bytesOwn);
    const QByteArray bytesLog = readBytes(path("f.log"));
    outcome = runBatch({path(""), "--to", "shifts", "--pixel-size", "0.009", "--axis", "12"});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    EXPECT_EQ(readBytes(path("f.ed3d")), bytesOwn);
    EXPECT_EQ(readBytes(path("f.log")), bytesLog);
    const QByteArray bytesOther = readBytes(path("f_frames.ed3d"));
    EXPECT_TRUE(bytesOther.contains("ROTATIONAXIS 12\nCCDPIXELSIZE 0.009\n"))
        << "options count before headers";
}

TEST_F(FrameFolder, WhatLacksIsNamedByItsOption)
{
    for (int i = 0; i < 40; ++i) {
        writeBytes(frame(i),
                   smvBytes("WAVELENGTH=0.02508;\n", g_nSide, g_nSide, readBytes(frame(i)).mid(512)));
    }
    BatchOutcome outcome = runBatch({path("")});
    EXPECT_EQ(outcome.nStatus, 2);
    EXPECT_TRUE(
        outcome.strText.contains("do not give the pixel size and the tilts: use --pixel-size and "
                                 "--tilt-step"))
        << outcome.strText.toStdString();
    outcome = runBatch({frame(0), frame(1), frame(2), "--pixel-size", "0.008", "--tilt-step", "1", "--to",
                        "shifts", "--out", m_dir.filePath("out")});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    EXPECT_TRUE(readBytes(m_dir.filePath("out/f_001.ed3d")).contains("FILE ../run/f_002.img 1 0 1\n"));
    EXPECT_EQ(runBatch({m_dir.path()}).nStatus, 2) << "no frames in it";
}

}  // namespace tessera
