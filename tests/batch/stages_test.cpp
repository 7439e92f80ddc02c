// The stages apart and together, one thread and several, on a simulated series.
#include "tests/batch/batchprogram.h"
#include "tests/imagefiles/filesizelimit.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointF>
#include <QRegExp>
#include <QTemporaryDir>

namespace tessera {

namespace {

const char* const g_aszResult[] = {"sc", "pk", "uc", "hkl", "p4p", "ipf"};

class Stages : public testing::Test {
protected:
    void SetUp() override
    {
        const BatchOutcome outcome = simulateQuartz(m_dir.path());
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    }
    BatchOutcome batch(const QString& strOut, const QStringList& listMore = {}) const
    {
        return runBatch(QStringList{m_dir.filePath("q.ed3d"), "--out", m_dir.filePath(strOut)} + listMore);
    }
    QByteArray result(const QString& strOut, const QString& strSuffix) const
    {
        return readBytes(m_dir.filePath(strOut + "/q." + strSuffix));
    }
    static QList<QByteArray> sortedLines(const QByteArray& bytes)
    {
        QList<QByteArray> list = bytes.split('\n');
        std::sort(list.begin(), list.end());
        return list;
    }
    void expectSameFiles(const QString& strOne, const QString& strOther) const
    {
        for (const char* pszSuffix : g_aszResult) {
            const QByteArray bytes = result(strOne, pszSuffix);
            EXPECT_FALSE(bytes.isEmpty()) << pszSuffix;
            EXPECT_EQ(bytes, result(strOther, pszSuffix)) << pszSuffix;
        }
    }
    /// A bad result leaves the former file in the folder "apart", and replaces it where that is asked for.
    void expectKeptUnlessAccepted(const QString& strSuffix, const QStringList& listArgument,
                                  const char* pszSaid) const
    {
        const QByteArray bytesFormer = result("apart", strSuffix);
        const BatchOutcome refused = batch("apart", listArgument);
        EXPECT_EQ(refused.nStatus, 1) << refused.strText.toStdString();
        EXPECT_TRUE(refused.strText.contains(pszSaid)) << refused.strText.toStdString();
        EXPECT_EQ(result("apart", strSuffix), bytesFormer) << pszSaid;
        EXPECT_EQ(batch("apart", listArgument + QStringList{"--accept"}).nStatus, 0) << pszSaid;
        EXPECT_NE(result("apart", strSuffix), bytesFormer) << pszSaid;
    }
    /// The summary of a run to peak pairs in the folder "r", with its log.
    QJsonObject refined(const QStringList& listMore, int nStatus = 0) const
    {
        const BatchOutcome outcome = batch("r", QStringList{"--json", m_dir.filePath("r.json")} + listMore);
        EXPECT_EQ(outcome.nStatus, nStatus) << outcome.strText.toStdString();
        QJsonObject summary = QJsonDocument::fromJson(readBytes(m_dir.filePath("r.json"))).object();
        EXPECT_EQ(summary["stage"].toString(), nStatus == 0 ? "refine" : "index");
        summary["log"] = outcome.strText;
        return summary;
    }
    QTemporaryDir m_dir;
};

}  // namespace

TEST_F(Stages, GiveTheSameFilesForEveryNumberOfJobs)
{
    const BatchOutcome one = batch("one", {"--jobs", "1"});
    ASSERT_EQ(one.nStatus, 0) << one.strText.toStdString();
    EXPECT_FALSE(one.strText.contains("the other way")) << one.strText.toStdString();
    const QStringList listFile = QDir(m_dir.filePath("one")).entryList(QDir::Files);
    EXPECT_GE(listFile.filter("q_integrated").size(), 1) << listFile.join(' ').toStdString();
    for (const QString& strJobs : QStringList{"2", "3", "5"}) {
        ASSERT_EQ(batch(strJobs, {"--jobs", strJobs}).nStatus, 0);
        EXPECT_EQ(QDir(m_dir.filePath(strJobs)).entryList(QDir::Files), listFile);
        for (const QString& strFile : listFile) {
            if (!strFile.endsWith(".log") && !strFile.endsWith(".run.json")) {  // these have times
                EXPECT_EQ(readBytes(m_dir.filePath("one/" + strFile)),
                          readBytes(m_dir.filePath(strJobs + '/' + strFile)))
                    << strFile.toStdString() << " with " << strJobs.toStdString();
            }
        }
    }
}

TEST_F(Stages, EndWithASummaryOfWhatWasFoundAndWritten)
{
    const auto summaryOf = [](const BatchOutcome& outcome) {
        return outcome.strText.mid(outcome.strText.indexOf("\nSummary of q: ") + 1).split('\n');
    };
    const BatchOutcome whole = batch("whole");
    ASSERT_EQ(whole.nStatus, 0) << whole.strText.toStdString();
    const QStringList listWhole = summaryOf(whole);
    EXPECT_EQ(listWhole[0], QString("Summary of q: integrate reached"));
    ASSERT_GE(listWhole.filter("Cell: ").size(), 1);
    EXPECT_TRUE(listWhole.filter("Cell: ")[0].contains("90.00 90.00 120.00")) << whole.strText.toStdString();
    EXPECT_EQ(listWhole.filter("Laue class: ").size(), 1);
    EXPECT_EQ(listWhole.filter("Judgement: ").size(), 1);
    EXPECT_TRUE(QString::fromUtf8(result("whole", "log")).endsWith(listWhole.join('\n').trimmed() + '\n'));
    // Each file of the run, under its name: those of the folder, but for the log and what the run has no part
    // in.
    QStringList listNamed =
        listWhole.value(listWhole.indexOf(QRegExp("Files in .*")) + 1).trimmed().split(", ");
    QStringList listThere = QDir(m_dir.filePath("whole")).entryList(QDir::Files);
    listThere.removeOne("q.log");
    listThere.removeOne("q.run.json");
    listNamed.sort();
    listThere.sort();
    EXPECT_EQ(listNamed.join(' '), listThere.join(' '));

    // A later start names what it writes alone, and an end before the last stage its reason.
    const QStringList listLater = summaryOf(batch("whole", {"--from", "cell", "--to", "cell"}));
    EXPECT_EQ(listLater[0], QString("Summary of q: cell reached"));
    EXPECT_EQ(listLater.value(listLater.indexOf(QRegExp("Files in .*")) + 1).trimmed(), QString("q.uc"));
    const BatchOutcome none = batch("none", {"--peak-threshold", "1e6", "--bin", "2"});
    EXPECT_NE(none.nStatus, 0);
    EXPECT_TRUE(none.strText.contains("Hint: the frames are binned 2 × 2, and radii count binned pixels"))
        << none.strText.toStdString();
    const QStringList listNone = summaryOf(none);
    EXPECT_EQ(listNone[0], QString("Summary of q: ended in peaks. No peaks were found on any frame."));
    EXPECT_TRUE(listNone.filter("Cell: ").isEmpty());
    EXPECT_TRUE(listNone.filter("Judgement: ").value(0).contains("bad, by peaks"));
}

TEST_F(Stages, TakeTheRadiiOfTheSpotsUnlessOthersAreGiven)
{
    const auto radiiOf = [&](const QStringList& listOption, QString& strText) {
        const QString strJson = m_dir.filePath("radii.json");
        const BatchOutcome outcome = batch("radii",
                                           QStringList{"--to", "peaks", "--json", strJson} + listOption);
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        strText = outcome.strText;
        const QJsonObject summary = QJsonDocument::fromJson(readBytes(strJson)).object();
        return QPointF(summary["peakRadius"].toDouble(), summary["backgroundRadius"].toDouble());
    };
    QString strText;
    const QPointF ptSpots = radiiOf({}, strText);
    EXPECT_NEAR(ptSpots.x(), 1.5, 0.1);  // what the simulator draws
    EXPECT_GT(ptSpots.y(), 2 * ptSpots.x());
    EXPECT_TRUE(strText.contains("peak-radius 1.")) << strText.toStdString();
    EXPECT_FALSE(strText.contains("Left out")) << strText.toStdString();
    EXPECT_EQ(radiiOf({"--peak-radius", "auto", "--background-radius", "7"}, strText),
              QPointF(ptSpots.x(), 7));
    EXPECT_EQ(radiiOf({"--window-defaults"}, strText), QPointF(5, 10));
}

TEST_F(Stages, TellARotationOfTheOtherSense)
{
    const BatchOutcome outcome = batch("turned", {"--axis", "141.5"});
    EXPECT_EQ(outcome.nStatus, 0);
    EXPECT_TRUE(outcome.strText.contains("the other way")) << outcome.strText.toStdString();
}

TEST_F(Stages, FindTheRotationAxisWhereItIsOffOrUnknown)
{
    const QByteArray bytesProject = readBytes(m_dir.filePath("q.ed3d"));
    const QByteArray bytesAxis = "ROTATIONAXIS -38.5000";
    ASSERT_TRUE(bytesProject.contains(bytesAxis));
    ASSERT_EQ(batch("right", {"--to", "peaks"}).nStatus, 0);
    const struct {
        QByteArray bytesLine;
        QStringList listArgument;
    } aRow[] = {{"ROTATIONAXIS 96.5", {"--axis", "auto"}}, {"", {}}};
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.bytesLine.toStdString());
        writeBytes(m_dir.filePath("q.ed3d"), QByteArray(bytesProject).replace(bytesAxis, row.bytesLine));
        const BatchOutcome outcome = batch(
            "right", QStringList{"--from", "merge", "--json", m_dir.filePath("a.json")} + row.listArgument);
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        EXPECT_TRUE(outcome.strText.contains("Sharpness of the lattice by azimuth"));
        EXPECT_FALSE(outcome.strText.contains("Warning:")) << outcome.strText.toStdString();
        const QJsonObject summary = QJsonDocument::fromJson(readBytes(m_dir.filePath("a.json"))).object();
        const QJsonObject axis = summary["axis"].toObject();
        EXPECT_NEAR(axis["azimuth"].toDouble(), -38.5, 1);
        EXPECT_NEAR(axis["second"].toDouble(), 141.5, 5);
        EXPECT_EQ(axis["sense"].toString(), "sure");
        EXPECT_GT(summary["indexedShare"].toDouble(), 0.9);
    }
    EXPECT_EQ(batch("right", {"--axis", "somewhere"}).nStatus, 2);
    EXPECT_EQ(batch("right", {"--axis", "auto", "--export-only", "--export", "volume"}).nStatus, 2);
}

// A list on disk has one decimal, so a run that starts from it may differ from one that goes through;
// two that start from the same files may not.
TEST_F(Stages, StartFromTheFilesOfTheStagesBefore)
{
    const BatchOutcome through = batch("through", {"--to", "peaks", "--json", m_dir.filePath("peaks.json")});
    ASSERT_EQ(through.nStatus, 0) << through.strText.toStdString();
    const QJsonObject summary = QJsonDocument::fromJson(readBytes(m_dir.filePath("peaks.json"))).object();
    EXPECT_EQ(summary["stage"].toString(), "peaks");
    EXPECT_EQ(summary["peaks"].toInt(), result("through", "pk").count('\n'));
    EXPECT_TRUE(result("through", "uc").isEmpty());
    EXPECT_TRUE(result("through", "hkl").isEmpty());

    // Shifts and peaks each by itself.
    ASSERT_EQ(batch("apart", {"--to", "shifts"}).nStatus, 0);
    EXPECT_TRUE(result("apart", "pk").isEmpty());
    ASSERT_EQ(batch("apart", {"--from", "peaks", "--to", "peaks"}).nStatus, 0);
    EXPECT_EQ(result("apart", "sc"), result("through", "sc"));
    EXPECT_EQ(result("apart", "pk"), result("through", "pk"));

    ASSERT_EQ(batch("through", {"--from", "merge"}).nStatus, 0);
    const QByteArray bytesPeaks = result("apart", "pk");
    ASSERT_EQ(batch("apart", {"--from", "merge", "--to", "cell"}).nStatus, 0);
    ASSERT_EQ(batch("apart", {"--from", "index", "--space-group", "154", "--statistics"}).nStatus, 0);
    EXPECT_EQ(result("apart", "pk"), bytesPeaks);
    EXPECT_EQ(result("apart", "uc"), result("through", "uc"));
    // The space group orders the reflections by groups; the reflections are the same.
    const QList<QByteArray> listLine = sortedLines(result("through", "hkl"));
    EXPECT_EQ(sortedLines(result("apart", "hkl")), listLine);
    EXPECT_GT(listLine.size(), 20);
    EXPECT_FALSE(through.strText.contains("Warning:"));
    // A cell that fits by chance alone is judged bad, and costs no file unless that is asked for.
    writeBytes(m_dir.filePath("other.uc"), "a* 0.11 0 0\nb* 0 0.13 0\nc* 0 0 0.17\n");
    expectKeptUnlessAccepted(
        "hkl", {"--from", "index", "--cell", m_dir.filePath("other.uc"), "--index-threshold", "0.25"},
        "Warning: only ");
    // Nor does a cell that was found where the axis is wrong take the place of the former one.
    expectKeptUnlessAccepted("uc", {"--from", "merge", "--axis", "10"}, "q.uc stays as it was; --accept ");
    // A cell that is the run's own is read and stays as it is.
    const QByteArray bytesOwn = result("through", "uc") + "a note\n";
    writeBytes(m_dir.filePath("apart/q.uc"), bytesOwn);
    EXPECT_EQ(batch("apart", {"--from", "cell", "--cell", m_dir.filePath("apart/q.uc")}).nStatus, 0);
    EXPECT_EQ(result("apart", "uc"), bytesOwn);
    EXPECT_EQ(result("apart", "hkl"), result("through", "hkl"));
}

TEST_F(Stages, TakeAKnownCellInTheOrientationOfTheSeries)
{
    const QString strOut = m_dir.filePath("known");
    const BatchOutcome known = batch("known", {"--known-cell", "4.916,4.916,5.4054,90,90,120"});
    ASSERT_EQ(known.nStatus, 0) << known.strText.toStdString();
    EXPECT_TRUE(known.strText.contains("Known cell, rotated: ")) << known.strText.toStdString();
    EXPECT_FALSE(known.strText.contains("Searching by directions")) << known.strText.toStdString();
    const BatchOutcome judged = runProgram("tessera-compare",
                                           {m_dir.filePath("q_truth.json"), strOut + "/q"});
    EXPECT_EQ(judged.nStatus, 0) << judged.strText.toStdString();

    writeBytes(m_dir.filePath("q.cif"),
               "data_quartz\n_cell_length_a 4.916(2)\n_cell_length_b 4.916\n_cell_length_c 5.4054\n"
               "_cell_angle_alpha 90\n_cell_angle_beta 90\n_cell_angle_gamma 120\n");
    const auto again = [&](const QStringList& listOption) {
        return batch("known", QStringList{"--from", "cell", "--to", "cell"} + listOption);
    };
    // Peaks out of a list are rounded, so both of these start from it.
    ASSERT_EQ(again({"--known-cell", "4.916, 4.916, 5.4054, 90, 90, 120"}).nStatus, 0);
    const QByteArray bytesFromList = result("known", "uc");
    ASSERT_EQ(again({"--known-cell", m_dir.filePath("q.cif")}).nStatus, 0);
    EXPECT_EQ(result("known", "uc"), bytesFromList);

    const BatchOutcome other = again({"--known-cell", "5.64,5.64,5.64,90,90,90"});
    EXPECT_EQ(other.nStatus, 1) << other.strText.toStdString();
    EXPECT_TRUE(other.strText.contains("The known cell was not found")) << other.strText.toStdString();
    const BatchOutcome none = again({"--cell-min", "900", "--cell-max", "950"});
    EXPECT_EQ(none.nStatus, 1) << none.strText.toStdString();
    EXPECT_TRUE(none.strText.contains("--known-cell looks for its orientation"))
        << none.strText.toStdString();
    EXPECT_EQ(result("known", "uc"), bytesFromList) << "the former cell stays";
}

TEST_F(Stages, MergeOnlyTheChosenGroupAndSayWhatTheLimitsKeepOut)
{
    ASSERT_EQ(batch("g", {"--to", "peaks"}).nStatus, 0);
    // Every second peak goes to group 3 alone.
    QList<QByteArray> listLine = result("g", "pk").split('\n');
    int nInGroup = 0;
    for (int i = 0; i + 1 < listLine.size(); i += 2) {
        listLine[i].replace("8000000000000000", "1000000000000000");
        ++nInGroup;
    }
    writeBytes(m_dir.filePath("g/q.pk"), listLine.join('\n'));
    const auto merged = [&](const QStringList& listMore) {
        EXPECT_EQ(
            batch("g", QStringList{"--from", "merge", "--to", "merge", "--json", m_dir.filePath("m.json")} +
                           listMore)
                .nStatus,
            0);
        return QJsonDocument::fromJson(readBytes(m_dir.filePath("m.json"))).object();
    };
    EXPECT_EQ(merged({})["peaksMerged"].toInt(), listLine.size() - 1);
    EXPECT_EQ(merged({"--group", "3"})["peaksMerged"].toInt(), nInGroup);
    EXPECT_EQ(merged({"--group", "0"})["peaksMerged"].toInt(), listLine.size() - 1 - nInGroup);
    // Where no peak is in a group all are in the first, as in the window.
    QByteArray bytesNone = listLine.join('\n');
    bytesNone.replace("1000000000000000", "0000000000000000").replace("8000000000000000", "0000000000000000");
    writeBytes(m_dir.filePath("g/q.pk"), bytesNone);
    EXPECT_EQ(merged({"--group", "0"})["peaksMerged"].toInt(), listLine.size() - 1);
    const QJsonObject limited = merged({"--resolution-max", "0.5"});
    EXPECT_GT(limited["peaksOutsideLimits"].toInt(), 0);
    EXPECT_EQ(limited["peaksMerged"].toInt() + limited["peaksOutsideLimits"].toInt(), listLine.size() - 1);
    // The threshold of the page in place of the one from the noise.
    EXPECT_NE(merged({"--from", "peaks"})["peakThreshold"].toDouble(), 1);
    EXPECT_EQ(merged({"--from", "peaks", "--window-defaults"})["peakThreshold"].toDouble(), 1);
}

TEST_F(Stages, TakeANameThatLeavesNoRoomForALongerOne)
{
    const QString strName = QStringLiteral("q").repeated(250);  // with ".json" the 255 bytes of a file system
    ASSERT_TRUE(QFile::rename(m_dir.filePath("q.ed3d"), m_dir.filePath(strName + ".ed3d")));
    for (int i = 0; i < 2; ++i) {
        const BatchOutcome outcome = runBatch(
            {m_dir.filePath(strName + ".ed3d"), "--json", m_dir.filePath(strName + ".json"), "--jobs", "2"});
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    }
    // Project, summary, log and results, and nothing beside them.
    EXPECT_EQ(QDir(m_dir.path()).entryList({strName + "*"}, QDir::AllEntries).size(), 9);
}

TEST_F(Stages, ThatCannotWriteEndWithStatusOneAndLeaveTheFormerFiles)
{
    ASSERT_EQ(batch("f").nStatus, 0);
    writeBytes(m_dir.filePath("f/q.hkl.before"), "the user's own");
    const QByteArray bytesPeaks = result("f", "pk"), bytesCell = result("f", "p4p");
    const auto expectFailure = [&](const QStringList& listMore, const char* pszReason) {
        const BatchOutcome outcome = batch("f", QStringList{"--json", m_dir.filePath("f.json")} + listMore);
        EXPECT_EQ(outcome.nStatus, 1);
        EXPECT_TRUE(outcome.strText.contains(pszReason)) << outcome.strText.toStdString();
        const QByteArray bytesSummary = readBytes(m_dir.filePath("f.json"));
        EXPECT_FALSE(QJsonDocument::fromJson(bytesSummary).object()["reached"].toBool(true));
    };
    const int nRoom = 20000;
    ASSERT_GT(bytesPeaks.size(), nRoom);
    {
        const CFileSizeLimit limit(nRoom);
        expectFailure({"--from", "peaks", "--to", "peaks"}, "q.pk: File too large");
    }
    EXPECT_EQ(result("f", "pk"), bytesPeaks);
    // With another pixel size the files change; one of them cannot be written because a folder has its name.
    ASSERT_TRUE(QFile::remove(m_dir.filePath("f/q.hkl")));
    ASSERT_TRUE(QDir().mkdir(m_dir.filePath("f/q.hkl")));
    expectFailure({"--from", "merge", "--pixel-size", "0.0081"}, "q.hkl: is a folder");
    EXPECT_EQ(result("f", "p4p"), bytesCell);
    EXPECT_EQ(result("f", "hkl.before"), "the user's own");
    for (const char* pszSuffix : {"sc", "pk", "uc"}) {
        const QString strFile = m_dir.filePath(QStringLiteral("f/q.") + QLatin1String(pszSuffix));
        const QByteArray bytesFormer = readBytes(strFile);
        ASSERT_TRUE(QFile::remove(strFile));
        ASSERT_TRUE(QDir().mkdir(strFile));
        const QString strStage = QString::fromLatin1(*pszSuffix == 's'   ? "shifts"
                                                     : *pszSuffix == 'p' ? "peaks"
                                                                         : "cell");
        expectFailure({"--from", strStage, "--to", strStage}, "is a folder");
        ASSERT_TRUE(QDir().rmdir(strFile));
        writeBytes(strFile, bytesFormer);
    }
    // A cell that is none does not take the place of a good one.
    writeBytes(m_dir.filePath("flat.uc"), "a* 0.1 0 0\nb* 0 0.1 0\nc* 0.1 0.1 0\n");
    const QByteArray bytesBasis = result("f", "uc");
    expectFailure({"--from", "cell", "--cell", m_dir.filePath("flat.uc")}, "flat.uc: the reciprocal vectors");
    EXPECT_EQ(result("f", "uc"), bytesBasis);
}

TEST_F(Stages, RefineTheCellFromPeakPairsAndTouchNoFile)
{
    ASSERT_EQ(batch("r", {"--to", "index"}).nStatus, 0);
    // The indices of a later start are those of the stage index, whose files it leaves alone.
    const QJsonObject through = refined({"--from", "index", "--to", "refine", "--constant-background"});
    for (const char* pszSuffix : {"hkl", "p4p", "ipf"}) {
        writeBytes(m_dir.filePath(QStringLiteral("r/q.") + pszSuffix), "earlier");
    }
    const QJsonObject later = refined(
        {"--from", "refine", "--constant-background", "--jobs", "3", "--statistics"});
    EXPECT_EQ(later["peakPairs"], through["peakPairs"]);
    for (const char* pszSuffix : {"hkl", "p4p", "ipf"}) {
        EXPECT_EQ(result("r", pszSuffix), "earlier") << pszSuffix;
    }
    const QJsonObject pairs = later["peakPairs"].toObject();
    for (const char* pszRun : {"wholePixels", "subPixels", "subPixelsConstant"}) {
        const QJsonObject run = pairs[pszRun].toObject();
        EXPECT_GT(run["pairs"].toInt(), run["groups"].toInt()) << pszRun;
        EXPECT_GT(run["groups"].toInt(), 20) << pszRun;
    }
    EXPECT_NE(pairs["wholePixels"], pairs["subPixels"]);
    EXPECT_NE(pairs["subPixels"], pairs["subPixelsConstant"]);

    const auto limited = refined(
        {"--from", "refine", "--refine-dstar-low", "0.5", "--refine-dstar-high", "1"});
    EXPECT_EQ(limited["peakPairs"].toObject()["dStar"], (QJsonArray{0.5, 1}));
    EXPECT_LT(limited["peakPairs"].toObject()["wholePixels"].toObject()["pairs"].toInt(),
              pairs["wholePixels"].toObject()["pairs"].toInt());
    EXPECT_FALSE(limited["peakPairs"].toObject().contains("subPixelsConstant"));
    const auto exchanged = refined(
        {"--from", "refine", "--refine-dstar-low", "1", "--refine-dstar-high", "0.5"});
    EXPECT_EQ(exchanged["peakPairs"], limited["peakPairs"]);
    EXPECT_TRUE(exchanged["log"].toString().contains("the limits of d* of the peak pairs"));
    EXPECT_TRUE(
        refined({"--from", "refine", "--refine-dstar-low", "50", "--refine-dstar-high", "90"}, 1)["log"]
            .toString()
            .contains("No cell came out of the peak pairs at hunted positions: 0 pairs"));
}

TEST_F(Stages, TakeImagesWithTheGeometryOfTheCommandLine)
{
    ASSERT_EQ(batch("project").nStatus, 0);
    QStringList listArgument;
    for (const QString& strFile : QDir(m_dir.path()).entryList({"*.mrc"}, QDir::Files, QDir::Name)) {
        listArgument.append(m_dir.filePath(strFile));
    }
    ASSERT_EQ(listArgument.size(), 40);
    const BatchOutcome outcome = runBatch(listArgument + QStringList{"--wavelength", "0.0251", "--pixel-size",
                                                                     "0.008", "--axis", "-38.5",
                                                                     "--tilt-start", "-20", "--tilt-step",
                                                                     "1", "--out", m_dir.filePath("images")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const QString strBase = QFileInfo(listArgument.first()).completeBaseName();
    for (const char* pszSuffix : g_aszResult) {
        EXPECT_EQ(readBytes(m_dir.filePath("images/" + strBase + '.' + pszSuffix)),
                  result("project", pszSuffix))
            << pszSuffix;
    }
}

TEST_F(Stages, TakeTheImagesOfAStackAsTheFramesOfASeries)
{
    ASSERT_EQ(batch("project").nStatus, 0);
    QByteArray bytesProject = readBytes(m_dir.filePath("q.ed3d")), bytesStack;
    int nImages = 0;
    for (const QString& strName : QDir(m_dir.path()).entryList({"*.mrc"}, QDir::Files, QDir::Name)) {
        const QByteArray bytesFrame = readBytes(m_dir.filePath(strName));
        bytesStack += bytesFrame.mid(bytesStack.isEmpty() ? 0 : 1024);
        bytesProject.replace(strName.toUtf8(), "stack.mrc#" + QByteArray::number(++nImages));
    }
    ASSERT_EQ(nImages, 40);
    bytesStack[8] = char(nImages);  // NZ
    writeBytes(m_dir.filePath("stack.mrc"), bytesStack);
    writeBytes(m_dir.filePath("stack.ed3d"), bytesProject);
    const BatchOutcome outcome = runBatch({m_dir.filePath("stack.ed3d"), "--out", m_dir.filePath("stack")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    for (const char* pszSuffix : g_aszResult) {
        EXPECT_EQ(readBytes(m_dir.filePath("stack/stack." + QString(pszSuffix))),
                  result("project", pszSuffix))
            << pszSuffix;
    }
}

}  // namespace tessera
