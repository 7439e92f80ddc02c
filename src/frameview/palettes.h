// Palettes: the colour tables that turn display bytes into colours.
#pragma once

#include <QRgb>
#include <QVector>

namespace tessera {

/// The table of 256 opaque colours of one palette, indexed by the display byte.
///
/// 0 grey, 1 grey inversed, 2 blue over cyan, green and yellow to red, 3 the same from red to blue.
/// The tables are built once and live to the program's end.
/// @return null for an index outside 0 to 3
const QVector<QRgb>* paletteTable(int nIndex);

/// The 256 colours of the overlay: 0 is transparent, 1 to 253 are greens of the alpha given, brighter
/// with the byte, 254 is opaque red and 255 opaque cyan.
/// @param nAlpha  0 to 255
QVector<QRgb> overlayColorTable(int nAlpha);

}  // namespace tessera
