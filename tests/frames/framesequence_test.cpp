#include "frames/framesequence.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>

namespace tessera {

namespace {

TEST(FrameSequence, GivesEachFrameInOrderAndWhatItThrowsInItsTurn)
{
    for (int nJobs : {0, 1, 2, 5, 100}) {
        std::atomic<int> nAlive{0}, nMost{0};
        struct Counted {
            std::atomic<int>& nCount;
            ~Counted() { --nCount; }
        };
        using Result = std::pair<int, std::shared_ptr<Counted>>;
        CFrameSequence<Result> sequence(40, nJobs, [&] {
            return [&](int nFrame) {
                if (nFrame == 7) {
                    throw std::runtime_error("seven");
                }
                nMost = std::max(int(nMost), ++nAlive);
                return Result(nFrame * nFrame, new Counted{nAlive});
            };
        });
        for (int i = 0; i < 30; ++i) {  // the rest stays: the threads end all the same
            if (i == 7) {
                EXPECT_THROW(sequence.take(i), std::runtime_error);
            } else {
                EXPECT_EQ(sequence.take(i).first, i * i) << nJobs;
            }
        }
        EXPECT_LE(nMost, std::max(1, nJobs) + 1);
    }
}

TEST(FrameSequence, GoesOnWithFewerThreadsWhereMemoryRunsShort)
{
    for (const auto& [nRoom, nLeft] : {std::pair(3, 2), {1, 1}, {0, 0}}) {
        std::atomic<int> nWorkers{0};
        struct Worker {  // each thread keeps its work space
            std::atomic<int>& nCount;
            explicit Worker(std::atomic<int>& n) : nCount(n) { ++nCount; }
            ~Worker() { --nCount; }
        };
        CFrameSequence<int> sequence(50, 8, [&, nMost = nRoom] {
            return [&, nMost, pWorker = std::make_shared<Worker>(nWorkers)](int nFrame) {
                if (nFrame >= 20 && nWorkers > nMost) {
                    throw std::bad_alloc();
                }
                return 3 * nFrame;
            };
        });
        EXPECT_EQ(sequence.jobs(), 8);
        for (int i = 0; i < 50; ++i) {
            if (nRoom == 0 && i >= 20) {
                EXPECT_THROW(sequence.take(i), std::bad_alloc);
            } else {
                EXPECT_EQ(sequence.take(i), 3 * i) << nRoom;
            }
        }
        EXPECT_EQ(sequence.jobs(), std::max(1, nLeft)) << nRoom;
    }
}

}  // namespace

}  // namespace tessera
