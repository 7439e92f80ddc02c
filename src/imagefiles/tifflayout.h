// TiffLayout: how the pixels of one page of a TIFF file lie in it.
#pragma once

#include "imagefiles/tiffdirectory.h"

#include <QSize>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace tessera {

/// What pixels are made of.
enum class TiffPixels {
    Counts,   ///< values as they stand, of the first sample where there are several
    Grey,     ///< 8 bits of a picture: 64 times the value
    Colour,   ///< red, green and blue of 8 bits each
    Picture,  ///< anything else for eyes: palettes, one bit, other spaces of colour, 16 bits a colour
};

/// Sizes are checked: pixels are fewer than 2^31, a segment (strip or tile) and all of them have fewer bytes
/// than 2^63, and the segments lie within the file.
struct TiffLayout {
    uint64_t nDirectory = 0;  ///< place of the directory
    TiffPixels pixels = TiffPixels::Counts;
    int nWidth = 0, nHeight = 0;  ///< as stored, before the orientation
    int nOrientation = 1;         ///< 1 to 8; 1 has the first row on top, its first pixel at the left
    int nBits = 0;                ///< of a sample
    int nFormat = 1;              ///< 1 unsigned, 2 signed, 3 floating point
    int nSamples = 1;             ///< of a pixel
    bool bSeparate = false;       ///< samples stand in planes, one after another
    bool bWhiteIsZero = false;
    bool bTiled = false;
    bool bPlain = false;  ///< neither packed nor with reversed bits
    int nSegmentWidth = 0, nSegmentHeight = 0;
    int nAcross = 0, nDown = 0;      ///< segments of a plane
    std::vector<uint64_t> vecPlace;  ///< of the segments in the file, plane by plane, row by row
    uint64_t nPackedBytes = 0;       ///< all of them as they lie in the file, no more than the file has

    /// Samples that stand side by side in a segment.
    int samplesInRow() const { return bSeparate ? 1 : nSamples; }
    uint64_t rowBytes() const
    {
        return (uint64_t(nSegmentWidth) * uint64_t(samplesInRow()) * uint64_t(nBits) + 7) / 8;
    }
    /// Rows of the `nRow`-th segments from the top: the last strip may be lower, tiles are whole.
    int rowsOf(int nRow) const
    {
        return bTiled ? nSegmentHeight : std::min(nSegmentHeight, nHeight - nRow * nSegmentHeight);
    }
    /// Of a plane unpacked; in floating point, as what a damaged file says may be beyond any whole number.
    double planeBytes() const
    {
        return double(rowBytes()) * nAcross * (bTiled ? double(nSegmentHeight) * nDown : nHeight);
    }
    QSize size() const { return nOrientation < 5 ? QSize(nWidth, nHeight) : QSize(nHeight, nWidth); }
};

/// @param strReason  why the page cannot be read, in words
std::optional<TiffLayout> tiffLayout(CTiffBytes& tiff, const TiffDirectory& directory, QString& strReason);

}  // namespace tessera
