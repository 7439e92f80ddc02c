#include "reciprocal/indexing.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/duplicates.h"
#include "reciprocal/indexedpeaks.h"
#include "reciprocal/indexspreading.h"
#include "reciprocal/reflectiongroups.h"
#include "tests/filebytes.h"
#include "tests/reciprocal/plainloops.h"
#include "tests/reciprocal/simulatedlattice.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gemmi/symmetry.hpp>

#include <climits>
#include <set>
#include <utility>

namespace tessera {

TEST(Indexing, IsThePlainLoopToTheLastBit)
{
    const QList<Vec3D> listBasis = reciprocalBasis(gemmi::UnitCell(6, 9, 12, 84, 97, 103));
    const ReciprocalBasis basis = basisFromList(listBasis).value();
    QList<Peak3D> list = simulatedReflections(listBasis, 0.8, 1e-3, all);
    for (Peak3D& peak : list) {  // far reflections are not whole by plain division
        placeAt(peak, scaled(peak.point(), 1.01f));
    }
    std::mt19937 random(11);
    for (int n = 0; n < 300; ++n) {  // a second crystal and noise, so that passes repeat
        Peak3D peak = list[int(random() % unsigned(list.size()))];
        placeAt(peak, n % 2 ? peak.point() + Vec3D{0.03f, 0.02f, -0.01f}
                            : Vec3D{float(random() % 1000) / 900, float(random() % 1000) / 900, 0.1f});
        list.append(peak);
    }
    for (float f : {NAN, INFINITY, 1e30f}) {
        list.prepend(Peak3D());
        placeAt(list[0], {f, f, 0});
    }
    CRunReport report;
    int nMostPasses = 0;
    for (float fThreshold : {0.05f, 0.12f, 0.5f}) {
        for (float fRadius : {1.f / 3, 0.12f, 5.f}) {
            QList<Peak3D> listFast = list;
            QList<Peak3D> listPlain = list;
            ASSERT_TRUE(indexReflections(listFast, basis, fThreshold, fRadius, report));
            nMostPasses = std::max(nMostPasses, plainIndexing(listPlain, basis, fThreshold, fRadius));
            EXPECT_EQ(bitsOf(listFast), bitsOf(listPlain)) << fThreshold << " " << fRadius;
        }
    }
    EXPECT_GE(nMostPasses, 3);
    const std::vector<uint64_t> vecBefore = bitsOf(list);
    CRecordingReport log;
    log.m_nStopAfter = 0;
    EXPECT_FALSE(indexReflections(list, basis, 0.05f, 1.f / 3, log));
    EXPECT_EQ(bitsOf(list), vecBefore);
}

TEST(BasisSolver, FindsTheStepsOfItsBasis)
{
    CBasisSolver solver;
    const QList<Vec3D> listBasis = reciprocalBasis(gemmi::UnitCell(6, 9, 12, 84, 97, 103));
    solver.setBasis(listBasis[0], listBasis[1], listBasis[2]);
    for (int n = 0; n < 125; ++n) {
        const int anStep[] = {n / 25 - 2, n / 5 % 5 - 2, n % 5 - 2};
        Vec3D v;
        for (int i = 0; i < 3; ++i) {
            v = v + scaled(solver.basis()[i], float(anStep[i]));
        }
        EXPECT_LT(length(solver.solve(v) - Vec3D{float(anStep[0]), float(anStep[1]), float(anStep[2])}),
                  1e-5f)
            << n;
    }
}

TEST(Duplicates, TheStrongestStaysAndFriedelMatesAreApart)
{
    const QList<QList<Peak3D>> listSplit = takeDuplicateReflections(
        {reflection(1, 2, 3, 5, 0), reflection(-1, -2, -3, 9, 1), reflection(1.04, 1.96, 3, 8, 2),
         reflection(0.98, 2, 3, 8, 3), reflection(0, 0, 4, 1, 4)});
    EXPECT_EQ(idsOf(listSplit[0]), QList<int>({2, 1, 4}));
    EXPECT_EQ(idsOf(listSplit[1]), QList<int>({0, 3}));
}

// The groups are the orbits under the Laue class: as many as there are asymmetric indices, and all members of
// one group have the same.
TEST(ReflectionGroups, AreTheOrbitsOfTheLaueClass)
{
    for (int nNumber :
         {1, 2, 14, 19, 62, 79, 92, 123, 144, 150, 151, 157, 160, 167, 173, 182, 198, 205, 225, 230}) {
        const gemmi::SpaceGroup* pGroup = gemmi::find_spacegroup_by_number(nNumber);
        const gemmi::ReciprocalAsu asu(pGroup);
        const gemmi::GroupOps operations = pGroup->operations();
        QList<Peak3D> list = {reflection(0.5, 0, 0)};
        for (int n = 0; n < 9 * 9 * 9; ++n) {
            list.append(reflection(n / 81 - 3.97, n / 9 % 9 - 4.03, n % 9 - 4));
        }
        CRunReport report;
        assignReflectionGroups(list, nNumber, 0.05f, report);
        ASSERT_EQ(list.size(), 9 * 9 * 9 + 1);
        EXPECT_EQ(list.takeFirst().nRGroup, 0);
        std::set<gemmi::Op::Miller> setAsu;
        std::set<std::pair<int, gemmi::Op::Miller>> setPair;
        for (const Peak3D& peak : list) {
            const gemmi::Op::Miller hkl = {roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL)};
            setAsu.insert(asu.to_asu(hkl, operations).first);
            setPair.insert({peak.nRGroup, asu.to_asu(hkl, operations).first});
        }
        EXPECT_EQ(setPair.size(), setAsu.size()) << nNumber;
        EXPECT_EQ(setPair.rbegin()->first, int(setAsu.size())) << nNumber;
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end(),
                                   [](const Peak3D& a, const Peak3D& b) { return a.nRGroup < b.nRGroup; }));
    }
}

namespace {

const QList<Vec3D> g_listCell = reciprocalBasis(gemmi::UnitCell(8, 10, 12, 90, 100, 90));

/// A data set of 10 frames whose reflections have chains of two peaks.
DataSet indexedSeries(const QList<Vec3D>& listCell, const QList<Peak3D>& listReflection)
{
    DataSet data;
    data.m_listCell = listCell;
    data.m_dfCenterX = 100;
    data.m_dfCenterY = 50;
    for (int n = 0; n < 10; ++n) {
        data.m_listShift.append(QPointF(n, 2 * n));
        data.m_listOverallTilt.append(n);
    }
    for (const Peak3D& peak : listReflection) {
        data.m_listPeakChain.append({peakAt(7, 0, 4), peakAt(7, 0, peak.nFrame)});
    }
    data.m_listPeakMerged = listReflection;
    return data;
}

}  // namespace

namespace {

/// Reflections of a cell that have been indexed: two on edges, a duplicate, one off the lattice and the
/// origin among them.
class IndexedSeries : public testing::Test {
protected:
    void SetUp() override
    {
        nGood = list.size();
        list[10].nFrame = 0;
        list[11].nFrame = 9;
        list << list[20] << list[30] << Peak3D();  // the last one at the origin
        list[nGood].dfIPoint /= 2;
        placeAt(list[nGood + 1], list[30].point() + scaled(g_listCell[0], 0.5f));
        for (int n : {nGood, nGood + 1, nGood + 2}) {
            list[n].nID = n;
        }
        data = indexedSeries(g_listCell, list);
        data.m_strProjectDir = dir.path();
        data.m_strProjectName = "series";
        parameters.m_nSpaceGroup = 14;
        parameters.m_bOutputIndexing = true;
        result = runIndexing(data, list, parameters, log);
        ASSERT_TRUE(result.outcome.finished());
    }

    QList<Peak3D> list = simulatedReflections(g_listCell, 0.5, 0, all);
    int nGood = 0;  ///< without the last three
    DataSet data;
    QTemporaryDir dir;
    IndexingParameters parameters;
    CRecordingReport log;
    IndexingResult result;
};

}  // namespace

TEST_F(IndexedSeries, SortsOutEdgesDuplicatesAndTheUnindexed)
{
    EXPECT_EQ(result.listOnEdgeID.size(), 2);
    EXPECT_EQ(result.listDuplicatedID, QList<int>({nGood}));
    EXPECT_EQ(result.listUnindexedID, QList<int>({nGood + 1}));
    EXPECT_EQ(result.listIndexed.size(), nGood - 1);
    EXPECT_LT(result.listIndexed.last().nRGroup, nGood / 3) << "as of 2/m";
    EXPECT_EQ(result.listRounded.size(), nGood);
    EXPECT_EQ(result.listSelection.size(), nGood + 3);
    EXPECT_EQ(data.m_listPeakMerged[30].nRGroup, 0);  // the merged list stays as it was
}

TEST_F(IndexedSeries, HasItsPeaksOnTheFramesAsLongAsTheCellIsTheirs)
{
    ASSERT_EQ(data.m_vecPeakIndexedOnFrame.size(), 10);
    EXPECT_EQ(data.m_vecPeakIndexedOnFrame[4].size(), nGood - 2);
    EXPECT_EQ(data.m_vecPeakIndexedOnFrame[5].size(), nGood - 2);
    for (const Peak3D& peak : data.m_vecPeakIndexedOnFrame[5]) {
        EXPECT_EQ(QPointF(peak.dfX2D, peak.dfY2D), QPointF(7 + 100 + 5, 50 + 10));
        EXPECT_EQ(peak.dfH, roundIndex(list[peak.nID].dfH));
    }
    EXPECT_EQ(data.m_vecReflectionFrame[size_t(list[0].nID)], 5);
    EXPECT_EQ(data.m_vecReflectionFrame[10], -1);
    EXPECT_EQ(data.m_listReflectionIndexed.size(), nGood - 1);
    EXPECT_TRUE(holdsIndicesOfCell(data));
    data.m_listCell[0].x *= 2;
    EXPECT_FALSE(holdsIndicesOfCell(data));
}

TEST_F(IndexedSeries, TellsCellAndCountAndWritesItsFiles)
{
    const int nCell = log.find(
        ">Unit cell used for indexing: a= 8.000 Å, b=10.000 Å, c=12.000 Å, "
        "α= 90.00°, β=100.00°, γ= 90.00°");
    EXPECT_GE(nCell, 0);
    EXPECT_EQ(log.find(QString("> %L1 out of %L2 (").arg(nGood - 1).arg(nGood + 3)), nCell + 1);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files, QDir::Name),
              QStringList({"series.hkl", "series.ipf", "series.p4p"}));
}

// As an extraction leaves them, they have no peaks to show.
TEST_F(IndexedSeries, WithoutChainsKeepsListAndFileOfPeaks)
{
    data.m_listPeakChain.clear();
    EXPECT_TRUE(runIndexing(data, list, parameters, log).outcome.finished());
    EXPECT_EQ(data.m_vecPeakIndexedOnFrame[5].size(), nGood - 2);
    EXPECT_TRUE(log.said("red These reflections have no peaks on the frames"));
    // And with the list gone as well, as after a transformation of the cell, the file stays.
    const qint64 nBytes = QFileInfo(dir.filePath("series.ipf")).size();
    data.m_vecPeakIndexedOnFrame.clear();
    EXPECT_TRUE(runIndexing(data, list, parameters, log).outcome.finished());
    EXPECT_EQ(QFileInfo(dir.filePath("series.ipf")).size(), nBytes);
}

// With a cell of which no reflection is: the files of the former one are kept, and never by poorer ones.
TEST(RunIndexing, WithoutAnIndexedReflectionKeepsTheFormerFiles)
{
    QTemporaryDir dir;
    const auto content = [&](const char* pszName) { return readBytes(dir.filePath(pszName)); };
    IndexingParameters parameters;
    parameters.m_bOutputIndexing = true;
    CRecordingReport log;
    const auto run = [&](double dfDStar, bool bGood) {
        QList<Peak3D> list = simulatedReflections(g_listCell, dfDStar, 0, all);
        DataSet data = indexedSeries(g_listCell, list);
        data.m_strProjectDir = dir.path();
        data.m_strProjectName = "s";
        if (!bGood) {
            for (Peak3D& peak : list) {
                placeAt(peak, peak.point() + scaled(g_listCell[0], 0.5f));
            }
        }
        EXPECT_EQ(runIndexing(data, list, parameters, log).listIndexed.isEmpty(), !bGood);
    };
    run(0.5, true);
    const QByteArray bytesHKL = content("s.hkl"), bytesP4P = content("s.p4p"), bytesIPF = content("s.ipf");
    const QByteArray bytesClosing = "   0   0   0     0.0     0.0\n";
    const auto expectKept = [&](const QByteArray& bytesNow) {
        EXPECT_EQ(content("s.hkl"), bytesNow);
        EXPECT_EQ(content("s.hkl~"), bytesHKL);
        EXPECT_EQ(content("s.p4p~"), bytesP4P);
        EXPECT_EQ(content("s.ipf~"), bytesIPF);
    };
    const QString strKept =
        QString("red No reflection was indexed. The former files are kept as %1/s.hkl~").arg(dir.path());
    for (int i = 0; i < 2; ++i) {
        run(0.5, false);
        expectKept(bytesClosing);
        EXPECT_EQ(content("s.ipf"), bytesIPF);
        EXPECT_TRUE(log.said(strKept));
    }
    run(0.3, true);
    const QByteArray bytesFewer = content("s.hkl");
    EXPECT_LT(bytesFewer.size(), bytesHKL.size());
    run(0.3, false);
    expectKept(bytesFewer);
    EXPECT_TRUE(log.said("red No reflection was indexed. The former files stay"));
}

// A cell of 1e6 Å³ is none. And a last reflection that is off by 0.06 of a step is indexed only through the
// one before, three steps away: neighbours lie within a third.
TEST(RunIndexing, KnowsTheLimitsOfCellAndNeighbourhood)
{
    CRecordingReport log;
    for (double dfA : {101.0, 99.0}) {
        const QList<Vec3D> listCell = reciprocalBasis(gemmi::UnitCell(dfA, 100, 100, 90, 90, 90));
        const QList<Peak3D> list = simulatedReflections(listCell, 0.03, 0, all);
        DataSet data = indexedSeries(listCell, list);
        EXPECT_EQ(runIndexing(data, list, IndexingParameters(), log).listUnindexedID.size(),
                  dfA > 100 ? list.size() : 0);
    }
    for (float fStep : {0.11f, 0.111f}) {
        QList<Peak3D> list;
        for (float fSteps : {1.f, 2.04f, 5.06f}) {
            list.append(Peak3D());
            placeAt(list.last(), {fStep * fSteps, 0, 0});
        }
        DataSet data;
        data.m_listCell = {{fStep, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
        runIndexing(data, list, IndexingParameters(), log);
        EXPECT_TRUE(log.log().endsWith(fStep < 0.1105f ? "\n> 3 out of 3 (100.000%) were indexed."
                                                       : "\n> 2 out of 3 (66.667%) were indexed."))
            << log.log().toStdString();
    }
}

TEST(RunIndexing, EdgesNeedThreeFramesAndRefinementSevenReflections)
{
    for (int nFrames : {2, 3}) {
        for (int nCount : {6, 7, 8, 9}) {
            QList<Peak3D> list = simulatedReflections(g_listCell, 0.5, 0, all).mid(0, nCount);
            for (int n = 0; n < nCount; ++n) {
                list[n].nFrame = n < 2 ? n * (nFrames - 1) : nFrames / 2;
            }
            placeAt(list.last(), list[2].point());  // duplicates are refined, too
            DataSet data;
            data.m_listCell = g_listCell;
            data.m_listShift = QVector<QPointF>(nFrames).toList();
            IndexingParameters parameters;
            parameters.m_bOutputRefinedCell = true;
            CRecordingReport log;
            const int nOnEdge = nFrames == 3 ? 2 : 0;
            EXPECT_EQ(runIndexing(data, list, parameters, log).listOnEdgeID.size(), nOnEdge);
            EXPECT_EQ(log.said("red There aren't enough reflections for unit cell refinement."),
                      nCount - nOnEdge < 7);
            EXPECT_EQ(log.said(QString("Unit cell refinement: %1 points.").arg(nCount - nOnEdge)),
                      nCount - nOnEdge >= 7);
        }
    }
}

TEST(RunIndexing, LeavesEverythingWhereItCannotRun)
{
    const QList<Peak3D> list = simulatedReflections(g_listCell, 0.5, 0, all);
    const QList<Vec3D> listFlat = {g_listCell[0], g_listCell[1], g_listCell[0]};
    const struct {
        QList<Vec3D> listCell;
        QList<Peak3D> listSelection;
        const char* pLine;
    } aRow[] = {{{}, list, "red Unit cell is not ready."},
                {g_listCell, {}, "> No reflections to index."},
                {listFlat, list, "red Warning: co-planar reciprocal basis vectors!"}};
    for (const auto& row : aRow) {
        DataSet data = indexedSeries(row.listCell, list);
        data.m_vecReflectionFrame = {77};
        data.m_listReflectionIndexed = {Peak3D()};
        CRecordingReport log;
        const RunOutcome outcome = runIndexing(data, row.listSelection, IndexingParameters(), log).outcome;
        EXPECT_EQ(log.log(), row.pLine);
        EXPECT_EQ(outcome.end, RunEnd::Refused);
        EXPECT_FALSE(outcome.strReason.isEmpty());
        EXPECT_TRUE(log.log().endsWith(outcome.strReason));
        EXPECT_EQ(data.m_vecReflectionFrame, std::vector<int>{77});
        EXPECT_EQ(data.m_listReflectionIndexed.size(), 1);
    }
    for (int nID : {-3, INT_MAX}) {
        DataSet data = indexedSeries(g_listCell, list);
        CRecordingReport log;
        buildIndexedPeaksOnFrame(data, {reflection(1, 0, 0, 1, nID)}, log);
        EXPECT_EQ(log.log(), QStringLiteral("red Abnormal %1 ID: %2").arg(nID < 0 ? "min" : "max").arg(nID));
        EXPECT_TRUE(data.m_vecReflectionFrame.empty());
    }
}

}  // namespace tessera
