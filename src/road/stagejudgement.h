// Judgement of the stages: rates the result of each stage as good, doubtful or bad, for the log and the
// summary.
#pragma once

#include "road/roadresults.h"

namespace tessera {

/// The least fraction that is expected of a result that can be trusted: of the peaks that are on the lattice,
/// of the chains that give a reflection, and of the reflections that are indexed.
constexpr double g_dfShareExpected = 0.5;

/// The judgement of a stage; none if the stage has no result.
std::optional<Judgement> judgeStage(RoadStage stage, const RoadResults& results);

/// The judgement of the axis that was found, named "axis"; doubtful if its sense is uncertain.
Judgement judgeAxis(const AxisFound& axis);

/// The judgement of the lattice, named "lattice"; doubtful if a supercell or a second crystal is likely.
Judgement judgeLattice(const LatticeAnalysis& analysis);

/// Whether at least g_dfShareExpected of the peaks are on the lattice, and significantly more than by chance.
bool fitsLattice(const LatticeFit& fit);

/// Whether most reflections were indexed although most peaks do not fit the cell. Indices spread from
/// neighbour to neighbour, so any cell with roughly correct edges indexes most reflections.
/// @param dfIndexedShare  fraction of the reflections that was indexed, 0 to 1
bool spreadContradicts(double dfIndexedShare, const LatticeFit& fit);

}  // namespace tessera
