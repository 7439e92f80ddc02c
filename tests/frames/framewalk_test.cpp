// The walk over the frames: who is asked when, what ends it, and that its progress ends with it.
#include "frames/framewalk.h"
#include "records/shortmemory.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tessera {

namespace {

TEST(FrameWalk, AsksForAStopWhereItWasToldTo)
{
    const struct {
        StopAsked stopAsked;
        int nYes;  // questions answered with yes
        RunEnd end;
        int nDone, nShown;
    } aRow[] = {{StopAsked::BeforeEachFrame, 0, RunEnd::Stopped, 0, 1},
                {StopAsked::BeforeEachFrame, 3, RunEnd::Finished, 3, 3},
                {StopAsked::BetweenFrames, 1, RunEnd::Stopped, 2, 2},
                {StopAsked::BetweenFrames, 2, RunEnd::Finished, 3, 3},
                {StopAsked::AfterEachFrame, 2, RunEnd::Stopped, 3, 3},
                {StopAsked::AfterEachFrame, 3, RunEnd::Finished, 3, 3}};
    for (const auto& row : aRow) {
        CRecordingReport report;
        report.m_nStopAfter = row.nYes;
        CFrameWalk walk(3, row.stopAsked, report);
        walk.showProgress(ProgressPlace::Window);
        QList<int> listFrame;
        const RunOutcome outcome = walk.run([&](int nFrame) {
            listFrame.append(nFrame);
            return true;
        });
        EXPECT_EQ(outcome.end, row.end);
        EXPECT_TRUE(outcome.strReason.isEmpty());
        EXPECT_EQ(walk.doneCount(), row.nDone);
        EXPECT_EQ(listFrame, (QList<int>{0, 1, 2}).mid(0, row.nDone));
        QStringList listProgress{"%v/%m 0..3", "1", "2", "3"};
        EXPECT_EQ(report.m_listProgress, listProgress.mid(0, 1 + row.nShown) + QStringList{"end"});
    }
}

TEST(FrameWalk, TellsWhatWasThrownFromTheCallersThreadOrAnother)
{
    const struct {
        std::function<void()> fnThrow;
        const char* pLine;
    } aRow[] = {{[] { throw std::runtime_error("seven"); }, "red Error: seven"},
                {[] { throw L"Width and Height\n"; }, "red Error: Width and Height"},
                {[] { throw CShortMemory(QStringLiteral("ü.mrc"), 1); }, "ü.mrc takes about 1 MB"}};
    for (const auto& row : aRow) {
        for (int nJobs : {0, 1, 4}) {  // 0: without threads
            CRecordingReport report;
            CFrameWalk walk(9, StopAsked::BetweenFrames, report);
            walk.showProgress(ProgressPlace::Window);
            const auto frame = [&](int nFrame) {
                if (nFrame == 5) {
                    row.fnThrow();
                }
                return nFrame;
            };
            const auto isRight = [](int nFrame, int& nMade) { return nMade == nFrame; };
            const RunOutcome outcome = nJobs == 0
                                           ? walk.run([&](int nFrame) { return frame(nFrame) == nFrame; })
                                           : walk.runAhead<int>(
                                                 nJobs, [&] { return frame; }, isRight);
            EXPECT_EQ(outcome.end, RunEnd::Failed);
            EXPECT_EQ(walk.doneCount(), 5);
            EXPECT_TRUE(report.said(row.pLine)) << report.log().toStdString();
            EXPECT_EQ("red " + outcome.strReason, report.log());
            EXPECT_EQ(report.m_listProgress.mid(7), QStringList{"end"});
        }
    }
}

}  // namespace

}  // namespace tessera
