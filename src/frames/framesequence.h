// CFrameSequence: what is made of the frames of a series, in order, by threads that run ahead.
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

/// Hands out one result for each frame in order, made by some threads that run only so far ahead that
/// no more than one result a thread is in memory beside the one that the caller has. With one job all is done
/// by the caller's thread.
///
/// The memory of large images that were let go is kept for those of the next frames (CImageMemory).
///
/// What is made does not depend on the number of jobs as long as the result of a frame depends on that
/// frame alone. A frame for which memory runs out (std::bad_alloc) is made again by half the threads, whose
/// results and work space are freed first, and at last by the caller's thread alone.
template <class Result>
class CFrameSequence {
public:
    /// Makes the result of a frame, counted from 0. What it throws, take() throws, but for a lack of memory
    /// that fewer threads make good.
    using FnFrame = std::function<Result(int nFrame)>;

    /// @param fnMakeWorker  called here once for each thread: gives the thread's own FnFrame, with the work
    ///                      space that it keeps from frame to frame
    CFrameSequence(int nFrames, int nJobs, const std::function<FnFrame()>& fnMakeWorker)
        : m_fnMakeWorker(fnMakeWorker), m_nFrames(nFrames), m_memory(size_t(std::max(1, nJobs)) * 2 + 1)
    {
        start(std::min(nJobs, nFrames), 0);
    }

    ~CFrameSequence() { end(); }

    CFrameSequence(const CFrameSequence&) = delete;
    CFrameSequence& operator=(const CFrameSequence&) = delete;

    /// Threads at work; 1 when the caller's does all.
    int jobs() const { return std::max(1, int(m_vecThread.size())); }

    /// Frames in order, each once; taking frame n frees the place of those before it.
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
    // A place for each frame that may wait for its turn, so that handing over asks for no memory.
    struct DoneFrame {
        int nFrame = -1;
        Result result;
        std::exception_ptr pError;
    };

    // Threads that go on at a frame; with fewer than 2 the caller's thread does.
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
            // fewer threads than asked for do the same work, and none leaves it to the caller
        }
    }

    // Waits for the threads and frees what they made.
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
    CImageMemory m_memory;  // of the frames and what is made of them, handed round
    int m_nPlaces = 1;      // of results, the one that the caller has among them
    int m_nNext = 0;
    int m_nTaken = 0;
    bool m_bStop = false;
    std::vector<DoneFrame> m_vecDone;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::thread> m_vecThread;
};

}  // namespace tessera
