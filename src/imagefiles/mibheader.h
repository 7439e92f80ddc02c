// MibHeader: the text before each frame of a MIB file, and the one in the file's .hdr.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace tessera {

/// How pixels lie in the file. Numbers are big-endian; raw ones are as the chips send them.
enum class MibPixels { Byte, Word, Long, Raw };

/// What the text before a frame tells, checked.
struct MibHeader {
    qint64 nBytes = 0;  ///< of the text, with its filling
    int nChips = 1;
    int nColumns = 0, nRows = 0;  ///< of the image; those of a raw quad are of its four chips put together
    MibPixels pixels = MibPixels::Byte;
    int nDepth = 0;            ///< of the counters, bits; 0 when it is not told
    int nAcross = 1, nUp = 1;  ///< chips side by side and above each other
    double dfShutter = 0;      ///< seconds
    bool bColour = false;      ///< four pixels count as one, with more thresholds
    QString strChip;           ///< "Medipix 3RX"; empty when not told

    qint64 pixelBytes() const;
    qint64 stride() const { return nBytes + pixelBytes(); }
    bool isRawQuad() const { return pixels == MibPixels::Raw && nChips == 4; }
    /// Whether frames with these headers may follow each other in a file.
    bool isLike(const MibHeader& other) const;
};

constexpr int g_nMibChip = 256;       ///< columns, and at most as many rows, of a chip
constexpr int g_nMibLineLength = 64;  ///< bytes of a header that tell how long it is

/// Bytes of the header that begins here, of which g_nMibLineLength are enough; 0 with a reason when it is
/// none.
qint64 mibHeaderBytes(const QByteArray& bytes, QString& strReason);

/// Takes the header apart, which is as long as mibHeaderBytes() tells.
/// @return false with a reason when there are no images that can be read
bool parseMibHeader(const QByteArray& bytes, MibHeader& header, QString& strReason);

/// What NAME.hdr beside NAME.mib tells: values by their keys, "Gap Fill Mode", without the choices that some
/// keys name in brackets. Empty when there is none.
QMap<QString, QString> mibSideFile(const QString& strFileName);

}  // namespace tessera
