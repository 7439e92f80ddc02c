// CListenedReport: what a merging says in its thread, brought to the thread of the window.
#pragma once

#include "records/runreport.h"
#include "window/backgroundjob.h"

#include <QString>

#include <functional>
#include <memory>

namespace tessera {

/// Who listens, in the thread of the window.
struct MergeListener {
    std::function<void(const QString& strText, Severity severity)> fnSay;
    /// @param nDone  of nAll; nAll 0: there is no measure
    std::function<void(const QString& strFormat, int nDone, int nAll)> fnProgress;
};

/// Unlike CAliveRun it lets nobody wait: the window goes on with its own work, and the run with its.
class CListenedReport : public CRunReport {
public:
    /// @param bEnd   of the job: nobody listens any more
    /// @param pStop  the user's wish
    CListenedReport(const BackgroundJob::Stop& bEnd, const std::shared_ptr<const BackgroundJob::Stop>& pStop,
                    const BackgroundJob::FnShow& fnShow, const MergeListener& listener)
        : m_bEnd(bEnd), m_pStop(pStop), m_fnShow(fnShow), m_listener(listener)
    {}

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override;
    void endProgress() override;
    bool goOn() override { return !m_bEnd && !*m_pStop; }

private:
    void showProgress(int nDone, int nAll);

    const BackgroundJob::Stop& m_bEnd;
    const std::shared_ptr<const BackgroundJob::Stop> m_pStop;
    const BackgroundJob::FnShow m_fnShow;
    const MergeListener m_listener;
    QString m_strFormat;
    int m_nMinimum = 0;
    int m_nAll = 0;
    int m_nShown = -1;
};

}  // namespace tessera
