#include "reciprocal/peakgroups.h"

#include "reciprocal/mapping.h"
#include "records/groupmask.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace tessera {

namespace {

const int g_nGroups = 64;

/// Finds the first peak of a frame by nID in logarithmic time. A frame is sorted when it is first asked for.
class PeakFinder {
public:
    explicit PeakFinder(const QList<QList<Peak3D>>& listPeakFrame)
        : m_listPeakFrame(listPeakFrame), m_vecFrame(size_t(listPeakFrame.size()))
    {}
    /// The place of the peak on its frame, -1 for none.
    int place(int nFrame, int nID)
    {
        if (nFrame < 0 || nFrame >= m_listPeakFrame.size()) {
            return -1;
        }
        const QList<Peak3D>& listPeak = m_listPeakFrame[nFrame];
        auto& vecPlace = m_vecFrame[nFrame];  // (nID, place)
        if (int(vecPlace.size()) < listPeak.size()) {
            vecPlace.reserve(listPeak.size());
            for (int i = 0; i < listPeak.size(); ++i) {
                vecPlace.emplace_back(listPeak[i].nID, i);
            }
            if (!std::is_sorted(vecPlace.begin(), vecPlace.end())) {
                std::sort(vecPlace.begin(), vecPlace.end());
            }
        }
        const auto it = std::lower_bound(vecPlace.begin(), vecPlace.end(), std::make_pair(nID, 0));
        return it != vecPlace.end() && it->first == nID ? it->second : -1;
    }

private:
    const QList<QList<Peak3D>>& m_listPeakFrame;
    std::vector<std::vector<std::pair<int, int>>> m_vecFrame;
};

/// Whether the masks fit the peaks and put any peak into a group. Else all peaks are in group 0.
bool masksHold(const DataSet& dataSet)
{
    if (!groupsMatchPeaks(dataSet.m_vecPeakGroup, dataSet.m_listPeakFrame)) {
        return false;
    }
    for (const QVector<QList<int>>& vecGroup : dataSet.m_vecPeakGroup) {
        for (const QList<int>& listGroup : vecGroup) {
            if (!listGroup.isEmpty()) {
                return true;
            }
        }
    }
    return false;
}

/// Masks with all peaks in group 0 alone, as for peaks without an entry in the group list.
QVector<QVector<QList<int>>> groupZeroAlone(const QList<QList<Peak3D>>& listPeakFrame)
{
    QVector<QVector<QList<int>>> vecPeakGroup;
    vecPeakGroup.reserve(listPeakFrame.size());
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        vecPeakGroup.append(QVector<QList<int>>(listPeak.size(), {0}));
    }
    return vecPeakGroup;
}

void setFlag(std::vector<char>& vecFlag, int nID)
{
    if (nID < 0) {
        return;
    }
    if (size_t(nID) >= vecFlag.size()) {
        vecFlag.resize(size_t(nID) + 1, 0);
    }
    vecFlag[nID] = 1;
}

/// Calls fnPeak for each peak that the masks put into the group; without masks all are in group 0.
template <class FnPeak>
void forPeaksOfGroup(const DataSet& dataSet, int nGroup, const FnPeak& fnPeak)
{
    const bool bMasks = masksHold(dataSet);
    for (int f = 0; f < dataSet.m_listPeakFrame.size(); ++f) {
        for (int i = 0; i < dataSet.m_listPeakFrame[f].size(); ++i) {
            if (bMasks ? dataSet.m_vecPeakGroup[f][i].contains(nGroup) : nGroup == 0) {
                fnPeak(dataSet.m_listPeakFrame[f][i]);
            }
        }
    }
}

/// The new numbers of the groups when some are removed; -1 for those.
QVector<int> numbersAfterRemoval(int nGroups, const QList<int>& listRemoved)
{
    QVector<int> vecNew(nGroups, -1);
    int nNext = 0;
    for (int g = 0; g < nGroups; ++g) {
        if (g == 0 || !listRemoved.contains(g)) {
            vecNew[g] = nNext++;
        }
    }
    return vecNew;
}

/// Gives the groups of m_vecPeakGroup their new numbers.
void renumberPeakGroups(DataSet& dataSet, const QVector<int>& vecNewNumber)
{
    for (QVector<QList<int>>& vecGroup : dataSet.m_vecPeakGroup) {
        for (QList<int>& listGroup : vecGroup) {
            if (listGroup.isEmpty()) {
                continue;
            }
            QList<int> listNew;
            for (int g : qAsConst(listGroup)) {
                const int nNew = vecNewNumber.value(g, -1);
                if (nNew >= 0 && !listNew.contains(nNew)) {
                    listNew.append(nNew);
                }
            }
            if (listNew.size() > 1) {
                listNew.removeAll(0);
            }
            if (listNew.isEmpty()) {
                listNew.append(0);
            }
            listGroup = listNew;
        }
    }
}

}  // namespace

RestoredPointGroups restorePointGroups(const DataSet& dataSet)
{
    RestoredPointGroups restored;
    const QList<QList<Peak3D>>& listPeakFrame = dataSet.m_listPeakFrame;
    if (listPeakFrame.isEmpty() || !groupsMatchPeaks(dataSet.m_vecPeakGroup, listPeakFrame)) {
        return restored;
    }
    restored.bRestored = true;
    for (int g = 0; g < g_nGroups; ++g) {
        restored.listGroupPoint.append(QList<int>());
    }
    if (!masksHold(dataSet)) {
        restored.listPeakFrameShown = listPeakFrame;
        for (const QList<Peak3D>& listPeak : listPeakFrame) {
            restored.listPeakFlat.append(listPeak);
        }
        return restored;
    }
    for (int f = 0; f < listPeakFrame.size(); ++f) {
        QList<Peak3D> listShown;
        for (int i = 0; i < listPeakFrame[f].size(); ++i) {
            const QList<int>& listGroup = dataSet.m_vecPeakGroup[f][i];
            if (listGroup.isEmpty()) {
                continue;
            }
            for (int g : listGroup) {
                if (g >= 0 && g < g_nGroups) {
                    restored.listGroupPoint[g].append(restored.listPeakFlat.size());
                }
            }
            restored.listPeakFlat.append(listPeakFrame[f][i]);
            listShown.append(listPeakFrame[f][i]);
        }
        restored.listPeakFrameShown.append(listShown);
    }
    return restored;
}

std::vector<char> flagsOfPeakGroup(const DataSet& dataSet, int nGroup)
{
    std::vector<char> vecFlag;
    forPeaksOfGroup(dataSet, nGroup, [&](const Peak3D& peak) { setFlag(vecFlag, peak.nID); });
    return vecFlag;
}

std::vector<char> flagsOfPeakGroup(const DataSet& dataSet, int nGroup, const QList<Peak3D>& listViewPoint,
                                   const QList<int>& listGroupPoint, const MappingParameters& limits)
{
    std::vector<char> vecFlag = flagsOfPoints(listViewPoint, listGroupPoint);
    std::vector<char> vecShown;
    for (const Peak3D& peak : listViewPoint) {
        if (peak.nFrame >= 0) {
            setFlag(vecShown, peak.nID);
        }
    }
    forPeaksOfGroup(dataSet, nGroup, [&](const Peak3D& peak) {
        const bool bShown = peak.nID >= 0 && size_t(peak.nID) < vecShown.size() && vecShown[peak.nID];
        if (!bShown && !liesWithinLimits(peak, limits)) {
            setFlag(vecFlag, peak.nID);
        }
    });
    return vecFlag;
}

std::vector<char> flagsOfPoints(const QList<Peak3D>& listViewPoint, const QList<int>& listPoint)
{
    std::vector<char> vecFlag;
    for (int nPoint : listPoint) {
        if (listViewPoint[nPoint].nFrame >= 0) {
            setFlag(vecFlag, listViewPoint[nPoint].nID);
        }
    }
    return vecFlag;
}

RestoredPointGroups withinLimits(const RestoredPointGroups& restored, const MappingParameters& parameters)
{
    const PeaksShown shown = filterPeaksShown(restored.listPeakFrameShown, parameters);
    RestoredPointGroups within{restored.bRestored, shown.m_listPeakFrameShown, shown.m_listPeakFlat, {}};
    std::vector<int> vecPlace;  // among those that are kept, -1 for the others
    int nNext = 0;
    for (const Peak3D& peak : restored.listPeakFlat) {
        vecPlace.push_back(liesWithinLimits(peak, parameters) ? nNext++ : -1);
    }
    for (const QList<int>& listPoint : restored.listGroupPoint) {
        within.listGroupPoint.append(QList<int>());
        for (int nPoint : listPoint) {
            if (vecPlace[nPoint] >= 0) {
                within.listGroupPoint.last().append(vecPlace[nPoint]);
            }
        }
    }
    return within;
}

void closeGapsOfGroups(DataSet& dataSet, const RestoredPointGroups& restored)
{
    QList<QList<int>> listGroupPoint{{}};
    std::vector<char> vecHeld(restored.listPeakFlat.size(), 0);
    for (int g = 1; g < restored.listGroupPoint.size(); ++g) {
        if (restored.listGroupPoint[g].isEmpty()) {
            continue;
        }
        listGroupPoint.append(restored.listGroupPoint[g]);
        for (int nPoint : restored.listGroupPoint[g]) {
            vecHeld[nPoint] = 1;
        }
    }
    for (size_t n = 0; n < vecHeld.size(); ++n) {
        if (!vecHeld[n]) {
            listGroupPoint.first().append(int(n));
        }
    }
    updatePeakGroupsFromView(dataSet, restored.listPeakFlat, listGroupPoint);
}

void updatePeakGroupsFromView(DataSet& dataSet, const QList<Peak3D>& listViewPoint,
                              const QList<QList<int>>& listGroupPoint)
{
    const QList<QList<Peak3D>>& listPeakFrame = dataSet.m_listPeakFrame;
    QVector<QVector<QList<int>>> vecPeakGroup = groupsMatchPeaks(dataSet.m_vecPeakGroup, listPeakFrame)
                                                    ? dataSet.m_vecPeakGroup
                                                    : groupZeroAlone(listPeakFrame);
    PeakFinder finder(listPeakFrame);
    std::vector<int> vecPlace;
    vecPlace.reserve(listViewPoint.size());
    for (const Peak3D& peak : listViewPoint) {
        vecPlace.push_back(finder.place(peak.nFrame, peak.nID));
        if (vecPlace.back() >= 0) {
            vecPeakGroup[peak.nFrame][vecPlace.back()].clear();
        }
    }
    for (int g = 0; g < listGroupPoint.size(); ++g) {
        for (int nPoint : listGroupPoint[g]) {
            if (nPoint >= 0 && nPoint < listViewPoint.size() && vecPlace[nPoint] >= 0) {
                vecPeakGroup[listViewPoint[nPoint].nFrame][vecPlace[nPoint]].append(g);
            }
        }
    }
    dataSet.m_vecPeakGroup = vecPeakGroup;
}

QList<QList<int>> pointsOfPeakGroups(const DataSet& dataSet, const QList<Peak3D>& listViewPoint, int nGroups)
{
    QList<QList<int>> listGroupPoint;
    for (int g = 0; g < nGroups; ++g) {
        listGroupPoint.append(QList<int>());
    }
    const QList<QList<Peak3D>>& listPeakFrame = dataSet.m_listPeakFrame;
    if (!groupsMatchPeaks(dataSet.m_vecPeakGroup, listPeakFrame)) {
        return listGroupPoint;
    }
    int nPoint = 0;
    for (int f = 0; f < listPeakFrame.size(); ++f) {
        for (int i = 0; i < listPeakFrame[f].size() && nPoint < listViewPoint.size(); ++i) {
            if (listPeakFrame[f][i].nID != listViewPoint[nPoint].nID || listViewPoint[nPoint].nFrame != f) {
                continue;  // the limits hide this peak
            }
            for (int g : dataSet.m_vecPeakGroup[f][i]) {
                if (g >= 0 && g < nGroups) {
                    listGroupPoint[g].append(nPoint);
                }
            }
            ++nPoint;
        }
    }
    return listGroupPoint;
}

void removePeakGroups(DataSet& dataSet, int nGroups, const QList<int>& listRemoved)
{
    renumberPeakGroups(dataSet, numbersAfterRemoval(nGroups, listRemoved));
}

void mergePeakGroups(DataSet& dataSet, int nGroups, const QList<int>& listMerged)
{
    if (nGroups < 2 || listMerged.size() < 2) {  // there is nothing to unite
        return;
    }
    const int nFirst = *std::min_element(listMerged.begin(), listMerged.end());
    QVector<int> vecNew = numbersAfterRemoval(nGroups, listMerged);
    if (nFirst == 0) {
        renumberPeakGroups(dataSet, vecNew);  // peaks without a group go into group 0
        std::iota(vecNew.begin(), vecNew.end(), 1);
    } else {
        for (int g = 1; g < nGroups; ++g) {
            if (listMerged.contains(g)) {
                vecNew[g] = nFirst;
            } else if (vecNew[g] >= nFirst) {
                ++vecNew[g];  // makes room for the united group
            }
        }
    }
    renumberPeakGroups(dataSet, vecNew);
}

int keepPeaksBeyondMasks(DataSet& dataSet)
{
    int nCount = 0;
    for (QVector<QList<int>>& vecGroup : dataSet.m_vecPeakGroup) {
        for (QList<int>& listGroup : vecGroup) {
            if (!listGroup.isEmpty() &&
                std::all_of(listGroup.cbegin(), listGroup.cend(), [](int g) { return g >= g_nGroups; })) {
                listGroup = {0};
                ++nCount;
            }
        }
    }
    return nCount;
}

}  // namespace tessera
