// HKLF 4 file: the list of intensities that SHELX and related programs read.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// The scale factor of the file: the power of ten that brings the greatest intensity or sigma to between 1000
/// and 9999.99, so that the columns of eight characters stay separated by a blank. If a tenth of the sigmas
/// would be below 0.05, where rounding to hundredths is noticeable, the factor is ten times as large, and the
/// columns may touch.
/// @return 1 for an empty list
double hklfScale(const std::vector<ScaledIntensity>& listIntensity);

/// The contents of the file: lines of h, k, l (four columns each), intensity and sigma (F8.2), ended by a
/// line of zeros. Sigmas are at least 0.01, since 0 would mean that the reflection was not measured.
///
/// @param dfScale  factor of intensities and sigmas
/// Source: G. M. Sheldrick, SHELX-97 manual, "HKLF".
QByteArray hklfText(const std::vector<ScaledIntensity>& listIntensity, double dfScale);

}  // namespace tessera
