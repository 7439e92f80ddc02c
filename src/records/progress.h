// CProgress: the progress display of a run, which ends with the object.
#pragma once

#include "records/runreport.h"

namespace tessera {

/// Where progress shows beside the window that works.
enum class ProgressPlace {
    Window,
    TaskBarToo,  ///< on the program's task bar entry as well, as of long walks over all frames
};

/// Shows the progress of a report from its making to end(), or to its own end at the latest, whichever way
/// the run goes.
class CProgress {
public:
    /// @param strFormat  with %v for the value, %m for the maximum, %p for per cent
    CProgress(CRunReport& report, const QString& strFormat, int nMinimum, int nMaximum,
              ProgressPlace place = ProgressPlace::Window)
        : m_pReport(&report)
    {
        report.startProgress(strFormat, nMinimum, nMaximum, place == ProgressPlace::TaskBarToo);
    }
    ~CProgress() { end(); }
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void set(int nValue)
    {
        if (m_pReport) {
            m_pReport->setProgress(nValue);
        }
    }
    /// Hides the display before what is said next; a second call does nothing.
    void end()
    {
        if (m_pReport) {
            m_pReport->endProgress();
        }
        m_pReport = nullptr;
    }

private:
    CRunReport* m_pReport;
};

}  // namespace tessera
