// The cell of a crystal as CIF files tell it.
#pragma once

#include "records/cellparameters.h"

#include <QString>

#include <optional>

namespace tessera {

/// Reads the six numbers of the cell out of the first data block that has them all. Standard uncertainties in
/// brackets, "12.14(2)", are left out; numbers may stand in quotes, or in a loop, of which the first row
/// counts.
///
/// @param pstrReason  may be null; on failure what is wrong, with the file's name
/// @return none for anything but a regular file of 64 MB at the most with six numbers that make a cell
/// Source: Hall, Allen & Brown (1991), Acta Cryst. A47, 655 (the syntax).
std::optional<CellParameters> cellFromCif(const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
