// CRoadLog: the message log of a road, kept for the file that is written at its end.
#pragma once

#include "records/runreport.h"
#include "road/roadstate.h"

#include <QString>

namespace tessera {

/// Plain text of a piece of HTML of the log: anchors go with their text, as a file follows no links.
QString textOfLogHtml(const QString& strHtml);

/// Keeps all lines and hands everything on.
class CRoadLog : public CRunReport {
public:
    /// @param report  takes all that is said, and is asked whether to go on; must outlive this one
    explicit CRoadLog(CRunReport& report) : m_report(report) {}

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override
    {
        m_report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar);
    }
    void setProgress(int nValue) override { m_report.setProgress(nValue); }
    void endProgress() override { m_report.endProgress(); }
    bool goOn() override { return m_report.goOn(); }

    const QString& text() const { return m_strText; }

private:
    CRunReport& m_report;
    QString m_strText;
};

/// The last of a road: the closing lines go to the log, and the log into its file beside the results, if
/// their folder is there. A log that can't be written is the end of a road that had finished. The record of
/// the run (runrecord.h) follows; one that can't be written is a warning alone.
/// @return why it was not written; empty if it was, or has no place
QString endRoad(RoadState& state, CRoadLog& log);

}  // namespace tessera
