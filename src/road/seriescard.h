// SeriesCard: what a list of series says of one of them without opening it.
#pragma once

#include "records/cellparameters.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// Read from the project file and from what stands beside it; no frame is touched.
struct SeriesCard {
    bool bThere = false;                 ///< the project file, or the first of some frames
    QString strName;                     ///< as displayName() has it
    QString strFolder;                   ///< absolute, of the first file
    int nFrames = 0;                     ///< of the project as it is opened, or the number of files
    std::optional<CellParameters> cell;  ///< none where no cell was found yet
    QString strLattice;  ///< Pearson's symbol and the system: "oC, orthorhombic"; empty without a cell
};

/// Looks at a series that was opened before.
///
/// The cell is that of the unit-cell file, which opening takes, too; without one that of the summary that the
/// driver wrote. The lattice is the one that the summary of a run proposes for this very cell, which knows
/// what the intensities say of centring, and else the highest symmetry that the cell alone fits.
/// @param listFile  a project, or frames; what cannot be read of it stays empty
SeriesCard seriesCard(const QStringList& listFile);

}  // namespace tessera
