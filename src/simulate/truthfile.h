// Truth file: the truth of a simulated series as JSON, and the project beside it.
#pragma once

#include "simulate/bravaistype.h"
#include "simulate/simulatedseries.h"

namespace tessera {

/// System and centring of the series' lattice, from its true cell. Of a supercell it is that of its own
/// lattice.
BravaisType trueBravaisType(const SimulatedSeries& series);

/// Writes BASE_truth.json. Spots are rows of numbers under the names in "spotColumns"; with a second lattice
/// they tell by "lattice" whether they are of the first (0) or second (1), whose basis stands under
/// "secondLattice".
/// @return empty, or why the file was not written
[[nodiscard]] QString writeTruthFile(const QString& strFileName, const SimulatedSeries& series);

/// Reads what writeTruthFile wrote: cell, bases, the second lattice, tilts, shifts, spots and the geometry
/// (truthgeometry.h).
/// @return false with a reason, the series then as it was
bool readTruthFile(const QString& strFileName, SimulatedSeries& series, QString& strError);

/// The text of the .ed3d project.
QString projectText(const SimulatedSeries& series);

/// Name of a frame's file without folder; blanks cannot stand in a project.
QString frameFileName(const SimulatedSeries& series, int nFrame);

/// Writes frames, project, "hotpixels.txt" and truth file into the folder of the parameters.
/// @return false with the file and the reason at the first that cannot be written
bool writeSeries(const SimulatedSeries& series, QString& strError);

}  // namespace tessera
