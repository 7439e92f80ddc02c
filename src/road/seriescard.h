// SeriesCard: an overview of a series, for a list of recent series.
#pragma once

#include "records/cellparameters.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// Name, frames, cell and lattice, read from the project file and its side files; frames are not read.
struct SeriesCard {
    bool bThere = false;  ///< the project file, or the first frame, exists
    QString strName;      ///< see displayName()
    QString strFolder;    ///< absolute path of the folder of the first file
    int nFrames = 0;      ///< frames of the project after the choice of frames, or number of files
    std::optional<CellParameters> cell;  ///< none if no cell was found yet
    QString strLattice;  ///< Pearson symbol and lattice system: "oC, orthorhombic"; empty without a cell
};

/// Makes the overview of a series.
///
/// The cell is that of the unit-cell file, which is also read on opening, or else that of the driver's
/// summary. The lattice is the one that the summary proposes for this cell, as it takes absent reflections
/// into account; without a summary it is the highest symmetry that fits the cell alone.
/// @param listFile  a project, or frames; values that cannot be read stay empty
SeriesCard seriesCard(const QStringList& listFile);

}  // namespace tessera
