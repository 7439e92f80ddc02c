#include "road/roadlog.h"

#include "records/wholefile.h"
#include "road/closinglines.h"
#include "road/runrecord.h"

#include <QRegularExpression>

namespace tessera {

QString textOfLogHtml(const QString& strHtml)
{
    static const QRegularExpression anchor(QStringLiteral("<a [^>]*>.*?</a>"));
    static const QRegularExpression tag(QStringLiteral("<[^>]*>"));
    QString strText = strHtml;
    strText.remove(anchor);
    strText.remove(tag);
    return strText.trimmed();
}

void CRoadLog::addMessage(const QString& strText, Severity severity)
{
    m_strText += strText + QLatin1Char('\n');
    m_report.addMessage(strText, severity);
}

void CRoadLog::addHtml(const QString& strHtml, Severity severity)
{
    m_strText += textOfLogHtml(strHtml) + QLatin1Char('\n');
    m_report.addHtml(strHtml, severity);
}

QString endRoad(RoadState& state, CRoadLog& log)
{
    RoadResults& results = state.results;
    for (const QString& strLine : closingLines(results)) {
        log.addMessage(strLine);
    }
    QString strReason;
    if (state.bResultFolder &&
        !writeWholeFile(fileOfProject(state.dataSet, ResultFile::Log), log.text().toUtf8(), &strReason) &&
        results.end.finished()) {
        results.end = {RunEnd::Failed, strReason};
    }
    const QString strNoRecord = writeRunRecord(state, log);
    if (!strNoRecord.isEmpty()) {
        log.addMessage(QStringLiteral("No record of the run: %1").arg(strNoRecord), Severity::Warning);
    }
    return strReason;
}

}  // namespace tessera
