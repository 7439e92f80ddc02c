// Cell message: the log line of a unit cell, with the link that tests its lattice type.
#pragma once

#include "records/vec3d.h"

#include <QList>
#include <QString>

namespace tessera {

/// Host of the lattice-symmetry service that links go to unless told otherwise: a start value for a setting
/// of the user's.
QString latticeServiceHost();

/// "TITLE: a=… Å, b=… Å, c=… Å, α=…°, β=…°, γ=…°, V=… Å³" with the title "Found unit cell",
/// "Transformed unit cell" or the like. Lengths in Å, angles in degrees.
QString unitCellText(const QString& strTitle, double a, double b, double c, double alpha, double beta,
                     double gamma);

/// HTML: a line break, `strText`, and the link "Test lattice type" with the six parameters, format g.
QString latticeLinkHtml(const QString& strText, double a, double b, double c, double alpha, double beta,
                        double gamma, const QString& strHost = latticeServiceHost());

/// Both in one for a basis a*, b*, c* in Å⁻¹; an empty text if the vectors are co-planar or not three.
QString unitCellHtml(const QString& strTitle, const QList<Vec3D>& listCell,
                     const QString& strHost = latticeServiceHost());

}  // namespace tessera
