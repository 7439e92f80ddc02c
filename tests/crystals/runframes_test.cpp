// Frames that runs share, by their records.
#include "crystals/runframes.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <numeric>

namespace tessera {
namespace {

/// A record of a run on a series of files, of which the first has the number nFirstFile.
QJsonObject recordOf(int nFirstFile, int nFiles, int nFrames, const char* pszFrames = nullptr,
                     const char* pszSkip = nullptr, const char* pszSum = "1")
{
    QJsonArray listFile, listFrame;
    for (int n = 0; n < nFiles; ++n) {
        listFile.append(QJsonObject{{"sha256", QStringLiteral("file %1").arg(nFirstFile + n)}});
    }
    for (int n = 0; n < nFrames; ++n) {
        listFrame.append(0.5);
    }
    const auto value = [](const char* psz) { return QJsonObject{{"value", QString(psz)}}; };
    return {{"inputs", QJsonObject{{"frames", listFile}}},
            {"parameters", QJsonObject{{"frames", value(pszFrames ? pszFrames : "all")},
                                       {"skip", value(pszSkip ? pszSkip : "none")},
                                       {"sum", value(pszSum)}}},
            {"stages",
             QJsonArray{QJsonObject{
                 {"name", "integrate"},
                 {"found", QJsonObject{{"quality", QJsonObject{{"completenessByFrame", listFrame}}}}}}}}};
}

std::vector<int> numbers(int nFirst, int nCount)
{
    std::vector<int> list(static_cast<size_t>(nCount));
    std::iota(list.begin(), list.end(), nFirst);
    return list;
}

TEST(RunFrames, areThoseThatTheRunTook)
{
    EXPECT_EQ(framesOfRun(recordOf(1, 20, 20)).listNumber, numbers(0, 20));
    EXPECT_EQ(framesOfRun(recordOf(1, 20, 8, "3-10")).listNumber, numbers(2, 8));
    EXPECT_EQ(framesOfRun(recordOf(1, 20, 8, "11-", "12,20")).listNumber,
              (std::vector<int>{10, 12, 13, 14, 15, 16, 17, 18}));
    // Sums: frames that are left over before a gap or at the end are not used.
    EXPECT_EQ(framesOfRun(recordOf(1, 9, 3, nullptr, "4", "2")).listNumber,
              (std::vector<int>{0, 1, 4, 5, 6, 7}));
    // One file of many frames.
    const RunFrames stack = framesOfRun(recordOf(1, 1, 30, "21-"));
    EXPECT_EQ(stack.listNumber, numbers(20, 30));
    EXPECT_TRUE(stack.listHash.empty());
    EXPECT_EQ(framesOfRun(QJsonObject()).count(), 0);
}

TEST(RunFrames, areCountedWhereRunsShareThem)
{
    const RunFrames whole = framesOfRun(recordOf(1, 40, 40)), first = framesOfRun(recordOf(1, 40, 20, "-20")),
                    second = framesOfRun(recordOf(1, 40, 20, "21-")),
                    summed = framesOfRun(recordOf(1, 40, 20, nullptr, nullptr, "2"));
    EXPECT_EQ(sharedFrames(whole, first), 20);
    EXPECT_EQ(sharedFrames(summed, second), 20);
    EXPECT_EQ(sharedFrames(first, second), 0);
    EXPECT_FALSE(isDependent(first, second));
    EXPECT_TRUE(isDependent(second, whole));
    // Files 39 to 58 of a folder of their own: two are the last of the whole, three would be more than a
    // tenth.
    EXPECT_EQ(sharedFrames(framesOfRun(recordOf(39, 20, 20)), whole), 2);
    EXPECT_FALSE(isDependent(framesOfRun(recordOf(39, 20, 20)), whole));
    EXPECT_TRUE(isDependent(framesOfRun(recordOf(38, 20, 20)), whole));
    // Parts of one file of many frames, and of another one.
    const RunFrames start = framesOfRun(recordOf(1, 1, 20, "1-20")),
                    end = framesOfRun(recordOf(1, 1, 25, "16-"));
    EXPECT_EQ(sharedFrames(start, end), 5);
    EXPECT_EQ(sharedFrames(start, framesOfRun(recordOf(2, 1, 20, "1-20"))), 0);
    EXPECT_FALSE(isDependent(RunFrames(), RunFrames()));
}

}  // namespace
}  // namespace tessera
