#include "frames/framerun.h"

#include "frames/firstimage.h"
#include "frames/frameloader.h"
#include "records/timestamp.h"

#include <utility>

namespace tessera {

CFrameRun::CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName)
    : m_dataSet(dataSet),
      m_report(report),
      m_strName(strName),
      m_series(dataSet),
      m_walk(m_series.frameCount(), StopAsked::AfterEachFrame, report)
{}

void CFrameRun::begin()
{
    m_walk.showProgress(ProgressPlace::Window);
    m_bStopped = !m_report.goOn();
    m_report.addMessage(QStringLiteral("%1>%2 started.").arg(currentTimeStamp(), m_strName),
                        Severity::Milestone);
}

RunOutcome CFrameRun::walk(const std::function<bool(int nFrame)>& fnFrame)
{
    if (m_bStopped) {
        m_walk.endProgress();
        return {RunEnd::Stopped, {}};
    }
    return m_walk.run(fnFrame);
}

const CImgObj<float>* CFrameRun::load(int nFrame)
{
    releaseFrameImages(m_dataSet.m_vecFrameImage);
    auto pImage = firstImage(m_series, nFrame, {QString(), QString()}, m_report);
    if (!pImage) {
        return nullptr;
    }
    m_dataSet.m_vecFrameImage.push_back(std::move(pImage));
    return m_dataSet.m_vecFrameImage.front().get();
}

void CFrameRun::sayEnd(const RunOutcome& outcome)
{
    const bool bFinished = outcome.end == RunEnd::Finished;
    m_report.addMessage(
        (bFinished ? QStringLiteral("%1>%2 finished.") : QStringLiteral("%1>%2 did not finish."))
            .arg(currentTimeStamp(), m_strName),
        bFinished ? Severity::Milestone : Severity::Error);
}

}  // namespace tessera
