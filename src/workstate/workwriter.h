// CWorkWriter: saves the work of one window to a file for recovery, in a thread of its own.
#pragma once

#include "workstate/leftovers.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tessera {

/// Writes each state to a temporary file, which replaces the file of the previous state once it has reached
/// the disk. If several states arrive while one is being written, only the newest of them is written. Folder,
/// file and lock are created with the first state; only the user can read them.
class CWorkWriter {
public:
    /// Called in the writer's thread after each attempt; strReason is empty if the state was written.
    using FnTold = std::function<void(const QString& strStep, const QString& strReason)>;

    /// Starts the thread.
    CWorkWriter(const QString& strFolder, const FnTold& fnTold);
    /// Calls end().
    ~CWorkWriter();
    CWorkWriter(const CWorkWriter&) = delete;             ///< owns a thread
    CWorkWriter& operator=(const CWorkWriter&) = delete;  ///< owns a thread

    /// Requests that a state be written, and returns at once.
    void write(const WorkState& state, const QString& strStep);
    /// The same for a recovered work, whose old file is removed once the state is on the disk.
    void writeInPlaceOf(const WorkState& state, const QString& strStep, Leftover leftover);
    /// Removes the file, and discards states that have not been written yet: nothing is to be recovered.
    void remove();
    /// Waits until all requests are done.
    void wait();
    /// Ends the writer normally: removes file and lock, and ignores later requests.
    void end();

private:
    struct Wish {
        std::optional<WorkState> state;  ///< none: the file is to be removed
        QString strStep;
        QDateTime when;
    };

    void ask(Wish wish);
    void work();
    void fulfil(const Wish& wish);
    bool writeState(const Wish& wish, QString& strReason);
    bool prepare(QString& strReason);

    const QString m_strFolder;
    const QString m_strStem;
    const FnTold m_fnTold;
    CWorkLock m_lock;  ///< used by the writer's thread only

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Wish> m_wish;          ///< the newest request
    std::vector<Leftover> m_listFormer;  ///< to be removed once the next state is on the disk
    bool m_bBusy = false;
    bool m_bEnd = false;
    std::thread m_thread;
};

}  // namespace tessera
