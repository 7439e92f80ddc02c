// Merging over an earlier merging: all of the new files or all of the former ones, whatever comes between.
#include "crystals/mergeset.h"
#include "tests/batch/batchprogram.h"
#include "tests/crystals/mergefolders.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <csignal>

namespace tessera {
namespace {

/// Three crystals of one compound and two of another, merged to m, which then has two groups.
class MergedBefore : public testing::Test {
protected:
    void SetUp() override
    {
        std::mt19937 random(5);
        CrystalTruth truth;
        truth.dfWedge = 110;
        truth.dfNoise = 0.03;
        for (int n = 1; n <= 3; ++n) {
            writeResults(path("r"), QStringLiteral("b%1").arg(n), simulatedCrystal(m_brick, truth, random));
        }
        for (int n = 1; n <= 2; ++n) {
            writeResults(path("r"), QStringLiteral("q%1").arg(n), simulatedCrystal(m_quartz, truth, random));
        }
        const BatchOutcome outcome = merge("r --out m");
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        m_mapFile = filesIn(path("m"));
        ASSERT_TRUE(m_mapFile.contains("m_2_merged.hkl"));
    }
    QString path(const QString& strName) const { return m_strRoot + QLatin1Char('/') + strName; }
    BatchOutcome merge(const QString& strArguments, const QString& strBefore = QString()) const
    {
        return runShell(m_strRoot, strBefore + QStringLiteral("tessera-merge ") + strArguments);
    }
    void link(const QString& strTo, const QString& strFile) const
    {
        QFile::remove(path(strFile));
        ASSERT_EQ(
            ::symlink(QFile::encodeName(strTo).constData(), QFile::encodeName(path(strFile)).constData()), 0);
    }
    QJsonObject record() const { return QJsonDocument::fromJson(readBytes(path("m/m.merge.json"))).object(); }
    /// Nothing in the folder but those files, hidden ones and folders among the others.
    void expectAsBefore() const
    {
        EXPECT_EQ(filesIn(path("m")), m_mapFile);
        EXPECT_TRUE(QDir(path("m")).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    }

    const CCompound m_brick{{5.0, 6.0, 7.0, 80, 85, 75}, "-P 1", 1.0, 1};
    const CCompound m_quartz{{4.913, 4.913, 5.405, 90, 90, 120}, "-P 3 2\"", 0.9, 2};
    const QTemporaryDir m_dir;
    const QString m_strRoot = QFileInfo(m_dir.path()).canonicalFilePath();
    QMap<QString, QByteArray> m_mapFile;
};

TEST_F(MergedBefore, staysWholeWhereTheDiskIsFullAfterAllGroups)
{
    int nMost = 0;
    for (auto it = m_mapFile.constBegin(); it != m_mapFile.constEnd(); ++it) {
        nMost = it.key().startsWith("m_1") || it.key().startsWith("m_2") ? std::max(nMost, it.value().size())
                                                                         : nMost;
    }
    const int nBlocks = nMost / 512 + 2;  // enough for the files of the groups, too little for the report
    ASSERT_GT(m_mapFile["m_report.html"].size(), 512 * nBlocks);
    const BatchOutcome outcome = merge("r --out m --d-min 1.1",
                                       QStringLiteral("ulimit -f %1; ").arg(nBlocks));
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_TRUE(outcome.strText.contains("m_report.html: File too large")) << outcome.strText.toStdString();
    EXPECT_FALSE(outcome.strText.contains("Files: ")) << "they do not stand";
    expectAsBefore();
}

TEST_F(MergedBefore, staysWholeWhereOneFileCannotBeReplacedAndNothingIsReadForIt)
{
    m_mapFile.remove("m_2_tree.svg");
    ASSERT_TRUE(QFile::remove(path("m/m_2_tree.svg")));
    ASSERT_TRUE(QDir().mkpath(path("m/m_2_tree.svg")));
    const BatchOutcome outcome = merge("r --out m --d-min 1.1");
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_TRUE(outcome.strText.contains("m_2_tree.svg, which would be written, is a folder"))
        << outcome.strText.toStdString();
    EXPECT_FALSE(outcome.strText.contains("Read 5 crystals"));
    ASSERT_TRUE(QDir().rmdir(path("m/m_2_tree.svg")));
    expectAsBefore();
}

TEST_F(MergedBefore, givesItsGroupsWayButForWhatWasChanged)
{
    writeBytes(path("m/m_2_merged.hkl"), m_mapFile["m_2_merged.hkl"] + "mine\n");
    writeBytes(path("m/m_2_notes.txt"), "mine, too");
    const BatchOutcome outcome = merge("r/b1 r/b2 r/b3 --out m");
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    QStringList listOfSecond = filesIn(path("m")).keys().filter("m_2");
    EXPECT_EQ(listOfSecond, (QStringList{"m_2_merged.hkl", "m_2_notes.txt"}));
    EXPECT_TRUE(outcome.strText.contains("are not replaced by new ones are removed: m_2.cif, "));
    EXPECT_TRUE(outcome.strText.contains("remain beside those of this one: m_2_merged.hkl."));
    EXPECT_EQ(record()["former"].toArray().size(), 1);

    // The next one knows it as well, of the generation before.
    writeBytes(path("m/m_2_merged.hkl"), m_mapFile["m_2_merged.hkl"]);
    EXPECT_EQ(merge("r/b1 r/b2 --out m").nStatus, 0);
    EXPECT_EQ(filesIn(path("m")).keys().filter("m_2"), QStringList{"m_2_notes.txt"});
    EXPECT_FALSE(record().contains("former"));
}

TEST_F(MergedBefore, andHalfReplacedIsCleanedByTheNextOne)
{
    // As a kill leaves it: the record that says so, a file of the new groups, one of the former ones aside.
    const QByteArray bytesNew = "a file of the third group";
    const QJsonArray arrayNew = {
        QJsonObject{{"path", path("m/m_3_merged.hkl")}, {"sha256", sha256Of(bytesNew)}}};
    QJsonObject unfinished{{"format", "tessera merge record"},
                           {"unfinished", true},
                           {"files", arrayNew},
                           {"former", QJsonArray{record()}}};
    writeBytes(path("m/m_3_merged.hkl"), bytesNew);
    writeBytes(path("m/m.merge.json"), QJsonDocument(unfinished).toJson());
    QDir().mkpath(path("m/.tessera-merge.files"));
    writeBytes(path("m/.tessera-merge.files/m_1_merged.hkl.abcdef"), "former");
    const BatchOutcome outcome = merge("r/b1 r/b2 r/b3 --out m");
    EXPECT_EQ(outcome.nStatus, 0);
    EXPECT_TRUE(outcome.strText.contains("The earlier merging was interrupted while"))
        << outcome.strText.toStdString();
    EXPECT_TRUE(filesIn(path("m")).keys().filter(QRegularExpression("m_[23]")).isEmpty());
    EXPECT_FALSE(record().contains("unfinished"));
    EXPECT_FALSE(record().contains("former"));
    EXPECT_FALSE(QFileInfo::exists(path("m/.tessera-merge.files")));
}

TEST_F(MergedBefore, isHeldAgainstAnotherMergingAtOnce)
{
    CWorkLock lock;
    ASSERT_TRUE(lock.take(path("m/.tessera-merge.lock")));
    const BatchOutcome outcome = merge("r --out m --d-min 1.1");
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_TRUE(outcome.strText.contains("another merging is writing to m."))
        << outcome.strText.toStdString();
    lock.release();  // as a kill does, which leaves its file
    EXPECT_EQ(merge("r --out m").nStatus, 0);
    expectAsBefore();
}

TEST_F(MergedBefore, doesNotWriteThroughLinksToInputs)
{
    const QMap<QString, QByteArray> mapInput = filesIn(path("r/b1"));
    struct Case {
        const char *szFile, *szTo;
    };
    for (const Case& one :
         {Case{"m/m.log", "../r/b1/b1_integrated.hkl"}, Case{"m/m_1_merged.hkl", "../r/b1/new"},
          Case{"m/m_2_tree.svg", "../r/new.svg"}, Case{"m/m_1.ins", "../r/b1/b1.run.json"}}) {
        const QByteArray bytesBefore = readBytes(path(one.szFile));
        link(one.szTo, one.szFile);
        const BatchOutcome outcome = merge("r --out m");
        EXPECT_EQ(outcome.nStatus, 2) << one.szFile;
        EXPECT_TRUE(outcome.strText.contains("is a link to")) << outcome.strText.toStdString();
        QFile::remove(path(one.szFile));
        writeBytes(path(one.szFile), bytesBefore);
    }
    EXPECT_EQ(filesIn(path("r/b1")), mapInput);
    EXPECT_TRUE(QDir(path("r")).entryList(QDir::Files).isEmpty());
    expectAsBefore();

    // One to somewhere else stays, and the file that it leads to is replaced.
    QDir().mkpath(path("logs"));
    link("../logs/of_merging", "m/m.log");
    EXPECT_EQ(merge("r --out m").nStatus, 0);
    EXPECT_TRUE(QFileInfo(path("m/m.log")).isSymLink());
    EXPECT_EQ(readBytes(path("logs/of_merging")), m_mapFile["m.log"]);
}

TEST(MergePlace, thatIsRefusedHoldsNothing)
{
    const QTemporaryDir dir;
    CrystalsJobOptions options;
    options.strOutFolder = dir.filePath(QStringLiteral("m"));
    const QString strInTheWay = dir.filePath(QStringLiteral("m/m.log"));
    ASSERT_TRUE(QDir().mkpath(strInTheWay));
    CMergePlace refused, other;
    EXPECT_TRUE(refused.take(options).contains("is a folder"));
    EXPECT_FALSE(refused.isTaken());
    ASSERT_TRUE(QDir().rmdir(strInTheWay));
    EXPECT_EQ(other.take(options), QString());
}

/// More files than stay open at once, put in place by this process or by a child that is killed.
class KilledMergeSet : public testing::Test {
protected:
    void SetUp() override { write("0"); }
    QString nameOf(int n) const { return m_strFolder + QStringLiteral("/m_%1_merged.hkl").arg(n); }
    QJsonObject record() const { return QJsonDocument::fromJson(readBytes(m_strRecord)).object(); }
    void write(const QByteArray& bytes) const
    {
        CrystalsJobOptions options;
        options.strOutFolder = m_strFolder;
        CMergePlace place;
        EXPECT_EQ(place.take(options), QString());
        const QJsonObject former = record();
        CMergeSet set(place, options);
        for (int n = 1; n <= m_nFiles; ++n) {
            set.add(nameOf(n), bytes);
        }
        set.addRemovals(former, {});
        const QJsonObject whole{{"format", "tessera merge record"},
                                {"notes", QString::fromLatin1(bytes)},
                                {"files", set.files()}};
        EXPECT_EQ(set.commit(m_strRecord, whole, former), QString());
    }
    /// The child is killed as soon as the first of its files is seen in place.
    void writeKilled(const QByteArray& bytes) const
    {
        const QByteArray bytesFormer = readBytes(nameOf(1));
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            write(bytes);
            ::_exit(0);
        }
        QElapsedTimer timer;
        timer.start();
        while (readBytes(nameOf(1)) == bytesFormer && timer.elapsed() < 60000) {
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }

    const int m_nFiles = 230;
    const QTemporaryDir m_dir;
    const QString m_strFolder = QFileInfo(m_dir.path()).canonicalFilePath() + QStringLiteral("/m");
    const QString m_strRecord = m_strFolder + QStringLiteral("/m.merge.json");
};

TEST_F(KilledMergeSet, leavesARecordThatTellsSo)
{
    for (const char* pszRound : {"1", "2", "3"}) {
        ASSERT_NO_FATAL_FAILURE(writeKilled(pszRound));
        const QJsonObject left = record();
        if (left["unfinished"].toBool()) {
            EXPECT_EQ(left["files"].toArray().size(), m_nFiles);
            EXPECT_FALSE(left["former"].toArray().isEmpty());
        } else {  // it was through
            EXPECT_EQ(left["notes"].toString(), QString(pszRound));
        }
        for (int n = 1; n <= m_nFiles; ++n) {
            EXPECT_FALSE(readBytes(nameOf(n)).isEmpty()) << n;
        }
    }
}

TEST_F(KilledMergeSet, isReplacedByTheNextOneWithNothingBeside)
{
    for (const char* pszRound : {"1", "2", "3"}) {
        ASSERT_NO_FATAL_FAILURE(writeKilled(pszRound));
    }
    write("last");
    EXPECT_EQ(QDir(m_strFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
              m_nFiles + 1);
    EXPECT_EQ(readBytes(nameOf(m_nFiles)), "last");
}

}  // namespace
}  // namespace tessera
