// CWorkWriter: keeps the work of one window in a file, in a thread of its own.
#pragma once

#include "workstate/leftovers.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tessera {

/// Writes each state beside the file of the one before and puts it in its place when it has reached the disk.
/// Where several states come while one is being written, the newest is next and the others are left out.
/// Folder, file and lock are made with the first state; others than the user cannot read them.
class CWorkWriter {
public:
    /// Called in the writer's thread after each try, with the reason where it failed.
    using FnTold = std::function<void(const QString& strStep, const QString& strReason)>;

    CWorkWriter(const QString& strFolder, const FnTold& fnTold);
    /// As end().
    ~CWorkWriter();
    CWorkWriter(const CWorkWriter&) = delete;
    CWorkWriter& operator=(const CWorkWriter&) = delete;

    /// Returns at once.
    void write(const WorkState& state, const QString& strStep);
    /// The same for a work that was restored: what it comes from goes when the state is on the disk.
    void writeInPlaceOf(const WorkState& state, const QString& strStep, Leftover leftover);
    /// Nothing is to be restored any more: the file goes, and states that wait.
    void remove();
    /// Until all that was asked for is done.
    void wait();
    /// A clean end: file and lock go, and nothing is written any more.
    void end();

private:
    struct Wish {
        std::optional<WorkState> state;  ///< none: the file is to go
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
    CWorkLock m_lock;  ///< of the writer's thread

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Wish> m_wish;          ///< the newest
    std::vector<Leftover> m_listFormer;  ///< to go with the next state that is on the disk
    bool m_bBusy = false;
    bool m_bEnd = false;
    std::thread m_thread;
};

}  // namespace tessera
