// Former cell: keeps the unit cell that a search replaces, and compares it with the new one.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Copies the project's unit-cell file to the same name with "~" appended if it contains another cell than
/// the one in force, and says so in the log. An existing copy is kept if its cell explains more of the mapped
/// peaks. To be called before the file is replaced.
void keepFormerCell(const DataSet& dataSet, CRunReport& report);

/// A warning if the cell in force explains clearly fewer of the mapped peaks than a former cell: by a
/// twentieth of the fraction beyond chance, and by more than three standard deviations of the count. Else
/// empty.
/// @param listFormer  former a*, b*, c*, Å⁻¹; empty: there was none
QString tellPoorerCell(const DataSet& dataSet, const QList<Vec3D>& listFormer);

}  // namespace tessera
