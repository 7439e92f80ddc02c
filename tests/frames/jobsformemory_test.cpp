#include "frames/jobsformemory.h"

#include "records/availablememory.h"
#include "tests/frames/frameseries.h"
#include "tests/recordingreport.h"

#include <QFile>

#include <limits>

#include <sys/resource.h>

namespace tessera {

namespace {

/// Limits the address space of this process, during the life of the object, to this much more than it has.
class CMemoryLimit {
public:
    explicit CMemoryLimit(rlim_t nLeft)
    {
        QFile file(QStringLiteral("/proc/self/statm"));
        file.open(QIODevice::ReadOnly);
        const rlim_t nUsed = file.readLine().split(' ').first().toULongLong() * 4096;
        getrlimit(RLIMIT_AS, &m_former);
        const rlimit limit{nUsed + nLeft, m_former.rlim_max};
        setrlimit(RLIMIT_AS, &limit);
    }
    ~CMemoryLimit() { setrlimit(RLIMIT_AS, &m_former); }

private:
    rlimit m_former{};
};

TEST(JobsForMemory, AsManyAsFitBesideWhatIsShared)
{
    EXPECT_EQ(jobsThatFit(4, 100, 50, 1000), 4);
    EXPECT_EQ(jobsThatFit(4, 100, 50, 299), 3);
    EXPECT_EQ(jobsThatFit(4, 100, 50, 200), 2);
    EXPECT_EQ(jobsThatFit(4, 100, 50, 99), 1);  // one tries, and tells what was missing
    EXPECT_EQ(jobsThatFit(4, 0, 0, 0), 1);
    EXPECT_EQ(jobsThatFit(0, 0, 1, 10), 1);
}

TEST(JobsForMemory, GoesByTheLimitOfTheProcessAndSaysSo)
{
    FrameSeries series;
    series.add(makeImage(1100, 1000, [](int x, int y) { return x + y; }));
    const FrameMemory memory{100, 10};  // 110 MB each, 11 MB together
    for (int n = 1; n < 6; ++n) {
        series.dataSet.m_listFrameFile.append(series.dataSet.m_listFrameFile.first());
    }
    CRecordingReport report;
    EXPECT_EQ(jobsForMemory(SeriesSnapshot(series.dataSet), 2, {1, 0}, &report), 2);
    {
        const CMemoryLimit limit(rlim_t(400) << 20);
        EXPECT_NEAR(double(memoryLeftByLimits() >> 20), 400, 8);
        EXPECT_EQ(jobsForMemory(SeriesSnapshot(series.dataSet), 6, memory, &report), 2);
    }
    EXPECT_EQ(report.marked().size(), 1);
    EXPECT_TRUE(report.said("Of 6 frames in parallel there is memory for 2: one takes about"));
    EXPECT_EQ(memoryLeftByLimits(), std::numeric_limits<std::uint64_t>::max());
}

}  // namespace

}  // namespace tessera
