// Correction tables: the distortion of the lens, pixel by pixel, in the form of XDS.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QSize>

#include <vector>

namespace tessera {

/// Corrections in hundredths of a pixel, row by row. Added to column and row of a pixel, they give its
/// place without distortion. The direct beam is not moved.
struct PlaceCorrections {
    std::vector<int> listColumn;
    std::vector<int> listRow;
    double dfMost = 0;  ///< greatest correction, pixels
};
/// The corrections of all pixels of a frame.
PlaceCorrections placeCorrections(const ExchangeGeometry& geometry);

/// A table of whole numbers as CBF: 32 bits, signed, packed as differences of neighbours ("byte offset").
/// Source: the format as CBFlib documents it (Bernstein & Hammersley, International Tables G, 2.3).
QByteArray byteOffsetCbf(const QByteArray& bytesName, const std::vector<int>& listValue, const QSize& size);

}  // namespace tessera
