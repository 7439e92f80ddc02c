// Judgement of the stages: what each result is worth, told in a line of the log and in the summary.
#pragma once

#include "road/roadresults.h"

namespace tessera {

/// Where at least this part of the peaks lies on the lattice the cell is believed; below it nothing is.
constexpr double g_dfShareExpected = 0.5;

/// What the result of a stage is worth; none where it has left no result.
std::optional<Judgement> judgeStage(RoadStage stage, const RoadResults& results);

/// What the axis that was found is worth, "axis" by name: doubtful where its sense is.
Judgement judgeAxis(const AxisFound& axis);

/// What the lattice is worth, "lattice" by name: doubtful where a supercell or a second crystal is likely.
Judgement judgeLattice(const LatticeAnalysis& analysis);

/// Whether enough of the peaks lie on the lattice, and more than chance would have there.
bool fitsLattice(const LatticeFit& fit);

/// Whether indices spread to most of the reflections though most of the peaks do not fit the cell: they
/// follow from neighbour to neighbour, so that any cell of about the right edges indexes most.
/// @param dfIndexedShare  of the reflections, 0 to 1
bool spreadContradicts(double dfIndexedShare, const LatticeFit& fit);

}  // namespace tessera
