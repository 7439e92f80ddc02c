// What the headers of a series tell: tilts in the middle of frames, derived numbers, contradictions.
#include "dataset/seriesfacts.h"
#include "crystal/electronwavelength.h"
#include "dataset/framefiles.h"
#include "dataset/newproject.h"
#include "tests/dataset/textfiles.h"
#include "tests/smvbytes.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <functional>

namespace tessera {

namespace {

using Spoil = std::function<void(int, FrameHeader&)>;

ToldTilts tiltsOf(int nFrames, const Spoil& fnTell, QStringList* plistDoubt = nullptr)
{
    std::vector<FrameHeader> vecHeader(nFrames, FrameHeader{});
    QStringList listName, listDoubt;
    for (int i = 0; i < nFrames; ++i) {
        fnTell(i, vecHeader[i]);
        listName += QString("f%1").arg(i);
    }
    const ToldTilts tilts = tiltsOfHeaders(vecHeader, listName, listDoubt);
    if (plistDoubt) {
        *plistDoubt = listDoubt;
    }
    return tilts;
}

void tell(FrameHeader& header, double dfStart, double dfWidth)
{
    header.tiltStart = {dfStart, "START"};
    header.tiltStep = {dfWidth, "WIDTH"};
}

class SeriesFolder : public testing::Test {
protected:
    QString write(const QString& strName, const QByteArray& bytes) const
    {
        return writeBytes(m_dir.filePath(strName), bytes);
    }
    /// Frames of 8 × 8 pixels that start at -10 in steps of 0.5.
    QStringList writeFrames(int nFrames, const std::function<QByteArray(int)>& fnLines = {}) const
    {
        QStringList listFrame;
        for (int i = 0; i < nFrames; ++i) {
            listFrame += write(QString("a_%1.img").arg(i + 1),
                               smvBytes(fnLines ? fnLines(i) : smvLines(-10 + 0.5 * i, 0.5, 0.05, 400), 8, 8,
                                        QByteArray(128, '\1')));
        }
        return listFrame;
    }
    QTemporaryDir m_dir;
};

}  // namespace

TEST(ToldTilts, AreThoseOfTheMiddleOfEachFrame)
{
    QStringList listDoubt;
    ToldTilts tilts = tiltsOf(
        4, [](int i, FrameHeader& h) { tell(h, -5 + 0.3 * i, 0.3); }, &listDoubt);
    ASSERT_EQ(tilts.list.size(), 4);
    EXPECT_NEAR(tilts.list[0], -4.85, 1e-12);
    EXPECT_NEAR(tilts.list[3], -3.95, 1e-12);
    EXPECT_TRUE(listDoubt.isEmpty()) << listDoubt.join('\n').toStdString();

    // Dead time: a frame is narrower than the way to the next.
    tilts = tiltsOf(
        4, [](int i, FrameHeader& h) { tell(h, 2 - 1.0 * i, -0.5); }, &listDoubt);
    EXPECT_NEAR(tilts.list[1], 0.75, 1e-12);
    EXPECT_TRUE(listDoubt.isEmpty());
    // A width against the way of the starts is not believed.
    tilts = tiltsOf(
        4, [](int i, FrameHeader& h) { tell(h, 2 - 1.0 * i, 1.0); }, &listDoubt);
    EXPECT_NEAR(tilts.list[1], 0.5, 1e-12);
    EXPECT_EQ(listDoubt.size(), 1);
    // Without a width it is half of the way to the next frame.
    tilts = tiltsOf(3, [](int i, FrameHeader& h) { h.tiltStart = {1.0 * i * i, "START"}; });
    EXPECT_EQ(tilts.list, QList<double>({0.5, 2.5, 5.5}));
    // A stage that stood still.
    tilts = tiltsOf(3, [](int i, FrameHeader& h) { h.tilt = {10.0 + i, "ALPHA"}; });
    EXPECT_EQ(tilts.list, QList<double>({10, 11, 12}));
    EXPECT_EQ(tilts.strSource, QString("ALPHA"));
}

TEST(ToldTilts, ThatAreEqualOrMissingAreNotTold)
{
    QStringList listDoubt;
    EXPECT_FALSE(tiltsOf(
                     5,
                     [](int, FrameHeader& h) {
                         h.tilt = {0, "ALPHA"};
                     },
                     &listDoubt)
                     .isTold());
    EXPECT_FALSE(tiltsOf(
                     5, [](int, FrameHeader&) {}, &listDoubt)
                     .isTold());
    EXPECT_TRUE(listDoubt.isEmpty());
    EXPECT_FALSE(tiltsOf(
                     5,
                     [](int i, FrameHeader& h) {
                         if (i != 2) {
                             h.tilt = {1.0 * i, "ALPHA"};
                         }
                     },
                     &listDoubt)
                     .isTold());
    EXPECT_TRUE(listDoubt.value(0).contains("4 of 5")) << listDoubt.join('\n').toStdString();
    const ToldTilts same = tiltsOf(
        5, [](int, FrameHeader& h) { tell(h, 7, 0.2); }, &listDoubt);
    EXPECT_NEAR(same.list.value(4), 7.9, 1e-12);
    EXPECT_EQ(listDoubt.size(), 1) << "one header for all frames";
}

TEST(ToldTilts, ThatLeapOrTurnBackAreDoubted)
{
    QStringList listDoubt;
    tiltsOf(
        9,
        [](int i, FrameHeader& h) {
            h.tilt = {i + (i > 5 ? 3.0 : 0.0), "ALPHA"};
        },
        &listDoubt);
    EXPECT_TRUE(listDoubt.value(0).contains("jumps at f6, from 5° to 9°"))
        << listDoubt.join('\n').toStdString();
    tiltsOf(
        9,
        [](int i, FrameHeader& h) {
            h.tilt = {i == 4 ? 2.0 : i, "ALPHA"};
        },
        &listDoubt);
    EXPECT_TRUE(listDoubt.value(0).contains("at f4 it goes from 3° to 2°"))
        << listDoubt.join('\n').toStdString();

    // Start and end of a log are those of the series: 10 frames from 0 to 5.
    listDoubt.clear();
    EXPECT_EQ(tiltsOfRange(10, 5, 0, NAN, listDoubt).list.first(), 4.75);
    EXPECT_NEAR(tiltsOfRange(10, 5, 0, 0.5, listDoubt).list.last(), 0.25, 1e-12);
    EXPECT_TRUE(listDoubt.isEmpty());
    EXPECT_NEAR(tiltsOfRange(10, 0, 5, 0.4, listDoubt).list.last(), 3.8, 1e-12);
    EXPECT_EQ(listDoubt.size(), 1);
}

TEST_F(SeriesFolder, HeadersMakeAProject)
{
    const SeriesFacts facts = factsOfSeries(writeFrames(6));
    EXPECT_EQ(facts.strFormat, QString("SMV"));
    EXPECT_EQ(facts.size, QSize(8, 8));
    EXPECT_EQ(facts.wavelength.df, 0.02508);
    EXPECT_NEAR(facts.pixelSize.df, 0.05 / (0.02508 * 400), 1e-12);
    EXPECT_TRUE(facts.pixelSize.strSource.contains("DISTANCE")) << facts.pixelSize.strSource.toStdString();
    QString strReason;
    std::optional<NewProject> project = projectOfFacts(facts, &strReason);
    ASSERT_TRUE(project) << strReason.toStdString();
    EXPECT_FALSE(project->bAxisKnown);
    EXPECT_EQ(project->tilts.listOverall.first(), -9.75);
    const std::optional<QByteArray> bytes = makeProjectText(*project, m_dir.filePath("p.ed3d"), &strReason);
    ASSERT_TRUE(bytes) << strReason.toStdString();
    EXPECT_FALSE(bytes->contains("ROTATIONAXIS"));

    int nAsked = 0;
    EXPECT_FALSE(factsOfSeries(facts.listFrame, [&nAsked](int) { return ++nAsked < 3; }).bWhole);
    SeriesFacts lacking = facts;
    lacking.tilts = {};
    lacking.pixelSize = {};
    EXPECT_FALSE(projectOfFacts(lacking, &strReason));
    EXPECT_EQ(strReason, QString("The frames do not tell: pixel size, tilts."));
}

TEST_F(SeriesFolder, ContradictionsAreDoubts)
{
    const QStringList listFrame = writeFrames(5, [](int i) {
        QByteArray bytes = smvLines(0.5 * i, 0.5, 0.05, i == 3 ? 500 : 400);
        return bytes.replace("0.02508", "0.9793");
    });
    write("a_5.img", smvBytes(smvLines(2, 0.5, 0.05, 400), 8, 4, QByteArray(64, '\1')));
    const SeriesFacts facts = factsOfSeries(listFrame);
    const QString strDoubt = facts.listDoubt.join('\n');
    EXPECT_TRUE(strDoubt.contains("The camera length is 400 mm on the first frame, but 500 mm on a_4.img"))
        << strDoubt.toStdString();
    EXPECT_TRUE(strDoubt.contains("a_5.img has 8 × 4 pixels")) << strDoubt.toStdString();
    EXPECT_FALSE(std::abs(facts.wavelength.df - 0.9793) < 0.01) << "that of X-rays is not taken";
}

TEST_F(SeriesFolder, TextsTellWhatHeadersDoNot)
{
    const QStringList listFrame = writeFrames(10, [](int) { return QByteArray("PIXEL_SIZE=0.05;\n"); });
    EXPECT_FALSE(factsOfSeries(listFrame).tilts.isTold());
    write("scan_log.txt",
          "Starting angle: -2.00\nEnding angle: 3.0 deg\nCamera length: 400 mm\nHigh tension: 200 kV\n");
    write("a.ed3d", "WAVELENGTH 1\n");
    write("a.log", "Camera length: 999 mm\n");
    const SeriesFacts facts = factsOfSeries(listFrame);
    EXPECT_EQ(facts.tilts.list.value(0), -1.75);
    EXPECT_EQ(facts.tilts.list.value(9), 2.75);
    EXPECT_EQ(facts.cameraLength.strSource, QString("scan_log.txt: Camera length"));
    EXPECT_EQ(facts.wavelength.df, electronWavelength(200));
    EXPECT_TRUE(facts.bOfVoltage);
    EXPECT_TRUE(facts.bOfCameraLength);
    EXPECT_NEAR(facts.pixelSize.df, 0.05 / (400 * electronWavelength(200)), 1e-12);
}

TEST_F(SeriesFolder, PixelSizeFollowsFromAGivenWavelength)
{
    // The header's own wavelength does not count, be it of electrons or of X-rays.
    const double dfExpected = 0.05 / (400 * 0.0197);
    QStringList listFrame = writeFrames(2);
    EXPECT_NEAR(factsOfSeries(listFrame, {}, 0.0197).pixelSize.df, dfExpected, 1e-12);
    listFrame = writeFrames(
        2, [](int i) { return smvLines(0.5 * i, 0.5, 0.05, 400).replace("0.02508", "0.9793"); });
    SeriesFacts facts = factsOfSeries(listFrame);
    EXPECT_FALSE(facts.pixelSize.isTold());
    followWavelength(facts, 0.0197);
    EXPECT_NEAR(facts.pixelSize.df, dfExpected, 1e-12);
    EXPECT_NEAR(factsOfSeries(listFrame, {}, 0.0197).pixelSize.df, dfExpected, 1e-12);
}

TEST_F(SeriesFolder, AStepOfALogKeepsItsSignAndItsEnds)
{
    const QStringList listFrame = writeFrames(10, [](int) { return QByteArray("PIXEL_SIZE=0.05;\n"); });
    const auto tiltsWith = [&](const QByteArray& bytesLog, QString& strDoubt) {
        write("scan.txt", bytesLog);
        const SeriesFacts facts = factsOfSeries(listFrame);
        strDoubt = facts.listDoubt.join('\n');
        return facts.tilts.list;
    };
    QString strDoubt;
    QList<double> list = tiltsWith("Oscillation angle: -0.6 deg\nEnding angle: 40 deg\n", strDoubt);
    EXPECT_NEAR(list.value(0), 45.7, 1e-9);
    EXPECT_NEAR(list.value(9), 40.3, 1e-9);
    EXPECT_TRUE(strDoubt.isEmpty()) << strDoubt.toStdString();
    list = tiltsWith("Oscillation angle: -0.6 deg\n", strDoubt);
    EXPECT_NEAR(list.value(9), -5.7, 1e-9);
    EXPECT_TRUE(strDoubt.contains("assumed to start at 0")) << strDoubt.toStdString();
    EXPECT_FALSE(strDoubt.contains("rise")) << strDoubt.toStdString();
    list = tiltsWith("Oscillation angle: 0.6 deg\nStarting angle: 3 deg\n", strDoubt);
    EXPECT_NEAR(list.value(0), 3.3, 1e-9);
    EXPECT_TRUE(strDoubt.contains("assumed to increase")) << strDoubt.toStdString();
    EXPECT_FALSE(strDoubt.contains("start at 0")) << strDoubt.toStdString();
}

TEST_F(SeriesFolder, DoubtsAreOfTheNumbersThatTheyName)
{
    const QStringList listFrame = writeFrames(3, [](int i) {
        return smvLines(0.5 * i, 0.5, 55, 400);  // µm in the place of mm
    });
    const SeriesFacts facts = factsOfSeries(listFrame);
    EXPECT_TRUE(isDoubtful(facts.detectorPixel, facts.listDoubt));
    EXPECT_TRUE(isDoubtful(facts.pixelSize, facts.listDoubt)) << facts.pixelSize.strSource.toStdString();
    EXPECT_FALSE(isDoubtful(facts.cameraLength, facts.listDoubt));
    EXPECT_FALSE(isDoubtful({1, facts.tilts.strSource}, facts.listDoubt));
    EXPECT_TRUE(isDoubtful({1, "FEI1: alpha tilt"}, {"The alpha tilt was divided by 57.3"}));
    EXPECT_TRUE(isDoubtful({1, "pixel size, binning"}, {"The pixel size, 55000, is taken as one in nm"}));
    EXPECT_FALSE(isDoubtful({1, "PIXEL"}, {"PIXEL_SIZE 55 was taken for micrometres"}));
    EXPECT_FALSE(isDoubtful({}, facts.listDoubt));
}

TEST_F(SeriesFolder, TwoSeriesInOneFolderAreNoticed)
{
    const auto named = [&](const QStringList& listName) {
        QStringList listFrame;
        for (const QString& strName : listName) {
            listFrame += write(strName, smvBytes({}, 8, 8, QByteArray(128, '\1')));
        }
        return factsOfSeries(listFrame).listDoubt.join('\n');
    };
    const QString strDoubt = named({"s1_1.img", "s1_2.img", "s2_1.img", "s2_2.img", "s2_3.img"});
    EXPECT_TRUE(strDoubt.contains("of 2 frames begin with \"s1_\" and those of 3 with \"s2_\""))
        << strDoubt.toStdString();
    EXPECT_FALSE(named({"t_001_-1.5.img", "t_002_-1.0.img", "t_003_0.5.img"}).contains("two series"));
    EXPECT_FALSE(named({"t-0.5.img", "t0.0.img", "t0.5.img"}).contains("two series"));
}

TEST_F(SeriesFolder, FramesAreFoundAmongWhatBelongsToThem)
{
    const QStringList listFrame = writeFrames(2);
    EXPECT_EQ(framesInFolder(m_dir.path()), listFrame);
    // Files of a detector that a master leads to, and what was exported from frames of another kind.
    write("x_master.h5", "\x89HDF\r\n\x1a\n");
    for (int i = 1; i < 5; ++i) {
        write(QString("x_data_00000%1.h5").arg(i), "\x89HDF\r\n\x1a\n");
    }
    EXPECT_EQ(framesInFolder(m_dir.path()), listFrame) << "one master, two frames";
    for (const char* pch : {"a_1.tif", "a_2.tif"}) {
        write(pch, "x");
    }
    EXPECT_EQ(framesInFolder(m_dir.path()), listFrame) << "a picture beside each frame";
    for (const QString& strFrame : listFrame) {
        writeBytes(strFrame,
                   smvBytes("BEAMLINE=TIMEPIX_QV;\nDETECTOR_SN=901;\nDATE=Tue Jun 26 09:43:09 2007;\n"
                            "TIME=0.096288;\n",
                            8, 8, QByteArray(128, '\1')));
    }
    EXPECT_EQ(framesInFolder(m_dir.path()).value(0), m_dir.filePath("a_1.tif"))
        << "made here from the pictures";

    QTemporaryDir other;
    for (const char* pch : {"f.001", "f.002"}) {
        writeBytes(other.filePath(pch), smvBytes({}, 8, 8, QByteArray(128, '\1')));
    }
    writeBytes(other.filePath("notes.xyz"), "BM");
    EXPECT_EQ(framesInFolder(other.path()).size(), 2) << "by their content";
}

}  // namespace tessera
