// CLoopWatch: how long the thread of the window works without a look at its events.
#pragma once

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QObject>

#include <algorithm>
#include <ctime>

namespace tessera {

/// CPU time that the calling thread has taken, ms. Other programs and other threads take no part in it.
inline double threadCpu()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * double(time.tv_sec) + 1e-6 * double(time.tv_nsec);
}

/// Measures the gaps between two rounds of the event loop of the thread that it is made in. A click that
/// comes in a gap is answered after it. Of the clock of the wall time that the loop sleeps counts as none; of
/// CPU time, which the load of the machine does not change, it is none.
class CLoopWatch : public QObject {
public:
    CLoopWatch()
    {
        auto* pDispatcher = QAbstractEventDispatcher::instance();
        connect(pDispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            round();
            m_bAsleep = true;
        });
        connect(pDispatcher, &QAbstractEventDispatcher::awake, this, [this] {
            if (m_bAsleep) {
                m_clock.restart();
            }
            m_bAsleep = false;
            round();
        });
        begin();
    }

    /// From here on.
    void begin()
    {
        m_nRounds = 0;
        m_dfLongestCpu = m_dfLongestWall = 0;
        m_dfLast = threadCpu();
        m_clock.start();
    }
    /// Ends a gap; to be called as well where what is measured does not end with the loop.
    void round()
    {
        const double dfNow = threadCpu();
        m_dfLongestCpu = std::max(m_dfLongestCpu, dfNow - m_dfLast);
        m_dfLongestWall = std::max(m_dfLongestWall, 1e-6 * double(m_clock.nsecsElapsed()));
        m_dfLast = dfNow;
        m_clock.restart();
        ++m_nRounds;
    }

    double longestCpu() const { return m_dfLongestCpu; }    ///< ms
    double longestWall() const { return m_dfLongestWall; }  ///< ms
    int rounds() const { return m_nRounds; }

private:
    QElapsedTimer m_clock;
    double m_dfLast = 0;
    double m_dfLongestCpu = 0;
    double m_dfLongestWall = 0;
    int m_nRounds = 0;
    bool m_bAsleep = false;
};

}  // namespace tessera
