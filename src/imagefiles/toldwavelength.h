// tellWavelength: reads a wavelength of electrons from a header and checks whether it can be trusted.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// Stores a wavelength in a header without changing it.
///
/// A wavelength with four decimals or fewer that may be the rounded one of a usual voltage gets a doubt
/// that names the voltage: 0.0251 for 200 kV is 0.08 % too long, and all d-spacings are then wrong by as
/// much. One above 0.05 Å, which is for X-rays, is not stored and becomes a doubt, since programs for
/// X-rays may write the setting of their beam line. Numbers not above 0 are ignored.
/// @param bytesValue  the number, Å
/// @param strSource   its name in the file
void tellWavelength(const QByteArray& bytesValue, const QString& strSource, FrameHeader& header);

}  // namespace tessera
