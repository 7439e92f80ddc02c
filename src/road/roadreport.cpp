#include "road/roadreport.h"

namespace tessera {

void CRoadReport::addMessage(const QString& strText, Severity severity)
{
    if (severity >= Severity::Warning) {
        m_listRedLine.append(strText);
    }
    m_report.addMessage(strText, severity);
}

void CRoadReport::addHtml(const QString& strHtml, Severity severity)
{
    m_report.addHtml(strHtml, severity);
}

void CRoadReport::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar)
{
    m_report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar);
}

bool CRoadReport::goOn()
{
    const bool bGoOn = m_report.goOn();
    m_bStopped = m_bStopped || !bGoOn;
    return bGoOn;
}

void CRoadReport::beginPart(const QString& strPart)
{
    m_strPart = strPart;
    m_nRedBefore = m_listRedLine.size();
    m_bStopped = false;
    forgetReason();
}

StageResult CRoadReport::ended(const RunOutcome& outcome)
{
    noteReason(outcome.strReason);
    if (reason().isEmpty()) {
        fail(QStringLiteral("%1 did not finish.").arg(m_strPart));
    }
    return {outcome.end, reason()};
}

StageResult CRoadReport::failed()
{
    noteLastRedLine();
    if (reason().isEmpty()) {
        fail(QStringLiteral("%1 did not finish.").arg(m_strPart));
    }
    return endedHere(RunEnd::Failed);
}

StageResult CRoadReport::failed(const QString& strText)
{
    fail(strText);
    return endedHere(RunEnd::Failed);
}

StageResult CRoadReport::refused(const QString& strText)
{
    fail(strText);
    return endedHere(RunEnd::Refused);
}

StageResult CRoadReport::notWritten(const QString& strFile, const QString& strReason)
{
    noteReason(strReason);
    return failed(QStringLiteral("%1 was not written.").arg(strFile));
}

void CRoadReport::noteLastRedLine()
{
    if (m_listRedLine.size() > m_nRedBefore) {
        noteReason(m_listRedLine.last());
    }
}

StageResult CRoadReport::endedHere(RunEnd end) const
{
    return {m_bStopped ? RunEnd::Stopped : end, reason()};
}

}  // namespace tessera
