// What the tags of a DM3 file tell of the microscope.
#pragma once

#include "imagefiles/dm3file.h"

namespace tessera {

struct Dm3Calibration {
    double dfKilovolts = 0;  ///< accelerating voltage, kV; 0 when the file does not tell it
    double dfPixelSize =
        0;  ///< of a pixel in reciprocal space, Å⁻¹; 0 when it is not told, or told of an image
};

/// Reads the voltage ("Microscope Info", "Voltage", in volts) and the scale of the image's first dimension,
/// whose unit is 1/nm or 1/Å in a calibrated diffraction pattern. Any content is safe.
Dm3Calibration dm3Calibration(const DM3File& file);

}  // namespace tessera
