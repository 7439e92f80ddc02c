// LatticeAnalysis: what a lattice that was found is, and whether it is alone.
#pragma once

#include "lattice/cosets.h"
#include "lattice/furtherlattices.h"
#include "lattice/latticesymmetry.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// A Bravais type seen from the cell in force, which may be a centred one.
struct LatticeType {
    LatticeSymmetry symmetry;      ///< of the primitive lattice
    Eigen::Matrix3d matTransform;  ///< conventional axes as rows of the axes of the cell in force
};

struct LatticeAnalysis {
    LatticeWithCosets whole;            ///< what absences and points between those of the lattice say
    std::vector<LatticeType> listType;  ///< the best of each Bravais type, the highest symmetry first
    std::optional<LatticeType> proposed;
    LatticesOfPoints lattices;  ///< the first is the cell in force; labels in the order of the points

    /// Part of the points that lies on the further lattices and not on the first, 0 to 1.
    double shareOfOthers() const;
};

/// Looks at a cell: its cosets and absences, its symmetry, and further lattices in the points left over.
/// @param basis    of the cell in force
/// @param fnGoOn   asked now and then; false leaves out the further lattices
LatticeAnalysis analyseLattice(const LatticeBasis& basis, const LatticePoints& listPoint,
                               const FurtherLatticesOptions& options = {},
                               const std::function<bool()>& fnGoOn = {});

/// Lines of the log for what the points say beside the cell: cosets that were taken or are to be named,
/// conditions, further lattices with their share and turn; empty where all is plain.
QStringList tellWholeLattice(const LatticeWithCosets& whole);
QStringList tellFurtherLattices(const LatticesOfPoints& lattices);

}  // namespace tessera
