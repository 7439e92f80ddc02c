// Results that are judged bad: what the driver says of them, writes, and leaves alone.
#include "tests/batch/batchprogram.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace tessera {

namespace {

class Misfit : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(simulateQuartz(m_dir.path()).nStatus, 0);
        ASSERT_EQ(batch({}).nStatus, 0);
    }
    BatchOutcome batch(const QStringList& listMore, const QString& strOut = QStringLiteral("r"))
    {
        const QString strJson = m_dir.filePath("s.json");
        const BatchOutcome outcome = runBatch(
            QStringList{m_dir.filePath("q.ed3d"), "--out", m_dir.filePath(strOut), "--json", strJson} +
            listMore);
        m_summary = QJsonDocument::fromJson(readBytes(strJson)).object();
        EXPECT_FALSE(readBytes(strJson).contains("null"));  // how JSON has what is no number
        return outcome;
    }
    QByteArray result(const QString& strName, const QString& strOut = QStringLiteral("r")) const
    {
        return readBytes(m_dir.filePath(strOut + "/q." + strName));
    }
    QString verdict(const QString& strPart) const
    {
        return m_summary["judgement"].toObject()[strPart].toObject()["verdict"].toString();
    }
    QString firstHint() const { return m_summary["hints"].toArray().at(0).toString(); }

    QTemporaryDir m_dir;
    QJsonObject m_summary;
};

const QStringList g_listFile = {"uc", "hkl", "p4p", "ipf"};

}  // namespace

TEST_F(Misfit, LeavesFormerFilesUnlessItIsAccepted)
{
    EXPECT_EQ(verdict("index"), "good");
    EXPECT_EQ(verdict("integrate"), "good") << "more than half of the reflections";
    EXPECT_FALSE(m_summary.contains("hints"));
    QList<QByteArray> listFormer;
    for (const QString& strName : g_listFile) {
        listFormer.append(result(strName));
        ASSERT_FALSE(listFormer.last().isEmpty());
    }
    const QStringList listWrong = {"--from", "merge", "--axis", "51.5"};

    const BatchOutcome refused = batch(listWrong);
    EXPECT_EQ(refused.nStatus, 1);
    EXPECT_EQ(m_summary["failed"].toString(), "index");
    EXPECT_TRUE(m_summary["reason"].toString().contains("q.hkl")) << refused.strText.toStdString();
    EXPECT_TRUE(m_summary["reason"].toString().contains("--accept"));
    EXPECT_TRUE(refused.strText.contains("q.uc stays as it was; --accept ")) << refused.strText.toStdString();
    EXPECT_EQ(verdict("index"), "bad");
    EXPECT_NE(verdict("lattice"), "good");
    for (int i = 0; i < g_listFile.size(); ++i) {
        EXPECT_EQ(result(g_listFile[i]), listFormer[i]) << g_listFile[i].toStdString();
    }

    EXPECT_EQ(batch(listWrong + QStringList{"--accept"}).nStatus, 0);
    EXPECT_TRUE(m_summary["reached"].toBool());
    EXPECT_EQ(m_summary["judgement"].toObject()["overall"].toString(), "bad");
    for (int i = 0; i < g_listFile.size(); ++i) {
        EXPECT_NE(result(g_listFile[i]), listFormer[i]) << g_listFile[i].toStdString();
    }

    // Where nothing can be lost the files are there to be looked at.
    EXPECT_EQ(batch({"--axis", "51.5"}, "new").nStatus, 1);
    EXPECT_TRUE(m_summary["reached"].toBool());
    for (const QString& strName : g_listFile) {
        EXPECT_FALSE(result(strName, "new").isEmpty()) << strName.toStdString();
    }
}

TEST_F(Misfit, IsFollowedByAHintAtItsCause)
{
    writeBytes(m_dir.filePath("other.uc"), "a* 0.087 0 0\nb* 0 0.113 0\nc* 0 0 0.153\n");
    writeBytes(m_dir.filePath("tiny.uc"), "a* 1000000 0 0\nb* 0 1000000 0\nc* 0 0 1000000\n");
    const QJsonArray centre = m_summary["centre"].toArray();
    const double dfX = centre[0].toDouble();
    const double dfY = centre[1].toDouble();
    const struct {
        QStringList listArgument;
        const char* pszPattern;  ///< with the numbers that the truth is held against
        QList<double> listTrue;
        double dfTolerance;
    } aRow[] = {
        {{"--axis", "51.5"}, "^the rotation axis is more likely at ([-0-9.]+)°", {-38.5}, 0.5},
        {{"--wavelength", "0.251"}, "wavelength.* (?:ten times smaller|likely ([0-9.]+) of)", {0.1}, 0.05},
        {{"--pixel-size", "0.08"}, "pixel size.* (?:ten times smaller|likely ([0-9.]+) of)", {0.1}, 0.05},
        {{"--center-x", QString::number(dfX + 12), "--center-y", QString::number(dfY - 9)},
         "^the direct beam is more likely at \\(([0-9.]+), ([0-9.]+)\\)",
         {dfX, dfY},
         1},
        {{"--cell", m_dir.filePath("other.uc")}, "^the cell that was given .* one of ([0-9]+) Å³", {113}, 2},
        {{"--cell", m_dir.filePath("tiny.uc")}, "^the cell that was given .* one of ([0-9]+) Å³", {113}, 2},
    };
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.listArgument.join(' ').toStdString());
        const BatchOutcome outcome = batch(QStringList{"--from", "merge"} + row.listArgument);
        EXPECT_EQ(outcome.nStatus, 1);
        const QRegularExpressionMatch match =
            QRegularExpression(QString::fromUtf8(row.pszPattern)).match(firstHint());
        EXPECT_TRUE(match.hasMatch()) << firstHint().toStdString();
        for (int i = 0; i < row.listTrue.size() && !match.captured(i + 1).isEmpty(); ++i) {
            EXPECT_NEAR(match.captured(i + 1).toDouble(), row.listTrue[i], row.dfTolerance);
        }
        EXPECT_TRUE(outcome.strText.contains("Hint: " + firstHint())) << outcome.strText.toStdString();
    }
}

TEST_F(Misfit, OfASeriesWithoutARotationIsHintedAtAsSuch)
{
    QByteArray bytesProject;
    for (QByteArray bytesLine : readBytes(m_dir.filePath("q.ed3d")).split('\n')) {
        if (bytesLine.startsWith("FILE ")) {
            bytesLine = "FILE " + bytesLine.split(' ')[1] + " 0 0 0";
        }
        bytesProject += bytesLine + '\n';
    }
    writeBytes(m_dir.filePath("q.ed3d"), bytesProject);
    EXPECT_EQ(batch({"--from", "merge"}).nStatus, 1);
    EXPECT_TRUE(firstHint().contains("the tilts do not change")) << firstHint().toStdString();
}

TEST_F(Misfit, OfNoiseNamesWhatWasTriedAndAFewPeaksAreNotBelieved)
{
    QByteArray bytesNoise;
    unsigned nRandom = 1;
    const auto uniform = [&] { return (nRandom = nRandom * 1664525u + 1013904223u) / 4294967296.0; };
    for (int n = 0; n < 800; ++n) {
        bytesNoise += QStringLiteral("%1 %2 %3 %4 %5 100 1000\n")
                          .arg(n + 1)
                          .arg(n / 20)
                          .arg(n % 20)
                          .arg(320 * uniform(), 0, 'f', 1)
                          .arg(320 * uniform(), 0, 'f', 1)
                          .toLatin1();
    }
    writeBytes(m_dir.filePath("r/q.pk"), bytesNoise);
    const BatchOutcome noise = batch({"--from", "merge"});
    EXPECT_EQ(noise.nStatus, 1);
    EXPECT_EQ(verdict("cell"), "bad");
    EXPECT_TRUE(firstHint().startsWith("nothing was found")) << firstHint().toStdString();

    EXPECT_EQ(result("pk").split('\n').size(), 801);
    writeBytes(m_dir.filePath("r/q.pk"), bytesNoise.left(bytesNoise.indexOf("\n6 ") + 1));
    EXPECT_EQ(batch({"--from", "merge"}).nStatus, 1);
    EXPECT_EQ(m_summary["failed"].toString(), "cell");
    EXPECT_EQ(verdict("cell"), "bad");
    EXPECT_TRUE(firstHint().contains("too few")) << firstHint().toStdString();
}

}  // namespace tessera
