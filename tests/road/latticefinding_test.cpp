// The road's look at the lattice, on simulated series: conventional axes, two crystals, a supercell.
#include "simulate/latticematch.h"
#include "simulate/secondlattice.h"
#include "simulate/truthfile.h"
#include "tests/batch/batchprogram.h"

#include <gtest/gtest.h>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace tessera {

namespace {

class LatticeFinding : public testing::Test {
protected:
    void simulate(const QStringList& listOption)
    {
        const BatchOutcome outcome = runProgram(
            "tessera-simulate",
            QStringList{"--out", m_dir.path(), "--name", "s", "--size", "320", "--pixel-size", "0.006",
                        "--frames", "60", "--tilt-start", "-30", "--tilt-step", "1"} +
                listOption);
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        QString strError;
        ASSERT_TRUE(readTruthFile(file("s_truth.json"), m_truth, strError)) << strError.toStdString();
    }
    /// The summary of a run.
    QJsonObject run(const QStringList& listOption, int nStatus = 0)
    {
        const BatchOutcome outcome = runBatch(QStringList{file("s.ed3d"), "--json", file("s.json")} +
                                              listOption);
        EXPECT_EQ(outcome.nStatus, nStatus) << outcome.strText.toStdString();
        return QJsonDocument::fromJson(readBytes(file("s.json"))).object();
    }
    QString file(const char* pszName) const { return m_dir.filePath(QLatin1String(pszName)); }

    /// a*, b*, c* of the run.
    Matrix3 basis() const
    {
        Matrix3 mat{};
        const QList<QByteArray> listWord = readBytes(file("s.uc")).simplified().split(' ');
        for (int i = 0; i < 9 && listWord.size() >= 12; ++i) {
            mat[size_t(i) / 3][size_t(i) % 3] =
                listWord[listWord.size() - 12 + i / 3 * 4 + 1 + i % 3].toDouble();
        }
        return mat;
    }

    QTemporaryDir m_dir;
    SimulatedSeries m_truth;
};

QJsonArray cellOf(const QJsonObject& summary)
{
    return summary["cell"].toObject()["parameters"].toArray();
}

QString verdictOn(const QJsonObject& summary, const char* pszPart)
{
    return summary["judgement"].toObject()[QLatin1String(pszPart)].toObject()["verdict"].toString();
}

Matrix3 toMatrix(const QJsonArray& rows)
{
    Matrix3 mat{};
    for (int i = 0; i < 9; ++i) {
        mat[size_t(i) / 3][size_t(i) % 3] = rows[i / 3].toArray()[i % 3].toDouble();
    }
    return mat;
}

}  // namespace

TEST_F(LatticeFinding, ConventionalSettingIndexesABodyCentredCubeInItsOwnAxes)
{
    simulate({"--crystal", "pyrope"});
    const QJsonObject asFound = run({});
    EXPECT_NEAR(cellOf(asFound)[0].toDouble(), 11.459 * std::sqrt(0.75), 0.05);
    const QJsonObject conventional = run({"--from", "cell", "--setting", "conventional"});
    for (int i = 0; i < 6; ++i) {
        EXPECT_NEAR(cellOf(conventional)[i].toDouble(), i < 3 ? 11.459 : 90, i < 3 ? 0.04 : 0.3) << i;
    }
    const QJsonObject lattice = conventional["lattice"].toObject();
    EXPECT_EQ(lattice["symbol"].toString(), "cI");
    EXPECT_EQ(lattice["matrix"].toArray(),
              QJsonArray({QJsonArray{1, 0, 0}, QJsonArray{0, 1, 0}, QJsonArray{0, 0, 1}}));
    EXPECT_NEAR(conventional["fitShare"].toDouble(), asFound["fitShare"].toDouble(), 0.01);
    EXPECT_GT(conventional["fitShare"].toDouble(), 0.95);
    EXPECT_EQ(verdictOn(conventional, "lattice"), "good");
    int nPeaks = 0, nOdd = 0;
    for (const QByteArray& line : readBytes(file("s.ipf")).split('\n')) {
        const QList<QByteArray> listWord = line.simplified().split(' ');  // frame, H, K, L, d*
        if (listWord.size() < 5 || listWord[0] == "#") {
            continue;
        }
        ++nPeaks;
        nOdd += (listWord[1].toInt() + listWord[2].toInt() + listWord[3].toInt()) % 2 == 0 ? 0 : 1;
    }
    EXPECT_GT(nPeaks, 1000);
    EXPECT_LE(nOdd, nPeaks / 100);
}

TEST_F(LatticeFinding, TwoCrystalsAreBothFoundAndDoubted)
{
    simulate({"--crystal", "kyanite", "--second-lattice", "0.45"});
    const QJsonObject summary = run({}, 1);  // less than half of the reflections belong to one cell
    const QJsonArray further = summary["lattice"].toObject()["further"].toArray();
    ASSERT_EQ(further.size(), 1);
    const Matrix3 matFurther = transposed(inverseOf(toMatrix(further[0].toObject()["basis"].toArray())));
    const auto isRight = [&](const Matrix3& matFound, int nLattice) {
        return matchLattice(matFound, m_truth.basis(nLattice), m_truth.matPrimitive).isRight();
    };
    // The cell in force may be that of either.
    const int nFirst = isRight(basis(), 0) ? 0 : 1;
    EXPECT_TRUE(isRight(basis(), nFirst));
    EXPECT_TRUE(isRight(matFurther, 1 - nFirst));
    EXPECT_NEAR(further[0].toObject()["turnDegrees"].toDouble(),
                turnBetween(m_truth.matBasis, m_truth.matSecondBasis), 1);
    const double dfShare = further[0].toObject()["share"].toDouble();
    EXPECT_GT(dfShare, 0.25) << dfShare;
    EXPECT_LT(dfShare, 0.55) << dfShare;
    EXPECT_EQ(verdictOn(summary, "lattice"), "doubtful");
    EXPECT_NE(verdictOn(summary, "cell"), "good");
}

TEST_F(LatticeFinding, AWeakSupercellIsTakenOrNamed)
{
    simulate({"--crystal", "forsterite", "--supercell", "2", "--odd-share", "0.02"});
    const QJsonObject summary = run({});
    const auto cosets = summary["lattice"].toObject()["cosets"].toArray();
    const bool bTaken = matchLattice(basis(), m_truth.matBasis, m_truth.matPrimitive).isRight();
    bool bNamed = false;
    for (const QJsonValue& coset : cosets) {
        const QJsonArray at = coset.toObject()["at"].toArray();
        bNamed |= at.contains(0.5);
    }
    EXPECT_TRUE(bTaken || bNamed) << QJsonDocument(summary).toJson().toStdString();
    EXPECT_EQ(verdictOn(summary, "lattice"), (bTaken ? "good" : "doubtful"));
}

}  // namespace tessera
