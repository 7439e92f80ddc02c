// Former cell: what becomes of the unit cell that a search replaces.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Copies the project's unit-cell file to its name with "~" behind where it holds another cell than the one
/// in force, and says so. What is kept there already stays where it explains more of the mapped peaks. To be
/// called before the file is replaced.
void keepFormerCell(const DataSet& dataSet, CRunReport& report);

/// A sentence where the cell in force explains clearly fewer of the mapped peaks than a former one: by a
/// twentieth of the share beyond chance, and by more than three standard deviations of the count. Else empty.
/// @param listFormer  a*, b*, c*, Å⁻¹; empty: there was none
QString tellPoorerCell(const DataSet& dataSet, const QList<Vec3D>& listFormer);

}  // namespace tessera
