// Cell from CIF: reads the cell of a crystal from a CIF file.
#pragma once

#include "records/cellparameters.h"

#include <QString>

#include <optional>

namespace tessera {

/// Reads the cell from the first data block that has all six numbers. Standard uncertainties in brackets,
/// "12.14(2)", are dropped. Numbers may be quoted, or be in a loop, of which the first row is used.
///
/// @param pstrReason  may be null; takes on failure what is wrong, with the file's name
/// @return nothing where this is no regular file of at most 64 MB with six numbers that make a cell
/// Source: Hall, Allen & Brown (1991), Acta Cryst. A47, 655 (the syntax).
std::optional<CellParameters> cellFromCif(const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
