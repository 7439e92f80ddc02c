// PETS input: NAME.pts, the frames of a series with their tilts for PETS.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// What the file tells besides the geometry.
struct PetsOptions {
    QString strName;                ///< name of the series
    QStringList listFile;           ///< frames, relative to the folder of the .pts file
    std::vector<double> listAlpha;  ///< tilt in the middle of each frame, as in the series, degrees
    double dfSpotDiameter = 8;      ///< pixels
    double dfHighest = 0;           ///< greatest d*, Å⁻¹; 0: up to the edge of the frames
};

/// The text of the file: wavelength, pixel size, axis and the list of frames, with the keywords of the
/// manual. The azimuth of the axis is counter-clockwise on the screen. As some programs count the other
/// way, the text mentions both. The text is sealed (sealedfile.h).
QByteArray petsInput(const ExchangeGeometry& geometry, const PetsOptions& options);

}  // namespace tessera
