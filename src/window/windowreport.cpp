#include "window/windowreport.h"

#include "window/guards.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/severitycolor.h"
#include "window/timeleft.h"

#include <QProgressBar>

namespace tessera {

WindowReport::WindowReport(MainWindow& window, const bool* pbFlag) : m_window(window), m_pbFlag(pbFlag) {}

WindowReport::~WindowReport()
{
    WindowReport::endProgress();
}

void WindowReport::addMessage(const QString& strText, Severity severity)
{
    m_window.m_pMessageEdit->addMessage(strText, severityColor(severity));
}

void WindowReport::addHtml(const QString& strHtml, Severity severity)
{
    m_window.m_pMessageEdit->addHtml(strHtml, severityColor(severity));
}

// Where the platform's task bar shows no progress, the bar in the status bar is all there is.
void WindowReport::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool /*bTaskBar*/)
{
    QProgressBar* pBar = m_window.m_pProgressBar;
    pBar->setFormat(strFormat);
    m_strFormat = strFormat;
    m_clock.start();
    pBar->setRange(nMinimum, nMaximum);
    pBar->setValue(nMinimum);
    pBar->show();
    m_bProgressShown = true;
}

void WindowReport::setProgress(int nValue)
{
    QProgressBar* pBar = m_window.m_pProgressBar;
    const CDeferredPaint deferred(pBar);
    pBar->setValue(nValue);
    const int nRange = pBar->maximum() - pBar->minimum();
    if (!m_bProgressShown || nRange <= 0 || m_strFormat.isEmpty()) {
        return;
    }
    const QString strLeft = timeLeftText(double(m_clock.elapsed()) / 1000,
                                         double(nValue - pBar->minimum()) / nRange);
    pBar->setFormat(strLeft.isEmpty() ? m_strFormat : m_strFormat + QStringLiteral(", ") + strLeft);
}

void WindowReport::endProgress()
{
    if (m_bProgressShown) {
        m_window.m_pProgressBar->hide();
    }
    m_bProgressShown = false;
}

bool WindowReport::goOn()
{
    m_window.pumpEvents();
    return !m_window.m_gate.wishes().bClose && (!m_pbFlag || *m_pbFlag);
}

}  // namespace tessera
