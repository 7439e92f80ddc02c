#include "reciprocal/reflectionlinks.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Whether two lists share their records. Writing to one of them parts the lists of frames but not the
/// records of each frame, so that these are compared, too.
bool areSame(const QList<QList<Peak3D>>& listA, const QList<QList<Peak3D>>& listB)
{
    return listA.isSharedWith(listB) ||
           std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                      [](const QList<Peak3D>& a, const QList<Peak3D>& b) { return a.isSharedWith(b); });
}

}  // namespace

CReflectionLinks::CReflectionLinks(const SeriesData& data)
    : m_listPeakFrame(data.m_listPeakFrame),
      m_listPeakChain(data.m_listPeakChain),
      m_listReflection(data.m_listPeakMergedShown),
      m_centres{data.m_listShift, data.m_dfCenterX, data.m_dfCenterY}
{
    int nPeaks = 0;
    for (const QList<Peak3D>& listPeak : qAsConst(m_listPeakFrame)) {
        nPeaks += listPeak.size();
    }
    m_hashPeak.reserve(nPeaks);
    for (int nFrame = 0; nFrame < m_listPeakFrame.size(); ++nFrame) {
        const QList<Peak3D>& listPeak = qAsConst(m_listPeakFrame)[nFrame];
        for (int i = 0; i < listPeak.size(); ++i) {
            m_hashPeak.insert(listPeak[i].nID, {nFrame, i});
        }
    }
    m_hashPlace.reserve(m_listReflection.size());
    for (int i = 0; i < m_listReflection.size(); ++i) {
        const Peak3D& peak = qAsConst(m_listReflection)[i];
        const auto it = m_hashPlace.find(peak.nID);
        if (it == m_hashPlace.end()) {
            m_hashPlace.insert(peak.nID, i);
        } else if (peak.dfIPoint > qAsConst(m_listReflection)[*it].dfIPoint) {
            *it = i;  // all peaks of a streak have the same number
        }
    }
    m_hashReflection.reserve(nPeaks);
    for (int nChain = 0; nChain < m_listPeakChain.size(); ++nChain) {
        if (!m_hashPlace.contains(nChain)) {
            continue;
        }
        for (const Peak3D& peak : qAsConst(m_listPeakChain)[nChain]) {
            if (linkedPeak(peak)) {
                m_hashReflection.insert(peak.nID, nChain);
            }
        }
    }
}

bool CReflectionLinks::isOf(const SeriesData& data) const
{
    return areSame(m_listPeakFrame, data.m_listPeakFrame) && areSame(m_listPeakChain, data.m_listPeakChain) &&
           m_listReflection.isSharedWith(data.m_listPeakMergedShown);
}

const Peak3D* CReflectionLinks::reflection(int nReflection) const
{
    const auto it = m_hashPlace.constFind(nReflection);
    return it == m_hashPlace.constEnd() ? nullptr : &m_listReflection.at(*it);
}

const Peak3D* CReflectionLinks::peak(int nPeak) const
{
    const auto it = m_hashPeak.constFind(nPeak);
    return it == m_hashPeak.constEnd() ? nullptr : &m_listPeakFrame.at(it->nFrame).at(it->nPlace);
}

// A new mapping changes positions and points of a peak, but not its number, frame and intensities.
const Peak3D* CReflectionLinks::linkedPeak(const Peak3D& peakOfChain) const
{
    const Peak3D* pPeak = peak(peakOfChain.nID);
    const bool bSame = pPeak && pPeak->nFrame == peakOfChain.nFrame &&
                       pPeak->dfIPoint == peakOfChain.dfIPoint && pPeak->dfI2D == peakOfChain.dfI2D;
    return bSame ? pPeak : nullptr;
}

std::vector<FrameSpot> CReflectionLinks::spotsOf(int nReflection) const
{
    std::vector<FrameSpot> vecSpot;
    const Peak3D* pReflection = reflection(nReflection);
    if (!pReflection) {
        return vecSpot;
    }
    const QList<Peak3D> listChain = m_listPeakChain.value(nReflection);
    for (const Peak3D& peakOfChain : listChain) {
        const Peak3D* pPeak = linkedPeak(peakOfChain);
        const QPointF ptAround(peakOfChain.dfX2D, peakOfChain.dfY2D);
        vecSpot.push_back({pPeak ? pPeak->nID : -1, peakOfChain.nFrame,
                           pPeak ? QPointF(pPeak->dfX2D, pPeak->dfY2D)
                                 : ptAround + frameCentre(m_centres, peakOfChain.nFrame)});
    }
    if (listChain.isEmpty()) {
        vecSpot.push_back({-1, pReflection->nFrame, {pReflection->dfX2D, pReflection->dfY2D}});
    }
    std::stable_sort(vecSpot.begin(), vecSpot.end(),
                     [](const FrameSpot& a, const FrameSpot& b) { return a.nFrame < b.nFrame; });
    return vecSpot;
}

std::vector<int> CReflectionLinks::peaksOf(const std::vector<int>& vecReflection) const
{
    std::vector<int> vecPeak;
    for (int nReflection : vecReflection) {
        if (nReflection < 0 || nReflection >= m_listPeakChain.size()) {
            continue;
        }
        for (const Peak3D& peakOfChain : m_listPeakChain.at(nReflection)) {
            if (reflectionOf(peakOfChain.nID) == nReflection) {
                vecPeak.push_back(peakOfChain.nID);
            }
        }
    }
    std::sort(vecPeak.begin(), vecPeak.end());
    return vecPeak;
}

bool CReflectionLinks::holds(const Peak3D& peakOther) const
{
    const Peak3D* pReflection = reflection(peakOther.nID);
    return pReflection && pReflection->nFrame == peakOther.nFrame && pReflection->dfX2D == peakOther.dfX2D &&
           pReflection->dfY2D == peakOther.dfY2D;
}

int CReflectionLinks::peakAt(int nFrame, const QPointF& ptRaw, double dfMost) const
{
    int nBest = -1;
    double dfBest = dfMost;
    for (const Peak3D& peakOnFrame : m_listPeakFrame.value(nFrame)) {
        const double df = std::hypot(peakOnFrame.dfX2D - ptRaw.x(), peakOnFrame.dfY2D - ptRaw.y());
        if (df < dfBest) {
            dfBest = df;
            nBest = peakOnFrame.nID;
        }
    }
    return nBest;
}

std::vector<int> CReflectionLinks::peaksOutwards(int nFrame) const
{
    QList<Peak3D> listPeak = m_listPeakFrame.value(nFrame);
    std::stable_sort(listPeak.begin(), listPeak.end(),
                     [](const Peak3D& a, const Peak3D& b) { return a.dfDStar < b.dfDStar; });
    std::vector<int> vecPeak;
    for (const Peak3D& peakOnFrame : qAsConst(listPeak)) {
        vecPeak.push_back(peakOnFrame.nID);
    }
    return vecPeak;
}

std::vector<int> CReflectionLinks::peaksOn(int nFrame) const
{
    std::vector<int> vecPeak;
    for (const Peak3D& peakOnFrame : m_listPeakFrame.value(nFrame)) {
        vecPeak.push_back(peakOnFrame.nID);
    }
    return vecPeak;
}

std::vector<int> CReflectionLinks::reflectionsBut(const QList<Peak3D>& listPeak) const
{
    QHash<int, int> hashOthers = m_hashPlace;
    for (const Peak3D& peakLeftOut : listPeak) {
        if (holds(peakLeftOut)) {
            hashOthers.remove(peakLeftOut.nID);
        }
    }
    std::vector<int> vecReflection(hashOthers.keyBegin(), hashOthers.keyEnd());
    std::sort(vecReflection.begin(), vecReflection.end());
    return vecReflection;
}

}  // namespace tessera
