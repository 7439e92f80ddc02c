#include "window/reciprocal/rawgroups.h"

#include "reciprocal/peakgroups.h"
#include "view3d/ed3dwidget.h"

#include <utility>

namespace tessera {

void CRawGroups::keep(DataSet& data, const ED3DWidget& view)
{
    if (!m_bHoldsPeaks)
        return;
    m_kept = {view.groupLabels(), view.groupColors(), view.groupsVisible()};
    if (m_kept.listLabel.size() > 1)  // one group alone holds all, whatever their masks say
        updatePeakGroupsFromView(data, view.points(), view.groupPoints());
}

QList<PointGroup> CRawGroups::take(const DataSet& data, const QList<Peak3D>& listPeak)
{
    const Kept kept = std::exchange(m_kept, {});
    const int nGroups = kept.listLabel.size();
    const QList<QList<int>> listGroupPoint = pointsOfPeakGroups(data, listPeak, nGroups);
    QList<PointGroup> listGroup;
    for (int g = 0; g < nGroups; ++g)
        listGroup.append({kept.listLabel[g], listGroupPoint[g], kept.listColor[g], kept.listVisible[g]});
    return listGroup;
}

std::vector<char> CRawGroups::flags(const DataSet& data, const ED3DWidget& view, int nGroup,
                                    const MappingParameters& limits) const
{
    const QList<int> listPoint = view.groupPoints().value(nGroup);
    return m_bHoldsPeaks ? flagsOfPeakGroup(data, nGroup, view.points(), listPoint, limits)
                         : flagsOfPoints(view.points(), listPoint);
}

void CRawGroups::forget()
{
    m_bHoldsPeaks = false;
    m_kept = {};
}

}  // namespace tessera
