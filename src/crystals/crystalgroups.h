// Crystal groups: which crystals are of one compound.
#pragma once

#include "crystals/cellsettings.h"
#include "crystals/crystal.h"
#include "crystals/linkage.h"

#include <QString>

#include <vector>

namespace tessera {

struct CrystalGroup {
    std::vector<int> listMember;  ///< places in the list of the crystals, ascending
    LatticeBasis reference;       ///< reduced, of the member that lies closest to all others
    CellTolerance tolerance;      ///< that they were grouped at
    QString strRelation;  ///< how its lattice lies to that of the first group; empty of the first itself
};

struct CrystalGroups {
    std::vector<CrystalGroup> listGroup;  ///< the largest first; of equal ones that with the first crystal
    std::vector<Joint> listJoint;         ///< the tree of the lattices; heights in units of the tolerance
    std::vector<int> listNoCell;          ///< crystals whose six numbers span no cell
    std::vector<int> listInTree;          ///< the others: the things of the tree
};

/// Groups by the distance of the lattices, at the tolerance. See relationText() for what is told of the
/// others.
CrystalGroups groupByCell(const std::vector<Crystal>& listCrystal, const CellTolerance& tolerance = {});

}  // namespace tessera
