// Known group: the space group that a table of known cells tells of a compound.
#pragma once

#include "integration/integrationresult.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Takes the known space group where the absences leave it as likely as the best one, which they often do:
/// P 3₁ 2 1 and P 3₂ 2 1, or groups with and without a centre, have the same. Where they speak against it, or
/// the Laue class does, the result stays as it is, and a warning says so.
///
/// @param strKnown  Hermann–Mauguin symbol or number; empty: nothing is done
void preferKnownGroup(const QString& strKnown, IntegrationResult& result, CRunReport& report);

}  // namespace tessera
