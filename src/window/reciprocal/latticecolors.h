// CLatticeColors: the peaks of lattices as groups of a 3D view, in the place of the user's own for a while.
#pragma once

#include "cloud/pointgroups.h"
#include "records/peak3d.h"

#include <QList>

namespace tessera {

class ED3DWidget;

/// The groups of one view while it shows those of lattices.
///
/// Points are not touched. Groups that are made meanwhile stay when the former ones come back, behind them.
class CLatticeColors {
public:
    /// Whether the view has groups of lattices.
    bool isShown() const { return m_bShown; }
    /// Puts a group for each lattice in the place of the groups of the view; where they are shown already,
    /// in the place of those of the lattices.
    void show(ED3DWidget& view, const QList<PointGroup>& listLattice);
    /// Puts the former groups back. A view that has got other points meanwhile stays as it is.
    void hide(ED3DWidget& view);
    /// The groups that the view would have without those of lattices.
    QList<PointGroup> groups(const ED3DWidget& view) const;
    /// Leaves the view as it is.
    void forget() { *this = {}; }

private:
    bool m_bShown = false;
    QList<Peak3D> m_listPoint;  ///< of the view, as they were when its groups went
    QList<PointGroup> m_listFormer;
    int m_nOwn = 0;  ///< groups of the view that come of lattices, group 0 with them
};

}  // namespace tessera
