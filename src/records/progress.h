// CProgress: shows the progress of a run for as long as the object lives.
#pragma once

#include "records/runreport.h"

namespace tessera {

/// Where the progress is shown.
enum class ProgressPlace {
    Window,      ///< in the window that works
    TaskBarToo,  ///< on the task bar entry of the program, too, as for long runs over all frames
};

/// Shows progress from its construction to end() or its destruction, on whichever way the function is left.
class CProgress {
public:
    /// @param strFormat  text beside the bar; %v is replaced by the value, %m by the maximum, %p by per cent
    CProgress(CRunReport& report, const QString& strFormat, int nMinimum, int nMaximum,
              ProgressPlace place = ProgressPlace::Window)
        : m_pReport(&report)
    {
        report.startProgress(strFormat, nMinimum, nMaximum, place == ProgressPlace::TaskBarToo);
    }
    ~CProgress() { end(); }
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// Moves the display to a value.
    void set(int nValue)
    {
        if (m_pReport) {
            m_pReport->setProgress(nValue);
        }
    }
    /// Hides the display now, such as before further lines of the log. A second call does nothing.
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
