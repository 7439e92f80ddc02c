// Cell search, as run by the window and by the stage of the road.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>

#include <functional>

namespace tessera {

/// What to do with a cell that fits few of the reflections.
enum class PoorCell {
    Taken,         ///< take it like any other
    Told,          ///< take it, and explain in the log how to search again
    SearchedAgain  ///< search a few times, and take the best cell
};

/// How a cell is searched.
struct CellSearch {
    CellHuntingParameters range;  ///< method, and range of the edges
    double dfIndexThreshold =
        0.05;  ///< an index of a fitting reflection is at most so far from a whole number
    PoorCell poorCell = PoorCell::Taken;
    /// Host of the lattice service in the links of the log; used by a search that is not repeated.
    QString strLatticeHost = latticeServiceHost();
    int nJobs = 1;      ///< threads; the cell is the same for every number
    bool bSave = true;  ///< write the cell to the project's unit-cell file
    /// Called when the new cell is in force but the file still contains the former one.
    std::function<void()> fnBeforeSave = {};
};

/// The outcome of searchCell().
struct CellSearchResult {
    StageResult end;      ///< unless Finished, the former cell is still in force
    bool bSaved = false;  ///< the unit-cell file was written; if not, the log has the reason
};

/// Searches the cell of the selected reflections and puts it in force. If requested, and if a data set is
/// open, writes the project's unit-cell file.
CellSearchResult searchCell(DataSet& dataSet, const QList<Peak3D>& listSelection, const CellSearch& search,
                            CRunReport& report);

}  // namespace tessera
