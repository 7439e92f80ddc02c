// CTiffDecoder: unpacks pixels of a TIFF file by libtiff.
#pragma once

#include "imagefiles/tifflayout.h"

#include <memory>

struct tiff;

namespace tessera {

/// Opens a page again with libtiff, for all compressions that libtiff supports. Its error messages are kept
/// as the reason instead of being printed; its warnings are ignored.
class CTiffDecoder {
public:
    /// @param tiff    must stay open as long as the object exists
    /// @param layout  of the page; must outlive the object
    CTiffDecoder(CTiffBytes& tiff, const TiffLayout& layout);
    /// Closes the page.
    ~CTiffDecoder();
    CTiffDecoder(const CTiffDecoder&) = delete;
    CTiffDecoder& operator=(const CTiffDecoder&) = delete;

    /// Whether libtiff has opened the page and understands it as the layout does.
    [[nodiscard]] bool isGood() const { return m_pTiff && m_strReason.isEmpty(); }
    /// Why it has not, or why the last reading failed.
    QString reason() const;

    /// Unpacks a segment. The samples are in the byte order of this machine.
    /// @param nBytes  exactly the length of the unpacked segment
    [[nodiscard]] bool readSegment(int nSegment, uint64_t nBytes, uint8_t* p);
    /// Reads the page as a picture: width × height words, red in the lowest byte, then green and blue, with
    /// rows and columns as stored.
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
