#include "imagefiles/tifflayout.h"

#include <tiff.h>

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

constexpr uint64_t g_nMostPixels = uint64_t(std::numeric_limits<int>::max());

/// The greatest number of bytes that one packed byte can unpack to, which follows from the codes of a
/// compression. For compressions that can store a constant area of any size in a few bytes, it is more than
/// frames need.
uint64_t mostGrowth(uint64_t nCompression)
{
    switch (nCompression) {
        case COMPRESSION_NONE:
            return 1;
        case COMPRESSION_PACKBITS:
        case COMPRESSION_THUNDERSCAN:
        case COMPRESSION_NEXT:
            return 128;  // two bytes repeat one byte up to 128 times
        case COMPRESSION_JPEG:
        case COMPRESSION_OJPEG:
            return 1024;  // two codes of at least one bit make a block of 64 values of 12 bits
        case COMPRESSION_ADOBE_DEFLATE:
        case COMPRESSION_DEFLATE:
        case COMPRESSION_PIXARLOG:
            return 4 * 1040;  // two bits repeat 258 bytes; PixarLog makes up to four bytes of one
        case COMPRESSION_LZW:
            return 4096;  // a code of 12 bits makes no more bytes than there are codes
        default:
            return 40000;
    }
}

/// The numbers of a directory that describe the pixels.
struct Fields {
    uint64_t nWidth, nHeight, nBits, nFormat, nSamples, nCompression, nPhotometric;
    bool bOneSize;
};

Fields fieldsOf(CTiffBytes& tiff, const TiffDirectory& directory)
{
    const auto number = [&](TiffTag tag, uint64_t nDefault) {
        return tiff.wholeNumber(directory, tag, nDefault);
    };
    const std::vector<uint64_t> vecBits = tiff.wholeNumbers(directory.find(TiffTag::BitsPerSample), 16);
    const uint64_t nBits = vecBits.empty() ? 1 : vecBits.front(),
                   nSamples = number(TiffTag::SamplesPerPixel, 1);
    return {
        number(TiffTag::ImageWidth, 0),
        number(TiffTag::ImageLength, 0),
        nBits,
        number(TiffTag::SampleFormat, 1),
        nSamples,
        number(TiffTag::Compression, COMPRESSION_NONE),
        number(TiffTag::Photometric, nSamples >= 3 && nBits == 8 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK),
        std::count(vecBits.begin(), vecBits.end(), nBits) == std::ptrdiff_t(vecBits.size())};
}

TiffPixels pixelsOf(const Fields& fields)
{
    const bool bUnsigned = fields.nFormat == SAMPLEFORMAT_UINT;
    switch (fields.nPhotometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
            return !bUnsigned || fields.nBits > 8 ? TiffPixels::Counts
                   : fields.nBits == 8            ? TiffPixels::Grey
                   : fields.nBits == 1            ? TiffPixels::Picture
                                                  : TiffPixels::Counts;
        case PHOTOMETRIC_RGB:
            return bUnsigned && fields.nBits == 8 && fields.nSamples >= 3 ? TiffPixels::Colour
                                                                          : TiffPixels::Picture;
        case PHOTOMETRIC_CFA:  // one sample a pixel; the colour of its filter does not matter
            return TiffPixels::Counts;
        default:
            return TiffPixels::Picture;
    }
}

/// Why samples of this kind cannot be read; empty if they can.
QString unreadSamples(const Fields& fields, TiffPixels pixels)
{
    const bool bFloat = fields.nFormat == SAMPLEFORMAT_IEEEFP, bComplex = fields.nFormat > SAMPLEFORMAT_VOID;
    const bool bWholeBytes = fields.nBits == 8 || fields.nBits == 16 || fields.nBits == 32 ||
                             fields.nBits == 64;
    if (!fields.bOneSize || fields.nSamples < 1 || fields.nSamples > 65535) {
        return QStringLiteral("TIFF with samples of several sizes");
    }
    if (fields.nBits >= 1 && !bComplex &&
        (bFloat ? bWholeBytes && fields.nBits > 8
                : bWholeBytes || fields.nBits < 16 || pixels == TiffPixels::Picture) &&
        fields.nBits <= 64) {
        return {};
    }
    return QStringLiteral(
               "TIFF of %1 bits a sample%2; whole numbers of up to 16, 32 and 64 bits are read, and "
               "floating point of 16, 32 and 64")
        .arg(QString::number(fields.nBits), bComplex ? QStringLiteral(", complex")
                                            : bFloat ? QStringLiteral(", floating point")
                                                     : QString());
}

/// Fills in the size of the segments and how many there are.
/// @return false, with the reason, where the file gives an impossible size
bool fillSegments(CTiffBytes& tiff, const TiffDirectory& directory, TiffLayout& layout, QString& strReason)
{
    const uint64_t nWidth = uint64_t(layout.nWidth), nHeight = uint64_t(layout.nHeight);
    layout.bTiled = directory.find(TiffTag::TileWidth) && directory.find(TiffTag::TileLength);
    const uint64_t nAcross = layout.bTiled ? tiff.wholeNumber(directory, TiffTag::TileWidth, 0) : nWidth;
    const uint64_t nDown = layout.bTiled ? tiff.wholeNumber(directory, TiffTag::TileLength, 0)
                                         : std::min(nHeight, tiff.wholeNumber(
                                                                 directory, TiffTag::RowsPerStrip, nHeight));
    if (nAcross < 1 || nDown < 1 || nAcross > g_nMostPixels || nDown > g_nMostPixels / nAcross) {
        strReason = QStringLiteral("%1 of %2 x %3 pixels")
                        .arg(layout.bTiled ? QStringLiteral("tiles") : QStringLiteral("strips"))
                        .arg(nAcross)
                        .arg(nDown);
        return false;
    }
    layout.nSegmentWidth = int(nAcross);
    layout.nSegmentHeight = int(nDown);
    layout.nAcross = int((nWidth + nAcross - 1) / nAcross);
    layout.nDown = int((nHeight + nDown - 1) / nDown);
    return true;
}

QString segmentsName(const TiffLayout& layout)
{
    return layout.bTiled ? QStringLiteral("tiles") : QStringLiteral("strips");
}

/// Reads the places of the segments into the layout.
/// @return the packed lengths of the segments as the file gives them: fewer than segments, or none, where the
///         segments are not packed or there is one only; nothing, with the reason, where too few are given
std::optional<std::vector<uint64_t>> placesAndLengths(CTiffBytes& tiff, const TiffDirectory& directory,
                                                      bool bPacked, TiffLayout& layout, QString& strReason)
{
    const uint64_t nSegments = layout.segments();
    const auto values = [&](TiffTag tagTiles, TiffTag tagStrips) {
        const TiffEntry* const pEntry = directory.find(layout.bTiled ? tagTiles : tagStrips);
        return tiff.wholeNumbers(pEntry ? pEntry : directory.find(layout.bTiled ? tagStrips : tagTiles),
                                 nSegments);
    };
    layout.vecPlace = values(TiffTag::TileOffsets, TiffTag::StripOffsets);
    std::vector<uint64_t> vecBytes = values(TiffTag::TileByteCounts, TiffTag::StripByteCounts);
    if (layout.vecPlace.size() < nSegments) {
        strReason = QStringLiteral("places of %1 of %2 %3")
                        .arg(layout.vecPlace.size())
                        .arg(nSegments)
                        .arg(segmentsName(layout));
        return std::nullopt;
    }
    if (vecBytes.size() < nSegments && bPacked && nSegments > 1) {
        strReason = QStringLiteral("lengths of %1 of %2 %3")
                        .arg(vecBytes.size())
                        .arg(nSegments)
                        .arg(segmentsName(layout));
        return std::nullopt;
    }
    return vecBytes;
}

/// Finds where the segments lie. They must lie within the file and be long enough for their pixels.
/// @return false, with the reason, where they do not
bool placeSegments(CTiffBytes& tiff, const TiffDirectory& directory, uint64_t nCompression,
                   TiffLayout& layout, QString& strReason)
{
    const bool bPlain = nCompression == COMPRESSION_NONE;
    const auto vecBytes = placesAndLengths(tiff, directory, !bPlain, layout, strReason);
    if (!vecBytes) {
        return false;
    }
    const uint64_t nSegments = layout.segments();
    uint64_t nNeeded = 0, nSum = 0;  // end of the last segment in the file; bytes of all segments
    for (uint64_t i = 0; i < nSegments; ++i) {
        const uint64_t nRow = i % layout.segmentsOfPlane() / uint64_t(layout.nAcross);
        const uint64_t nPlace = layout.vecPlace[i];
        const uint64_t nUnpacked = layout.rowBytes() * uint64_t(layout.rowsOf(int(nRow)));
        const uint64_t nRest = tiff.fileSize() - std::min(tiff.fileSize(), nPlace);
        const uint64_t nTold = i < vecBytes->size() ? (*vecBytes)[i] : bPlain ? nUnpacked : nRest;
        // The length of a single strip follows from its rows. The length in the file is ignored, as some
        // writers leave it out or let it overflow.
        const uint64_t nBytes = bPlain && nSegments == 1 ? nUnpacked : nTold;
        if (nPlace == 0 || nBytes == 0 || (bPlain && nBytes < nUnpacked)) {
            strReason = QStringLiteral("%1 %2 of %3 has %4 of %5 bytes")
                            .arg(layout.bTiled ? QStringLiteral("tile") : QStringLiteral("strip"))
                            .arg(i + 1)
                            .arg(nSegments)
                            .arg(nPlace == 0 ? 0 : nBytes)
                            .arg(nUnpacked);
            return false;
        }
        const uint64_t nUsed = bPlain ? nUnpacked : nBytes;
        nNeeded = std::max(nNeeded, nUsed > std::numeric_limits<uint64_t>::max() - nPlace
                                        ? std::numeric_limits<uint64_t>::max()
                                        : nPlace + nUsed);
        nSum = std::min(tiff.fileSize(), nSum + std::min(tiff.fileSize(), nUsed));
    }
    layout.nPackedBytes = nSum;
    if (nNeeded > tiff.fileSize()) {
        strReason = QStringLiteral("truncated: %1 of %2 bytes").arg(tiff.fileSize()).arg(nNeeded);
        return false;
    }
    if (layout.planeBytes() * layout.planes() > double(nSum) * double(mostGrowth(nCompression))) {
        strReason = QStringLiteral("%1 x %2 pixels packed in %3 bytes")
                        .arg(layout.nWidth)
                        .arg(layout.nHeight)
                        .arg(nSum);
        return false;
    }
    return true;
}

}  // namespace

std::optional<TiffLayout> tiffLayout(CTiffBytes& tiff, const TiffDirectory& directory, QString& strReason)
{
    const Fields fields = fieldsOf(tiff, directory);
    if (fields.nWidth < 1 || fields.nHeight < 1 || fields.nWidth > g_nMostPixels ||
        fields.nHeight > g_nMostPixels / fields.nWidth) {
        strReason = QStringLiteral("%1 x %2 pixels; fewer than 2147483648 can be read")
                        .arg(fields.nWidth)
                        .arg(fields.nHeight);
        return std::nullopt;
    }
    TiffLayout layout;
    layout.nDirectory = directory.nPlace;
    layout.pixels = pixelsOf(fields);
    strReason = unreadSamples(fields, layout.pixels);
    if (!strReason.isEmpty()) {
        return std::nullopt;
    }
    layout.nWidth = int(fields.nWidth);
    layout.nHeight = int(fields.nHeight);
    layout.nBits = int(fields.nBits);
    layout.nFormat = fields.nFormat == SAMPLEFORMAT_INT || fields.nFormat == SAMPLEFORMAT_IEEEFP
                         ? int(fields.nFormat)
                         : SAMPLEFORMAT_UINT;
    layout.nSamples = int(fields.nSamples);
    layout.bWhiteIsZero = fields.nPhotometric == PHOTOMETRIC_MINISWHITE;
    layout.bSeparate = layout.nSamples > 1 && tiff.wholeNumber(directory, TiffTag::PlanarConfiguration,
                                                               PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    const uint64_t nOrientation = tiff.wholeNumber(directory, TiffTag::Orientation, 1);
    layout.nOrientation = nOrientation >= 1 && nOrientation <= 8 ? int(nOrientation) : 1;
    layout.bPlain = fields.nCompression == COMPRESSION_NONE &&
                    tiff.wholeNumber(directory, TiffTag::FillOrder, FILLORDER_MSB2LSB) == FILLORDER_MSB2LSB;
    if (!fillSegments(tiff, directory, layout, strReason) ||
        !placeSegments(tiff, directory, fields.nCompression, layout, strReason)) {
        return std::nullopt;
    }
    return layout;
}

}  // namespace tessera
