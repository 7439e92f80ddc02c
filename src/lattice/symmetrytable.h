// Symmetry table: the Bravais types that a lattice fits, as lines of the log.
#pragma once

#include "lattice/latticesymmetry.h"

#include <QStringList>

namespace tessera {

/// A heading and a line for each type, in columns of equal width: Pearson's symbol, system and centring, the
/// constrained cell (Å, °), the misfits of edges and angles, the obliquity, and the transformation as
/// new axes of old ones, such as "b+c, a+c, a+b". The one that is proposed has a star.
/// @param proposed  none where there is no proposal
QStringList symmetryTable(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed = std::nullopt);

/// The same in a typeface of equal widths; without its tags it is plain text.
QString symmetryTableHtml(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed = std::nullopt);

}  // namespace tessera
