#include "imagefiles/tiffpixels.h"

#include "imagefiles/filebuffer.h"
#include "imagefiles/tiffdecoder.h"
#include "imagefiles/tiffsamples.h"
#include "imaging/imageview.h"
#include "records/availablememory.h"
#include "records/shortmemory.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tessera {

namespace {

constexpr uint64_t g_nPiece = uint64_t(1) << 20;  ///< bytes read together, few enough to stay in the cache
constexpr double g_dfSmall = double(uint64_t(1)
                                    << 26);  ///< bytes; for fewer the available memory is not checked

/// Reads unpacked strips of whole rows. Contiguous strips are read together.
bool readStrips(CTiffBytes& tiff, const TiffLayout& layout, CTiffRows& rows)
{
    const uint64_t nRowBytes = layout.rowBytes();
    const int nTogether = int(std::clamp(g_nPiece / nRowBytes, uint64_t(1), uint64_t(layout.nHeight)));
    const std::shared_ptr<uint8_t> pBuffer = makeFileBuffer(size_t(nTogether) * nRowBytes);
    for (int nPlane = 0; nPlane < rows.planes(); ++nPlane) {
        const uint64_t* const pnPlace = layout.vecPlace.data() + nPlane * layout.nDown;
        for (int y = 0; y < layout.nHeight;) {
            int nStrip = y / layout.nSegmentHeight;
            const int nInStrip = y % layout.nSegmentHeight;
            const uint64_t nPlace = pnPlace[nStrip] + uint64_t(nInStrip) * nRowBytes;
            int nRows = layout.rowsOf(nStrip) - nInStrip;
            while (nRows < nTogether && nStrip + 1 < layout.nDown &&
                   pnPlace[nStrip + 1] == nPlace + uint64_t(nRows) * nRowBytes) {
                nRows += layout.rowsOf(++nStrip);
            }
            nRows = std::min(nRows, nTogether);
            if (!tiff.read(nPlace, uint64_t(nRows) * nRowBytes, pBuffer.get())) {
                return false;
            }
            rows.put(pBuffer.get(), 0, y, nRows, nPlane);
            y += nRows;
        }
    }
    return true;
}

/// Reads segment by segment through `fnRead(segment, bytes, target)`.
template <class FnRead>
bool readSegments(const TiffLayout& layout, CTiffRows& rows, FnRead fnRead)
{
    const std::shared_ptr<uint8_t> pBuffer = makeFileBuffer(layout.rowBytes() * uint64_t(layout.rowsOf(0)));
    int nSegment = 0;
    for (int nPlane = 0; nPlane < rows.planes(); ++nPlane) {
        for (int nDown = 0; nDown < layout.nDown; ++nDown) {
            for (int nAcross = 0; nAcross < layout.nAcross; ++nAcross) {
                const int nRows = layout.rowsOf(nDown);
                if (!fnRead(nSegment++, layout.rowBytes() * uint64_t(nRows), pBuffer.get())) {
                    return false;
                }
                rows.put(pBuffer.get(), nAcross * layout.nSegmentWidth, nDown * layout.nSegmentHeight, nRows,
                         nPlane);
            }
        }
    }
    return true;
}

bool readPlain(CTiffBytes& tiff, const TiffLayout& layout, float* pfImage, QString& strReason)
{
    CTiffRows rows(layout, tiff.isBigEndian() != (Q_BYTE_ORDER == Q_BIG_ENDIAN), pfImage);
    const bool bRead = layout.bTiled
                           ? readSegments(layout, rows,
                                          [&](int nSegment, uint64_t nBytes, uint8_t* p) {
                                              return tiff.read(layout.vecPlace[nSegment], nBytes, p);
                                          })
                           : readStrips(tiff, layout, rows);
    if (!bRead) {
        strReason = tiff.file().errorString();
    }
    return bRead;
}

bool readPacked(CTiffBytes& tiff, const TiffLayout& layout, float* pfImage, QString& strReason)
{
    CTiffDecoder decoder(tiff, layout);
    bool bRead = decoder.isGood();
    if (bRead && layout.pixels == TiffPixels::Picture) {
        static_assert(sizeof(uint32_t) == sizeof(float));
        const size_t nPixels = size_t(layout.nWidth) * size_t(layout.nHeight);
        const std::shared_ptr<uint8_t> pBuffer = makeFileBuffer(nPixels * sizeof(uint32_t));
        auto* const pnPixel = reinterpret_cast<uint32_t*>(pBuffer.get());
        bRead = decoder.readPicture(pnPixel);
        for (size_t i = 0; bRead && i < nPixels; ++i) {
            const uint32_t n = pnPixel[i], nRed = n & 0xff, nGreen = n >> 8 & 0xff, nBlue = n >> 16 & 0xff;
            pfImage[i] = float(19 * (nRed + 2 * nGreen) + 7 * nBlue);
        }
    } else if (bRead) {
        CTiffRows rows(layout, false, pfImage);
        bRead = readSegments(layout, rows, [&](int nSegment, uint64_t nBytes, uint8_t* p) {
            return decoder.readSegment(nSegment, nBytes, p);
        });
    }
    if (!bRead) {
        strReason = decoder.reason();
    }
    return bRead;
}

/// Reverses each row in place.
void mirror(CImgObj<float>& image)
{
    for (int y = 0; y < image.Height(); ++y) {
        float* const pfRow = viewOf(image).row(y);
        std::reverse(pfRow, pfRow + image.Width());
    }
}

/// Reverses the order of the rows in place.
void turnOver(CImgObj<float>& image)
{
    for (int y = 0; y < image.Height() / 2; ++y) {
        float* const pfRow = viewOf(image).row(y);
        std::swap_ranges(pfRow, pfRow + image.Width(), viewOf(image).row(image.Height() - 1 - y));
    }
}

/// Exchanges rows and columns.
std::unique_ptr<CImgObj<float>> transposed(const CImgObj<float>& image)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(image.Height(), image.Width())) {
        throw std::bad_alloc();
    }
    for (int y = 0; y < image.Height(); ++y) {
        for (int x = 0; x < image.Width(); ++x) {
            viewOf(*pImage).at(y, x) = viewOf(image).at(x, y);
        }
    }
    return pImage;
}

/// Rotates or mirrors an image as its orientation tells. The first stored row is the top for 1 and 2, the
/// bottom for 3 and 4, the left edge for 5 and 8, and the right edge for 6 and 7; the first column
/// likewise.
std::unique_ptr<CImgObj<float>> turned(std::unique_ptr<CImgObj<float>> pImage, int nOrientation)
{
    if (nOrientation > 4) {
        pImage = transposed(*pImage);
    }
    if (nOrientation == 2 || nOrientation == 3 || nOrientation == 6 || nOrientation == 7) {
        mirror(*pImage);
    }
    if (nOrientation == 3 || nOrientation == 4 || nOrientation == 7 || nOrientation == 8) {
        turnOver(*pImage);
    }
    return pImage;
}

}  // namespace

std::unique_ptr<CImgObj<float>> tiffImage(CTiffBytes& tiff, const TiffLayout& layout, QString& strReason)
{
    const double dfPixels = double(layout.nWidth) * layout.nHeight;
    const double dfBytes = dfPixels * 2 * sizeof(float) +
                           double(layout.rowBytes()) *
                               (layout.bPlain && !layout.bTiled ? 1 : layout.rowsOf(0));
    if (dfBytes > g_dfSmall && !hasMemoryFor(uint64_t(std::min(dfBytes, 1e18)))) {
        throw CShortMemory(
            QStringLiteral("%1: a page of %2 x %3 pixels")
                .arg(tiff.file().fileName(), QString::number(layout.nWidth), QString::number(layout.nHeight)),
            uint64_t(std::min(dfBytes, 1e18)));
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(layout.nWidth, layout.nHeight)) {
        throw std::bad_alloc();
    }
    if (layout.bSeparate && layout.pixels == TiffPixels::Colour) {
        pImage->Clear();  // planes are added to zeros
    }
    const bool bDirect = layout.bPlain && layout.pixels != TiffPixels::Picture;
    if (!(bDirect ? readPlain : readPacked)(tiff, layout, pImage->Data(), strReason)) {
        return nullptr;
    }
    return turned(std::move(pImage), layout.nOrientation);
}

}  // namespace tessera
