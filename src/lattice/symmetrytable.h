// Symmetry table: the Bravais types that a lattice fits, as lines of the log.
#pragma once

#include "lattice/latticesymmetry.h"

#include <QStringList>

namespace tessera {

/// A heading and one line for each type, in columns of equal width: Pearson's symbol, system and centring,
/// the constrained cell (Å, °), the misfits of edges and angles, the obliquity, and the new axes in terms
/// of the old ones, such as "b+c, a+c, a+b". The proposed type is marked with a star.
/// @param proposed  nothing where there is no proposal
QStringList symmetryTable(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed = std::nullopt);

/// The table as HTML in a monospaced font. Without its tags it is the plain text.
QString symmetryTableHtml(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed = std::nullopt);

}  // namespace tessera
