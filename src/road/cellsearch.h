// Cell search: the search for a cell as the window and the stage of the road run it.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>

#include <functional>

namespace tessera {

/// What becomes of a cell that few of the reflections fit.
enum class PoorCell {
    Taken,         ///< as any other
    Told,          ///< taken, and the log says how to search again
    SearchedAgain  ///< the best of a few searches is taken
};

/// How a cell is searched.
struct CellSearch {
    CellHuntingParameters range;  ///< method, and range of the edges
    /// How far the index of a reflection that fits may lie from a whole number.
    double dfIndexThreshold = 0.05;
    PoorCell poorCell = PoorCell::Taken;
    /// Of the links in the log, of a search without repetition.
    QString strLatticeHost = latticeServiceHost();
    int nJobs = 1;                            ///< threads; the cell is the same for every number
    bool bSave = true;                        ///< a cell that is found goes into the project's unit-cell file
    std::function<void()> fnBeforeSave = {};  ///< with the new cell in force, while the file has the former
};

struct CellSearchResult {
    StageResult end;      ///< but for Finished the former cell stands
    bool bSaved = false;  ///< the project's unit-cell file holds the cell; the log has why it does not
};

/// Searches the cell of the selected reflections, commits it and, if that is wanted and a data set is open,
/// writes the project's unit-cell file.
CellSearchResult searchCell(DataSet& dataSet, const QList<Peak3D>& listSelection, const CellSearch& search,
                            CRunReport& report);

}  // namespace tessera
