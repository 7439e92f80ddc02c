#include "frames/summedframes.h"

#include "frames/firstimage.h"
#include "frames/frameloader.h"
#include "frames/frametargets.h"
#include "frames/framewalk.h"
#include "frames/wholepixels.h"
#include "imagefiles/mrcwriter.h"
#include "imaging/elementarithmetic.h"
#include "imaging/imageshifts.h"
#include "records/progress.h"
#include "records/runends.h"
#include "records/whatwasthrown.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tessera {

namespace {

const float g_fDivisor = 20.f;
const float g_fWhite = 65535.f;
const int g_nRangeLines = 10;  // lines of one group; a saturated frame has a million such pixels

// The frame indices of each beam tilt series.
std::vector<std::vector<int>> beamTiltGroups(const QList<int>& listBreak, int nFrames)
{
    std::vector<std::vector<int>> vecGroup;
    bool bOpen = false;
    for (int i = 0; i < std::min(listBreak.size(), nFrames); ++i) {
        if (listBreak[i] != 0) {
            bOpen = listBreak[i] == 1;
        }
        if (listBreak[i] == 1) {
            vecGroup.emplace_back();
        }
        if (bOpen) {
            vecGroup.back().push_back(i);
        }
    }
    return vecGroup;
}

QString frameListText(const std::vector<int>& vecFrame)
{
    QString strText;
    for (int nFrame : vecFrame) {
        strText += QStringLiteral("%1").arg(nFrame + 1, 5);
    }
    return strText;
}

class CSummedExport {
public:
    CSummedExport(DataSet& dataSet, const QString& strFolder, CRunReport& report)
        : m_dataSet(dataSet),
          m_strFolder(strFolder),
          m_report(report),
          m_series(dataSet),
          m_listShift(dataSet.m_listShift),
          m_vecGroup(beamTiltGroups(dataSet.m_listBeamTiltBreak, m_series.frameCount()))
    {}

    RunOutcome run(const std::function<void(int nGroup)>& fnGroupDone)
    {
        if (groups() == 0) {
            return refuseRun(m_report, QStringLiteral("There is no beam tilt series to sum."));
        }
        for (int n = 0; n < groups(); ++n) {
            say(QStringLiteral("#%1:%2").arg(n + 1, 3).arg(frameListText(m_vecGroup[n])));
        }
        QStringList listTarget;
        for (int n = 0; n < groups(); ++n) {
            listTarget.append(targetOf(n));
        }
        if (overwritesFrames(listTarget, m_series.allFiles(), m_report)) {
            return {RunEnd::Refused, m_report.reason()};
        }
        if (m_listShift.size() != m_series.frameCount()) {
            say(QStringLiteral(
                    "The number of frames does not match that of the shift correction data. The frames "
                    "are summed as they are."),
                Severity::Error);
            m_listShift.clear();
        }
        if (!makeImages()) {
            return failedAsSaid(m_report);
        }
        const bool bAll = sumGroups(fnGroupDone);
        if (!m_strShifts.isEmpty()) {
            say(m_strShifts);
        }
        if (m_bStopped) {
            return {RunEnd::Stopped, {}};
        }
        return bAll ? RunOutcome() : failedAsSaid(m_report);
    }

private:
    int groups() const { return int(m_vecGroup.size()); }
    static QString numberText(int nGroup)
    {
        return QStringLiteral("%1").arg(nGroup + 1, 3, 10, QLatin1Char('0'));
    }
    QString targetOf(int nGroup) const
    {
        return QStringLiteral("%1/%2.mrc").arg(m_strFolder, numberText(nGroup));
    }
    void say(const QString& strText, Severity severity = Severity::Info)
    {
        m_report.addMessage(strText, severity);
    }

    // Sums every group, also those after one that cannot be summed.
    // @return whether all were written
    bool sumGroups(const std::function<void(int nGroup)>& fnGroupDone)
    {
        CProgress progress(m_report, QStringLiteral("%v/%m"), 0, groups());
        bool bAll = true;
        for (int n = 0; n < groups() && !m_bStopped; ++n) {
            progress.set(n + 1);
            bAll = sumGroup(n) && exportGroup(n, fnGroupDone) && bAll;
        }
        return bAll;
    }

    // Loads a frame; null, with red lines that end in strStop, when it cannot be used.
    std::unique_ptr<CImgObj<float>> frame(int nFrame, const QString& strStop)
    {
        return firstImage(m_series, nFrame, {QStringLiteral("Failed to load %1.") + strStop, strStop},
                          m_report);
    }

    // Allocates sum and output in the size of the first frame.
    bool makeImages()
    {
        const auto pFirst = frame(0, QString());
        if (!pFirst) {
            return false;
        }
        m_nCount = qint64(pFirst->Width()) * pFirst->Height();
        m_imgSum.Create(pFirst->Width(), pFirst->Height());
        m_imgOutput.Create(pFirst->Width(), pFirst->Height());
        return m_nCount > 0;
    }

    bool sumGroup(int nGroup)
    {
        m_imgSum.Clear();
        m_mapMissing.clear();
        const std::vector<int>& vecFrame = m_vecGroup[nGroup];
        CFrameWalk walk(int(vecFrame.size()), StopAsked::BeforeEachFrame, m_report);
        const RunOutcome outcome = walk.run([&](int n) { return addFrame(vecFrame[n]); });
        m_bStopped = outcome.end == RunEnd::Stopped;
        completeSum(int(vecFrame.size()));
        return outcome.end == RunEnd::Finished;
    }

    bool addFrame(int nFrame)
    {
        const auto pImage = frame(nFrame, QStringLiteral(" Stop."));
        if (!pImage) {
            return false;
        }
        if (pImage->Width() != m_imgSum.Width() || pImage->Height() != m_imgSum.Height()) {
            m_report.fail(QStringLiteral("%1: %L2×%L3 pixels; the first frame has %L4×%L5. Stop.")
                              .arg(m_series.listFrameFile[nFrame])
                              .arg(pImage->Width())
                              .arg(pImage->Height())
                              .arg(m_imgSum.Width())
                              .arg(m_imgSum.Height()));
            return false;
        }
        const QPointF ptShift = m_listShift.value(nFrame);
        const int nDX = -wholePixels(ptShift.x());
        const int nDY = -wholePixels(ptShift.y());
        m_strShifts += QStringLiteral("Shift #%1: %2 %3\n")
                           .arg(nFrame + 1, 3, 10, QLatin1Char('0'))
                           .arg(nDX, 3)
                           .arg(nDY, 3);
        if (nDX != 0 || nDY != 0) {
            CyclicShift(pImage->Data(), pImage->Width(), pImage->Height(), nDX, nDY);
        }
        addUsable(*pImage);
        return true;
    }

    // Adds a frame without its unusable pixels, such as those in a gap of the detector.
    void addUsable(CImgObj<float>& img)
    {
        for (qint64 i = 0; i < m_nCount; ++i) {
            float& f = img.Data()[i];
            if (std::isnan(f)) {
                f = 0;
                ++m_mapMissing[i];
            }
        }
        AddFloat(m_imgSum.Data(), img.Data(), int(m_nCount));
    }

    // Scales the sum of a pixel that only some frames have measured to the whole group. A pixel that none
    // has measured becomes NaN.
    void completeSum(int nFrames)
    {
        for (const auto& [i, nMissing] : m_mapMissing) {
            m_imgSum.Data()[i] = nMissing < nFrames
                                     ? m_imgSum.Data()[i] * float(nFrames) / float(nFrames - nMissing)
                                     : std::numeric_limits<float>::quiet_NaN();
        }
    }

    bool exportGroup(int nGroup, const std::function<void(int nGroup)>& fnGroupDone)
    {
        auto pShown = std::make_unique<CImgObj<float>>();
        pShown->Copy(m_imgSum);
        releaseFrameImages(m_dataSet.m_vecFrameImage);
        m_dataSet.m_vecFrameImage.push_back(std::move(pShown));
        if (fnGroupDone) {
            fnGroupDone(nGroup);
        }
        m_bStopped = !m_report.goOn();  // asked when the sum is shown; it is written even then
        scaleSum();
        const bool bSaved = writeOutput(targetOf(nGroup));
        const std::vector<int>& vecFrame = m_vecGroup[nGroup];
        const double dfFirst = m_series.listTilt.value(vecFrame.front());
        const double dfLast = m_series.listTilt.value(vecFrame.back());
        say(QStringLiteral("#%1:%2: %3 %4")
                .arg(numberText(nGroup), frameListText(vecFrame))
                .arg((dfFirst + dfLast) / 2, 8, 'f', 3)
                .arg(std::fabs(dfFirst - dfLast) / 2, 8, 'f', 3));
        return bSaved;
    }

    bool writeOutput(const QString& strFile)
    {
        CMrcWriter<unsigned short> writer;
        writer.open(strFile, m_imgOutput.Width(), m_imgOutput.Height(), 1);
        writer.addSection(m_imgOutput.Data());
        QString strReason;
        if (writer.commit(&strReason)) {
            return true;
        }
        m_report.noteReason(strReason);
        m_report.fail(QStringLiteral("Failed to save image:%1").arg(strFile));
        say(strReason, Severity::Error);
        return false;
    }

    void scaleSum()
    {
        qint64 nOutside = 0;
        for (qint64 i = 0; i < m_nCount; ++i) {
            float f = m_imgSum.Data()[i] / g_fDivisor;
            if (f > g_fWhite) {
                if (++nOutside <= g_nRangeLines) {
                    say(QStringLiteral("Data out of range (%1). Break.").arg(double(f)));
                }
                f = g_fWhite;
            }
            m_imgOutput.Data()[i] = f >= 0 ? static_cast<unsigned short>(f) : 0;  // NaN becomes 0, too
        }
        if (nOutside > g_nRangeLines) {
            say(QStringLiteral("Data out of range in %L1 more pixels.").arg(nOutside - g_nRangeLines));
        }
    }

    DataSet& m_dataSet;
    const QString m_strFolder;
    CRunReport& m_report;
    const SeriesSnapshot m_series;
    QList<QPointF> m_listShift;  // empty where they are not used
    const std::vector<std::vector<int>> m_vecGroup;
    qint64 m_nCount = 0;
    CImgObj<float> m_imgSum;
    std::unordered_map<qint64, int>
        m_mapMissing;  // number of frames that have not measured a pixel, by its place
    CImgObj<unsigned short> m_imgOutput;
    QString m_strShifts;
    bool m_bStopped = false;
};

}  // namespace

RunOutcome exportSummedFrames(DataSet& dataSet, const QString& strFolder, CRunReport& report,
                              const std::function<void(int nGroup)>& fnGroupDone)
{
    RunOutcome outcome;
    try {
        outcome = CSummedExport(dataSet, strFolder, report).run(fnGroupDone);
    } catch (...) {
        outcome = failRun(report, whatWasThrown());
    }
    releaseFrameImages(dataSet.m_vecFrameImage);
    return outcome;
}

}  // namespace tessera
