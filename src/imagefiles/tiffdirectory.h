// TiffDirectory: the tags of an image file directory of a TIFF file.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace tessera {

/// The tags that are used, by their numbers in TIFF revision 6.0 (1992) and, from 32768 on, in the lists of
/// registered and private tags.
enum class TiffTag : uint16_t {
    NewSubfileType = 254,
    SubfileType = 255,
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Compression = 259,
    Photometric = 262,
    FillOrder = 266,
    ImageDescription = 270,
    StripOffsets = 273,
    Orientation = 274,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    XResolution = 282,
    YResolution = 283,
    PlanarConfiguration = 284,
    Software = 305,
    TileWidth = 322,
    TileLength = 323,
    TileOffsets = 324,
    TileByteCounts = 325,
    SampleFormat = 339,
    Sis = 33560,
    FeiSfeg = 34680,
    FeiHelios = 34682,
    Tvips = 37706,
    DmUnitX = 65003,
    DmUnitY = 65004,
    DmScaleX = 65009,
    DmScaleY = 65010,
};

/// A tag and the place of its values, which is within the file.
struct TiffEntry {
    uint16_t nTag, nType;
    uint64_t nCount, nPlace;
    std::array<char, 8> aValue;  ///< the values themselves, if they are in the directory
    bool bInside;                ///< the values are in the directory
};

/// The directory of a page.
struct TiffDirectory {
    uint64_t nPlace = 0;  ///< place of the directory in the file
    uint64_t nNext = 0;   ///< place of the next one, 0 after the last
    uint64_t nBytes = 0;  ///< length of the directory
    std::vector<TiffEntry> vecEntry;

    const TiffEntry* find(TiffTag tag) const;  ///< a tag; null when there is none
};

/// A TIFF file opened for reading, of either byte order and either size of offsets. Nothing in the file is
/// trusted: values outside the file are treated as missing.
class CTiffBytes {
public:
    /// A file that is not open yet.
    explicit CTiffBytes(const QString& strFileName) : m_file(strFileName) {}
    /// Opens the file and reads its header.
    /// @return false with the reason
    [[nodiscard]] bool open(QString& strReason);

    /// The file, for libtiff.
    QFile& file() { return m_file; }
    /// Length of the file, bytes.
    uint64_t fileSize() const { return m_nSize; }
    /// Whether the file is big-endian.
    bool isBigEndian() const { return m_bBigEndian; }
    /// Place of the first directory.
    uint64_t firstDirectory() const { return m_nFirst; }

    /// Reads `nBytes` bytes; empty when the file has fewer.
    QByteArray bytesAt(uint64_t nPlace, uint64_t nBytes);
    /// Reads `nBytes` bytes into `p`.
    /// @return false when the file has fewer
    bool read(uint64_t nPlace, uint64_t nBytes, uint8_t* p);
    /// The whole number of 1, 2, 4 or 8 bytes at `p` in the byte order of the file.
    uint64_t number(const char* p, int nBytes) const;

    /// Reads the directory at a place; nothing where there is no valid one.
    std::optional<TiffDirectory> directory(uint64_t nPlace);
    /// The first `nMost` values of a tag of whole numbers; fewer where it has fewer, and none when it is
    /// missing or of another type.
    std::vector<uint64_t> wholeNumbers(const TiffEntry* pEntry, uint64_t nMost);
    /// The first value of a tag of whole numbers, or the default.
    uint64_t wholeNumber(const TiffDirectory& directory, TiffTag tag, uint64_t nDefault);
    /// The first value of a tag of any numbers; NaN when it is missing.
    double real(const TiffDirectory& directory, TiffTag tag);
    /// The value of a tag of text or bytes, up to the first NUL and at most 1 MiB.
    QByteArray text(const TiffDirectory& directory, TiffTag tag);

private:
    /// The first bytes of the values of a tag.
    QByteArray valueBytes(const TiffEntry& entry, uint64_t nBytes);

    QFile m_file;
    uint64_t m_nSize = 0, m_nFirst = 0;
    bool m_bBigEndian = false, m_bBigTiff = false;
};

}  // namespace tessera
