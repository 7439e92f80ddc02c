// CRoadReport: passes on what the runs of the road say, and keeps why one of them did not reach its end.
#pragma once

#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The runs of the core give the reason of a failure by fail(), or by the last red line alone. Here both
/// become the value that a stage returns. The road is walked in parts, each with a reason of its own.
class CRoadReport : public CRunReport {
public:
    /// @param report  takes all lines and the progress, and is asked whether to go on; must outlive this one
    explicit CRoadReport(CRunReport& report) : m_report(report) {}

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override { m_report.setProgress(nValue); }
    void endProgress() override { m_report.endProgress(); }
    bool goOn() override;

    /// What comes from here on has a reason of its own to fail.
    /// @param strPart  its name, for a part that ends without a word
    void beginPart(const QString& strPart);

    /// The end of a part whose run did not finish, with the run's reason; a run that has none, such as one
    /// that was stopped, gets a red line.
    StageResult ended(const RunOutcome& outcome);
    /// The end of a part whose run has said why: by fail(), else by the last red line of the part.
    StageResult failed();
    /// The same with a red line that counts as the reason where the run has given none by fail().
    StageResult failed(const QString& strText);
    /// The end of a part that lacks what it needs, with a red line that says what.
    StageResult refused(const QString& strText);
    /// The end of a part whose run was to write a file, and did not for that reason, or for the first that
    /// was given.
    StageResult notWritten(const QString& strFile, const QString& strReason = {});

    /// The lines from Severity::Warning on, of all parts.
    const QStringList& redLines() const { return m_listRedLine; }

private:
    void noteLastRedLine();
    StageResult endedHere(RunEnd end) const;

    CRunReport& m_report;
    QString m_strPart;
    QStringList m_listRedLine;
    int m_nRedBefore = 0;  ///< red lines before the part under way
    bool m_bStopped = false;
};

}  // namespace tessera
