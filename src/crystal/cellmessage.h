// Cell message: the log line of a unit cell, with the link that tests its lattice type.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/cellparameters.h"

#include <QString>

namespace tessera {

/// Host of the lattice-symmetry service that links go to unless told otherwise: a start value for a setting
/// of the user's.
QString latticeServiceHost();

/// "TITLE: a=… Å, b=… Å, c=… Å, α=…°, β=…°, γ=…°, V=… Å³" with the title "Found unit cell",
/// "Transformed unit cell" or the like.
QString unitCellText(const QString& strTitle, const CellParameters& cell);

/// HTML: a line break, `strText`, and the link "Test lattice type" with the six parameters, format g.
QString latticeLinkHtml(const QString& strText, const CellParameters& cell,
                        const QString& strHost = latticeServiceHost());

/// Both in one for a basis; an empty text if the vectors are co-planar.
QString unitCellHtml(const QString& strTitle, const ReciprocalBasis& basis,
                     const QString& strHost = latticeServiceHost());

}  // namespace tessera
