#include "batch/batchreport.h"

#include "road/roadlog.h"

#include <unistd.h>

namespace tessera {

CBatchReport::CBatchReport(std::FILE* pOutput) : m_pOutput(pOutput), m_bTerminal(isatty(STDERR_FILENO) != 0)
{}

void CBatchReport::addMessage(const QString& strText, Severity /*severity*/)
{
    clearProgressLine();
    const QByteArray bytes = (strText + QLatin1Char('\n')).toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_pOutput);
    std::fflush(m_pOutput);
}

void CBatchReport::addHtml(const QString& strHtml, Severity severity)
{
    addMessage(textOfLogHtml(strHtml), severity);
}

void CBatchReport::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool)
{
    m_strFormat = strFormat;
    m_nMinimum = nMinimum;
    m_nMaximum = nMaximum;
}

void CBatchReport::setProgress(int nValue)
{
    if (!m_bTerminal) {
        return;
    }
    const int nRange = m_nMaximum - m_nMinimum;
    QString strLine = m_strFormat;
    strLine.replace(QStringLiteral("%v"), QString::number(nValue));
    strLine.replace(QStringLiteral("%m"), QString::number(m_nMaximum));
    strLine.replace(QStringLiteral("%p"),
                    QString::number(nRange > 0 ? qint64(nValue - m_nMinimum) * 100 / nRange : 100));
    std::fprintf(stderr, "\r\033[K%s", strLine.toUtf8().constData());
    std::fflush(stderr);
    m_bLineShown = true;
}

void CBatchReport::endProgress()
{
    clearProgressLine();
}

void CBatchReport::clearProgressLine()
{
    if (m_bLineShown) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        m_bLineShown = false;
    }
}

}  // namespace tessera
