// TiffDirectory: the tags of one image file directory of a TIFF file.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace tessera {

/// The tags that are asked for, by their numbers in TIFF revision 6.0 (1992) and, from 32768 on, in the lists
/// of those that programs registered or took.
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

/// One tag: where its values stand, which is within the file.
struct TiffEntry {
    uint16_t nTag, nType;
    uint64_t nCount, nPlace;
    std::array<char, 8> aValue;  ///< the values themselves, if they stand in the directory
    bool bInside;
};

struct TiffDirectory {
    uint64_t nPlace = 0;  ///< of the directory in the file
    uint64_t nNext = 0;   ///< place of the next one, 0 after the last
    uint64_t nBytes = 0;  ///< of the directory itself
    std::vector<TiffEntry> vecEntry;

    const TiffEntry* find(TiffTag tag) const;  ///< null when it is not there
};

/// A TIFF file opened for reading, of either byte order and either size of its offsets. Nothing that the file
/// says is believed: values that don't lie within it are taken as missing.
class CTiffBytes {
public:
    explicit CTiffBytes(const QString& strFileName) : m_file(strFileName) {}
    /// @return false with the reason, in words
    [[nodiscard]] bool open(QString& strReason);

    QFile& file() { return m_file; }
    uint64_t fileSize() const { return m_nSize; }
    bool isBigEndian() const { return m_bBigEndian; }
    uint64_t firstDirectory() const { return m_nFirst; }

    /// Reads exactly so many bytes; empty when the file has fewer of them.
    QByteArray bytesAt(uint64_t nPlace, uint64_t nBytes);
    /// Reads so many bytes into `p`.
    bool read(uint64_t nPlace, uint64_t nBytes, uint8_t* p);
    /// A whole number of 1, 2, 4 or 8 bytes in the file's byte order.
    uint64_t number(const char* p, int nBytes) const;

    std::optional<TiffDirectory> directory(uint64_t nPlace);
    /// The first `nMost` values of a tag of whole numbers; fewer where it has fewer, none when it is missing
    /// or of another type.
    std::vector<uint64_t> wholeNumbers(const TiffEntry* pEntry, uint64_t nMost);
    /// The first of them, or the default.
    uint64_t wholeNumber(const TiffDirectory& directory, TiffTag tag, uint64_t nDefault);
    /// The first value of a tag of any numbers; NaN when it is missing.
    double real(const TiffDirectory& directory, TiffTag tag);
    /// Of a tag of text or bytes, up to 1 MiB of it and the first NUL.
    QByteArray text(const TiffDirectory& directory, TiffTag tag);

private:
    /// The first bytes of the values of a tag.
    QByteArray valueBytes(const TiffEntry& entry, uint64_t nBytes);

    QFile m_file;
    uint64_t m_nSize = 0, m_nFirst = 0;
    bool m_bBigEndian = false, m_bBigTiff = false;
};

}  // namespace tessera
