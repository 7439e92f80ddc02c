// Cubic model: a cubic cell of known edge, of which only the orientation is fitted.
#pragma once

#include "reciprocal/tiltrefinement.h"

#include <QList>

#include <optional>

namespace tessera {

constexpr double g_dfCubicEdge = 12.0;  ///< Å, garnet

/// A right-handed cubic basis a*, b*, c* (Å⁻¹): a* points along the polar angles θ and φ, and ψ turns b*
/// about it (Rodrigues' formula). Angles in radians, the edge in Å.
ReciprocalBasis cubicBasis(double dfTheta, double dfPhi, double dfPsi, double dfEdge = g_dfCubicEdge);

/// The same as a list.
QList<Vec3D> cubicBasisFromAngles(double dfTheta, double dfPhi, double dfPsi, double dfEdge = g_dfCubicEdge);

/// Fits the orientation of a cubic cell to measured points. The start is the cell in force: its direction of
/// a*, and the best of 1000 turns about it.
///
/// The residual of a reflection is the distance in Å⁻¹ of the model's point, by rounded indices, from the
/// record's own: the length of the model's vector alone does not depend on the orientation.
/// Of a left-handed cell, h and k of the reflections are exchanged with a* and b*.
/// @return the fitted basis; none, with a red line, without a cell in force
std::optional<ReciprocalBasis> testFindCubicCell(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                 CRunReport& report, double dfEdge = g_dfCubicEdge);

/// Fits the orientation of a cubic cell to the tilts of the curves fitted through the frames, as
/// refineUnitCellUsingFrameNo() does with a free cell; the start is the best of 10000 turns.
/// @return the fitted basis; none, with a red line, without a cell in force
std::optional<ReciprocalBasis> refineCubicUnitCell(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                   CRunReport& report,
                                                   const TiltRefinementOptions& options = {},
                                                   double dfEdge = g_dfCubicEdge);

}  // namespace tessera
