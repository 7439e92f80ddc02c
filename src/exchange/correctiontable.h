// Correction tables: what undoes the lens, pixel by pixel, as XDS reads it.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QSize>

#include <vector>

namespace tessera {

/// Hundredths of a pixel that are added to the column (row) of each pixel to have its place without
/// distortion, row by row. The direct beam stays in its place.
struct PlaceCorrections {
    std::vector<int> listColumn;
    std::vector<int> listRow;
    double dfMost = 0;  ///< pixels, the greatest of all
};
PlaceCorrections placeCorrections(const ExchangeGeometry& geometry);

/// A table of whole numbers as CBF: 32 bits, signed, packed by differences of neighbours ("byte offset").
/// Source: the format as CBFlib documents it (Bernstein & Hammersley, International Tables G, 2.3).
QByteArray byteOffsetCbf(const QByteArray& bytesName, const std::vector<int>& listValue, const QSize& size);

}  // namespace tessera
