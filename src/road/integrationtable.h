// The tables of an integration for the log.
#pragma once

#include "integration/integrationresult.h"

#include <QStringList>

namespace tessera {

/// The shells of resolution with all of them below, the agreement before scaling, after it and after
/// rejection, the rotations of the lattice with how well the intensities have them, the best Laue classes and
/// space groups, and how many observations each flag keeps out. What is not known is a dash.
QStringList integrationTable(const IntegrationResult& result);

}  // namespace tessera
