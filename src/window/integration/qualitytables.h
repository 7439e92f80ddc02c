// Quality tables: shells, and what the intensities say of the symmetry.
#pragma once

#include "integration/integrationresult.h"
#include "window/integration/qualitytable.h"

#include <vector>

namespace tessera {

/// The shells of resolution with the whole in the last row.
QualityTable shellTable(const IntegrationResult& result);

/// How the intensities agree under each operation of the lattice, and the Laue classes, the best first.
std::vector<QualityTable> laueTables(const IntegrationResult& result);

/// Reflection conditions, by the ratio of what they forbid to what they allow, and space groups.
std::vector<QualityTable> spaceGroupTables(const IntegrationResult& result);

}  // namespace tessera
