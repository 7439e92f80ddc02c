// List of the observations that were excluded from the merged intensities, with the reasons.
#pragma once

#include "integration/integrationresult.h"

#include <QByteArray>

namespace tessera {

/// What the observations were made on.
enum class ObservedOn {
    Frames,   ///< of one series
    Crystals  ///< that were merged: the frame of an observation is the number of its crystal
};

/// A table with commas and a line of titles: h, k, l in the conventional setting, the number of the frame
/// from 1 where the reflection crosses the sphere, its place there in pixels, intensity and sigma on the
/// common scale (empty where it was not measured), for an outlier its deviation from its equivalents in
/// sigmas, and why, by the names of the flags. In the order of the passages. Of crystals, the number of the
/// crystal stands in the place of frame and pixels.
QByteArray rejectedText(const IntegrationResult& result, ObservedOn on = ObservedOn::Frames);

}  // namespace tessera
