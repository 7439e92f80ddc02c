// TiffLayout: how the pixels of one page of a TIFF file are stored.
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
    Counts,   ///< counts of a detector, unchanged; of several samples the first one is used
    Grey,     ///< a grey picture of 8 bits; the pixels are 64 times its values
    Colour,   ///< a colour picture of 8 bits each for red, green and blue
    Picture,  ///< any other picture: palettes, one bit, other colour spaces, 16 bits for each colour
};

/// The layout of a page. tiffLayout() has checked that there are fewer than 2^31 pixels, that a segment
/// (strip or tile) and all segments together have fewer than 2^63 bytes, and that the segments lie within the
/// file.
struct TiffLayout {
    uint64_t nDirectory = 0;  ///< place of the directory
    TiffPixels pixels = TiffPixels::Counts;
    int nWidth = 0, nHeight = 0;  ///< as stored, before the orientation
    int nOrientation = 1;         ///< 1 to 8; 1: the first row is at the top, its first pixel at the left
    int nBits = 0;                ///< of a sample
    int nFormat = 1;              ///< 1 unsigned, 2 signed, 3 floating point
    int nSamples = 1;             ///< of a pixel
    bool bSeparate = false;       ///< the samples are stored in planes, one plane after another
    bool bWhiteIsZero = false;    ///< greater values are darker
    bool bTiled = false;          ///< segments are tiles, else strips
    bool bPlain = false;          ///< neither compressed nor with reversed bits
    int nSegmentWidth = 0, nSegmentHeight = 0;
    int nAcross = 0, nDown = 0;      ///< segments of a plane side by side and one below another
    std::vector<uint64_t> vecPlace;  ///< offsets of the segments in the file, plane by plane, row by row
    uint64_t nPackedBytes = 0;       ///< size of all segments in the file, at most the size of the file

    /// Number of planes.
    int planes() const { return bSeparate ? nSamples : 1; }
    /// Number of segments of one plane.
    uint64_t segmentsOfPlane() const { return uint64_t(nAcross) * uint64_t(nDown); }
    /// Number of segments of all planes.
    uint64_t segments() const { return segmentsOfPlane() * uint64_t(planes()); }
    /// Samples of a pixel that are stored side by side in a segment.
    int samplesInRow() const { return bSeparate ? 1 : nSamples; }
    /// Bytes of a row of a segment, unpacked.
    uint64_t rowBytes() const
    {
        return (uint64_t(nSegmentWidth) * uint64_t(samplesInRow()) * uint64_t(nBits) + 7) / 8;
    }
    /// Rows of the segments number `nRow` from the top. The last strip may have fewer than the others; tiles
    /// are always whole.
    int rowsOf(int nRow) const
    {
        return bTiled ? nSegmentHeight : std::min(nSegmentHeight, nHeight - nRow * nSegmentHeight);
    }
    /// Bytes of an unpacked plane, in floating point, as the numbers of a damaged file may overflow integers.
    double planeBytes() const
    {
        return double(rowBytes()) * nAcross * (bTiled ? double(nSegmentHeight) * nDown : nHeight);
    }
    /// Width and height as displayed, after the orientation.
    QSize size() const { return nOrientation < 5 ? QSize(nWidth, nHeight) : QSize(nHeight, nWidth); }
};

/// Reads and checks the layout of a page.
/// @param strReason  takes why the page cannot be read
/// @return nothing where it cannot be read
std::optional<TiffLayout> tiffLayout(CTiffBytes& tiff, const TiffDirectory& directory, QString& strReason);

}  // namespace tessera
