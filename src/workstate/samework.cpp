#include "workstate/samework.h"

namespace tessera {

namespace {

template <class TList>
bool isShared(const TList& listA, const TList& listB)
{
    return listA.isSharedWith(listB) || (listA.isEmpty() && listB.isEmpty());
}

bool isShared(const QList<PointGroup>& listA, const QList<PointGroup>& listB)
{
    return std::equal(
        listA.begin(), listA.end(), listB.begin(), listB.end(),
        [](const PointGroup& a, const PointGroup& b) { return isShared(a.listPoint, b.listPoint); });
}

}  // namespace

bool shareLists(const WorkState& stateA, const WorkState& stateB)
{
    const SeriesData& a = stateA.series;
    const SeriesData& b = stateB.series;
    return isShared(a.m_listPeakFrame, b.m_listPeakFrame) &&
           isShared(a.m_listPeakFrameShown, b.m_listPeakFrameShown) &&
           isShared(a.m_vecPeakGroup, b.m_vecPeakGroup) && isShared(a.m_listHotPixel, b.m_listHotPixel) &&
           isShared(a.m_listShift, b.m_listShift) &&
           isShared(a.m_listPeakMergedShown, b.m_listPeakMergedShown) &&
           isShared(a.m_listPeakMerged, b.m_listPeakMerged) &&
           isShared(a.m_listPeakChain, b.m_listPeakChain) &&
           isShared(a.m_vecPeakIndexedOnFrame, b.m_vecPeakIndexedOnFrame) &&
           isShared(a.m_listReflectionIndexed, b.m_listReflectionIndexed) &&
           isShared(stateA.listMergedPoint, stateB.listMergedPoint) &&
           isShared(stateA.listTablePeak, stateB.listTablePeak) &&
           isShared(stateA.listRawGroup, stateB.listRawGroup) &&
           isShared(stateA.listMergedGroup, stateB.listMergedGroup);
}

bool areSameOnFrame(const Peak3D& a, const Peak3D& b)
{
    return a.nID == b.nID && a.nFrame == b.nFrame && areSame(a.dfX2D, b.dfX2D) && areSame(a.dfY2D, b.dfY2D) &&
           areSame(a.dfIPoint, b.dfIPoint) && areSame(a.dfI2D, b.dfI2D);
}

bool areSame(const Peak3D& a, const Peak3D& b)
{
    return areSameOnFrame(a, b) && areSame(a.point(), b.point()) &&
           areSame(a.dfX2DCorrected, b.dfX2DCorrected) && areSame(a.dfY2DCorrected, b.dfY2DCorrected) &&
           areSame(a.dfH, b.dfH) && areSame(a.dfK, b.dfK) && areSame(a.dfL, b.dfL) &&
           areSame(a.dfDStar, b.dfDStar) && areSame(a.dfFrameTilt, b.dfFrameTilt) &&
           areSame(a.dfIntFit, b.dfIntFit) && areSame(a.dfFrameFit, b.dfFrameFit) &&
           areSame(a.dfHalfWidth, b.dfHalfWidth) && areSame(a.dfTiltFit, b.dfTiltFit) &&
           a.nRGroup == b.nRGroup;
}

bool areSame(const Vec3D& a, const Vec3D& b)
{
    return areSame(double(a.x), double(b.x)) && areSame(double(a.y), double(b.y)) &&
           areSame(double(a.z), double(b.z));
}

bool areSame(const PointGroup& a, const PointGroup& b)
{
    return a.strLabel == b.strLabel && a.bVisible == b.bVisible && a.color == b.color &&
           a.listPoint == b.listPoint;
}

}  // namespace tessera
