// What a series that is broken somewhere gets from the driver: a line that names it, status 1, and
// the result files of earlier runs as they were.
#include "tests/batch/batchprogram.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QTemporaryDir>

#include <unistd.h>
#include <cmath>
#include <cstring>
#include <functional>

namespace tessera {

namespace {

const int g_nSide = 128;
const int g_nFrames = 5;

/// An MRC file by the format: 1024 header bytes, then the sections.
QByteArray mrcBytes(int nWidth, int nHeight, int nSections, int nMode, const QByteArray& bytesPixel)
{
    QByteArray bytes(1024, '\0');
    const int anHead[] = {nWidth, nHeight, nSections, nMode};
    std::memcpy(bytes.data(), anHead, sizeof anHead);
    return bytes + bytesPixel;
}

/// A beam in the middle and spots that move with the frame, on a ripple.
QByteArray framePixels(int nFrame, int nSide)
{
    QByteArray bytes(nSide * nSide * 4, '\0');
    float* pPixel = reinterpret_cast<float*>(bytes.data());
    for (int y = 0; y < nSide; ++y) {
        for (int x = 0; x < nSide; ++x) {
            const auto spot = [&](double dfX, double dfY, double dfHeight) {
                return dfHeight * std::exp(-(std::pow(x - dfX, 2) + std::pow(y - dfY, 2)) / 5);
            };
            pPixel[y * nSide + x] = float(20 + 3 * std::sin(7.1 * x + 3.3 * y + nFrame) +
                                          spot(nSide / 2, nSide / 2, 2000) + spot(30 + nFrame, 40, 300) +
                                          spot(90, 35 + nFrame, 200) + spot(40, 95, 250));
        }
    }
    return bytes;
}

class Series {
public:
    Series()
    {
        QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 10\nCCDPIXELSIZE 0.01\nFILELIST\n";
        for (int i = 0; i < g_nFrames; ++i) {
            writeFrame(i, mrcBytes(g_nSide, g_nSide, 1, 2, framePixels(i, g_nSide)));
            bytesProject += "FILE f" + QByteArray::number(i) + ".mrc 0 0 " + QByteArray::number(i) + "\n";
        }
        write("s.ed3d", bytesProject + "ENDFILELIST\n");
    }
    QString path(const QString& strName) const { return m_dir.filePath(strName); }
    void write(const QString& strName, const QByteArray& bytes) const { writeBytes(path(strName), bytes); }
    QByteArray read(const QString& strName) const { return readBytes(path(strName)); }
    void writeFrame(int nFrame, const QByteArray& bytes) const
    {
        write(QStringLiteral("f%1.mrc").arg(nFrame), bytes);
    }
    void replaceInProject(const QByteArray& bytesOld, const QByteArray& bytesNew) const
    {
        QByteArray bytes = read("s.ed3d");
        ASSERT_TRUE(bytes.contains(bytesOld));
        write("s.ed3d", bytes.replace(bytesOld, bytesNew));
    }

private:
    QTemporaryDir m_dir;
};

const QByteArray g_strPixels = framePixels(2, g_nSide);

struct BadCase {
    const char* pszName;
    const char* pszMessage;  ///< has to stand in the reason
    std::function<void(const Series&)> fnBreak;
    QStringList listArgument = {};
    const char* pszStage = "none";  ///< the last one that ended well
};

void leaveAsItIs(const Series&) {}

const BadCase g_aBad[] = {
    {"frame missing", "f2.mrc", [](const Series& s) { QFile::remove(s.path("f2.mrc")); }},
    {"frame cut in its header",
     "f2.mrc: truncated: 700 of 1024 header bytes",
     [](const Series& s) { s.writeFrame(2, QByteArray(700, '\0')); },
     {"--from", "peaks"}},
    {"frame cut in its pixels", "f2.mrc: truncated",
     [](const Series& s) { s.writeFrame(2, mrcBytes(g_nSide, g_nSide, 1, 2, g_strPixels.left(1000))); }},
    {"frame of another size",
     "f2.mrc",
     [](const Series& s) { s.writeFrame(2, mrcBytes(64, 64, 1, 2, framePixels(2, 64))); },
     {"--region", "32,32,64"}},
    {"all frames blank", "blank",
     [](const Series& s) {
         for (int i = 0; i < g_nFrames; ++i) {
             s.writeFrame(i, mrcBytes(g_nSide, g_nSide, 1, 2, QByteArray(g_nSide * g_nSide * 4, '\0')));
         }
     }},
    {"nothing above the threshold",
     "No peaks were found",
     leaveAsItIs,
     {"--peak-threshold", "1000000"},
     "shifts"},
    {"everything under a mask",
     "No peaks were found",
     [](const Series& s) { s.write("m.msk", "1 -9 -9\n1 999 -9\n1 999 999\n1 -9 999\n"); },
     {"--mask", "%/m.msk"},
     "shifts"},
    {"too few reflections for a cell", "Unit cell not found.", leaveAsItIs, {}, "merge"},
    {"nothing to index with this cell",
     "No reflection was indexed",
     [](const Series& s) { s.write("c.uc", "a* 100 0 0\nb* 0 100 0\nc* 0 0 100\n"); },
     {"--cell", "%/c.uc", "--pixel-size", "0.00002"},
     "cell"},
    {"no wavelength", "s.ed3d: Could not find keyword \"WAVELENGTH\" in the input file.",
     [](const Series& s) { s.replaceInProject("WAVELENGTH 0.0251\n", ""); }},
    {"no axis, and too few peaks to find one",
     "There is no rotation axis: none was given, and the peaks do not determine it: ",
     [](const Series& s) { s.replaceInProject("ROTATIONAXIS 10\n", ""); },
     {"--to", "merge"},
     "peaks"},
    {"empty list", "no frames",
     [](const Series& s) {
         s.write("s.ed3d",
                 "WAVELENGTH 1\nROTATIONAXIS 1\nCCDPIXELSIZE 1\n"
                 "FILELIST\nENDFILELIST\n");
     }},
    {"project missing", "Could not load file", [](const Series& s) { QFile::remove(s.path("s.ed3d")); }},
    {"project missing, with a folder of its own",
     "Could not load file",
     [](const Series& s) { QFile::remove(s.path("s.ed3d")); },
     {"--out", "%/new"}},
    {"mask of two corners",
     "m.msk: ",
     [](const Series& s) { s.write("m.msk", "1 2 3\n1 4 5\n"); },
     {"--mask", "%/m.msk"}},
    {"frame missing for the fits",
     "1 of 5 frames cannot be read",
     [](const Series& s) { QFile::remove(s.path("f2.mrc")); },
     {"--from", "refine"}},
    {"no cell to refine", "s.uc: ", leaveAsItIs, {"--from", "refine"}},
    {"cell in a wrong order",
     "c.uc: ",
     [](const Series& s) { s.write("c.uc", "b* 1 0 0\na* 0 1 0\nc* 0 0 1\n"); },
     {"--cell", "%/c.uc"},
     "merge"},
    {"shifts of another series",
     "s.sc: 2 frames instead of 5",
     [](const Series& s) { s.write("s.sc", "64 64\n1 0 0\n2 0 0\n"); },
     {"--from", "merge"}},
    {"peaks out of order",
     "s.pk: non-empty line 1 has the serial 2",
     [](const Series& s) {
         s.write("s.sc", "64 64\n1 0 0\n2 0 0\n3 0 0\n4 0 0\n5 0 0\n");
         s.write("s.pk", "2 0 0 1 1 1 1 8000000000000000\n");
     },
     {"--from", "merge"}},
    {"folder that cannot be made",
     "the folder cannot be made",
     [](const Series& s) { s.write("file", "x"); },
     {"--out", "%/file/sub"}},
};

QStringList argumentsOf(const BadCase& bad, const Series& series)
{
    QStringList list = {series.path("s.ed3d"), "--json", series.path("s.json")};
    for (QString strArgument : bad.listArgument) {
        list.append(strArgument.replace(QStringLiteral("%/"), series.path("") + QLatin1Char('/')));
    }
    return list;
}

/// Status, summary and log tell that and why the run ended behind the stage.
void expectNamed(const BadCase& bad, const Series& series, const BatchOutcome& outcome)
{
    EXPECT_EQ(outcome.nStatus, 1) << outcome.strText.toStdString();
    const QJsonObject summary = QJsonDocument::fromJson(series.read("s.json")).object();
    EXPECT_EQ(summary["stage"].toString().toStdString(), bad.pszStage);
    EXPECT_FALSE(summary["reached"].toBool(true));
    EXPECT_FALSE(summary["failed"].toString().isEmpty());
    EXPECT_TRUE(summary["reason"].toString().contains(QString::fromUtf8(bad.pszMessage)))
        << summary["reason"].toString().toStdString() << '\n'
        << outcome.strText.toStdString();
    EXPECT_TRUE(outcome.strText.contains(summary["reason"].toString()));
    EXPECT_EQ(QFile::exists(series.path("new/s.log")), bad.listArgument.contains("%/new"));
    for (const char* pszLine : {"HKL file written", "p4p file written", "output to file"}) {
        EXPECT_FALSE(outcome.strText.contains(QLatin1String(pszLine))) << pszLine << ", but it was not";
    }
}

}  // namespace

TEST(BadData, LeavesAnAxisThatThePeaksDoNotTellAsItWas)
{
    const Series series;
    const BatchOutcome outcome = runBatch({series.path("s.ed3d"), "--axis", "auto", "--to", "merge"});
    EXPECT_EQ(outcome.nStatus, 0);
    EXPECT_TRUE(outcome.strText.contains(
        "Warning: the rotation axis stays at 10.0°, as the peaks do not determine it"))
        << outcome.strText.toStdString();
}

TEST(BadData, IsNamedAndLeavesEarlierResultsAlone)
{
    const QStringList listStage = {"none", "shifts", "peaks", "merge", "cell"};
    const QByteArray bytesPeaks = "1 0 0 40.0 32.0 250.0 4000.0 8000000000000000\n";
    for (const BadCase& bad : g_aBad) {
        SCOPED_TRACE(bad.pszName);
        Series series;
        const QStringList listResult = {"s.sc", "s.pk", "s.uc", "s.hkl", "s.p4p", "s.ipf"};
        for (const QString& strName : listResult) {
            series.write(strName, "earlier");
        }
        series.write("s.sc", "64 64\n1 0 0\n2 0 0\n3 0 0\n4 0 0\n5 0 0\n");
        series.write("s.pk", bytesPeaks);
        bad.fnBreak(series);
        QList<QByteArray> listBefore;
        for (const QString& strName : listResult) {
            listBefore.append(series.read(strName));
        }
        const BatchOutcome outcome = runBatch(argumentsOf(bad, series));
        expectNamed(bad, series, outcome);
        // Shifts, peaks and cell are of the stages that ended well, all else of the earlier run.
        const int nStage = listStage.indexOf(bad.pszStage);
        const bool abNew[] = {nStage >= 1, nStage >= 2, nStage >= 4, false, false, false};
        for (int i = 0; i < listResult.size(); ++i) {
            EXPECT_EQ(series.read(listResult[i]) != listBefore[i], abNew[i]) << listResult[i].toStdString();
        }
        const QStringList listLeft = QDir(series.path("")).entryList({"*.??????"}, QDir::Files);
        EXPECT_TRUE(listLeft.isEmpty()) << "left over: " << listLeft.join(' ').toStdString();
    }
}

namespace {

/// A series with links to its frames among its files.
class BadUsage : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::link("f2.mrc", series.path("s.json")));
        ASSERT_TRUE(QFile::link("new/s.pk", series.path("to.json")));
        ASSERT_TRUE(QDir(series.path("")).mkdir("hard"));
        ASSERT_TRUE(QFile::link("../f2.mrc", series.path("hard/s.hkl")));
        ASSERT_EQ(link(qPrintable(series.path("f3.mrc")), qPrintable(series.path("hard.json"))), 0);
        series.write("f0_s.mrc", "a frame");
        series.write("s.uc", "a cell");
        mapBefore = files();
    }
    void TearDown() override { EXPECT_EQ(files(), mapBefore) << "nothing is written"; }
    QMap<QString, QByteArray> files() const
    {
        QMap<QString, QByteArray> map;
        for (const QString& strName : QDir(series.path("")).entryList(QDir::Files)) {
            map[strName] = series.read(strName);
        }
        return map;
    }
    struct Row {
        QStringList listArgument;
        const char* pszMessage;
    };
    static void expectRefused(const std::vector<Row>& vecRow)
    {
        for (const Row& row : vecRow) {
            const BatchOutcome outcome = runBatch(row.listArgument);
            EXPECT_EQ(outcome.nStatus, 2) << outcome.strText.toStdString();
            EXPECT_TRUE(outcome.strText.contains(QString::fromUtf8(row.pszMessage)))
                << row.listArgument.join(' ').toStdString() << ": " << outcome.strText.toStdString();
        }
    }

    Series series;
    const QString strProject = series.path("s.ed3d");
    QMap<QString, QByteArray> mapBefore;
};

}  // namespace

TEST_F(BadUsage, OfInputsAndStagesIsRefused)
{
    expectRefused({
        {{}, "no project and no images given"},
        {{strProject, strProject}, "one project at a time"},
        {{strProject, "--no-such-option"}, "no-such-option"},
        {{strProject, "--from", "indexing"}, "not one of"},
        {{strProject, "--from", "cell", "--to", "peaks"}, "is before"},
        {{strProject, "--export", "xds,dails"}, "not one of"},
        {{strProject, "--export", "dials", "--to", "cell"}, "needs the stage index"},
        {{strProject, "--export", "cif", "--to", "geometry"}, "needs the stage integrate"},
        {{strProject, "--export", "cif", "--virtual-frames", "-1"}, "virtual-frames"},
        {{strProject, "--from", "refine", "--to", "index"}, "is before"},
        {{strProject, "--tilt-step", "1"}, "--tilt-step"},
        {{strProject, "--group", "1"}, "--from merge"},
        {{series.path("f0.mrc")}, "--wavelength"},
        {{"--summary"}, "no files of --json"},
        {{"--summary", "--jobs", "1", strProject}, "cannot be combined"},
    });
}

TEST_F(BadUsage, OfNumbersIsRefused)
{
    expectRefused({
        {{strProject, "--refine-dstar-low", "-1"}, "from 0 to 1000 or auto"},
        {{strProject, "--peak-radius", "wide"}, "--peak-radius wide"},
        {{strProject, "--peak-radius", "nan"}, "--peak-radius nan"},
        {{strProject, "--index-threshold", "0.6"}, "from 0.01 to 0.5"},
        {{strProject, "--space-group", "231"}, "from 1 to 230"},
        {{strProject, "--fix-geometry", "axis,cell1"}, "--fix-geometry cell1: no such number"},
        {{strProject, "--region", "1,2"}, "X,Y,SIZE"},
        {{strProject, "--region", "1,2,65"}, "X,Y,SIZE"},
        {{strProject, "--jobs", "0"}, "--jobs 0"},
        {{strProject, "--cell-min", "30", "--cell-max", "3"}, "--cell-min"},
        {{strProject, "--resolution-min", "0.8", "--resolution-max", "0.2"}, "0.8 lies above"},
        {{strProject, "--window-defaults", "--intensity-min", "40000"}, "40000 lies above"},
    });
}

TEST_F(BadUsage, OfKnownCellsIsRefused)
{
    expectRefused({
        {{strProject, "--known-cell", "4,5,6"}, "neither six numbers"},
        {{strProject, "--known-cell", "4,5,six,90,90,90"}, "\"six\" is no number"},
        {{strProject, "--known-cell", "4,5,6,90,90,200"}, "the six numbers make no cell"},
        {{strProject, "--known-cell", series.path("none.cif")}, "none.cif"},
        {{strProject, "--known-cell", "4,5,6,90,90,90", "--cell", "s.uc"}, "both give a cell"},
        {{strProject, "--known-cell", "4,5,6,90,90,90", "--from", "index"}, "--from index starts after"},
    });
}

TEST_F(BadUsage, OfTheNamesOfResultsIsRefused)
{
    const QString strFirst = series.path("f0.mrc");
    const QStringList listGeometry = {"--wavelength", "0.0251", "--pixel-size", "0.01", "--axis", "10"};
    expectRefused({
        {{strProject, "--json", strProject}, "would overwrite an input file"},
        {{strProject, "--json", series.path("hard/../f1.mrc")}, "would overwrite an input file"},
        {{strProject, "--json", series.path("s.json")}, "would overwrite an input file"},
        {{strProject, "--json", series.path("hard.json")}, "would overwrite an input file"},
        {{strProject, "--json", series.path("m"), "--mask", series.path("m")}, "overwrite an input file"},
        {{strProject, "--json", series.path("s.uc")}, "would overwrite another file of the run"},
        {{strProject, "--json", series.path("new/s.log"), "--out", series.path("new")}, "another file"},
        {{strProject, "--json", series.path("to.json"), "--out", series.path("new")}, "another file"},
        {{strProject, "--json", series.path("hard")}, "a folder, not a file"},
        {{strProject, "--json", series.path("new/s.run.json"), "--out", series.path("new")}, "another file"},
        {{strProject, "--report", series.path("f1.mrc")}, "would overwrite an input file"},
        {{strProject, "--report", "r.html", "--json", "r.html"}, "would overwrite another file of the run"},
        {{strProject, "--report", "-"}, "give the name of a file"},
        {{strProject, "--out", series.path("hard")}, "s.hkl, which the run would write, is one of"},
        // What a shell makes of "--json *.mrc".
        {QStringList{"--json", strFirst, series.path("f1.mrc"), series.path("f2.mrc")} + listGeometry,
         "by its name, not a summary"},
        {QStringList{"--export", "scaled", strFirst, series.path("f0_s.mrc")} + listGeometry,
         "f0_s.mrc, which the run would write, is one of its input files"},
    });
    EXPECT_FALSE(QFile::exists(series.path("new")));
}

namespace {

/// A series whose peaks have been hunted.
class Output : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(runShell(strFolder, "tessera-batch s.ed3d --to peaks").nStatus, 0);
        nLines = lines();
        bytesPeaks = series.read("s.pk");
        ASSERT_GT(nLines, 10);
    }
    int lines() const { return series.read("s.log").count('\n'); }

    Series series;
    const QString strFolder = series.path("");
    int nLines = 0;  ///< of the log
    QByteArray bytesPeaks;
};

}  // namespace

// Of the log and of a table, at once.
TEST_F(Output, IsWholeWhenTheReaderLeaves)
{
    for (const char* pszFile : {"s.log", "s.pk"}) {
        QFile::remove(series.path(pszFile));
    }
    EXPECT_EQ(runShell(strFolder,
                       "{ tessera-batch s.ed3d --to peaks --json s.json 2>&1; echo $? >&3; } 3>status | :;"
                       "read n < status; exit $n")
                  .nStatus,
              0);
    EXPECT_EQ(lines(), nLines);
    EXPECT_EQ(series.read("s.pk"), bytesPeaks);
    EXPECT_EQ(runShell(strFolder,
                       "{ tessera-batch --summary s.json; echo $? >&3; } 3>status | :;"
                       "read n < status; exit $n")
                  .nStatus,
              0);
}

TEST_F(Output, OfTheSummaryHasTheStandardOutputToItself)
{
    ASSERT_EQ(runShell(strFolder, "tessera-batch s.ed3d --to peaks --json - > out 2> err").nStatus, 0);
    const QJsonObject summary = QJsonDocument::fromJson(series.read("out")).object();
    EXPECT_EQ(summary["stage"].toString(), "peaks");
    EXPECT_EQ(series.read("err"), series.read("s.log"));
}

// Also behind a link that has the name of a result.
TEST_F(Output, IntoAPipeLeavesItAPipe)
{
    QFile::remove(series.path("s.pk"));
    EXPECT_EQ(runShell(strFolder,
                       "mkfifo one two && ln -s two s.pk && { timeout 60 cat one > summary & } &&"
                       "{ timeout 60 cat two > peaks & } && "
                       "tessera-batch s.ed3d --to peaks --json one > /dev/null; n=$?; wait;"
                       "test -p one && test -p s.pk && exit $n")
                  .nStatus,
              0);
    EXPECT_TRUE(QJsonDocument::fromJson(series.read("summary")).object()["reached"].toBool());
    EXPECT_EQ(series.read("peaks"), bytesPeaks);
}

}  // namespace tessera
