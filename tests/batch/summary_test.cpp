// The table of many series.
#include "tests/batch/batchprogram.h"

#include <QTemporaryDir>

namespace tessera {

namespace {

const struct {
    const char* pszFile;
    const char* pszText;
    const char* pszLine;  ///< how its line begins, columns a blank apart
} g_aFile[] = {
    {"cut.json", "{\"stage\":", "cut BAD FILE"},
    {"truth.json", "{\"stage\": 3, \"reached\": true}", "truth BAD FILE"},
    {"z/summary.json", R"({"stage": "peaks", "reached": false, "failed": "merge", "reason": "no\nuse",
             "frames": 9, "peaks": 40, "maxShift": 1.26})",
     "z FAILED peaks 9 40 - - - - - - - - - - 1.3 - - merge: no use"},
    {"w/summary.json", R"({"stage": "index", "reached": true, "indexedShare": 0.95, "fitShare": 0.31,
             "warnings": ["first"], "judgement": {"overall": "bad", "merge": {"verdict": "good"},
             "index": {"verdict": "bad", "reason": "31 of 100."}}, "hints": ["the axis", "more"]})",
     "w MISFIT index - - - 95.0 31.0 - - - - - - - - - - index: 31 of 100. Hint: the axis"},
    {"a/p.json", R"({"stage": "merge", "reached": true, "reflections": 7})",
     "a/p ok merge - - 7 - - - - - - - - - - - -"},
    {"a/q.json", R"({"stage": "index", "reached": true, "indexedShare": 0.5, "fitShare": 1,
             "centreOffset": [3, -4], "cell": {"parameters": [3, 4, 5, 90, 90, 90], "volume": 60}, "shiftJumps": [1, 7],
             "warnings": ["first", "second"]})",
     "a/q ok index - - - 50.0 100.0 3.000 4.000 5.000 90.000 90.000 90.000 60.0 - 5.00 2 first (and 1 "
     "more)"},
    {"c/summary.json", R"({"stage": "index", "reached": true, "indexedShare": 0.9, "cell": {"volume": 62},
             "refined": {"parameters": [9.88440, 6.58611, 9.72170, 109.7965, 96.4832, 170.52],
             "standardErrors": [0.00098, 0.0195, 0.0194, 0.2, 0, 30]}})",
     "c ok index - - - 90.0 - 9.8844(10) 6.59(2) 9.722(19) 109.8(2) 96.483 171(30) 62.0 - - -"},
};

/// A folder with the summaries of runs that ended in all ways.
class Summary : public testing::Test {
protected:
    void SetUp() override
    {
        for (const auto& file : g_aFile) {
            QDir(m_dir.path()).mkpath(QFileInfo(file.pszFile).path());
            writeBytes(path(file.pszFile), file.pszText);
        }
    }
    QString path(const QString& strName) const { return m_dir.filePath(strName); }
    BatchOutcome summaryOf(const QStringList& listName) const
    {
        QStringList listArgument = {"--summary"};
        for (const QString& strName : listName) {
            listArgument.append(path(strName));
        }
        return runBatch(listArgument);
    }

    QTemporaryDir m_dir;
};

}  // namespace

TEST_F(Summary, HasTheWorstFirstAndNamesWhatIsWrong)
{
    QStringList listName;
    for (const auto& file : g_aFile) {
        listName.prepend(file.pszFile);
    }
    const BatchOutcome outcome = summaryOf(listName + QStringList{"gone.json"});
    EXPECT_EQ(outcome.nStatus, 1);
    const QStringList listLine = outcome.strText.split('\n');
    ASSERT_EQ(listLine.size(), 11) << outcome.strText.toStdString();
    EXPECT_TRUE(listLine[2].contains("gone.json: no such file")) << listLine[2].toStdString();
    const int anLine[] = {1, 3, 4, 5, 6, 7, 8};
    for (int i = 0; i < 7; ++i) {
        const QString strLine = listLine[anLine[i]].simplified() + ' ';
        EXPECT_TRUE(strLine.startsWith(QString::fromUtf8(g_aFile[i].pszLine) + ' ')) << strLine.toStdString();
    }
    EXPECT_TRUE(listLine[9].startsWith("5 series: 3 ok, 1 misfits, 1 failed; 3 bad files;"));
    EXPECT_TRUE(listLine[9].endsWith("V/Å³: 61.0 (60.0 to 62.0)")) << listLine[9].toStdString();
}

TEST_F(Summary, AnswersByItsStatusWhetherAllWentWell)
{
    EXPECT_EQ(summaryOf({"a/q.json", "c/summary.json"}).nStatus, 0);
    EXPECT_EQ(summaryOf({"w/summary.json"}).nStatus, 1);
}

// What "*.json" also matches.
TEST_F(Summary, PassesOverOtherRecordsBesideASummaryAndTellsThemAlone)
{
    const QStringList listOther = {"a/q.run.json", "c/q.run.json"};
    for (const QString& strName : listOther) {
        writeBytes(path(strName), R"({"reached": true})");
    }
    EXPECT_EQ(summaryOf(QStringList{"a/q.json"} + listOther).nStatus, 0);
    const BatchOutcome none = summaryOf(listOther);
    EXPECT_EQ(none.nStatus, 1);
    EXPECT_TRUE(none.strText.contains("0 series: 0 ok, 0 misfits, 0 failed; 2 bad files"));
}

}  // namespace tessera
