// tellWavelength: a wavelength of electrons as a header writes it, and how far it can be trusted.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// Takes a wavelength into a header as it stands.
///
/// One with four decimals or fewer that a usual voltage's would be rounded to is told all the same, with a
/// doubt that names the voltage: 0.0251 for 200 kV is 0.08 % too long, and so is every d-spacing then. One
/// above 0.05 Å, of X-rays, is not told but doubted: programs for X-rays write what their station was left
/// at. What is no number above 0 is not told.
/// @param bytesValue  the number, Å
/// @param strSource   what it is called in the file
void tellWavelength(const QByteArray& bytesValue, const QString& strSource, FrameHeader& header);

}  // namespace tessera
