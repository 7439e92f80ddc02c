// The stages as functions: stopped by a user, which the driver has no way for, and called out of their order.
#include "road/stages.h"
#include "dataset/hotpixelfile.h"
#include "road/road.h"
#include "road/roadjson.h"
#include "road/seriesopening.h"
#include "tests/batch/batchprogram.h"
#include "tests/recordingreport.h"

#include <QJsonObject>
#include <QTemporaryDir>

namespace tessera {

namespace {

class RoadStages : public testing::Test {
protected:
    void SetUp() override
    {
        const BatchOutcome outcome = simulateQuartz(m_dir.path());
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    }
    RoadOptions options(const QString& strOut) const
    {
        RoadOptions options;
        options.listInput = QStringList{m_dir.filePath("q.ed3d")};
        options.strOutDir = m_dir.filePath(strOut);
        options.stageTo = RoadStage::Refine;
        options.nJobs = 2;
        return options;
    }
    QStringList results(const QString& strOut) const
    {
        return QDir(m_dir.filePath(strOut)).entryList(QDir::Files, QDir::Name);
    }
    QTemporaryDir m_dir;
};

/// The summary without the times and without what only a whole road tells.
QJsonObject found(const RoadResults& results)
{
    QJsonObject summary = roadSummary(results);
    for (const char* pszKey : {"seconds", "stage", "warnings", "judgement"}) {
        summary.remove(QLatin1String(pszKey));
    }
    return summary;
}

}  // namespace

TEST_F(RoadStages, ThatAreStoppedLeaveNothingAndCanBeRunAgain)
{
    CRecordingReport whole;
    DataSet dataWhole;
    RoadState unbroken(options("whole"), dataWhole, whole);
    runRoad(unbroken);
    ASSERT_TRUE(unbroken.results.end.finished()) << unbroken.results.end.strReason.toStdString();
    EXPECT_EQ(unbroken.results.lastStage, RoadStage::Refine);

    CRecordingReport report;
    DataSet data;
    RoadState state(options("stopped"), data, report);
    ASSERT_TRUE(openSeries(state).finished());
    for (int nStage = 0; nStage < roadStageNames().size(); ++nStage) {
        const RoadStage stage = RoadStage(nStage);
        SCOPED_TRACE(roadStageName(stage).toStdString());
        const QStringList listBefore = results("stopped");
        report.m_nStopAfter = 0;
        const StageResult stopped = runStage(stage, state);
        EXPECT_EQ(int(stopped.end), int(RunEnd::Stopped)) << stopped.strReason.toStdString();
        EXPECT_TRUE(report.m_listLine.contains(stopped.strReason)) << stopped.strReason.toStdString();
        EXPECT_EQ(results("stopped"), listBefore);
        report.m_nStopAfter = -1;
        const StageResult again = runStage(stage, state);
        EXPECT_TRUE(again.finished()) << again.strReason.toStdString();
        EXPECT_TRUE(again.strReason.isEmpty());
    }
    EXPECT_EQ(found(state.results), found(unbroken.results));
    EXPECT_EQ(results("stopped"), results("whole"));
    for (const QString& strFile : results("whole")) {
        EXPECT_EQ(readBytes(m_dir.filePath("stopped/" + strFile)),
                  readBytes(m_dir.filePath("whole/" + strFile)))
            << strFile.toStdString();
    }
}

TEST_F(RoadStages, HotPixelsThatWereFoundAreListedWhereLaterRunsReadThem)
{
    const QString strList = m_dir.filePath("hotpixels.txt");
    const QList<QPoint> listMade = readHotPixelFile(strList).value_or(QList<QPoint>());
    ASSERT_FALSE(listMade.isEmpty());
    const QByteArray bytesMade = readBytes(strList);
    const auto hunt = [&](const QString& strOut) {
        RoadOptions to = options(strOut);
        to.stageTo = RoadStage::Peaks;
        CRecordingReport report;
        DataSet data;
        RoadState state(to, data, report);
        runRoad(state);
        EXPECT_TRUE(state.results.end.finished()) << state.results.end.strReason.toStdString();
        return data.m_listHotPixel;
    };
    hunt("");
    EXPECT_EQ(readBytes(strList), bytesMade);  // the user's stays
    ASSERT_TRUE(QFile::remove(strList));
    EXPECT_FALSE(hunt("elsewhere").isEmpty());
    EXPECT_FALSE(QFile::exists(strList));
    EXPECT_FALSE(results("elsewhere").contains("hotpixels.txt"));
    const QList<QPoint> listRepaired = hunt("");
    EXPECT_EQ(readHotPixelFile(strList), listRepaired);
    for (const QPoint& pt : listRepaired) {
        EXPECT_TRUE(listMade.contains(pt)) << pt.x() << ' ' << pt.y();
    }
    EXPECT_GE(listRepaired.size(), listMade.size() / 2);
    EXPECT_EQ(hunt(""), listRepaired);
}

TEST_F(RoadStages, OutOfTheirOrderSayWhatIsMissing)
{
    const struct {
        RoadStage stage;
        RunEnd end;
        const char* pszReason;
    } aRow[] = {{RoadStage::Merge, RunEnd::Failed, "No reflections"},
                {RoadStage::Cell, RunEnd::Refused, "No reflections were selected"},
                {RoadStage::Index, RunEnd::Refused, "Unit cell is not ready."},
                {RoadStage::Refine, RunEnd::Failed, "No indexed peaks"}};
    for (const auto& row : aRow) {
        SCOPED_TRACE(roadStageName(row.stage).toStdString());
        CRecordingReport report;
        DataSet data;
        RoadState state(options("none"), data, report);
        ASSERT_TRUE(openSeries(state).finished());
        const StageResult result = runStage(row.stage, state);
        EXPECT_EQ(int(result.end), int(row.end));
        EXPECT_TRUE(result.strReason.contains(QLatin1String(row.pszReason)))
            << result.strReason.toStdString();
        EXPECT_TRUE(results("none").isEmpty()) << results("none").join(' ').toStdString();
    }
    RoadOptions later = options("none");
    later.stageFrom = RoadStage::Merge;
    CRecordingReport report;
    DataSet data;
    RoadState state(later, data, report);
    runRoad(state);
    EXPECT_EQ(int(state.results.end.end), int(RunEnd::Refused));
    EXPECT_EQ(state.results.strFailed.toStdString(), "open");
    EXPECT_FALSE(state.results.listWarning.contains(state.results.end.strReason));
}

// A folder has the name of the file to be written.
TEST_F(RoadStages, ThatCannotWriteTheirFileSayWhyAndHandTheDataOn)
{
    CRecordingReport report;
    DataSet data;
    RoadState state(options("blocked"), data, report);
    ASSERT_TRUE(openSeries(state).finished());
    for (const RoadStage stage : {RoadStage::Shifts, RoadStage::Peaks, RoadStage::Merge, RoadStage::Cell}) {
        SCOPED_TRACE(roadStageName(stage).toStdString());
        const ResultFile file = stage == RoadStage::Shifts  ? ResultFile::Shifts
                                : stage == RoadStage::Peaks ? ResultFile::Peaks
                                                            : ResultFile::Cell;
        const QString strFile = fileOfProject(data, file);
        ASSERT_TRUE(QDir().mkpath(strFile));
        const StageResult result = runStage(stage, state);
        if (stage == RoadStage::Merge) {  // writes none
            EXPECT_TRUE(result.finished());
            continue;
        }
        EXPECT_EQ(int(result.end), int(RunEnd::Failed));
        EXPECT_TRUE(result.strReason.startsWith(strFile + ": ")) << result.strReason.toStdString();
        EXPECT_EQ(report.m_listLine.last(), strFile + " was not written.");
    }
    EXPECT_TRUE(cellInForce(data).has_value());
}

}  // namespace tessera
