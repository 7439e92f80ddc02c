// CFrameSequence: computes a result for each frame of a series in order, by threads that work ahead.
#pragma once

#include "imaging/imagememory.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace tessera {

/// Returns one result for each frame in order. Threads compute the results of the next frames, but only so
/// far ahead that there is at most one result per thread in memory beside the one that the caller has. With
/// one job, the calling thread does all the work.
///
/// The memory of large images is reused for the next frames (CImageMemory).
///
/// The results do not depend on the number of jobs as long as each depends on its frame only. If memory
/// runs out for a frame (std::bad_alloc), the results and work space of the threads are freed and the frame
/// is done again by half as many threads, and finally by the calling thread alone.
template <class Result>
class CFrameSequence {
public:
    /// Computes the result of a frame, counted from 0. An exception that it throws is thrown by take(),
    /// except for a lack of memory that fewer threads can avoid.
    using FnFrame = std::function<Result(int nFrame)>;

    /// @param fnMakeWorker  called by the constructor once for each thread: returns the FnFrame of the
    ///                      thread, with the work space that it keeps from frame to frame
    CFrameSequence(int nFrames, int nJobs, const std::function<FnFrame()>& fnMakeWorker)
        : m_fnMakeWorker(fnMakeWorker), m_nFrames(nFrames), m_memory(size_t(std::max(1, nJobs)) * 2 + 1)
    {
        start(std::min(nJobs, nFrames), 0);
    }

    /// Waits for the threads.
    ~CFrameSequence() { end(); }

    CFrameSequence(const CFrameSequence&) = delete;
    CFrameSequence& operator=(const CFrameSequence&) = delete;

    /// Number of threads; 1 if the calling thread does all the work.
    int jobs() const { return std::max(1, int(m_vecThread.size())); }

    /// The result of a frame. Frames must be taken in order and only once. The places of former frames
    /// become free for further results.
    Result take(int nFrame)
    {
        while (!m_vecThread.empty()) {
            try {
                return takeFromThreads(nFrame);
            } catch (const std::bad_alloc&) {
                const int nFewer = jobs() / 2;
                end();
                start(nFewer, nFrame);
            }
        }
        const CImageMemory::CUse use(m_memory);
        return m_fnFrame(nFrame);
    }

private:
    // A place for each result that may wait for its turn, so that handing over allocates no memory.
    struct DoneFrame {
        int nFrame = -1;
        Result result;
        std::exception_ptr pError;
    };

    // Starts threads that continue at a frame. With fewer than 2, the calling thread does the work.
    void start(int nThreads, int nFirst)
    {
        m_fnFrame = m_fnMakeWorker();
        m_nNext = m_nTaken = nFirst;
        if (nThreads < 2) {
            return;
        }
        m_nPlaces = nThreads + 1;
        m_vecDone.resize(size_t(m_nPlaces));
        try {
            for (int i = 0; i < nThreads; ++i) {
                m_vecThread.emplace_back(
                    [this, fnFrame = i > 0 ? m_fnMakeWorker() : m_fnFrame] { work(fnFrame); });
            }
        } catch (const std::exception&) {
            // The system allows fewer threads than wanted. They do the same work; if there are none, the
            // caller does.
        }
    }

    // Stops the threads, waits for them, and frees their results.
    void end()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bStop = true;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_vecThread) {
            thread.join();
        }
        m_vecThread.clear();
        m_vecDone.clear();
        m_fnFrame = nullptr;
        m_memory.clear();
        m_bStop = false;
    }

    Result takeFromThreads(int nFrame)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_nTaken = nFrame;
        m_changed.notify_all();
        DoneFrame& done = m_vecDone[nFrame % m_nPlaces];
        m_changed.wait(lock, [&] { return done.nFrame == nFrame; });
        done.nFrame = -1;
        if (done.pError) {
            std::rethrow_exception(std::exchange(done.pError, nullptr));
        }
        return std::move(done.result);
    }

    void work(const FnFrame& fnFrame)
    {
        const CImageMemory::CUse use(m_memory);
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_changed.wait(lock,
                           [&] { return m_bStop || m_nNext >= m_nFrames || m_nNext < m_nTaken + m_nPlaces; });
            if (m_bStop || m_nNext >= m_nFrames) {
                return;
            }
            const int nFrame = m_nNext++;
            lock.unlock();
            Result result{};
            std::exception_ptr pError;
            try {
                result = fnFrame(nFrame);
            } catch (...) {
                pError = std::current_exception();
            }
            lock.lock();
            DoneFrame& done = m_vecDone[nFrame % m_nPlaces];
            done.result = std::move(result);
            done.pError = pError;
            done.nFrame = nFrame;
            m_changed.notify_all();
        }
    }

    std::function<FnFrame()> m_fnMakeWorker;
    FnFrame m_fnFrame;
    int m_nFrames;
    CImageMemory m_memory;  // of frames and results, passed on to the next ones
    int m_nPlaces = 1;      // places for results, including the one that the caller has
    int m_nNext = 0;
    int m_nTaken = 0;
    bool m_bStop = false;
    std::vector<DoneFrame> m_vecDone;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::thread> m_vecThread;
};

}  // namespace tessera
