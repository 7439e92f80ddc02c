#include "frames/seriesexport.h"

#include "frames/firstimage.h"
#include "frames/frametargets.h"
#include "frames/framewalk.h"
#include "frames/somenames.h"
#include "records/runends.h"
#include "records/timestamp.h"

#include <QHash>

namespace tessera {

namespace {

/// The frames that have the same file.
struct Writers {
    int nCount = 0;
    QString strLast;
};

class CExport {
public:
    CExport(const SeriesExport& what, CRunReport& report) : m_what(what), m_report(report) {}

    RunOutcome run();

private:
    bool frame(int nFrame);
    void sayTrouble();
    void say(const QString& strTemplate, Severity severity)
    {
        if (!strTemplate.isEmpty()) {
            m_report.addMessage(strTemplate.arg(currentTimeStamp()), severity);
        }
    }

    const SeriesExport& m_what;
    CRunReport& m_report;
    QStringList m_listTarget;
    QStringList m_listFailed;
    QString m_strFirstReason;
    QStringList m_listWritten;  ///< each file once
    QHash<QString, Writers> m_mapWriters;
};

/// Writes the file of a frame.
/// @return false if the walk ends here
bool CExport::frame(int nFrame)
{
    const QString& strTarget = m_listTarget[nFrame];
    FrameFaults faults;
    faults.strNotLoaded = m_what.strLoadFailed;
    const auto pImage = firstImage(m_what.series, nFrame, faults, m_report);
    if (!pImage) {
        return false;
    }
    QString strReason;
    if (!m_what.fnWrite(nFrame, *pImage, strTarget, strReason)) {
        if (m_what.bStopAtFailedWrite) {
            m_report.noteReason(strReason);
            m_report.fail(QStringLiteral("Failed to save to file: %1").arg(strTarget));
            m_report.addMessage(strReason, Severity::Error);
            return false;
        }
        m_listFailed.append(strTarget);
        if (m_strFirstReason.isEmpty()) {
            m_strFirstReason = strReason;
        }
        return true;
    }
    Writers& writers = m_mapWriters[strTarget];
    if (writers.nCount == 0) {
        m_listWritten.append(strTarget);
    }
    ++writers.nCount;
    writers.strLast = m_what.series.listFrameFile[nFrame];
    return true;
}

void CExport::sayTrouble()
{
    for (const QString& strTarget : qAsConst(m_listWritten)) {
        const Writers& writers = m_mapWriters[strTarget];
        if (writers.nCount > 1) {
            m_report.fail(QStringLiteral("%1 frames have the name %2; the file holds the last, %3.")
                              .arg(QString::number(writers.nCount), strTarget, writers.strLast));
        }
    }
    if (!m_listFailed.isEmpty()) {
        m_report.fail(QStringLiteral("%1 of %2 files could not be written: %3. %4")
                          .arg(QString::number(m_listFailed.size()), QString::number(m_listTarget.size()),
                               someNames(m_listFailed), m_strFirstReason));
    }
}

RunOutcome CExport::run()
{
    const QStringList& listFile = m_what.series.listFrameFile;
    for (const QString& strFrame : listFile) {
        m_listTarget.append(m_what.fnTarget(strFrame));
    }
    if (overwritesFrames(m_listTarget, m_what.series.allFiles(), m_report)) {
        return {RunEnd::Refused, m_report.reason()};
    }
    say(m_what.strStartLine, Severity::Milestone);
    CFrameWalk walk(listFile.size(), StopAsked::BeforeEachFrame, m_report);
    walk.showProgress(ProgressPlace::TaskBarToo, m_what.nProgressMinimum);
    RunOutcome outcome = walk.run([this](int nFrame) { return frame(nFrame); });
    sayTrouble();
    if (!m_what.strFolder.isEmpty()) {
        m_report.addMessage(
            QStringLiteral("%L1 files written to %2.").arg(m_listWritten.size()).arg(m_what.strFolder),
            Severity::Info);
    }
    if (outcome.end == RunEnd::Stopped) {
        m_report.addMessage(QStringLiteral("%1>%2 stopped after %3 of %4 frames.")
                                .arg(currentTimeStamp(), m_what.strName, QString::number(walk.doneCount()),
                                     QString::number(walk.frameCount())),
                            Severity::Error);
    } else {
        say(m_what.strEndLine, Severity::Milestone);
    }
    if (outcome.end == RunEnd::Finished && m_listWritten.size() != walk.frameCount()) {
        outcome = failedAsSaid(m_report);
    }
    return outcome;
}

}  // namespace

RunOutcome exportSeries(const SeriesExport& what, CRunReport& report)
{
    return CExport(what, report).run();
}

}  // namespace tessera
