#include "window/crystals/mergereport.h"

namespace tessera {

void CMergeReport::addMessage(const QString& strText, Severity severity)
{
    m_fnShow([fnSay = m_listener.fnSay, strText, severity] { fnSay(strText, severity); });
}

void CMergeReport::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool /*bTaskBar*/)
{
    m_strFormat = strFormat;
    m_nMinimum = nMinimum;
    m_nAll = nMaximum - nMinimum;
    showProgress(0, m_nAll);
}

void CMergeReport::setProgress(int nValue)
{
    if (nValue - m_nMinimum != m_nShown) {
        showProgress(nValue - m_nMinimum, m_nAll);
    }
}

void CMergeReport::endProgress()
{
    showProgress(0, 0);
}

void CMergeReport::showProgress(int nDone, int nAll)
{
    m_nShown = nDone;
    m_fnShow([fnProgress = m_listener.fnProgress, strFormat = m_strFormat, nDone, nAll] {
        fnProgress(strFormat, nDone, nAll);
    });
}

}  // namespace tessera
