// Numbers of the geometry by the names that the summary has for them.
#pragma once

#include <QString>

#include <vector>

namespace tessera {

/// The numbers (GeometryNumber) of a name: that of one number, or centre, stretching, ellipse, thirdOrder or
/// parabolic for both of theirs. The cell has no name, as it is what the others are fitted with.
/// @return none where no number has the name
std::vector<int> geometryNumbersOf(const QString& strName);

}  // namespace tessera
