#include "dataset/displayname.h"
#include "records/beamtiltbreak.h"
#include "records/groupmask.h"
#include "tests/dataset/textfiles.h"

namespace tessera {

TEST(GroupMask, TextAndListGoBothWays)
{
    const struct {
        QList<int> listGroup;
        const char* strMask;
    } aRow[] = {{{0, 32}, "8000000080000000"}, {{}, "0000000000000000"}, {{4, 31, 63}, "0800000100000001"}};
    for (const auto& row : aRow) {
        EXPECT_EQ(peakGroupMaskText({{row.listGroup}}, 0, 0), QString(row.strMask));
        EXPECT_EQ(groupsOfMask(maskOfText(row.strMask)), row.listGroup) << row.strMask;
    }
    EXPECT_EQ(groupsOfMask(groupMask({64, 5, -1, 5, 0})), QList<int>({0, 5})) << "64 and -1 are dropped";
    EXPECT_EQ(groupsOfMask(maskOfText("c")), QList<int>({60, 61})) << "short and lower case";
    for (const char* strBad : {"", "g000000000000000", "80000000000000000", "12.5"}) {
        EXPECT_EQ(maskOfText(strBad), 0u) << strBad;
    }
    // a peak without an entry is in group 0, one with an empty list in none
    for (const auto& [nFrame, nPeak] :
         {std::pair(0, 1), std::pair(1, 0), std::pair(-1, 0), std::pair(0, -1)}) {
        EXPECT_EQ(peakGroupMaskText({{{2}}}, nFrame, nPeak), QString("8000000000000000"));
    }
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
    for (const auto& row : aRow) {
        EXPECT_EQ(beamTiltBreaks(row.listTilt), row.listBreak) << row.listTilt.size();
    }
}

TEST(DisplayName, LaysTheBaseNamesOverOneAnother)
{
    EXPECT_EQ(displayName({}), QString());
    EXPECT_EQ(displayName({"f001.dm3", "f120.dm3", "f002.dm3"}), QString("f***.dm3"));
    EXPECT_EQ(displayName({"/x/ab.mrc", "/y/abc.tif"}), QString("ab.tif"));
    EXPECT_EQ(displayName({"/x/abc.mrc", "/y/bb.tif"}), QString("*b.tif"));
    EXPECT_EQ(displayName({"/x/s.mrc#9", "/x/s.mrc#10", "/x/s.mrc#11"}), QString("s_00**.mrc"));
    EXPECT_EQ(displayName({"/x/s.mrc#nine"}), QString("s.mrc#nine"));
}

}  // namespace tessera
