// The stage that integrates: its files and its summary, what it leaves alone, and what it cannot do.

#include "dataset/opening.h"
#include "road/intensities.h"
#include "road/road.h"
#include "road/roadjson.h"
#include "tests/batch/batchprogram.h"
#include "tests/recordingreport.h"

#include <gemmi/mtz.hpp>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace tessera {

namespace {

QStringList namesIn(const QString& strFolder)
{
    return QDir(strFolder).entryList(QDir::Files, QDir::Name);
}

const QStringList g_listNew = {
    "q.cif", "q.ins", "q.mtz", "q_integrated.hkl", "q_integrated.ins", "q_merged.hkl", "q_rejected.csv"};

QJsonObject summaryOf(const QString& strFile)
{
    return QJsonDocument::fromJson(readBytes(strFile)).object();
}

}  // namespace

class IntegrateStage : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(simulateQuartz(dir.path()).nStatus, 0);
        ASSERT_EQ(run({"--to", "geometry"}).nStatus, 0);
        ASSERT_FALSE(namesIn(dir.filePath("out")).contains("q_integrated.hkl"));
    }

    BatchOutcome run(const QStringList& listMore) const
    {
        return runBatch(QStringList{dir.filePath("q.ed3d"), "--out", dir.filePath("out"), "--json",
                                    dir.filePath("s.json")} +
                        listMore);
    }

    QString out(const QString& strName) const { return dir.filePath("out/" + strName); }

    QTemporaryDir dir;
};

TEST_F(IntegrateStage, WritesItsFilesAndLeavesTheOthers)
{
    const QStringList listBefore = namesIn(dir.filePath("out"));
    std::vector<QByteArray> listBytes;
    for (const QString& strName : listBefore) {
        listBytes.push_back(readBytes(out(strName)));
    }
    writeBytes(out("q.cif"), "data_of_the_user\n");
    const BatchOutcome outcome = run(
        {"--from", "integrate", "--formula", "SiO2", "--laue", "-1", "--d-min", "1"});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    for (int n = 0; n < listBefore.size(); ++n) {
        if (listBefore[n] != "q.log" && listBefore[n] != "q.run.json") {
            EXPECT_EQ(readBytes(out(listBefore[n])), listBytes[n]) << listBefore[n].toStdString();
        }
    }
    QStringList listAfter = listBefore + g_listNew + QStringList{"q_integrated.cif"};
    listAfter.sort();
    EXPECT_EQ(namesIn(dir.filePath("out")), listAfter);
    EXPECT_EQ(readBytes(out("q.cif")), "data_of_the_user\n");
    EXPECT_TRUE(outcome.strText.contains("the new one is q_integrated.cif"));

    const QJsonObject summary = summaryOf(dir.filePath("s.json"));
    const QJsonObject quality = summary["quality"].toObject();
    EXPECT_EQ(summary["stage"].toString(), "integrate");
    EXPECT_TRUE(summary["judgement"].toObject().contains("integrate"));
    EXPECT_EQ(quality["laueClass"].toString(), "-1");
    EXPECT_GE(quality["dMin"].toDouble(), 0.999);
    EXPECT_EQ(quality["scales"].toArray().size(), 40);
    EXPECT_EQ(quality["files"].toArray().size(), 7);
    for (const char* pszKey : {"spaceGroups", "rInt", "rMeas", "ccHalf", "completeness", "multiplicity",
                               "iOverSigma", "outliers", "shells", "conditions", "operations"}) {
        EXPECT_TRUE(quality.contains(QLatin1String(pszKey))) << pszKey;
    }
    // One line for each observation, one for each merged reflection, as the summary counts them.
    EXPECT_EQ(readBytes(out("q_integrated.hkl")).count('\n'), quality["observed"].toInt() + 1);
    const gemmi::Mtz mtz = gemmi::read_mtz_file(out("q.mtz").toStdString());
    EXPECT_EQ(mtz.nreflections, quality["unique"].toInt());
    EXPECT_EQ(readBytes(out("q_rejected.csv")).count('\n'),
              quality["leftOut"].toInt() + quality["outliers"].toInt() + 1);
}

TEST_F(IntegrateStage, LeavesAllAsItWasWhereItCannot)
{
    // A cell that the peaks do not lie on: said, not integrated, and the status is that of the cell.
    writeBytes(dir.filePath("wrong.uc"), readBytes(out("q.uc")).replace("0.", "0.7"));
    BatchOutcome outcome = run({"--from", "integrate", "--cell", dir.filePath("wrong.uc")});
    EXPECT_EQ(outcome.nStatus, 1) << outcome.strText.toStdString();
    EXPECT_EQ(namesIn(dir.filePath("out")).filter("integrated").size(), 0);
    // If one file cannot be written, none is.
    ASSERT_TRUE(QDir(dir.filePath("out")).mkdir("q_merged.hkl"));
    outcome = run({"--from", "integrate"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_TRUE(outcome.strText.contains("the files of the stage are as they were before"))
        << outcome.strText.toStdString();
    EXPECT_EQ(namesIn(dir.filePath("out")).filter("integrated").size(), 0);
    EXPECT_EQ(summaryOf(dir.filePath("s.json"))["failed"].toString(), "integrate");
}

TEST_F(IntegrateStage, TwoFramesAreRefused)
{
    DataSet data;
    MappingParameters mapping;
    CRecordingReport report;
    ASSERT_TRUE(openProject(data, mapping, dir.filePath("q.ed3d"), report));
    EXPECT_EQ(findIntensities(data, mapping, nullptr, nullptr, {}, 1, report).outcome.end, RunEnd::Refused)
        << "no cell";
    data.m_listCell = {{0.2, 0, 0}, {0, 0.2, 0}, {0, 0, 0.2}};
    data.m_listFrameFile = data.m_listFrameFile.mid(0, 2);
    data.m_listOverallTilt = data.m_listOverallTilt.mid(0, 2);
    data.m_listShift = {{0, 0}, {0, 0}};
    const auto result = findIntensities(data, mapping, nullptr, nullptr, {}, 1, report);
    EXPECT_EQ(result.outcome.end, RunEnd::Refused);
    EXPECT_TRUE(result.outcome.strReason.contains("too few")) << result.outcome.strReason.toStdString();
    EXPECT_FALSE(result.made);
}

TEST(IntegrateOptions, BadOnesAreBadUsage)
{
    const QStringList aBad[] = {
        {"--rotation", "round"}, {"--rotation", "precession"}, {"--rotation", "precession,0"},
        {"--formula", "Zz"},     {"--formula-units", "4"},     {"--laue", "5/m"},
        {"--d-min", "-1"},       {"--space-group", "231"}};
    for (const QStringList& listBad : aBad) {
        const BatchOutcome outcome = runBatch(QStringList{"x.ed3d"} + listBad);
        EXPECT_EQ(outcome.nStatus, 2) << listBad.join(' ').toStdString();
        EXPECT_TRUE(outcome.strText.contains(listBad[0])) << outcome.strText.toStdString();
    }
    EXPECT_EQ(rotationModeText(*rotationModeOf("precession,0.85")), "precession,0.85");
}

}  // namespace tessera
