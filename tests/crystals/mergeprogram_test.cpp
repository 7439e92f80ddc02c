// The program that merges: from folders of results to files, and what it does about bad ones.
#include "tests/batch/batchprogram.h"
#include "tests/crystals/mergefolders.h"

#include <QTemporaryDir>

#include <unistd.h>
#include <cmath>

namespace tessera {
namespace {

const char* const g_pszKnown =
    "name;a;b;c;alpha;beta;gamma;space group;formula\n"
    "brick;5,0;6,0;7,0;80;85;75;P-1;Al2SiO5\n"
    "broken;1\n"
    "quartz;4,913;4,913;5,405;90;90;120;P 3 2 1;SiO2\n";

/// Four crystals of a triclinic compound and three of a trigonal one, of which one has the other alternative
/// of its indices; beside them half a list, a copy, and a folder without results.
class MergeProgram : public testing::Test {
protected:
    void SetUp() override
    {
        std::mt19937 random(5);
        CrystalTruth truth;
        truth.dfWedge = 110;
        truth.dfNoise = 0.03;
        for (int n = 1; n <= 4; ++n) {
            truth.dfScale = n;
            writeResults(path("r"), QStringLiteral("b%1").arg(n), simulatedCrystal(m_brick, truth, random));
        }
        for (int n = 1; n <= 3; ++n) {
            truth.matIndices = Eigen::Vector3i(n == 2 ? -1 : 1, n == 2 ? -1 : 1, 1).asDiagonal();
            writeResults(path("r"), QStringLiteral("q%1").arg(n), simulatedCrystal(m_quartz, truth, random));
        }
        const Crystal extra = simulatedCrystal(m_quartz, truth, random);
        const QString strHalf = writeResults(path("r"), "half", extra) + "/half_integrated.hkl";
        writeBytes(strHalf, readBytes(strHalf).left(5000));
        QDir().mkpath(path("r/copy"));
        for (const char* pszSuffix : {".run.json", "_integrated.hkl"}) {
            QFile::copy(path("r/b1/b1") + pszSuffix, path("r/copy/b1") + pszSuffix);
        }
        writeBytes(path("known.csv"), g_pszKnown);
        QDir().mkpath(path("empty"));
    }
    QString path(const QString& strName) const { return m_strRoot + QLatin1Char('/') + strName; }
    BatchOutcome merge(const QString& strArguments, const QString& strBefore = QString()) const
    {
        return runShell(m_strRoot, strBefore + QStringLiteral("tessera-merge ") + strArguments);
    }
    /// Merges all to m, and returns what is there then.
    QMap<QString, QByteArray> mergedFiles() const
    {
        const BatchOutcome outcome = merge("r empty --out m --known known.csv --jobs 1");
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        return filesIn(path("m"));
    }
    /// Share by which merged amplitudes miss the true ones, on one scale.
    double amplitudesOff(const CCompound& compound, const QString& strFile, int nSign) const
    {
        double dfFound = 0, dfTrue = 0, dfOff = 0;
        std::vector<std::pair<double, double>> list;
        for (const QByteArray& line : readBytes(path(strFile)).split('\n')) {
            const int h = line.left(4).toInt(), k = line.mid(4, 4).toInt(), l = line.mid(8, 4).toInt();
            if (h == 0 && k == 0 && l == 0) {
                break;
            }
            list.emplace_back(std::sqrt(std::max(0.0, line.mid(12, 8).toDouble())),
                              std::sqrt(compound.intensity({nSign * h, nSign * k, l})));
            dfFound += list.back().first;
            dfTrue += list.back().second;
        }
        for (const auto& [dfOne, dfOther] : list) {
            dfOff += std::abs(dfOne * dfTrue / dfFound - dfOther);
        }
        return list.size() < 50 ? 1 : dfOff / dfTrue;
    }

    const CCompound m_brick{{5.0, 6.0, 7.0, 80, 85, 75}, "-P 1", 1.0, 1};
    const CCompound m_quartz{{4.913, 4.913, 5.405, 90, 90, 120}, "-P 3 2\"", 0.9, 2};
    const QTemporaryDir m_dir;
    const QString m_strRoot = QFileInfo(m_dir.path()).canonicalFilePath();
};

TEST_F(MergeProgram, tellsCompoundsApartAndMergesEach)
{
    const BatchOutcome outcome = merge("r empty --out m --known known.csv --jobs 1");
    EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    for (const char* pszPart :
         {"known.csv, line 3: it has 2 columns", "r/half/half.run.json. half_integrated.hkl is not the list",
          "byte for byte: they are used once", "/empty. There is no record of a run",
          "m_1_brick: brick, 4 of 4 crystals merged", "m_2_quartz: quartz, 3 of 3 crystals merged",
          "7 crystals read, 7 merged in 2 of 2 groups; not read: 3."}) {
        EXPECT_TRUE(outcome.strText.contains(pszPart)) << pszPart << "\n" << outcome.strText.toStdString();
    }
    EXPECT_TRUE(readBytes(path("m/m_2_quartz.ins")).contains(" in P 3 2 1"))
        << "the known one of those that the absences leave";
    EXPECT_TRUE(readBytes(path("m/m_1_brick_rejected.csv"))
                    .startsWith("h,k,l,crystal,intensity,sigma,deviation,why\n"));
    EXPECT_LT(amplitudesOff(m_brick, "m/m_1_brick_merged.hkl", 1), 0.04);
    // Which of both alternatives quartz gets is by chance; that all have the same is not.
    const double dfOne = amplitudesOff(m_quartz, "m/m_2_quartz_merged.hkl", 1),
                 dfOther = amplitudesOff(m_quartz, "m/m_2_quartz_merged.hkl", -1);
    EXPECT_LT(std::min(dfOne, dfOther), 0.04);
    EXPECT_GT(std::max(dfOne, dfOther), 0.2);
}

// The record lists all other files, with their true sums, and what they were made of.
TEST_F(MergeProgram, recordsItsFilesInputsAndCommand)
{
    const QMap<QString, QByteArray> mapFile = mergedFiles();
    const QJsonObject record = QJsonDocument::fromJson(mapFile["m.merge.json"]).object();
    EXPECT_EQ(record["files"].toArray().size(), mapFile.size() - 1);
    QJsonArray arrayAll = record["files"].toArray();
    for (const QJsonValue& file : record["inputs"].toObject()["files"].toArray()) {
        arrayAll.append(file);
    }
    EXPECT_EQ(arrayAll.size(), mapFile.size() - 1 + 2 * 7 + 1);
    for (const QJsonValue& file : arrayAll) {
        const QString strFile = m_strRoot + QLatin1Char('/') +
                                file["path"].toString().remove(m_strRoot + '/');
        EXPECT_EQ(file["sha256"].toString(), sha256Of(readBytes(strFile))) << strFile.toStdString();
    }
    EXPECT_EQ(merge(record["command"].toString().section(' ', 1)).nStatus, 0);
}

TEST_F(MergeProgram, namesEachCrystalInTreeReportAndTable)
{
    const QMap<QString, QByteArray> mapFile = mergedFiles();
    for (const char* pszName : {"b1", "b2", "b3", "b4", "q1", "q2", "q3"}) {
        for (const char* pszFile : {"m_tree.svg", "m_report.html", "m_crystals.csv"}) {
            EXPECT_TRUE(mapFile[pszFile].contains(pszName)) << pszFile << pszName;
        }
    }
}

// What stood there is no input.
TEST_F(MergeProgram, givesTheSameBytesForOtherThreadsAndAnotherOrder)
{
    const QMap<QString, QByteArray> mapFile = mergedFiles();
    QStringList listFolder = QDir(path("r")).entryList(QDir::Dirs | QDir::NoDotAndDotDot,
                                                       QDir::Name | QDir::Reversed);
    for (QString& strFolder : listFolder) {
        strFolder.prepend("r/");
    }
    EXPECT_TRUE(QDir(path("m")).removeRecursively());
    EXPECT_EQ(merge("empty " + listFolder.join(' ') + " r/b1 --out ./m/ --known known.csv --jobs 3").nStatus,
              0);
    QMap<QString, QByteArray> mapAgain = filesIn(path("m"));
    for (const char* pszFile :
         {"m.log", "m.merge.json", "m_report.html"}) {  // these say that b1 was named twice
        EXPECT_NE(mapAgain.take(pszFile), "") << pszFile;
    }
    for (auto it = mapAgain.constBegin(); it != mapAgain.constEnd(); ++it) {
        EXPECT_EQ(it.value(), mapFile[it.key()]) << it.key().toStdString();
    }
    EXPECT_EQ(merge("r empty --out m --known known.csv --jobs 2").nStatus, 0);
    EXPECT_EQ(filesIn(path("m")), mapFile);
}

/// Names may contain place markers of messages, such as %1.
TEST_F(MergeProgram, takesNamesAsTheyAre)
{
    ASSERT_TRUE(QDir().rename(path("r"), path("%1 %2")));
    writeBytes(path("known.csv"), "%3 %4;5,0;6,0;7,0;80;85;75\n");
    const BatchOutcome outcome = merge("'%1 %2' --out m --name '%5%1' --known known.csv");
    EXPECT_EQ(outcome.nStatus, 0);
    for (const char* pszPart :
         {"%5%1_1__3__4: %3 %4, 4 of 4 crystals merged, ", "%5%1_1__3__4: 4 crystals, reduced cell ",
          "; %3 %4 (edges off by ", "%5%1_2: 3 of 3 merged, Laue class ", "/m/%5%1*, ",
          "/%1 %2/copy/b1.run.json. "}) {
        EXPECT_TRUE(outcome.strText.contains(pszPart)) << pszPart << "\n" << outcome.strText.toStdString();
    }
    EXPECT_TRUE(QFileInfo::exists(path("m/%5%1_1__3__4_merged.hkl")));
}

// A sanitizer wants more addresses than any limit leaves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(MergeProgram, takesFewerThreadsWhereMemoryIsShort)
{
    ASSERT_EQ(merge("r --out m").nStatus, 0);
    const QMap<QString, QByteArray> mapFile = filesIn(path("m"));
    const BatchOutcome outcome = merge("r --out m --jobs 64", "ulimit -v 250000; ");
    EXPECT_EQ(outcome.nStatus, 0);
    EXPECT_TRUE(outcome.strText.contains(" of 64 threads: the files are the same"))
        << outcome.strText.toStdString();
    EXPECT_EQ(filesIn(path("m")), mapFile);
}
#endif

TEST_F(MergeProgram, leavesWholeFilesOnAFullDisk)
{
    ASSERT_EQ(merge("r --out m").nStatus, 0);
    const QMap<QString, QByteArray> mapFile = filesIn(path("m"));
    for (const int nBlocks : {1, 20}) {  // of 512 bytes: the first file, or one of the others
        const QString strLimit = QStringLiteral("ulimit -f %1; ").arg(nBlocks);
        const BatchOutcome outcome = merge("r --out m --d-min 1.5", strLimit);
        EXPECT_EQ(outcome.nStatus, 1);
        EXPECT_TRUE(outcome.strText.contains("File too large")) << outcome.strText.toStdString();
        EXPECT_EQ(filesIn(path("m")), mapFile);
        EXPECT_EQ(merge("r --out n", strLimit).nStatus, 1);
        EXPECT_FALSE(QFileInfo::exists(path("n")));
    }
}

TEST_F(MergeProgram, answersByItsStatus)
{
    writeBytes(path("list"), "# a comment\n\nr/b1\r\nr/b2\n");
    writeBytes(path("nothing"), "\n");
    ASSERT_TRUE(QFile(writeBytes(path("big"), "r\n")).resize((qint64(64) << 20) + 1));
    struct Case {
        const char* szArguments;
        int nStatus;
        const char* szSaid;
    };
    const Case aCase[] = {
        {"", 2, "--out: give a folder for the merged files"},
        {"--out m", 2, "no folders of results given"},
        {"r --out known.csv", 2, "known.csv is no folder"},
        {"r --out r/b1", 2, "holds the results of a series"},
        {"r --out m --name a/b", 2, "--name a/b"},
        {"r --out m --tolerance x", 2, "--tolerance x"},
        {"r --out m --laue 5/m", 2, "--laue 5/m"},
        {"r --out m --list none", 2, "--list none: No such file"},
        {"--out m --list nothing", 2, "it names no folder"},
        {"r --out m --known none.csv", 2, "--known: none.csv: No such file"},
        {"r --out m --known nothing", 2, "it holds no cell"},
        {"--out m --list big", 2, "--list big: it is too large"},
        {"--out m --list - < big", 2, "--list -: it is too large"},
        {"empty gone r/half --out m", 1, "there is nothing to merge"},
        {"r --out m --least 9", 1, "No group of crystals could be merged"},
        {"--list - --out m --strict < list", 0, "2 crystals read, 2 merged in 1 of 1 group; not read: 0."},
        {"--list list gone --out m --strict", 1, "2 crystals read, 2 merged in 1 of 1 group; not read: 1."},
        {"m r/b1 --out m", 0, "1 crystal read, 1 merged"},
        {"r/b1 r/q1 r/q2 --out m --least 2 --strict", 1, "m_2: 1 crystal, not merged"},
    };
    for (const Case& one : aCase) {
        const BatchOutcome outcome = merge(one.szArguments);
        EXPECT_EQ(outcome.nStatus, one.nStatus) << one.szArguments << "\n" << outcome.strText.toStdString();
        EXPECT_TRUE(outcome.strText.contains(one.szSaid)) << one.szArguments << "\n"
                                                          << outcome.strText.toStdString();
        EXPECT_TRUE(one.nStatus == 0 || !QFileInfo::exists(path("m")) ||
                    QFileInfo::exists(path("m/m.merge.json")))
            << one.szArguments;
    }
}

TEST_F(MergeProgram, leavesAFileThatIsNotARecordOfAMerging)
{
    ASSERT_EQ(merge("r --out m").nStatus, 0);
    writeBytes(path("m/m.merge.json"), "{\"mine\": 1}");
    EXPECT_EQ(merge("r --out m").nStatus, 2);
    EXPECT_EQ(readBytes(path("m/m.merge.json")), "{\"mine\": 1}");
}

}  // namespace
}  // namespace tessera
