#include "app/dataset/displayname.h"
#include "app/records/beamtiltbreak.h"
#include "app/records/groupmask.h"
#include "textfiles.h"

TEST(GroupMask, TextAndListGoBothWays)
{
    const struct {
        QList<int> listGroup;
        const char* strMask;
    } aRow[] = {{{0, 32}, "8000000080000000"}, {{}, "0000000000000000"}, {{4, 31, 63}, "0800000100000001"}};
    for (const auto& row : aRow) {
        EXPECT_EQ(groupMaskText(row.listGroup), QString(row.strMask));
        EXPECT_EQ(groupsOfMaskText(row.strMask), row.listGroup) << row.strMask;
    }
    EXPECT_EQ(groupMaskText({64, 5, -1, 5, 0}), QString("8400000000000000")) << "64 and -1 are dropped";
    EXPECT_EQ(groupsOfMaskText("c"), QList<int>({60, 61})) << "short and lower case";
    for (const char* strBad : {"", "g000000000000000", "80000000000000000", "12.5"})
        EXPECT_TRUE(groupsOfMaskText(strBad).isEmpty()) << strBad;
}

TEST(GroupMask, APeakWithoutEntryIsInGroup0AndOneWithAnEmptyListInNone)
{
    const QVector<QVector<QList<int>>> vecGroup = {{{2}, {}}};
    EXPECT_EQ(peakGroupMaskText(vecGroup, 0, 0), QString("2000000000000000"));
    EXPECT_EQ(peakGroupMaskText(vecGroup, 0, 1), QString("0000000000000000"));
    for (const auto& [nFrame, nPeak] : {std::pair(0, 2), std::pair(1, 0), std::pair(-1, 0), std::pair(0, -1)})
        EXPECT_EQ(peakGroupMaskText(vecGroup, nFrame, nPeak), QString("8000000000000000"));
}

TEST(BeamTiltBreaks, StartWhereTheStepGrowsByMoreThanHalf)
{
    const struct {
        QList<double> listTilt;
        QList<int> listBreak;
    } aRow[] = {{{}, {}},
                {{0, 9}, {0, 0}},
                {{0, 1, 2.5, 4.75}, {1, 0, 0, 0}},  // exactly 1.5 times: no break
                {{0, 0.5, 1, 0, 0.5, 1, 0}, {1, 0, 0, 1, 0, 0, 1}},
                {{0, 0, 0, 1}, {1, 0, 0, 1}}};
    for (const auto& row : aRow)
        EXPECT_EQ(beamTiltBreaks(row.listTilt), row.listBreak) << row.listTilt.size();
}

TEST(DisplayName, LaysTheBaseNamesOverOneAnother)
{
    const struct {
        QStringList listFile;
        const char* strName;
    } aRow[] = {{{}, ""},
                {{"f001.dm3", "f120.dm3", "f002.dm3"}, "f***.dm3"},
                {{"/x/ab.mrc", "/y/abc.tif"}, "ab.tif"},
                {{"/x/abc.mrc", "/y/bb.tif"}, "*b.tif"}};
    for (const auto& row : aRow)
        EXPECT_EQ(displayName(row.listFile), QString::fromLatin1(row.strName));
}
