// SeriesFacts: what the headers of the frames, and texts beside them, tell of a series.
#pragma once

#include "dataset/toldtilts.h"
#include "imagefiles/frameheader.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <cmath>
#include <functional>

namespace tessera {

/// The numbers of a series, each with the place where it was found; NaN where unknown. Only wavelength,
/// pixel size and tilts are used for a project. The axis is only offered, with a doubt, as no format
/// defines its sense.
struct SeriesFacts {
    QStringList listFrame;     ///< in series order
    QString strFormat;         ///< format of the first frame, such as "SMV"
    QSize size;                ///< size of the first frame, pixels; invalid when its header does not tell
    QString strDetector;       ///< name of the camera
    ToldNumber kilovolts;      ///< kV
    ToldNumber wavelength;     ///< Å, as found or from the voltage
    ToldNumber cameraLength;   ///< mm
    ToldNumber detectorPixel;  ///< µm
    ToldNumber pixelSize;      ///< Å⁻¹, as found or from camera length and detector pixel
    ToldNumber rotationAxis;   ///< degrees
    ToldNumber exposure;       ///< exposure time of a frame, seconds
    ToldNumber beamX;  ///< column of the direct beam of the first frame; the centre of the first pixel is 0
    ToldNumber beamY;  ///< row, likewise
    ToldNumber saturation;         ///< counts from which pixels are saturated
    ToldTilts tilts;               ///< tilts of the frames
    bool bOfVoltage = false;       ///< the wavelength was computed from the voltage
    bool bOfCameraLength = false;  ///< the pixel size was computed from camera length and detector pixel
    QStringList listDoubt;         ///< what was guessed and what is contradictory, in lines for the user
    bool bWhole = true;            ///< false: reading was stopped
};

/// Called with the number of headers that have been read.
/// @return false to stop
using FnFactsGoOn = std::function<bool(int nDone)>;

/// Reads the headers of all frames, or of a sample if there are thousands and the first and the last one
/// have no tilt, and the texts beside the first frame for what the headers lack.
///
/// A wavelength or pixel size that no microscope has is left out with a doubt. If wavelength and voltage
/// agree within the decimals of the wavelength, the voltage is used. Only files are read, so it may be
/// called in any thread.
/// @param dfWavelength  wavelength given by the user, Å; NaN: none. The facts keep the wavelength that was
///                      found, but a pixel size computed from the camera length uses the given one.
SeriesFacts factsOfSeries(const QStringList& listFrame, const FnFactsGoOn& fnGoOn = {},
                          double dfWavelength = NAN);

/// Whether one of the doubts is about this number, which is so if it contains the key of the number.
bool isDoubtful(const ToldNumber& told, const QStringList& listDoubt);

/// Computes the pixel size from the camera length if it is unknown, with a wavelength, Å, that the frames
/// do not tell.
void followWavelength(SeriesFacts& facts, double dfWavelength);

}  // namespace tessera
