// Outsiders: reflections that lie outside the wedge that the series measured.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/peak3d.h"

#include <QList>

#include <optional>

namespace tessera {

/// Drops the reflections outside the wedge between the first and the last tilt (degrees), less a margin of
/// 2 degrees at both ends. Does nothing without tilts or without a cell.
void removeOutsiderReflections(QList<Peak3D>& listPeak, const QList<double>& listOverallTilt,
                               const std::optional<ReciprocalBasis>& basis);

}  // namespace tessera
