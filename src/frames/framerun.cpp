#include "frames/framerun.h"

#include "frames/frameloader.h"
#include "records/timestamp.h"

#include <exception>

namespace tessera {

CFrameRun::CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName)
    : m_dataSet(dataSet), m_report(report), m_strName(strName), m_listFile(dataSet.m_listFrameFile)
{}

CFrameRun::~CFrameRun()
{
    release();
}

bool CFrameRun::begin()
{
    if (m_dataSet.m_bRunning) {
        m_dataSet.m_bRunning = false;
        return false;
    }
    m_dataSet.m_bRunning = m_bBegun = true;
    m_report.startProgress(QStringLiteral("%v/%m"), 0, frameCount());
    if (!m_report.goOn())
        m_dataSet.m_bRunning = false;
    m_report.addMessage(QStringLiteral("%1>%2 started.").arg(currentTimeStamp(), m_strName),
                        Severity::Milestone);
    return true;
}

bool CFrameRun::walk(const std::function<bool(int nFrame)>& fnFrame)
{
    bool bAll = true;
    try {
        for (int i = 0; bAll && i < frameCount(); ++i) {
            bAll = isGoing();
            if (!bAll)
                break;
            m_report.setProgress(i + 1);
            bAll = fnFrame(i);
            if (!m_report.goOn())
                m_dataSet.m_bRunning = false;
        }
    } catch (const std::exception& e) {
        m_report.fail(QStringLiteral("Error: %1").arg(QString::fromLocal8Bit(e.what())));
        bAll = false;
    }
    m_report.endProgress();
    return bAll && isGoing();
}

const CImgObj<float>* CFrameRun::load(int nFrame)
{
    releaseFrameImages(m_dataSet.m_vecFrameImage);
    const QString& strFile = m_listFile[nFrame];
    if (!loadFirstImage(m_dataSet.m_vecFrameImage, strFile, m_dataSet.m_listHotPixel, m_report))
        return nullptr;
    if (m_dataSet.m_vecFrameImage.empty()) {
        m_report.fail(QStringLiteral("No image found in %1.").arg(strFile));
        return nullptr;
    }
    return m_dataSet.m_vecFrameImage.front().get();
}

void CFrameRun::sayEnd(bool bFinished)
{
    m_report.addMessage(
        (bFinished ? QStringLiteral("%1>%2 finished.") : QStringLiteral("%1>%2 did not finish."))
            .arg(currentTimeStamp(), m_strName),
        bFinished ? Severity::Milestone : Severity::Error);
}

void CFrameRun::release()
{
    if (m_bBegun)
        m_dataSet.m_bRunning = false;
    m_bBegun = false;
}

}  // namespace tessera
