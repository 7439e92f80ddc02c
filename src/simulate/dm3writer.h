// encodeDm3: a frame as a DM3 tag file.
#pragma once

#include <QByteArray>

#include <vector>

namespace tessera {

/// The bytes of a DM3 file as a camera leaves it: a thumbnail first in the image list, named by the
/// image index of the thumbnail group, then the image as 32-bit signed integers. The tag structure
/// is big-endian; the data are little-endian, or big-endian when bBigEndianData is set.
QByteArray encodeDm3(const std::vector<float>& listPixel, int nWidth, int nHeight,
                     bool bBigEndianData = false);

}  // namespace tessera
