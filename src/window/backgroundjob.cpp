#include "window/backgroundjob.h"

#include <QMetaObject>

#include <algorithm>

namespace tessera {

BackgroundJob::~BackgroundJob()
{
    stop();
    for (Run& run : m_vecRun) {
        run.thread.join();
    }
}

void BackgroundJob::stop()
{
    for (Run& run : m_vecRun) {
        *run.pStop = true;
    }
}

void BackgroundJob::start(const FnWork& fnWork)
{
    stop();
    for (Run& run : m_vecRun) {
        if (*run.pDone) {
            run.thread.join();
        }
    }
    m_vecRun.erase(std::remove_if(m_vecRun.begin(), m_vecRun.end(),
                                  [](const Run& run) { return !run.thread.joinable(); }),
                   m_vecRun.end());
    Run run;
    run.thread = std::thread([this, fnWork, pStop = run.pStop, pDone = run.pDone] {
        fnWork(*pStop, [this, &pStop](const std::function<void()>& fnDone) {
            QMetaObject::invokeMethod(
                this,
                [pStop, fnDone] {
                    if (!*pStop) {
                        fnDone();
                    }
                },
                Qt::QueuedConnection);
        });
        *pDone = true;
    });
    m_vecRun.push_back(std::move(run));
}

}  // namespace tessera
