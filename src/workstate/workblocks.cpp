#include "workstate/workblocks.h"

#include <unordered_set>

namespace tessera {

namespace {

const std::uint64_t g_nAllocation = 16;  // overhead of an allocation, bytes
const std::uint64_t g_nPointer = sizeof(void*);

/// Collects blocks, each once.
class CFinder {
public:
    void add(const void* pPlace, std::uint64_t nBytes)
    {
        if (m_setPlace.insert(pPlace).second) {
            m_listBlock.push_back({pPlace, nBytes});
        }
    }
    /// A QList allocates large items one by one and stores small ones in place.
    template <class T>
    void add(const QList<T>& list)
    {
        if (!list.isEmpty()) {
            const bool bLarge = QTypeInfo<T>::isLarge || QTypeInfo<T>::isStatic;
            add(&list.first(),
                std::uint64_t(list.size()) * (g_nPointer + (bLarge ? sizeof(T) + g_nAllocation : 0)));
        }
    }
    template <class T>
    void addAll(const QList<QList<T>>& list)
    {
        add(list);
        for (const QList<T>& inner : list) {
            add(inner);
        }
    }
    /// The many short lists of the reflections count as one block, since they are created and freed together.
    template <class T>
    void addAsOne(const QList<QList<T>>& list)
    {
        std::uint64_t nBytes = 0;
        for (const QList<T>& inner : list) {
            nBytes += std::uint64_t(inner.size()) * (sizeof(T) + g_nAllocation + g_nPointer) +
                      2 * g_nAllocation + g_nPointer;
        }
        if (!list.isEmpty()) {
            add(&list.first(), nBytes);
        }
    }
    std::vector<WorkBlock> take() { return std::move(m_listBlock); }

private:
    std::unordered_set<const void*> m_setPlace;
    std::vector<WorkBlock> m_listBlock;
};

void addGroups(const QList<PointGroup>& listGroup, CFinder& finder)
{
    for (const PointGroup& group : listGroup) {
        finder.add(group.listPoint);
    }
}

/// The group lists of the peaks of a frame count as one block; each is usually one number long.
void addMasks(const QVector<QVector<QList<int>>>& vecGroup, CFinder& finder)
{
    for (const QVector<QList<int>>& vecFrame : vecGroup) {
        if (!vecFrame.isEmpty()) {
            finder.add(vecFrame.constData(),
                       std::uint64_t(vecFrame.size()) * (3 * g_nPointer + 2 * g_nAllocation));
        }
    }
}

template <class T>
std::uint64_t bytesOf(const std::vector<T>& vec)
{
    return vec.size() * sizeof(T);
}

void addSeries(const SeriesData& series, CFinder& finder)
{
    finder.add(series.m_listHotPixel);
    finder.add(series.m_listShift);
    finder.addAll(series.m_listPeakFrame);
    finder.addAll(series.m_listPeakFrameShown);
    addMasks(series.m_vecPeakGroup, finder);
    finder.add(series.m_listPeakMergedShown);
    finder.add(series.m_listPeakMerged);
    finder.addAsOne(series.m_listPeakChain);
    for (const QList<Peak3D>& listPeak : series.m_vecPeakIndexedOnFrame) {
        finder.add(listPeak);
    }
    finder.add(series.m_listReflectionIndexed);
    // These lists are never shared between states.
    finder.add(&series, sizeof(WorkState) + bytesOf(series.m_vecReflectionFrame) +
                            bytesOf(series.m_spaceGroup.vecOperation));
}

}  // namespace

std::vector<WorkBlock> blocksOf(const WorkState& state)
{
    CFinder finder;
    addSeries(state.series, finder);
    finder.add(state.listMergedPoint);
    finder.add(state.listTablePeak);
    addGroups(state.listRawGroup, finder);
    addGroups(state.listMergedGroup, finder);
    if (state.pGeometry) {
        // A window that shows it keeps two residuals of about twenty numbers for each peak.
        finder.add(state.pGeometry.get(),
                   sizeof(GeometryRefinement) + std::uint64_t(state.pGeometry->nPeaks) * 40 * sizeof(double));
    }
    if (state.pIntegration) {
        finder.add(state.pIntegration.get(),
                   sizeof(IntegrationResult) + bytesOf(state.pIntegration->integrated.listObservation));
    }
    return finder.take();
}

void CWorkBlocks::add(const WorkState& state)
{
    for (const WorkBlock& block : blocksOf(state)) {
        Use& use = m_mapUse[block.pPlace];
        if (use.nStates++ == 0) {
            use.nBytes = block.nBytes;
            m_nBytes += block.nBytes;
        }
    }
}

void CWorkBlocks::remove(const WorkState& state)
{
    for (const WorkBlock& block : blocksOf(state)) {
        const auto it = m_mapUse.find(block.pPlace);
        if (it != m_mapUse.end() && --it->second.nStates == 0) {
            m_nBytes -= it->second.nBytes;
            m_mapUse.erase(it);
        }
    }
}

std::uint64_t CWorkBlocks::bytesBeside(const WorkState& current) const
{
    std::uint64_t nBytes = m_nBytes;
    for (const WorkBlock& block : blocksOf(current)) {
        const auto it = m_mapUse.find(block.pPlace);
        nBytes -= it == m_mapUse.end() ? 0 : it->second.nBytes;
    }
    return nBytes;
}

}  // namespace tessera
