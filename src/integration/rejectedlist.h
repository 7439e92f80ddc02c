// List of the observations that were excluded from the merged intensities, with the reasons.
#pragma once

#include "integration/integrationresult.h"

#include <QByteArray>

namespace tessera {

/// The list as CSV with a header line, in the order of the passages: h, k, l in the conventional setting,
/// number of the frame (from 1) on which the reflection crosses the Ewald sphere, place on it in pixels,
/// intensity and sigma on the common scale (empty if it was not measured), deviation from the equivalents in
/// sigmas (for outliers), and the names of its flags.
QByteArray rejectedText(const IntegrationResult& result);

}  // namespace tessera
