// CRunReport: through which a run reports what happens and asks whether to go on.
#pragma once

#include "records/severity.h"

#include <QString>

namespace tessera {

/// What a run calls while it works. Window, batch driver and tests derive classes of their own. The functions
/// of this class do nothing, so that a plain CRunReport makes a silent run.
class CRunReport {
public:
    virtual ~CRunReport() = default;

    /// Adds a line to the message log.
    virtual void addMessage(const QString& /*strText*/, Severity /*severity*/ = Severity::Info) {}
    /// Adds HTML text at the end of the log, without a new paragraph.
    virtual void addHtml(const QString& /*strHtml*/, Severity /*severity*/ = Severity::Info) {}

    /// Shows the progress display. See CProgress, which calls these three functions.
    /// The last argument: whether also on the task bar entry of the program.
    virtual void startProgress(const QString& /*strFormat*/, int /*nMinimum*/, int /*nMaximum*/,
                               bool /*bTaskBar*/ = false)
    {}
    /// Moves the progress display to a value.
    virtual void setProgress(int /*nValue*/) {}
    /// Hides the progress display.
    virtual void endProgress() {}

    /// Handles waiting events.
    /// @return false once the user has asked the run to stop
    virtual bool goOn() { return true; }

    /// Adds a red line that says why the run cannot go on and names the file or frame at fault, and keeps it
    /// as noteReason() does.
    void fail(const QString& strReason)
    {
        noteReason(strReason);
        addMessage(strReason, Severity::Error);
    }
    /// Keeps a line as the reason why the run fails, unless there is a reason already. Later lines, such as
    /// that the run did not finish, are only consequences of the first.
    void noteReason(const QString& strReason)
    {
        if (m_strReason.isEmpty()) {
            m_strReason = strReason;
        }
    }
    /// The first reason since the start or since forgetReason(); empty where nothing failed.
    const QString& reason() const { return m_strReason; }
    /// To be called before a run whose failure has its own reason.
    void forgetReason() { m_strReason.clear(); }

private:
    QString m_strReason;
};

}  // namespace tessera
