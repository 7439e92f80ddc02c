// BackgroundJob: work in a thread of its own, whose result comes back to the thread of the window.
#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace tessera {

/// The latest job counts: a new one tells the one before to stop, and its result is thrown away. The window
/// never waits, but for the end of the object, which waits for jobs to notice.
class BackgroundJob : public QObject {
public:
    /// True as soon as the job shall end.
    using Stop = std::atomic<bool>;
    /// Runs in the thread of the job, and may call it to have something done in the thread of the window.
    using FnShow = std::function<void(const std::function<void()>&)>;
    /// What a job does.
    using FnWork = std::function<void(const Stop& bStop, const FnShow& fnShow)>;

    /// No job is under way.
    explicit BackgroundJob(QObject* pParent = nullptr) : QObject(pParent) {}
    /// Stops all jobs and waits until they have noticed.
    ~BackgroundJob() override;

    /// Begins a job; the one before is stopped.
    /// @param fnWork  must not throw; what it hands to fnShow is done later, and not once the job is stopped
    void start(const FnWork& fnWork);
    /// Tells the current job to stop; its results are not shown any more.
    void stop();

private:
    struct Run {
        std::shared_ptr<Stop> pStop = std::make_shared<Stop>(false);
        std::shared_ptr<Stop> pDone = std::make_shared<Stop>(false);
        std::thread thread;
    };

    std::vector<Run> m_vecRun;  ///< the last one is the latest
};

}  // namespace tessera
