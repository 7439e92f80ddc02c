// Reflection lines: an .hkl file of intensities, and the cell that stands beside it.
#pragma once

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// A line of an HKLF 4 file.
struct ReflectionLine {
    std::array<int, 3> anIndex{};
    double dfIntensity = 0;
    double dfSigma = 0;
};

/// Reads lines of the columns 3I4, 2F8 up to a line 0 0 0 or the end. What follows the columns is not read.
/// @return nothing, with a reason, at a line that has no such numbers, or without the line 0 0 0
std::optional<std::vector<ReflectionLine>> readReflectionLines(const QString& strFileName, QString& strError);

/// The cell of an .ins (CELL) or .cif (_cell_length_a and so on), Å and degrees; standard errors in brackets
/// are left aside.
/// @return nothing where the file does not tell all six
std::optional<std::array<double, 6>> readCellOfStructureFile(const QString& strFileName);

}  // namespace tessera
