// FloatToByteLog: bytes for display that rise with the logarithm of the value.
#pragma once

namespace tessera {

/// Maps v in [fLow, fHigh] to the bytes 0 to 255 by log1p(v − fLow) ÷ log1p(fHigh − fLow), truncated and cut
/// off at both ends: one count above the dark end is told from none, and a beam of 60 000 is not all white.
///
/// Goes through a table of where each byte begins, which gives each value the byte that the double-precision
/// formula gives its limit. A sample that is not a number gives 0. Without a range (fHigh not above fLow) all
/// are 0.
/// @return 1, or 0 for a null buffer
int FloatToByteLog(const float* pSource, unsigned char* pTarget, int n, float fLow, float fHigh);

}  // namespace tessera
