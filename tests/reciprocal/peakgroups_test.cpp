// Peak groups: from the masks of a peak list file into the raw view, and back into the file.
#include "reciprocal/peakgroups.h"

#include "dataset/peaklistfile.h"
#include "reciprocal/mapping.h"
#include "tests/printtexts.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <random>
#include <vector>

namespace tessera {

namespace {

DataSet readList(const QByteArray& bytes)
{
    DataSet data;
    data.m_listFrameFile = QStringList{"a", "b", "c", "d"};
    CRecordingReport report;
    EXPECT_EQ(readPeakListBytes(data, bytes, QStringLiteral("list"), report), 1)
        << report.log().toStdString();
    return data;
}

// The last words of the lines of the file that the data set writes.
QStringList writtenMasks(const DataSet& data)
{
    const QTemporaryDir dir;
    QFile file(dir.filePath("out.pk"));
    EXPECT_EQ(writePeakList(data, file.fileName()), 1);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList listMask;
    for (const QString& strLine : QString::fromLatin1(file.readAll()).split('\n', Qt::SkipEmptyParts)) {
        listMask.append(strLine.section(' ', -1));
    }
    return listMask;
}

// Frames 0 and 1, each with its peaks out of order, an empty frame, and one peak on the last.
const char g_achList[] =
    "1 1 0  10.0 20.0 100.0 200.0 8000000000000000\n"
    "2 0 0  11.0 20.0 100.0 200.0 4000000000000000\n"
    "3 0 1  12.0 20.0 100.0 200.0 0000000000000000\n"
    "4 1 1  13.0 20.0 100.0 200.0 5000000000000000\n"
    "5 3 0  14.0 20.0 100.0 200.0 0000000000000001\n";

}  // namespace

TEST(PeakGroups, OfMasksAreRestored)
{
    const DataSet data = readList(g_achList);
    const RestoredPointGroups restored = restorePointGroups(data);
    ASSERT_TRUE(restored.bRestored);
    EXPECT_EQ(idsOf(restored.listPeakFlat), QList<int>({1, 0, 3, 4})) << "2 is in no group";
    ASSERT_EQ(restored.listPeakFrameShown.size(), 4);
    EXPECT_EQ(idsOf(restored.listPeakFrameShown[1]), QList<int>({0, 3}));
    ASSERT_EQ(restored.listGroupPoint.size(), 64);
    EXPECT_EQ(restored.listGroupPoint[0], QList<int>{1});
    EXPECT_EQ(restored.listGroupPoint[1], QList<int>({0, 2}));
    EXPECT_EQ(restored.listGroupPoint[3], QList<int>{2});
    EXPECT_EQ(restored.listGroupPoint[63], QList<int>{3});
}

// The limits hide peaks 0 and 4, and with it all of group 63. Their groups get running numbers like the
// others.
TEST(PeakGroups, OfHiddenPeaksStayInTheFile)
{
    MappingParameters limits;
    limits.m_dfIntensityMin = 101;
    DataSet limited = readList(QByteArray(g_achList)
                                   .replace("11.0 20.0 100", "11.0 20.0 900")
                                   .replace("13.0 20.0 100", "13.0 20.0 101"));
    const RestoredPointGroups all = restorePointGroups(limited), within = withinLimits(all, limits);
    EXPECT_TRUE(within.bRestored);
    EXPECT_EQ(idsOf(within.listPeakFlat), QList<int>({1, 3}));
    EXPECT_EQ(idsOf(within.listPeakFrameShown[1]), QList<int>{3});
    EXPECT_EQ(within.listPeakFrameShown.size(), 4);
    EXPECT_EQ(within.listGroupPoint.mid(0, 4), QList<QList<int>>({{}, {0, 1}, {}, {1}}));
    EXPECT_EQ(within.listGroupPoint[63], QList<int>());
    closeGapsOfGroups(limited, all);
    EXPECT_EQ(writtenMasks(limited), QStringList({"4000000000000000", "0000000000000000", "8000000000000000",
                                                  "6000000000000000", "1000000000000000"}));
}

// All are shown: groups 3 and 63 close up to 2 and 3.
TEST(PeakGroups, OfTheViewAreTheMasksOfTheFile)
{
    DataSet saved = readList(g_achList);
    updatePeakGroupsFromView(saved, restorePointGroups(saved).listPeakFlat, {{1}, {0, 2}, {2}, {3}});
    EXPECT_EQ(writtenMasks(saved), QStringList({"4000000000000000", "0000000000000000", "8000000000000000",
                                                "6000000000000000", "1000000000000000"}));
}

// The limits hide peaks 1 and 4, and a new group of one peak is all that the view has; two of its points
// belong to no peak.
TEST(PeakGroups, OfAViewWithStrangersAreThoseOfItsPeaks)
{
    DataSet data = readList(g_achList);
    const RestoredPointGroups restored = restorePointGroups(data);
    Peak3D stranger = restored.listPeakFlat[1];
    stranger.nID = 99;
    Peak3D noFrame = restored.listPeakFlat[1];
    noFrame.nFrame = 4;
    updatePeakGroupsFromView(data, {restored.listPeakFlat[1], restored.listPeakFlat[2], stranger, noFrame},
                             {{0, 2}, {1, 2, 3, 7}});
    EXPECT_EQ(writtenMasks(data), QStringList({"4000000000000000", "0000000000000000", "8000000000000000",
                                               "4000000000000000", "0000000000000001"}));
}

// Shown or not; the first of equal nID counts.
TEST(PeakGroups, OfPeaksWithoutMasksAreTheFirst)
{
    DataSet data = readList(g_achList);
    data.m_vecPeakGroup.removeLast();
    EXPECT_FALSE(restorePointGroups(data).bRestored);
    data.m_listPeakFrame[0][1].nID = 1;
    updatePeakGroupsFromView(data, {data.m_listPeakFrame[0][1]}, {{}, {0}});
    EXPECT_EQ(writtenMasks(data), QStringList({"4000000000000000"}) +
                                      QVector<QString>(4, QStringLiteral("8000000000000000")).toList());
}

TEST(PeakGroups, AListWithoutMasksShowsAllPeaks)
{
    const DataSet data = readList("1 0 0 10.0 20.0 100.0\n2 2 0 11.0 20.0 5.0\n3 0 1 12.0 20.0 5.0\n");
    const RestoredPointGroups restored = restorePointGroups(data);
    ASSERT_TRUE(restored.bRestored);
    EXPECT_EQ(idsOf(restored.listPeakFlat), QList<int>({0, 2, 1}));
    EXPECT_EQ(restored.listPeakFrameShown.size(), 4);
    EXPECT_EQ(restored.listGroupPoint, (QVector<QList<int>>(64).toList())) << "all are left to group 0";
    EXPECT_FALSE(restorePointGroups(DataSet()).bRestored);
    EXPECT_EQ(flagsOfPeakGroup(data, 0), std::vector<char>(3, 1));
    EXPECT_EQ(flagsOfPeakGroup(data, 1), std::vector<char>());
    // With masks a peak without a group is in none.
    EXPECT_EQ(flagsOfPeakGroup(readList(g_achList), 0), (std::vector<char>{1}));
    EXPECT_EQ(flagsOfPeakGroup(readList(g_achList), 1), (std::vector<char>{0, 1, 0, 1}));
    DataSet saved = readList("1 0 0 10.0 20.0 100.0\n2 2 0 11.0 20.0 5.0\n");
    closeGapsOfGroups(saved, restorePointGroups(saved));
    EXPECT_EQ(saved.m_vecPeakGroup[2], QVector<QList<int>>{{0}}) << "not left out when the list is saved";
}

TEST(PeakGroups, UnderAViewTheMasksTellOfHiddenPeaksAlone)
{
    DataSet data = readList(g_achList);
    for (QList<Peak3D>& listPeak : data.m_listPeakFrame) {
        for (Peak3D& peak : listPeak) {
            peak.dfIPoint = peak.nID == 2 || peak.nID == 3 ? 1 : 100;  // the limits hide 2 and 3
        }
    }
    MappingParameters limits;
    limits.m_dfIntensityMin = 10;
    QList<Peak3D> listView = filterPeaksShown(data.m_listPeakFrame, limits).m_listPeakFlat;
    ASSERT_EQ(idsOf(listView), QList<int>({1, 0, 4}));
    // The user has put 0 to 1 into group 0, and 4 into group 1, which the masks do not say yet.
    EXPECT_EQ(flagsOfPeakGroup(data, 0, listView, {0, 1}, limits), (std::vector<char>{1, 1}));
    EXPECT_EQ(flagsOfPeakGroup(data, 1, listView, {2}, limits), (std::vector<char>{0, 0, 0, 1, 1}));
    EXPECT_EQ(flagsOfPeakGroup(data, 63, listView, {}, limits), std::vector<char>()) << "4 has left it";
    // Points that stand on no frame, such as those of a list of reflections, are no peaks.
    listView[0].nFrame = -1;
    EXPECT_EQ(flagsOfPoints(listView, {0, 1}), (std::vector<char>{1}));
    EXPECT_EQ(flagsOfPoints(listView, {0}), std::vector<char>());
}

namespace {

/// Groups of nine peaks as points of a view that hides none, each a number of nine bits.
struct PlainGroups {
    std::vector<unsigned> groups;

    /// Group 0 has the points that are in no other group.
    void settle()
    {
        groups[0] = 511;
        std::for_each(groups.begin() + 1, groups.end(), [this](unsigned n) { groups[0] &= ~n; });
    }
    /// Removes groups, the last ones first, or unites them in the place of the first.
    void change(const QList<int>& listChosen, bool bMerge)
    {
        unsigned nUnion = 0;
        for (int g : listChosen) {
            nUnion |= groups[g];
            if (g > 0) {
                groups.erase(groups.begin() + g);
            }
        }
        settle();  // before the united one comes, which leaves to group 0 what that has taken
        if (bMerge) {
            groups.insert(groups.begin() + listChosen.last(), nUnion);
        }
        settle();
    }
    bool has(int nGroup, int nPeak) const { return groups[nGroup] >> nPeak & 1; }
    /// Peak i has the number 20 - i and lies on frame i / 3.
    DataSet dataSet() const
    {
        DataSet data;
        data.m_listPeakFrame = {{}, {}, {}};
        data.m_vecPeakGroup.fill(QVector<QList<int>>(3), 3);
        for (int i = 0; i < 9; ++i) {
            Peak3D peak = peakAt(0, 0, i / 3);
            peak.nID = 20 - i;
            data.m_listPeakFrame[i / 3].append(peak);
            for (int g = 0; g < int(groups.size()); ++g) {
                if (has(g, i)) {
                    data.m_vecPeakGroup[i / 3][i % 3].append(g);
                }
            }
        }
        return data;
    }
    void expectIn(const DataSet& data, const QList<Peak3D>& listShown) const
    {
        QList<QList<int>> listWanted;
        for (int g = 0; g < int(groups.size()); ++g) {
            listWanted.append(QList<int>());
            for (int n = 0; n < listShown.size(); ++n) {
                if (has(g, 20 - listShown[n].nID)) {
                    listWanted.last().append(n);
                }
            }
            for (int i = 0; i < 9; ++i) {
                EXPECT_EQ(data.m_vecPeakGroup[i / 3][i % 3].count(g), int(has(g, i)))
                    << "group " << g << " peak " << i;
            }
        }
        EXPECT_EQ(pointsOfPeakGroups(data, listShown, int(groups.size())), listWanted);
    }
};

}  // namespace

// As if all peaks, of which the limits hide some, were points of the view.
TEST(PeakGroups, HiddenPeaksFollowWhatBecomesOfTheGroups)
{
    std::mt19937 random(7);
    for (unsigned nRound = 0; nRound < 400 && !HasFailure(); ++nRound) {
        SCOPED_TRACE(nRound);
        PlainGroups plain{std::vector<unsigned>(1 + random() % 5)};
        std::generate(plain.groups.begin(), plain.groups.end(), [&] {
            const unsigned nMask = random();
            return nMask & random() & 511;  // each of the nine groups has a quarter of the peaks
        });
        plain.settle();
        const int nGroups = int(plain.groups.size());
        QList<int> listChosen;
        for (int g = nGroups - 1; g >= 0; --g) {
            if (random() % 2) {
                listChosen.append(g);
            }
        }
        DataSet data = plain.dataSet();
        QList<Peak3D> listShown;
        for (int i = 0; i < 9; ++i) {
            if (random() % 2) {
                listShown.append(data.m_listPeakFrame[i / 3][i % 3]);
            }
        }
        const bool bMerge = nRound % 2;
        (bMerge ? mergePeakGroups : removePeakGroups)(data, nGroups, listChosen);
        if (!bMerge || listChosen.size() > 1) {
            plain.change(listChosen, bMerge);
        }
        plain.expectIn(data, listShown);
    }
}

}  // namespace tessera
