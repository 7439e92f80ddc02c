// LatticeAnalysis: symmetry, superstructure and twins of a lattice that was found.
#pragma once

#include "lattice/cosets.h"
#include "lattice/furtherlattices.h"
#include "lattice/latticesymmetry.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// A Bravais type that a cell fits. The cell may be a centred one.
struct LatticeType {
    LatticeSymmetry symmetry;      ///< of the primitive lattice
    Eigen::Matrix3d matTransform;  ///< rows: the conventional axes in terms of those of the cell
};

/// The result of analyseLattice().
struct LatticeAnalysis {
    LatticeWithCosets whole;              ///< absences and cosets
    std::vector<LatticeType> listType;    ///< the best fit of each Bravais type, the highest symmetry first
    std::optional<LatticeType> proposed;  ///< the type that is proposed, if any
    LatticesOfPoints lattices;  ///< the cell in force is the first; labels in the order of the points

    /// The share of the points that are on further lattices and not on the first, 0 to 1.
    double shareOfOthers() const;
};

/// Analyses a cell: its cosets and absences, its symmetry, and further lattices.
/// @param basis    of the cell in force
/// @param options  of the search for further lattices
/// @param fnGoOn   asked now and then; false leaves out the further lattices
LatticeAnalysis analyseLattice(const LatticeBasis& basis, const LatticePoints& listPoint,
                               const FurtherLatticesOptions& options = {},
                               const std::function<bool()>& fnGoOn = {});

/// Lines of the log about absences and cosets; empty where there are none.
QStringList tellWholeLattice(const LatticeWithCosets& whole);
/// Lines of the log about further lattices, with their shares and turns; empty where there are none.
QStringList tellFurtherLattices(const LatticesOfPoints& lattices);

}  // namespace tessera
