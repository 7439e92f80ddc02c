// Every kind of sample, as it may lie in a TIFF file, comes as the number that it is.
#include "imagefiles/tifffile.h"
#include "tests/imagefiles/testfiles.h"
#include "tests/imagefiles/tiffbuilder.h"

#include <qfloat16.h>
#include <tiffio.h>

#include <limits>

namespace tessera {

namespace {

class TiffSamples : public FileTest {};

constexpr int g_nWidth = 37, g_nHeight = 21, g_nSide = 16;  ///< of the image and of its tiles

/// Over the whole range of whole numbers, with an end of it.
template <class T>
std::vector<T> ramp(int nCount)
{
    std::vector<T> vec(static_cast<size_t>(nCount));
    for (size_t i = 0; i < vec.size(); ++i) {
        if constexpr (std::is_integral_v<T>) {
            // unsigned, as the difference may overflow
            vec[i] = static_cast<T>(static_cast<uint64_t>(std::numeric_limits<T>::max()) -
                                    i * i * 2654435761U);
        } else {
            vec[i] = T(float(i * i) / 8 - 1000.f);
        }
    }
    vec[1] = std::numeric_limits<T>::lowest();
    return vec;
}

/// The strips of `nRows` rows of an image, or its tiles, which may extend beyond its edges.
template <class T>
std::vector<std::vector<T>> segments(const T* pImage, bool bTiled, int nRows)
{
    std::vector<std::vector<T>> vecSegment;
    const int nCols = bTiled ? g_nSide : g_nWidth;
    for (int y = 0; y < g_nHeight; y += nRows) {
        for (int x = 0; x < g_nWidth; x += nCols) {
            std::vector<T>& vec = vecSegment.emplace_back();
            for (int i = y; i < (bTiled ? y + nRows : std::min(y + nRows, g_nHeight)); ++i) {
                for (int j = x; j < x + nCols; ++j) {
                    vec.push_back(i < g_nHeight && j < g_nWidth ? pImage[i * g_nWidth + j] : T(3));
                }
            }
        }
    }
    return vecSegment;
}

template <class FnExpected>
void expectPixels(const QString& strFile, FnExpected fnExpected)
{
    ImageList vecImage;
    QString strReason = "left over";
    ASSERT_TRUE(readTiffFrames(strFile, 0, 1, vecImage, strReason)) << qPrintable(strReason);
    EXPECT_EQ(strReason, "");
    EXPECT_EQ(readTiffHeader(strFile, 0).size, QSize(g_nWidth, g_nHeight));
    for (size_t i = 0; i < g_nWidth * g_nHeight; ++i) {
        ASSERT_EQ(vecImage.at(0)->Data()[i], fnExpected(i)) << i;
    }
}

/// Byte by byte, in strips and in tiles, with both byte orders and offsets of 4 and 8 bytes.
template <class T>
void readsPlain(const QString& strFile, int nFormat, float fFactor = 1)
{
    const std::vector<T> vec = ramp<T>(g_nWidth * g_nHeight);
    for (int nCase = 0; nCase < 8; ++nCase) {
        SCOPED_TRACE(testing::Message() << sizeof(T) << " bytes, case " << nCase);
        CTiffBuilder builder((nCase & 1) != 0, (nCase & 2) != 0);
        const bool bTiled = (nCase & 4) != 0;
        const int nRows = bTiled ? g_nSide : 4;
        std::vector<quint64> vecPlace;
        for (const std::vector<T>& vecSegment : segments(vec.data(), bTiled, nRows)) {
            QByteArray bytes;
            for (T value : vecSegment) {
                bytes += builder.element(value);
            }
            vecPlace.push_back(builder.add(bytes));
            builder.add(vecPlace.size() == 2 ? "gap" : "");  // the first strips follow one another
        }
        if (bTiled) {
            builder.tag(322, {g_nSide});
            builder.tag(323, {g_nSide});
        }
        builder.page(g_nWidth, g_nHeight, 8 * int(sizeof(T)), nFormat, vecPlace,
                     g_nWidth * sizeof(T) * quint64(nRows), nRows);
        builder.directory();
        writeBytes(strFile, builder.bytes());
        expectPixels(strFile, [&](size_t i) { return fFactor * float(vec[i]); });
    }
}

/// Written by libtiff, packed, in strips and in tiles, in planes where a pixel has several samples.
template <class T>
void readsPacked(const QString& strFile, int nFormat, int nCompression, int nPredictor, int nPlanes)
{
    const std::vector<T> vec = ramp<T>(g_nWidth * g_nHeight * nPlanes);
    for (const bool bTiled : {false, true}) {
        SCOPED_TRACE(testing::Message() << sizeof(T) << " bytes, packing " << nCompression << ' ' << bTiled);
        // libtiff itself writes floats in the other byte order wrongly behind its predictor for them.
        TIFF* const pTiff = TIFFOpen(qPrintable(strFile), bTiled && nPredictor < 3 ? "wb" : "wl8");
        const int nRows = bTiled ? g_nSide : 5;
        for (const auto& [nTag, nValue] :
             {std::pair(TIFFTAG_IMAGEWIDTH, g_nWidth),
              {TIFFTAG_IMAGELENGTH, g_nHeight},
              {TIFFTAG_BITSPERSAMPLE, 8 * int(sizeof(T))},
              {TIFFTAG_SAMPLEFORMAT, nFormat},
              {TIFFTAG_SAMPLESPERPIXEL, nPlanes},
              {TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE},
              {TIFFTAG_PHOTOMETRIC, nPlanes == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK},
              {TIFFTAG_COMPRESSION, nCompression},
              {bTiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, bTiled ? g_nSide : nRows},
              {bTiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, nRows}}) {
            TIFFSetField(pTiff, uint32_t(nTag), nValue);
        }
        if (nPredictor > 1) {
            TIFFSetField(pTiff, TIFFTAG_PREDICTOR, nPredictor);
        }
        uint32_t nSegment = 0;
        for (int nPlane = 0; nPlane < nPlanes; ++nPlane) {
            for (std::vector<T>& vecSegment :
                 segments(vec.data() + nPlane * g_nWidth * g_nHeight, bTiled, nRows)) {
                const auto nBytes = tmsize_t(vecSegment.size() * sizeof(T));
                ASSERT_EQ((bTiled ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(pTiff, nSegment++,
                                                                                  vecSegment.data(), nBytes),
                          nBytes);
            }
        }
        TIFFClose(pTiff);
        expectPixels(strFile, [&](size_t i) {
            const auto plane = [&](size_t n) { return float(vec[i + n * g_nWidth * g_nHeight]); };
            return nPlanes == 3 ? 19 * (plane(0) + 2 * plane(1)) + 7 * plane(2) : plane(0);
        });
    }
}

}  // namespace

TEST_F(TiffSamples, ComeAsTheyStand)
{
    const QString strFile = path("plain.tif");
    readsPlain<uint8_t>(strFile, 1, 64);
    readsPlain<int8_t>(strFile, 2);
    readsPlain<uint16_t>(strFile, 1);
    readsPlain<int16_t>(strFile, 2);
    readsPlain<uint32_t>(strFile, 1);
    readsPlain<int32_t>(strFile, 2);
    readsPlain<uint64_t>(strFile, 1);
    readsPlain<int64_t>(strFile, 2);
    readsPlain<qfloat16>(strFile, 3);
    readsPlain<float>(strFile, 3);
    readsPlain<double>(strFile, 3);
}

TEST_F(TiffSamples, AreUnpackedByLibtiff)
{
    const QString strFile = path("packed.tif");
    for (int nCompression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_PACKBITS,
                             COMPRESSION_ADOBE_DEFLATE, COMPRESSION_LZMA, COMPRESSION_ZSTD}) {
        if (!TIFFIsCODECConfigured(uint16_t(nCompression))) {
            continue;
        }
        const bool bPredictor = nCompression != COMPRESSION_NONE && nCompression != COMPRESSION_PACKBITS;
        readsPacked<uint16_t>(strFile, 1, nCompression, bPredictor ? 2 : 1, 1);
        readsPacked<int32_t>(strFile, 2, nCompression, 1, 1);
        readsPacked<float>(strFile, 3, nCompression, bPredictor ? 3 : 1, 1);
        readsPacked<double>(strFile, 3, nCompression, 1, 2);  // of two planes the first
        readsPacked<uint8_t>(strFile, 1, nCompression, 1, 3);
    }
}

}  // namespace tessera
