// NAME.pts: the frames of a series with their tilts, as PETS reads them.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

struct PetsOptions {
    QString strName;                ///< of the series
    QStringList listFile;           ///< of the frames, from the folder of the .pts
    std::vector<double> listAlpha;  ///< degrees, in the middle of each frame, as the series has them
    double dfSpotDiameter = 8;      ///< pixels
    double dfHighest = 0;           ///< Å⁻¹; 0: as far as the edge of the frames
};

/// Wavelength, size of a pixel, axis and the list of frames, with the keywords of the manual. The axis counts
/// counter-clockwise on the screen; as programs are known that count the other way, the text says both.
/// Sealed (sealedfile.h).
QByteArray petsInput(const ExchangeGeometry& geometry, const PetsOptions& options);

}  // namespace tessera
