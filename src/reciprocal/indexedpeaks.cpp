#include "reciprocal/indexedpeaks.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/mapping.h"
#include "records/progress.h"

#include <algorithm>

namespace tessera {

namespace {

// IDs are chain numbers; more than this is no number of a chain, and a table over them would fill the memory.
constexpr int g_nMaxID = 100000000;

}  // namespace

int frameCount(const DataSet& dataSet)
{
    return dataSet.m_listFrameFile.isEmpty() ? dataSet.m_listShift.size() : dataSet.m_listFrameFile.size();
}

QVector<QList<Peak3D>> sortPeakFrame(const QList<Peak3D>& listPeak, int nFrames)
{
    QVector<QList<Peak3D>> vecFrame(std::max(nFrames, 0));
    for (const Peak3D& peak : listPeak) {
        if (peak.nFrame >= 0 && peak.nFrame < vecFrame.size()) {
            vecFrame[peak.nFrame].append(peak);
        }
    }
    return vecFrame;
}

void buildIndexedPeaksOnFrame(DataSet& dataSet, const QList<Peak3D>& listPeakIndexed, CRunReport& report)
{
    if (listPeakIndexed.isEmpty()) {
        return;
    }
    if (dataSet.m_listPeakChain.isEmpty()) {
        report.addMessage(
            QStringLiteral("These reflections have no peaks on the frames; the indexed peaks stay as "
                           "they were. Merge the peaks again first."),
            Severity::Error);
        return;
    }
    const int nCount = listPeakIndexed.size();
    const int nStep = std::max(nCount / 100, 1);
    const int nFrames = frameCount(dataSet);
    const BeamCentres centres = beamCentres(dataSet);
    QList<Peak3D> listFlat;
    int nMinID = listPeakIndexed.constFirst().nID;
    int nMaxID = nMinID;
    CProgress progress(report, QStringLiteral("%p%"), 0, 100);
    for (int n = 0; n < nCount; ++n) {
        if (n % nStep == 0) {
            progress.set(std::min(n / nStep, 100));
        }
        const Peak3D& reflection = listPeakIndexed[n];
        nMinID = std::min(nMinID, reflection.nID);
        nMaxID = std::max(nMaxID, reflection.nID);
        const int nH = roundIndex(reflection.dfH);
        const int nK = roundIndex(reflection.dfK);
        const int nL = roundIndex(reflection.dfL);
        if ((nH == 0 && nK == 0 && nL == 0) || reflection.nID < 0 ||
            reflection.nID >= dataSet.m_listPeakChain.size()) {
            continue;
        }
        for (Peak3D peak : qAsConst(dataSet.m_listPeakChain[reflection.nID])) {
            if (peak.nFrame >= 0 && peak.nFrame < nFrames) {
                const QPointF ptCentre = frameCentre(centres, peak.nFrame);
                peak.setHKL(nH, nK, nL);
                peak.dfX2D += ptCentre.x();
                peak.dfY2D += ptCentre.y();
                peak.nID = reflection.nID;
            }
            listFlat.append(peak);
        }
    }
    progress.end();
    report.goOn();
    dataSet.m_vecPeakIndexedOnFrame = sortPeakFrame(listFlat, nFrames);
    if (nMinID < 0) {
        report.addMessage(QStringLiteral("Abnormal min ID: %1").arg(nMinID), Severity::Error);
        return;
    }
    if (nMaxID > g_nMaxID) {
        report.addMessage(QStringLiteral("Abnormal max ID: %1").arg(nMaxID), Severity::Error);
        return;
    }
    dataSet.m_vecReflectionFrame.assign(size_t(nMaxID) + 1, -1);
    for (const Peak3D& reflection : listPeakIndexed) {
        dataSet.m_vecReflectionFrame[reflection.nID] = reflection.nFrame;
    }
}

}  // namespace tessera
