#include "window/reciprocal/latticecolors.h"

#include "view3d/ed3dwidget.h"
#include "view3d/quietview.h"

#include <algorithm>

namespace tessera {

namespace {

QList<PointGroup> groupsOf(const ED3DWidget& view)
{
    QList<PointGroup> listGroup;
    for (int g = 0; g < view.groupLabels().size(); ++g) {
        listGroup.append(
            {view.groupLabels()[g], view.groupPoints()[g], view.groupColors()[g], view.groupsVisible()[g]});
    }
    return listGroup;
}

/// Whether the lists have the same peaks; their indices in the lattice may differ.
bool holdSamePeaks(const QList<Peak3D>& listA, const QList<Peak3D>& listB)
{
    return listA.size() == listB.size() &&
           std::equal(listA.begin(), listA.end(), listB.begin(), [](const Peak3D& a, const Peak3D& b) {
               return a.nID == b.nID && a.nFrame == b.nFrame && a.point() == b.point();
           });
}

void setGroups(ED3DWidget& view, const QList<PointGroup>& listGroup)
{
    const QuietView quiet(view);
    const QList<Peak3D> listPoint = view.points();  // a copy: the view clears its own
    view.setPoints(listPoint, listGroup);
}

}  // namespace

void CLatticeColors::show(ED3DWidget& view, const QList<PointGroup>& listLattice)
{
    if (m_bShown) {
        hide(view);
    }
    QList<PointGroup> listFormer = groupsOf(view);
    PointGroup rest = listFormer.front();
    rest.listPoint.clear();
    rest.color = Qt::white;
    rest.bVisible = true;
    m_listPoint = view.points();
    setGroups(view, QList<PointGroup>{rest} + listLattice);
    m_listFormer = listFormer;
    m_nOwn = 1 + listLattice.size();
    m_bShown = true;
}

QList<PointGroup> CLatticeColors::groups(const ED3DWidget& view) const
{
    const QList<PointGroup> listShown = groupsOf(view);
    return m_bShown && holdSamePeaks(view.points(), m_listPoint) ? m_listFormer + listShown.mid(m_nOwn)
                                                                 : listShown;
}

void CLatticeColors::hide(ED3DWidget& view)
{
    if (m_bShown && holdSamePeaks(view.points(), m_listPoint)) {
        setGroups(view, groups(view));
    }
    forget();
}

}  // namespace tessera
