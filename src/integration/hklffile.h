// HKLF 4: the list of intensities that SHELX and its relatives read.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// A power of ten that brings the greatest of all intensities and sigmas to between 1000 and 9999.99: so the
/// columns of eight keep a blank between them. Where the sigmas of a tenth would be below 0.05, rounding to
/// hundredths would tell in them, and the factor is ten times as large; the columns may touch then.
/// @return 1 of an empty list
double hklfScale(const std::vector<ScaledIntensity>& listIntensity);

/// Lines of h, k, l (four columns each), intensity and sigma (F8.2), with a line of zeros as their end. No
/// sigma is written as less than 0.01, as 0 would be taken for no measurement.
///
/// @param dfScale  that intensities and sigmas are multiplied by
/// Source: G. M. Sheldrick, SHELX-97 manual, "HKLF".
QByteArray hklfText(const std::vector<ScaledIntensity>& listIntensity, double dfScale);

}  // namespace tessera
