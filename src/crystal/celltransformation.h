// Cell transformation: a 3×3 matrix applied to the committed basis, in reciprocal or in real space.
#pragma once

#include "crystal/cellmessage.h"
#include "geometry/matrix3.h"
#include "geometry/reciprocalbasis.h"
#include "records/runreport.h"

#include <optional>

namespace tessera {

/// Which basis a matrix is applied to.
enum class TransformationSpace {
    Reciprocal,  ///< rows of M·B, B the rows a*, b*, c*
    Real         ///< the rows of M make the new a, b, c from the old ones
};

/// Applies `matrix` to the found basis and says the new cell in the log.
///
/// A matrix of negative determinant turns the hand of the basis. In real space it is accepted, as it is
/// in reciprocal space, since an exchange of two axes is a sound wish; only a matrix with a determinant of
/// no more than 1e-7 in size is refused there as singular. A singular matrix in reciprocal space ends in a
/// warning, and the co-planar basis is the result.
///
/// @return the new basis; none without a found one, with a singular real-space matrix, or when a new vector
///         is not finite
std::optional<ReciprocalBasis> transformUnitCell(const std::optional<ReciprocalBasis>& basisFound,
                                                 const CMatrix3& matrix, TransformationSpace space,
                                                 CRunReport& report,
                                                 const QString& strLatticeHost = latticeServiceHost());

}  // namespace tessera
