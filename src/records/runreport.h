// CRunReport: how a run tells the world what happens, and asks whether to go on.
#pragma once

#include "records/severity.h"

#include <QString>

namespace tessera {

/// What a run says and asks while it works. Window, batch driver and tests each derive their own;
/// the functions here do nothing, so a plain CRunReport is a silent one.
class CRunReport {
public:
    virtual ~CRunReport() = default;

    /// A new line of the message log.
    virtual void addMessage(const QString& /*strText*/, Severity /*severity*/ = Severity::Info) {}
    /// HTML text put at the end of the log, without a new paragraph.
    virtual void addHtml(const QString& /*strHtml*/, Severity /*severity*/ = Severity::Info) {}

    /// Shows the progress display. `bTaskBar`: on the program's task bar entry too.
    virtual void startProgress(const QString& /*strFormat*/, int /*nMinimum*/, int /*nMaximum*/,
                               bool /*bTaskBar*/ = false)
    {}
    virtual void setProgress(int /*nValue*/) {}
    virtual void endProgress() {}

    /// Lets waiting events be handled. Returns false once the run has been asked to stop.
    virtual bool goOn() { return true; }

    /// A red line that says why a run cannot go on, with the file or the frame that it lies at. It is kept
    /// as noteReason() does.
    void fail(const QString& strReason)
    {
        noteReason(strReason);
        addMessage(strReason, Severity::Error);
    }
    /// Keeps a line of the log as the reason why a run fails, unless there is one: what comes later, as that
    /// the run did not finish, follows from the first.
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
