// The result of an integration as tables for the log.
#pragma once

#include "integration/integrationresult.h"

#include <QStringList>

namespace tessera {

/// The resolution shells and their total; the agreement before scaling, after scaling and after rejection;
/// the agreement under the rotations of the lattice; the best Laue classes and space groups; and the number
/// of observations that each flag excludes. Unknown values are shown as a dash.
QStringList integrationTable(const IntegrationResult& result);

}  // namespace tessera
