// The tables of a report.
#pragma once

#include "road/htmlpage.h"
#include "road/roadstate.h"

namespace tessera {

/// Each stage with its judgement (a coloured word and a sentence with the figure) and its time.
void writeJudgements(CHtmlPage& page, const RoadResults& results);
/// The cell as found, as refined and of the intensities, with standard errors.
void writeCells(CHtmlPage& page, const RoadResults& results);
/// The Bravais types that the lattice fits.
void writeLattice(CHtmlPage& page, const LatticeAnalysis& lattice);
/// The numbers of the geometry before and after its refinement.
void writeGeometry(CHtmlPage& page, const GeometryRefinement& refinement);
/// The resolution shells and their total.
void writeShells(CHtmlPage& page, const IntegrationResult& result);
/// Rotations, Laue classes, reflection conditions and space groups with their probabilities.
void writeSymmetry(CHtmlPage& page, const IntegrationResult& result);
/// All parameters as the stages used them.
void writeParameters(CHtmlPage& page, const RoadState& state);
/// The files that were written, with their sizes.
void writeFiles(CHtmlPage& page, const RoadState& state);

/// A number with its standard error in units of the last digit, from 2 to 19: "12.345(6)". If the error is
/// not known, the number alone with three decimals.
QString withError(double dfValue, double dfError);

/// The cell as one text, "10.251(3) 10.26(1) … Å³": a, b, c in Å and the angles in degrees.
QString cellText(const CellParameters& cell, const CellParameters& errors);

}  // namespace tessera
