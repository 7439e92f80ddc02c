// CRoadLog: collects the message log of a road for its log file.
#pragma once

#include "records/runreport.h"
#include "road/roadstate.h"

#include <QString>

namespace tessera {

/// The plain text of a piece of HTML of the log. Links are removed together with their text, since they are
/// of no use in a file.
QString textOfLogHtml(const QString& strHtml);

/// Collects all lines and passes everything on to another report.
class CRoadLog : public CRunReport {
public:
    /// @param report  gets all messages, and is asked whether to go on; must outlive this object
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

    /// The lines so far.
    const QString& text() const { return m_strText; }

private:
    CRunReport& m_report;
    QString m_strText;
};

/// Ends a road: adds the closing lines to the log, and writes the log file and then the record of the run
/// (runrecord.h) to the folder of the results, if it exists. If the log cannot be written, the road counts as
/// failed; if the record cannot be written, there is only a warning.
/// @return empty, or why the log was not written
QString endRoad(RoadState& state, CRoadLog& log);

}  // namespace tessera
