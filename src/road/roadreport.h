// CRoadReport: passes on the messages of the runs of a road, and keeps the reason if one of them fails.
#pragma once

#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// A run of the core gives the reason of a failure by fail(), or just by its last red line. This class turns
/// either into the result of a stage. A road consists of parts, and reasons are kept part by part.
class CRoadReport : public CRunReport {
public:
    /// @param report  gets all messages and the progress, and is asked whether to go on; must outlive this
    /// object
    explicit CRoadReport(CRunReport& report) : m_report(report) {}

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override { m_report.setProgress(nValue); }
    void endProgress() override { m_report.endProgress(); }
    bool goOn() override;

    /// Begins a part of the road; reasons of earlier parts are forgotten.
    /// @param strPart  name of the part, used if it fails without a message
    void beginPart(const QString& strPart);

    /// The result of a part whose run did not finish, with the reason of the run. If the run gave none, for
    /// example because it was stopped, a red line is written.
    StageResult ended(const RunOutcome& outcome);
    /// The result of a part that failed; the reason is that of fail(), else the last red line of the part.
    StageResult failed();
    /// The same, with a red line that is the reason unless there is one from fail().
    StageResult failed(const QString& strText);
    /// The result of a part that cannot run because something is missing, with a red line that says what.
    StageResult refused(const QString& strText);
    /// The result of a part that could not write a file.
    /// @param strReason  empty: the first reason that was given in the part
    StageResult notWritten(const QString& strFile, const QString& strReason = {});

    /// All lines with Severity::Warning or above, of all parts.
    const QStringList& redLines() const { return m_listRedLine; }

private:
    void noteLastRedLine();
    StageResult endedHere(RunEnd end) const;

    CRunReport& m_report;
    QString m_strPart;
    QStringList m_listRedLine;
    int m_nRedBefore = 0;  ///< number of red lines before the present part
    bool m_bStopped = false;
};

}  // namespace tessera
