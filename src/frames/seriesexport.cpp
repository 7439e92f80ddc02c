#include "frames/seriesexport.h"

#include "frames/frameloader.h"
#include "frames/frametargets.h"
#include "frames/somenames.h"
#include "records/timestamp.h"

#include <QHash>

#include <exception>

namespace tessera {

namespace {

/// Which frames gave a file.
struct Writers {
    int nCount = 0;
    QString strLast;
};

class CExport {
public:
    CExport(const SeriesExport& what, CRunReport& report) : m_what(what), m_report(report) {}

    bool run();

private:
    bool frame(int nFrame);
    void sayTrouble();
    void say(const QString& strTemplate, Severity severity)
    {
        if (!strTemplate.isEmpty())
            m_report.addMessage(strTemplate.arg(currentTimeStamp()), severity);
    }

    const SeriesExport& m_what;
    CRunReport& m_report;
    QStringList m_listTarget;
    QStringList m_listFailed;
    QString m_strFirstReason;
    QStringList m_listWritten;  ///< without repetition
    QHash<QString, Writers> m_mapWriters;
};

/// @return false if the walk ends here
bool CExport::frame(int nFrame)
{
    const QString& strFrame = m_what.listFrameFile[nFrame];
    const QString& strTarget = m_listTarget[nFrame];
    ImageList vecImage;
    if (!loadFirstImage(vecImage, strFrame, m_what.listHotPixel, m_report)) {
        m_report.fail(m_what.strLoadFailed.arg(strFrame));
        return false;
    }
    if (vecImage.empty()) {
        m_report.fail(QStringLiteral("No image found in %1. Stop.").arg(strFrame));
        return false;
    }
    QString strReason;
    if (!m_what.fnWrite(nFrame, *vecImage.front(), strTarget, strReason)) {
        if (m_what.bStopAtFailedWrite) {
            m_report.noteReason(strReason);
            m_report.fail(QStringLiteral("Failed to save to file: %1").arg(strTarget));
            m_report.addMessage(strReason, Severity::Error);
            return false;
        }
        m_listFailed.append(strTarget);
        if (m_strFirstReason.isEmpty())
            m_strFirstReason = strReason;
        return true;
    }
    Writers& writers = m_mapWriters[strTarget];
    if (writers.nCount == 0)
        m_listWritten.append(strTarget);
    ++writers.nCount;
    writers.strLast = strFrame;
    return true;
}

void CExport::sayTrouble()
{
    for (const QString& strTarget : qAsConst(m_listWritten)) {
        const Writers& writers = m_mapWriters[strTarget];
        if (writers.nCount > 1)
            m_report.addMessage(QStringLiteral("%1 frames have the name %2; the file holds the last, %3.")
                                    .arg(QString::number(writers.nCount), strTarget, writers.strLast),
                                Severity::Error);
    }
    if (!m_listFailed.isEmpty())
        m_report.fail(QStringLiteral("%1 of %2 files could not be written: %3. %4")
                          .arg(QString::number(m_listFailed.size()), QString::number(m_listTarget.size()),
                               someNames(m_listFailed), m_strFirstReason));
}

bool CExport::run()
{
    const int nFrames = m_what.listFrameFile.size();
    for (const QString& strFrame : m_what.listFrameFile)
        m_listTarget.append(m_what.fnTarget(strFrame));
    if (overwritesFrames(m_listTarget, m_what.listFrameFile, m_report))
        return false;
    say(m_what.strStartLine, Severity::Milestone);
    m_report.startProgress(QStringLiteral("%v/%m"), m_what.nProgressMinimum, nFrames, true);
    bool bStopped = false;
    int nDone = 0;
    try {
        for (; nDone < nFrames; ++nDone) {
            m_report.setProgress(nDone + 1);
            bStopped = !m_report.goOn();
            if (bStopped || !frame(nDone))
                break;
        }
    } catch (const std::exception& e) {
        m_report.fail(QStringLiteral("Error: %1").arg(QString::fromLocal8Bit(e.what())));
    }
    m_report.endProgress();
    sayTrouble();
    if (!m_what.strFolder.isEmpty())
        m_report.addMessage(
            QStringLiteral("%L1 files written to %2.").arg(m_listWritten.size()).arg(m_what.strFolder),
            Severity::Info);
    if (bStopped)
        m_report.addMessage(
            QStringLiteral("%1>%2 stopped after %3 of %4 frames.")
                .arg(currentTimeStamp(), m_what.strName, QString::number(nDone), QString::number(nFrames)),
            Severity::Error);
    else
        say(m_what.strEndLine, Severity::Milestone);
    return nDone == nFrames && m_listWritten.size() == nFrames;
}

}  // namespace

bool exportSeries(const SeriesExport& what, CRunReport& report)
{
    return CExport(what, report).run();
}

}  // namespace tessera
