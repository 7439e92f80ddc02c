#include "window/crystals/listenedreport.h"

namespace tessera {

void CListenedReport::addMessage(const QString& strText, Severity severity)
{
    m_fnShow([fnSay = m_listener.fnSay, strText, severity] { fnSay(strText, severity); });
}

void CListenedReport::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool /*bTaskBar*/)
{
    m_strFormat = strFormat;
    m_nMinimum = nMinimum;
    m_nAll = nMaximum - nMinimum;
    showProgress(0, m_nAll);
}

void CListenedReport::setProgress(int nValue)
{
    if (nValue - m_nMinimum != m_nShown) {
        showProgress(nValue - m_nMinimum, m_nAll);
    }
}

void CListenedReport::endProgress()
{
    showProgress(0, 0);
}

void CListenedReport::showProgress(int nDone, int nAll)
{
    m_nShown = nDone;
    m_fnShow([fnProgress = m_listener.fnProgress, strFormat = m_strFormat, nDone, nAll] {
        fnProgress(strFormat, nDone, nAll);
    });
}

}  // namespace tessera
