// Lattice points: what the peaks of a data set say of its lattice, as points and as the range of its edges.
#pragma once

#include "dataset/dataset.h"
#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// The mapped peaks of the frames, each by itself, that a lattice is searched with and judged by: neither
/// merged, which goes wrong where spots lie close, nor chosen by intensity. The peaks round the direct beam
/// are left out, and what is not a number.
///
/// Far out, where the crystal hardly scatters any more, most of what was hunted is noise. Twenty shells of
/// d* hold equally many points; from the outside those are left out whose density (points by d* · Δd*, the
/// area that frames cut out of a shell) lies below a quarter of the median of all shells.
///
/// @param dataSet  its peaks are mapped with the geometry in force: needsMapping() is false
/// @return Å⁻¹, laboratory frame at tilt 0; empty without mapped peaks
LatticePoints latticePoints(const DataSet& dataSet);

/// Where a peak stands in m_listPeakFrame.
struct PlaceOfPeak {
    int nFrame = 0;
    int nPeak = 0;  ///< in the list of the frame
};

/// The peaks that latticePoints() takes, in its order: what is said of each point is said of these.
std::vector<PlaceOfPeak> placesOfLatticePoints(const DataSet& dataSet);

/// The d* up to which the points are dense, as above; the largest where all shells are, or where there are
/// too few points to tell.
double denseDStar(std::vector<double> vecDStar);

/// The edges to look for, Å.
struct CellRange {
    double dfShortest = 2;  ///< no distance of atoms allows for less
    double dfLongest = 30;
};

/// The range of edges from the closest distances between spots: those of neighbours on the same frame, and
/// those of merged reflections, which also know the direction through the frames. A spot whose distance only
/// a twentieth of all spots fall short of counts, as some are hunted twice or belong to another crystal.
///
/// The inverse of the distance of spots is the spacing of net planes, which is shorter than the edge across
/// them: in the primitive cells of face- and body-centred lattices by 1.22, more in skew ones. With the error
/// of the distances the longest edge is put to 1.5 times that spacing.
///
/// @return the range of the pages where there are fewer than ten distances; those on frames do not count
/// where they belong to fewer than ten merged reflections
CellRange automaticCellRange(const DataSet& dataSet);

}  // namespace tessera
