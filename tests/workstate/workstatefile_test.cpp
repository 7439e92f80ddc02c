#include "workstate/workstatefile.h"

#include "tests/filebytes.h"
#include "tests/workstate/randomstate.h"

#include <gtest/gtest.h>
#include <QDir>

#include <cmath>

namespace tessera {

namespace {

const int g_nHead = workStateHead({}).size();

/// The bytes with a check sum that is right.
QByteArray summed(const QByteArray& bytes)
{
    const QByteArray bytesValues = bytes.mid(g_nHead);
    return workStateHead(bytesValues) + bytesValues;
}

TEST(WorkStateFile, GivesEveryBitBack)
{
    for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
        const QByteArray bytes = workStateBytes(randomState(nSeed));
        QString strReason;
        const auto state = workStateFromBytes(bytes, &strReason);
        ASSERT_TRUE(state) << strReason.toStdString();
        ASSERT_EQ(workStateBytes(*state), bytes) << nSeed;
    }
}

namespace {

WorkState workOfAUser()
{
    WorkState state;
    state.series.m_strProjectName = QStringLiteral("Granat ß");
    state.series.m_listPeakFrame = {{}, {Peak3D(), Peak3D()}};
    state.series.m_listPeakFrame[1][1].dfH = -std::numeric_limits<double>::infinity();
    state.series.m_listPeakFrame[1][1].fX3D = std::nextafter(0.1f, 1.f);
    state.series.m_listPeakFrame[1][1].nRGroup = 7;
    state.series.m_vecReflectionFrame = {3, -1};
    state.series.m_maskPeakHunting.fillRule = Qt::WindingFill;
    state.series.m_maskPeakHunting.listPolygon = {QVector<QPointF>{{0.1, 2}, {9, 0}, {0, 9}}};
    EXPECT_TRUE(state.series.m_spaceGroup.setSpaceGroup(230));
    state.listRawGroup = {{QStringLiteral("first"), {0, 1}, QColor::fromHsv(300, 20, 200, 40), false}};
    GeometryRefinement geometry;
    geometry.free.dfRmsSeen = std::numeric_limits<double>::quiet_NaN();
    geometry.free.fit.form = CellForm(
        CellConstraint{LatticeSystem::Cubic, Eigen::Matrix3d::Identity(), QStringLiteral("cP")},
        Eigen::Matrix3d::Identity() / 9);
    state.pGeometry = std::make_shared<const GeometryRefinement>(geometry);
    return state;
}

}  // namespace

TEST(WorkStateFile, GivesBackWhatAUserHasMade)
{
    const WorkState state = workOfAUser();
    const auto read = workStateFromBytes(workStateBytes(state));
    ASSERT_TRUE(read);
    const WorkState& again = *read;

    EXPECT_EQ(again.series.m_strProjectName, state.series.m_strProjectName);
    ASSERT_EQ(again.series.m_listPeakFrame.size(), 2);
    ASSERT_EQ(again.series.m_listPeakFrame[1].size(), 2);
    EXPECT_EQ(again.series.m_listPeakFrame[1][1].dfH, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(again.series.m_listPeakFrame[1][1].fX3D, std::nextafter(0.1f, 1.f));
    EXPECT_EQ(again.series.m_listPeakFrame[1][1].nRGroup, 7);
    EXPECT_EQ(again.series.m_vecReflectionFrame, (std::vector<int>{3, -1}));
    EXPECT_EQ(again.series.m_maskPeakHunting.fillRule, Qt::WindingFill);
    EXPECT_EQ(again.series.m_maskPeakHunting.listPolygon, state.series.m_maskPeakHunting.listPolygon);
    EXPECT_EQ(again.series.m_spaceGroup.vecOperation.size(), 96u);
    EXPECT_TRUE(again.series.m_spaceGroup.isAbsent(1, 1, 1));
    ASSERT_EQ(again.listRawGroup.size(), 1);
    EXPECT_EQ(again.listRawGroup[0].color, QColor::fromHsv(300, 20, 200, 40));
    EXPECT_EQ(again.listRawGroup[0].listPoint, (QList<int>{0, 1}));
    EXPECT_FALSE(again.listRawGroup[0].bVisible);
    ASSERT_TRUE(again.pGeometry);
    EXPECT_TRUE(std::isnan(again.pGeometry->free.dfRmsSeen));
    ASSERT_TRUE(again.pGeometry->free.fit.form.isConstrained());
    GeometryNumbers numbers = {};
    const CellForm& form = state.pGeometry->free.fit.form;
    form.setStart(numbers, Eigen::Matrix3d::Identity() / 9);
    EXPECT_EQ(again.pGeometry->free.fit.form.reciprocal(numbers), form.reciprocal(numbers));
    EXPECT_FALSE(again.pIntegration);
}

TEST(WorkStateFile, RefusesWhatIsNotWhole)
{
    const QByteArray bytes = workStateBytes(randomState(5));
    std::mt19937 random(1);
    const auto expectRefused = [&](const QByteArray& bytesBad, const char* pszWhat, int nPlace) {
        QString strReason;
        EXPECT_FALSE(workStateFromBytes(bytesBad, &strReason)) << pszWhat << nPlace;
        EXPECT_FALSE(strReason.isEmpty());
    };
    for (int i = 0; i < 300; ++i) {
        const int nPlace = i < g_nHead ? i : int(random() % unsigned(bytes.size()));
        QByteArray bytesFlipped = bytes;
        bytesFlipped[nPlace] = char(bytesFlipped[nPlace] ^ (1 << random() % 8));
        expectRefused(bytesFlipped, "flipped at ", nPlace);
        expectRefused(bytes.left(nPlace), "cut at ", nPlace);
        if (nPlace >= g_nHead) {
            expectRefused(summed(bytes.left(nPlace)), "cut with another sum at ", nPlace);
        }
    }
    expectRefused(summed(bytes + 'x'), "longer", bytes.size());
    QByteArray bytesOther = bytes;
    bytesOther[16] = char(bytesOther[16] + 1);  // behind the mark
    QString strReason;
    EXPECT_FALSE(workStateFromBytes(bytesOther, &strReason));
    EXPECT_TRUE(strReason.contains(QStringLiteral("another version"))) << strReason.toStdString();
}

// Bytes that somebody gave a right sum: a state, or a reason, but never a crash or memory without end.
TEST(WorkStateFile, HoldsAgainstBytesWithARightSum)
{
    std::mt19937 random(2);
    int nRead = 0;
    for (int i = 0; i < 3000; ++i) {
        QByteArray bytes = workStateBytes(randomState(unsigned(i % 20)));
        for (int nFlips = 1 + i % 3; nFlips > 0; --nFlips) {
            bytes[g_nHead + int(random() % unsigned(bytes.size() - g_nHead))] = char(random());
        }
        if (const auto state = workStateFromBytes(summed(bytes))) {
            ++nRead;
            ASSERT_EQ(workStateBytes(*state), summed(bytes)) << i;
        }
    }
    EXPECT_GT(nRead, 1000);
    EXPECT_LT(nRead, 3000);
}

// A file of a former build is read as long as the version is the same: else that has to grow.
TEST(WorkStateFile, ReadsTheFileOfItsVersion)
{
    const QByteArray bytes = readBytes(
        QDir::cleanPath(QStringLiteral(TESSERA_TEST_DATA "/../../fuzzcases/workstate/seed")));
    QString strReason;
    const auto state = workStateFromBytes(bytes, &strReason);
    ASSERT_TRUE(state) << strReason.toStdString();
    EXPECT_EQ(workStateBytes(*state), bytes);
}

}  // namespace

}  // namespace tessera
