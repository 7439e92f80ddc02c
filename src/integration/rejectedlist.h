// The list of observations that take no part in the merged intensities, and why.
#pragma once

#include "integration/integrationresult.h"

#include <QByteArray>

namespace tessera {

/// A table with commas and a line of titles: h, k, l in the conventional setting, the number of the frame
/// from 1 where the reflection crosses the sphere, its place there in pixels, intensity and sigma on the
/// common scale (empty where it was not measured), for an outlier its deviation from its equivalents in
/// sigmas, and why, by the names of the flags. In the order of the passages.
QByteArray rejectedText(const IntegrationResult& result);

}  // namespace tessera
