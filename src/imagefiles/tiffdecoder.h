// CTiffDecoder: packed pixels of a TIFF file, unpacked by libtiff.
#pragma once

#include "imagefiles/tifflayout.h"

#include <memory>

struct tiff;

namespace tessera {

/// Opens a page once more with libtiff, for all packings that it was built with. What libtiff says of errors
/// is kept as the reason instead of going to the terminal; its warnings are dropped.
class CTiffDecoder {
public:
    /// @param tiff  stays open as long as this does
    CTiffDecoder(CTiffBytes& tiff, const TiffLayout& layout);
    ~CTiffDecoder();
    CTiffDecoder(const CTiffDecoder&) = delete;
    CTiffDecoder& operator=(const CTiffDecoder&) = delete;

    /// Whether the page is there and libtiff understands it as the layout does.
    [[nodiscard]] bool isGood() const { return m_pTiff && m_strReason.isEmpty(); }
    /// Why not, or why the last reading failed, in words.
    QString reason() const;

    /// Unpacks a segment; samples are in this machine's byte order.
    /// @param nBytes  exactly what it has to become
    [[nodiscard]] bool readSegment(int nSegment, uint64_t nBytes, uint8_t* p);
    /// Reads the page as a picture: width × height words, red in the lowest byte, then green and blue, rows
    /// and columns as stored.
    [[nodiscard]] bool readPicture(uint32_t* p);

private:
    struct Source {
        CTiffBytes* pTiff;
        uint64_t nPlace;
    };
    void open();
    void compare();

    const TiffLayout& m_layout;
    Source m_source;
    QString m_strReason;
    tiff* m_pTiff = nullptr;
};

}  // namespace tessera
