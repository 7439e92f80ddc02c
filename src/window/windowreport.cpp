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

// The wish for a progress on the task bar is ignored, as Qt has no portable way to show it there. The bar in
// the status bar is the only one.
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
    const CDeferredPaint deferred(pBar);  // else value and text would each paint the bar
    pBar->setValue(nValue);
    const int nRange = pBar->maximum() - pBar->minimum();
    // A bar without a range shows that something goes on, and not how far it has come.
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
    // These events may have asked to close the window or cleared the run's flag.
    return !m_window.m_gate.wishes().bClose && (!m_pbFlag || *m_pbFlag);
}

}  // namespace tessera
