// MibHeader: the text before each frame of a MIB file, and that of the .hdr file beside it.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>

namespace tessera {

/// How pixels are stored. Numbers are big-endian; raw ones are as the chips send them.
enum class MibPixels { Byte, Word, Long, Raw };

/// The text before a frame, checked.
struct MibHeader {
    qint64 nBytes = 0;  ///< length of the text, including its padding
    int nChips = 1;
    int nColumns = 0, nRows = 0;  ///< of the image; of a raw quad those of its four chips together
    MibPixels pixels = MibPixels::Byte;
    int nDepth = 0;            ///< depth of the counters, bits; 0 when unknown
    int nAcross = 1, nUp = 1;  ///< chips side by side and one above another
    double dfShutter = 0;      ///< seconds
    bool bColour = false;      ///< four pixels are combined to one, with more thresholds
    QString strChip;           ///< such as "Medipix 3RX"; empty when unknown

    /// Length of the pixels, bytes.
    qint64 pixelBytes() const;
    /// Distance from frame to frame, bytes.
    qint64 stride() const { return nBytes + pixelBytes(); }
    /// Whether the pixels are raw ones of four chips.
    bool isRawQuad() const { return pixels == MibPixels::Raw && nChips == 4; }
    /// Whether frames with both headers can be in one file.
    bool isLike(const MibHeader& other) const;
};

constexpr int g_nMibChip = 256;       ///< columns of a chip, and greatest number of its rows
constexpr int g_nMibLineLength = 64;  ///< bytes of a header that are enough to find its length

/// The length of the header that begins with these bytes, at least g_nMibLineLength; 0, with the reason,
/// where there is no header.
qint64 mibHeaderBytes(const QByteArray& bytes, QString& strReason);

/// Parses a header of the length of mibHeaderBytes().
/// @return nothing, with the reason, when the images cannot be read
std::optional<MibHeader> parseMibHeader(const QByteArray& bytes, QString& strReason);

/// Reads NAME.hdr beside NAME.mib: the values by their keys, such as "Gap Fill Mode", without the choices
/// that some keys list in brackets. Empty when there is no such file.
QMap<QString, QString> mibSideFile(const QString& strFileName);

}  // namespace tessera
