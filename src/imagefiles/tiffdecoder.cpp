#include "imagefiles/tiffdecoder.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <new>

namespace tessera {

namespace {

/// Memory of libtiff for tags and tables, besides the unpacked pixels.
constexpr uint64_t g_nOwnMemory = uint64_t(64) << 20;

int keepError(TIFF*, void* pReason, const char* pszModule, const char* pszFormat, va_list args)
{
    QString& strReason = *static_cast<QString*>(pReason);
    if (strReason.isEmpty()) {  // the first message is the cause
        char szText[512];
        std::vsnprintf(szText, sizeof(szText), pszFormat, args);
        strReason = pszModule && *pszModule ? QString::fromUtf8(pszModule) + QStringLiteral(": ") : QString();
        strReason += QString::fromUtf8(szText).simplified();
    }
    return 1;  // the message goes nowhere else
}

int dropWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

tmsize_t writeNothing(thandle_t, void*, tmsize_t)
{
    return 0;
}

int closeNothing(thandle_t)
{
    return 0;
}

struct OptionsFree {
    void operator()(TIFFOpenOptions* p) const { TIFFOpenOptionsFree(p); }
};

}  // namespace

CTiffDecoder::CTiffDecoder(CTiffBytes& tiff, const TiffLayout& layout) : m_layout(layout), m_source{&tiff, 0}
{
    open();
    if (isGood()) {
        compare();
    }
}

CTiffDecoder::~CTiffDecoder()
{
    if (m_pTiff) {
        TIFFClose(m_pTiff);
    }
}

QString CTiffDecoder::reason() const
{
    return m_strReason.isEmpty() ? QStringLiteral("the packed pixels cannot be read") : m_strReason;
}

void CTiffDecoder::open()
{
    const auto fnRead = [](thandle_t pSource, void* p, tmsize_t nBytes) -> tmsize_t {
        auto& source = *static_cast<Source*>(pSource);
        QFile& file = source.pTiff->file();
        const qint64 nRead = nBytes > 0 && source.nPlace <= source.pTiff->fileSize() &&
                                     file.seek(qint64(source.nPlace))
                                 ? file.read(static_cast<char*>(p), nBytes)
                                 : 0;
        source.nPlace += nRead > 0 ? uint64_t(nRead) : 0;
        return nRead;
    };
    const auto fnSeek = [](thandle_t pSource, toff_t nPlace, int nFrom) -> toff_t {
        auto& source = *static_cast<Source*>(pSource);
        const toff_t nBase = nFrom == SEEK_CUR   ? source.nPlace
                             : nFrom == SEEK_END ? source.pTiff->fileSize()
                                                 : 0;
        return source.nPlace = nBase + nPlace;
    };
    const auto fnSize = [](thandle_t pSource) -> toff_t {
        return static_cast<Source*>(pSource)->pTiff->fileSize();
    };
    const std::unique_ptr<TIFFOpenOptions, OptionsFree> pOptions(TIFFOpenOptionsAlloc());
    if (!pOptions) {
        throw std::bad_alloc();
    }
    constexpr double dfLargest = 4e18;  // less than the greatest number of bytes
    const double dfMost = std::min(
        m_layout.planeBytes() + double(m_layout.nPackedBytes) + double(g_nOwnMemory), dfLargest);
    TIFFOpenOptionsSetMaxSingleMemAlloc(pOptions.get(), tmsize_t(dfMost));
    TIFFOpenOptionsSetErrorHandlerExtR(pOptions.get(), keepError, &m_strReason);
    TIFFOpenOptionsSetWarningHandlerExtR(pOptions.get(), dropWarning, nullptr);
    // h: only the directory of the page is read; m: no memory mapping, as a file that is shortened
    // meanwhile would crash the program.
    m_pTiff = TIFFClientOpenExt("", "rhm", &m_source, fnRead, writeNothing, fnSeek, closeNothing, fnSize,
                                nullptr, nullptr, pOptions.get());
    if (m_pTiff && !TIFFSetSubDirectory(m_pTiff, m_layout.nDirectory) && m_strReason.isEmpty()) {
        m_strReason = QStringLiteral("the directory of the page cannot be read");
    }
}

void CTiffDecoder::compare()
{
    uint32_t nWidth = 0, nHeight = 0;
    uint16_t nBits = 0, nSamples = 0, nPlanar = 0;
    TIFFGetField(m_pTiff, TIFFTAG_IMAGEWIDTH, &nWidth);
    TIFFGetField(m_pTiff, TIFFTAG_IMAGELENGTH, &nHeight);
    TIFFGetFieldDefaulted(m_pTiff, TIFFTAG_BITSPERSAMPLE, &nBits);
    TIFFGetFieldDefaulted(m_pTiff, TIFFTAG_SAMPLESPERPIXEL, &nSamples);
    TIFFGetFieldDefaulted(m_pTiff, TIFFTAG_PLANARCONFIG, &nPlanar);
    const bool bTiled = TIFFIsTiled(m_pTiff) != 0;
    const size_t nSegments = bTiled ? TIFFNumberOfTiles(m_pTiff) : TIFFNumberOfStrips(m_pTiff);
    const bool bSame = nWidth == uint32_t(m_layout.nWidth) && nHeight == uint32_t(m_layout.nHeight) &&
                       nBits == m_layout.nBits && nSamples == m_layout.nSamples &&
                       bTiled == m_layout.bTiled &&
                       (nPlanar == PLANARCONFIG_SEPARATE && nSamples > 1) == m_layout.bSeparate &&
                       nSegments == m_layout.vecPlace.size();
    const uint64_t nSegment = m_layout.rowBytes() * uint64_t(m_layout.rowsOf(0));
    const uint64_t nSegmentOfTiff = bTiled ? TIFFTileSize64(m_pTiff)
                                           : TIFFVStripSize64(m_pTiff, uint32_t(m_layout.rowsOf(0)));
    if (!bSame || (m_layout.pixels != TiffPixels::Picture && nSegment != nSegmentOfTiff)) {
        m_strReason = QStringLiteral("the tags of the page contradict one another");
    }
}

bool CTiffDecoder::readSegment(int nSegment, uint64_t nBytes, uint8_t* p)
{
    m_strReason.clear();
    const auto nRead = m_layout.bTiled
                           ? TIFFReadEncodedTile(m_pTiff, uint32_t(nSegment), p, tmsize_t(nBytes))
                           : TIFFReadEncodedStrip(m_pTiff, uint32_t(nSegment), p, tmsize_t(nBytes));
    if (nRead >= 0 && uint64_t(nRead) != nBytes && m_strReason.isEmpty()) {
        m_strReason = QStringLiteral("%1 of %2 bytes are packed in a strip").arg(nRead).arg(nBytes);
    }
    return nRead >= 0 && uint64_t(nRead) == nBytes;
}

bool CTiffDecoder::readPicture(uint32_t* p)
{
    m_strReason.clear();
    uint16_t nOrientation = ORIENTATION_TOPLEFT;
    TIFFGetFieldDefaulted(m_pTiff, TIFFTAG_ORIENTATION, &nOrientation);
    // The page is requested in its own orientation, so libtiff leaves the pixels as stored.
    return TIFFReadRGBAImageOriented(m_pTiff, uint32_t(m_layout.nWidth), uint32_t(m_layout.nHeight), p,
                                     nOrientation, 1) == 1;
}

}  // namespace tessera
