// Series that are cut, summed and binned as they are read: the results are those of files that were made so
// beforehand, byte for byte.
#include "tests/batch/batchprogram.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cstring>

namespace tessera {

namespace {

const int g_nSide = 320, g_nFrames = 60, g_nHeader = 1024;
const double g_dfFirstTilt = -15, g_dfStep = 0.5, g_dfPixel = 0.008;

QString nameOf(int nFrame)
{
    return QString("q_%1.mrc").arg(nFrame, 4, 10, QChar('0'));
}

QByteArray projectText(double dfPixelSize, const QByteArray& bytesFrames)
{
    return "WAVELENGTH 0.0251\nROTATIONAXIS -38.5\nCCDPIXELSIZE " + QByteArray::number(dfPixelSize, 'g', 10) +
           "\nFILELIST\n" + bytesFrames + "ENDFILELIST\n";
}

QByteArray frameLine(const QString& strName, double dfTilt)
{
    const QByteArray bytesTilt = QByteArray::number(dfTilt, 'g', 12);
    return "FILE " + strName.toLatin1() + ' ' + bytesTilt + " 0 " + bytesTilt + '\n';
}

class ReadSeries : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_pDir = new QTemporaryDir;
        const BatchOutcome outcome = runProgram("tessera-simulate",
                                                {"--crystal",    "quartz",
                                                 "--frames",     QString::number(g_nFrames),
                                                 "--size",       QString::number(g_nSide),
                                                 "--tilt-start", QString::number(g_dfFirstTilt),
                                                 "--tilt-step",  QString::number(g_dfStep),
                                                 "--pixel-size", QString::number(g_dfPixel),
                                                 "--axis",       "-38.5",
                                                 "--format",     "mrcu16",
                                                 "--out",        folder(),
                                                 "--name",       "q"});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        // Its pixels are of the camera, and repaired before bins are made of them: files of bins have none.
        QFile::remove(QDir(folder()).filePath("hotpixels.txt"));
        QByteArray bytesFrames;
        for (int n = 1; n <= g_nFrames; ++n) {
            bytesFrames += frameLine(nameOf(n), g_dfFirstTilt + (n - 1) * g_dfStep);
        }
        writeBytes(QDir(folder()).filePath("q.ed3d"), projectText(g_dfPixel, bytesFrames));
    }
    static void TearDownTestSuite() { delete s_pDir; }
    static QString folder() { return s_pDir->filePath(""); }
    static QString project() { return s_pDir->filePath("q.ed3d"); }

    /// Frames of real numbers, each the sum of some of the simulated ones and of their pixels, with a
    /// project.
    /// @param listFirst  the number of the first of each
    static void makeFiles(const QString& strFolder, const QList<int>& listFirst, int nSum, int nBin)
    {
        QDir().mkpath(strFolder);
        QByteArray bytesFrames;
        const int nSide = g_nSide / nBin;
        for (const int nFirst : listFirst) {
            std::vector<qint64> vecSum(size_t(nSide * nSide), 0);
            for (int n = nFirst; n < nFirst + nSum; ++n) {
                const QByteArray bytes = readBytes(QDir(folder()).filePath(nameOf(n)));
                ASSERT_EQ(bytes.size(), g_nHeader + 2 * g_nSide * g_nSide);
                for (int i = 0; i < g_nSide * g_nSide; ++i) {
                    vecSum[i / g_nSide / nBin * nSide + i % g_nSide / nBin] += qFromLittleEndian<quint16>(
                        bytes.constData() + g_nHeader + 2 * i);
                }
            }
            QByteArray bytesMrc(g_nHeader + 4 * nSide * nSide, '\0');
            const qint32 anHead[] = {nSide, nSide, 1, 2};  // columns, rows, sections, mode of real numbers
            std::memcpy(bytesMrc.data(), anHead, sizeof anHead);
            std::memcpy(bytesMrc.data() + 208, "MAP DD\0\0", 8);
            for (size_t i = 0; i < vecSum.size(); ++i) {
                const float f = float(vecSum[i]);
                std::memcpy(bytesMrc.data() + g_nHeader + 4 * i, &f, 4);
            }
            writeBytes(QDir(strFolder).filePath(nameOf(nFirst)), bytesMrc);
            bytesFrames += frameLine(nameOf(nFirst),
                                     g_dfFirstTilt + (nFirst - 1 + 0.5 * (nSum - 1)) * g_dfStep);
        }
        writeBytes(QDir(strFolder).filePath("q.ed3d"), projectText(g_dfPixel * nBin, bytesFrames));
    }

    /// The road of the simulated series with the options of a choice, and of files that were made so.
    static void runBoth(const QString& strName, const QStringList& listOption, const QList<int>& listFirst,
                        int nSum, int nBin)
    {
        ASSERT_NO_FATAL_FAILURE(makeFiles(made(strName), listFirst, nSum, nBin));
        const QStringList listLast = {"--accept", "--export", "smv,xds"};
        BatchOutcome outcome = runBatch(QStringList{made(strName) + "/q.ed3d"} + listLast);
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.right(3000).toStdString();
        outcome = runBatch(QStringList{project(), "--out", out(strName)} + listOption + listLast);
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.right(3000).toStdString();
    }
    static QString made(const QString& strName) { return s_pDir->filePath("made_" + strName); }
    static QString out(const QString& strName) { return s_pDir->filePath("out_" + strName); }
    /// Expects results and an image of both that are alike.
    static void expectAlike(const QString& strName, int nFrame)
    {
        int nCompared = 0;
        for (const char* pszSuffix : {".sc", ".pk", ".uc", ".hkl", ".p4p", ".ipf", "_refined.uc",
                                      "_refined.sc", "_integrated.hkl", "_merged.hkl"}) {
            const QByteArray bytesMade = readBytes(made(strName) + "/q" + pszSuffix);
            EXPECT_EQ(readBytes(out(strName) + "/q" + pszSuffix), bytesMade) << pszSuffix;
            nCompared += bytesMade.size() > 50;
        }
        EXPECT_GE(nCompared, 9);
        const QString strImage = '/' + QFileInfo(nameOf(nFrame)).completeBaseName() + ".img";
        EXPECT_EQ(readBytes(out(strName) + strImage).mid(512), readBytes(made(strName) + strImage).mid(512));
    }
    /// Expects that the choice which the run kept is that of a later start, and of the refined project.
    static void expectChoiceKept(const QString& strName)
    {
        const QStringList listAgain = {"--from", "merge", "--to", "index", "--accept"};
        BatchOutcome outcome = runBatch(QStringList{project(), "--out", out(strName)} + listAgain);
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.right(2000).toStdString();
        EXPECT_EQ(runBatch(QStringList{made(strName) + "/q.ed3d"} + listAgain).nStatus, 0);
        EXPECT_EQ(readBytes(out(strName) + "/q.ipf"), readBytes(made(strName) + "/q.ipf"));
        const QString strAgain = s_pDir->filePath("again_" + strName);
        outcome = runBatch({out(strName) + "/q_refined.ed3d", "--out", strAgain, "--to", "peaks"});
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.right(2000).toStdString();
        EXPECT_EQ(readBytes(strAgain + "/q_refined.pk"), readBytes(made(strName) + "/q.pk"));
        outcome = runBatch({project(), "--out", out(strName), "--from", "merge", "--bin", "1"});
        EXPECT_EQ(outcome.nStatus, 1);
        EXPECT_TRUE(outcome.strText.contains("another choice")) << outcome.strText.toStdString();
        EXPECT_FALSE(QFileInfo::exists(s_pDir->filePath("q.series.json")))
            << "results elsewhere change no project";
    }

    static QTemporaryDir* s_pDir;
};

QTemporaryDir* ReadSeries::s_pDir = nullptr;

}  // namespace

// A frame is as wide as its sum, whatever the numbers in the names, and begins half of that before it.
TEST_F(ReadSeries, SummedAndBinnedGivesTheBytesOfFilesThatWereMadeSo)
{
    QList<int> listFirst;
    for (int n = 3; n + 1 <= g_nFrames; n += 2) {
        listFirst.append(n);
    }
    ASSERT_NO_FATAL_FAILURE(runBoth("both", {"--bin", "2", "--sum", "2", "--frames", "3-"}, listFirst, 2, 2));
    expectAlike("both", listFirst[3]);
    const QByteArray bytesXds = readBytes(out("both") + "/XDS.INP");
    EXPECT_TRUE(bytesXds.contains("OSCILLATION_RANGE= 1.000000")) << bytesXds.toStdString();
    EXPECT_TRUE(bytesXds.contains("DATA_RANGE= 1 29")) << bytesXds.toStdString();
    EXPECT_TRUE(bytesXds.contains("STARTING_ANGLE= -14.25000"));
    expectChoiceKept("both");
}

TEST_F(ReadSeries, WithAHoleGivesTheBytesOfFilesThatWereMadeSo)
{
    QList<int> listFirst;
    for (int n = 5; n <= 50; ++n) {
        if (n < 20 || n > 22) {
            listFirst.append(n);
        }
    }
    ASSERT_NO_FATAL_FAILURE(
        runBoth("hole", {"--frames", "5-50", "--skip", "20-22", "--jobs", "2"}, listFirst, 1, 1));
    expectAlike("hole", listFirst[3]);
    const QByteArray bytesXds = readBytes(out("hole") + "/XDS.INP");
    EXPECT_TRUE(bytesXds.contains("EXCLUDE_DATA_RANGE= 20 22")) << bytesXds.toStdString();
    expectChoiceKept("hole");
}

TEST_F(ReadSeries, WhatIsNoChoiceOfTheSeriesIsBadUsage)
{
    const struct {
        QStringList listOption;
        const char* pszSays;
    } aRow[] = {
        {{"--bin", "0"}, "--bin 0: must be a whole number from 1 to 64"},
        {{"--bin", "two"}, "--bin two"},
        {{"--sum", "-2"}, "--sum -2"},
        {{"--sum", "61"}, "--sum 61: there are not as many successive frames"},
        {{"--sum", "3", "--skip", "3,6,9,12,15,18,21,24,27,30,33,36,39,42,45,48,51,54,57,60"}, "--sum 3"},
        {{"--frames", "5-3"}, "--frames 5-3: 5-3 ends before it begins"},
        {{"--frames", "50-61"}, "the series has frames 1 to 60, but no frame 50-61"},
        {{"--frames", "all"}, "\"all\" is neither"},
        {{"--frames", ""}, "--frames"},
        {{"--skip", "1-60"}, "--skip 1-60: no frame of 60 is left"},
        {{"--skip", "0"}, "--skip 0"},
        {{"--size", "512"}, "--size 512: not a size"},
    };
    for (const auto& row : aRow) {
        const BatchOutcome outcome = runBatch(QStringList{project(), "--out", s_pDir->filePath("bad")} +
                                              row.listOption);
        EXPECT_EQ(outcome.nStatus, 2) << row.listOption.join(' ').toStdString();
        EXPECT_TRUE(outcome.strText.contains(row.pszSays)) << outcome.strText.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(s_pDir->filePath("bad")));
}

TEST_F(ReadSeries, PixelsThatAreLeftOverAreTold)
{
    const QString strOut = s_pDir->filePath("three");
    BatchOutcome outcome = runBatch({project(), "--out", strOut, "--bin", "3", "--to", "shifts", "--center-x",
                                     "160", "--region", "64,64,192"});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    EXPECT_TRUE(outcome.strText.contains("2 columns on the right and 2 rows at the bottom are left over."))
        << outcome.strText.toStdString();
    EXPECT_TRUE(readBytes(strOut + "/q.sc").contains("53.")) << "the centre follows: (160.5)/3 - 0.5 = 53";
}

TEST_F(ReadSeries, FramesOfTwoSizesInAFolderAreTwoSeries)
{
    const QString strFolder = s_pDir->filePath("sizes");
    QDir().mkpath(strFolder);
    QList<int> listFirst;
    for (int n = 1; n <= 20; ++n) {
        listFirst.append(n);
    }
    ASSERT_NO_FATAL_FAILURE(makeFiles(strFolder, listFirst, 1, 2));
    QFile::remove(strFolder + "/q.ed3d");
    for (int n = 21; n <= 40; ++n) {
        QFile::copy(QDir(folder()).filePath(nameOf(n)), strFolder + "/" + nameOf(n));
    }
    const QStringList listOption = {"--wavelength", "0.0251", "--pixel-size", "0.008", "--tilt-step",
                                    "0.5",          "--axis", "-38.5",        "--to",  "shifts"};
    const QString strOut = s_pDir->filePath("sized");
    BatchOutcome outcome = runBatch(QStringList{strFolder, "--out", strOut, "--json", strOut + "/s.json"} +
                                    listOption);
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    for (const char* pszSize : {"160x160", "320x320"}) {
        EXPECT_TRUE(QFileInfo::exists(strOut + "/q_" + pszSize + ".sc")) << outcome.strText.toStdString();
        const QJsonObject summary =
            QJsonDocument::fromJson(readBytes(strOut + "/s_" + pszSize + ".json")).object();
        EXPECT_EQ(summary["frames"].toInt(), 20) << pszSize;
    }
    outcome = runBatch(QStringList{strFolder, "--size", "64x64", "--out", strOut} + listOption);
    EXPECT_EQ(outcome.nStatus, 2);
    EXPECT_TRUE(outcome.strText.contains("160x160 (20), 320x320 (20)")) << outcome.strText.toStdString();
    // One that strayed in among them is no series.
    for (int n = 2; n <= 20; ++n) {
        QFile::remove(strFolder + "/" + nameOf(n));
    }
    outcome = runBatch(QStringList{strFolder, "--out", s_pDir->filePath("stray")} + listOption);
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    EXPECT_TRUE(outcome.strText.contains("1 frames of 160 × 160 pixels are too few for a series"));
    EXPECT_TRUE(QFileInfo::exists(s_pDir->filePath("stray/q.sc")));
}

}  // namespace tessera
