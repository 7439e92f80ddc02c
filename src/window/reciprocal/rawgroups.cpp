#include "window/reciprocal/rawgroups.h"

#include "reciprocal/peakgroups.h"
#include "view3d/ed3dwidget.h"

namespace tessera {

void CRawGroups::keep(DataSet& data, const ED3DWidget& view)
{
    if (!m_bHoldsPeaks) {
        return;
    }
    m_kept = {view.groupLabels(), view.groupColors(), view.groupsVisible()};
    if (m_kept.listLabel.size() > 1) {  // a single group contains all points, whatever their masks
        updatePeakGroupsFromView(data, view.points(), view.groupPoints());
    }
}

QList<PointGroup> CRawGroups::take(const DataSet& data, const QList<Peak3D>& listPeak)
{
    const QList<PointGroup> listGroup = kept(data, listPeak);
    m_kept = {};
    return listGroup;
}

QList<PointGroup> CRawGroups::kept(const DataSet& data, const QList<Peak3D>& listPeak) const
{
    const int nGroups = m_kept.listLabel.size();
    const QList<QList<int>> listGroupPoint = pointsOfPeakGroups(data, listPeak, nGroups);
    QList<PointGroup> listGroup;
    for (int g = 0; g < nGroups; ++g) {
        listGroup.append(
            {m_kept.listLabel[g], listGroupPoint[g], m_kept.listColor[g], m_kept.listVisible[g]});
    }
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
