#include "imaging/sidebyside.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace tessera {

bool sideBySide(int nPieces, int nJobs, const std::function<FnPiece()>& fnMakeWorker,
                const std::function<bool()>& fnGoOn)
{
    std::atomic<int> nNext{0};
    std::atomic<bool> bStopped{false};
    std::mutex mutex;
    std::exception_ptr pException;
    const auto work = [&](bool bCaller) {
        try {
            const FnPiece fnPiece = fnMakeWorker();
            while (!bStopped) {
                if (bCaller && fnGoOn && !fnGoOn()) {
                    bStopped = true;
                    break;
                }
                const int n = nNext++;
                if (n >= nPieces) {
                    break;
                }
                fnPiece(n);
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            pException = std::current_exception();
            bStopped = true;
        }
    };
    std::vector<std::thread> vecThread;
    try {
        for (int n = 1; n < std::min(nJobs, nPieces); ++n) {
            vecThread.emplace_back(work, false);
        }
    } catch (const std::exception&) {
        // fewer threads than asked for do the same work
    }
    work(true);
    for (std::thread& thread : vecThread) {
        thread.join();
    }
    if (pException) {
        std::rethrow_exception(pException);
    }
    return !bStopped;
}

}  // namespace tessera
