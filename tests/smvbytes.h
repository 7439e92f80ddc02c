// SMV files as programs of cameras write them, byte by byte.
#pragma once

#include <QByteArray>

namespace tessera {

/// A header of 512 bytes with these lines between the braces, and pixels of 16 bits behind it.
inline QByteArray smvBytes(const QByteArray& bytesLines, int nWidth, int nHeight,
                           const QByteArray& bytesPixel)
{
    QByteArray bytes =
        "{\nHEADER_BYTES=  512;\nDIM=2;\nBYTE_ORDER=little_endian;\nTYPE=unsigned_short;\nSIZE1=" +
        QByteArray::number(nWidth) + ";\nSIZE2=" + QByteArray::number(nHeight) + ";\n" + bytesLines + "}";
    return bytes.leftJustified(512, '\0', true) + bytesPixel;
}

/// The lines of a frame that starts at a tilt, degrees; pixels in mm, distance in mm.
inline QByteArray smvLines(double dfStart, double dfWidth, double dfPixel, double dfDistance)
{
    return "PIXEL_SIZE=" + QByteArray::number(dfPixel, 'g', 9) +
           ";\nTIME=0.5;\nDISTANCE=" + QByteArray::number(dfDistance, 'g', 9) +
           ";\nOSC_START=" + QByteArray::number(dfStart, 'f', 4) +
           ";\nOSC_RANGE=" + QByteArray::number(dfWidth, 'f', 4) + ";\nWAVELENGTH=0.02508;\n";
}

/// The section of a MRC file of 16 bits, whose first row is the lowest, with the highest row first.
inline QByteArray pixelsFromTop(const QByteArray& bytesMrc, int nSide)
{
    QByteArray bytes;
    for (int nRow = nSide - 1; nRow >= 0; --nRow) {
        bytes += bytesMrc.mid(1024 + 2 * nSide * nRow, 2 * nSide);
    }
    return bytes;
}

}  // namespace tessera
