// Numbers of the geometry by their names in options and summaries.
#pragma once

#include <QString>

#include <vector>

namespace tessera {

/// The numbers (GeometryNumber) of a name: that of a single number, or "centre", "stretching", "ellipse",
/// "thirdOrder" or "parabolic" for a pair of numbers. The cell has no name, since it is always refined.
/// @return empty for an unknown name
std::vector<int> geometryNumbersOf(const QString& strName);

}  // namespace tessera
