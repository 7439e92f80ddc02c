// Lattice hunting: a cell search by difference vectors, by directions, or by the better of both.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "lattice/latticefit.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QLocale>

namespace tessera {

/// A lattice that was found, and how many of the points it explains.
struct LatticeCandidate {
    LatticeBasis basis;
    LatticeFit fit;

    double volume() const;  ///< Å³
    /// Share of the points beyond what chance gives, by what it leaves over: 0 of chance, 1 of all points.
    double honestShare() const;
};

/// "80.6% of 5097 peaks fit, by chance 6.5%".
QString latticeFitText(const LatticeFit& fit, const QLocale& locale = QLocale());

/// Makes the lattice the cell that was found and puts it in force, with a line of the log.
/// @return failed, with the former cell in force, for a basis that is none
RunOutcome commitLattice(DataSet& dataSet, const LatticeBasis& found, CRunReport& report,
                         const QString& strLatticeHost = latticeServiceHost());

/// Whether the first candidate is to be taken rather than the second: that of the greater honest share; but
/// where the shares are about equal, within a twentieth, and one cell has at least 1.5 times the volume of
/// the other, as supercells have, then the smaller one.
bool isBetter(const LatticeCandidate& candidate, const LatticeCandidate& other);

/// The range of the parameters; with m_bAutoRange that of automaticCellRange(), rounded as the page does.
CellHuntingParameters withRange(CellHuntingParameters parameters, const DataSet& dataSet);

/// Searches the cell by the method of the parameters and commits it.
///
/// Difference vectors work on the selected reflections, as runCheckedCellHunting() does it. Directions work
/// on all peaks of the frames (latticePoints()), and where they explain less than half of them, again with a
/// longer and a shorter range. Of both the better candidate by its fit to these peaks is taken.
///
/// On success m_listCellFound and m_listCell hold a*, b*, c* (Å⁻¹, laboratory frame), the log the direct cell
/// and how much each candidate explains; saveProjectCell() belongs after it. Otherwise the former cell stays.
/// @param dfIndexThreshold  as in the indexing
/// @param nJobs             threads; the cell is the same for every number
/// @return refused where what the method works on is not there; failed where there is no cell
RunOutcome runLatticeHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                             const CellHuntingParameters& parameters, double dfIndexThreshold,
                             CRunReport& report, int nJobs = 1,
                             const QString& strLatticeHost = latticeServiceHost());

}  // namespace tessera
