// Columns of known cells: where the columns of a table of cells are in a line, and in which units.
#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace tessera {

/// Where the columns of a table of known cells are in a line, and in which units its numbers are.
struct KnownCellColumns {
    /// What is in a column, in the order of a table without a head.
    enum Column { Name, A, B, C, Alpha, Beta, Gamma, Symmetry, Formula, ColumnCount };
    static const int g_nNeeded = Symmetry;  ///< columns before this one are in each line: name and cell

    std::array<int, ColumnCount> anPlace = {};       ///< index of each Column in a line; -1: not there
    std::array<double, ColumnCount> adfFactor = {};  ///< from its numbers to Å or degrees
};

/// The columns of a table without a head, in Å and degrees.
KnownCellColumns plainColumns();

/// Finds the columns by the words of a head, in Å and degrees. If a word occurs twice its first column
/// counts.
/// @return nothing if name and the six numbers are not all in it: it is no head
std::optional<KnownCellColumns> columnsOfHead(const QStringList& listPart);

/// Takes the units of lengths and angles that a head tells.
/// @param columns  of this head
/// @return the word of the head whose unit is not known; empty if all are known
QString takeUnits(const QStringList& listPart, KnownCellColumns& columns);

}  // namespace tessera
