// SeriesFacts: what the frames of a series, and the texts beside them, tell of how it was taken.
#pragma once

#include "dataset/toldtilts.h"
#include "imagefiles/frameheader.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <cmath>
#include <functional>

namespace tessera {

/// Numbers with the places where they stood; what nobody tells stays NaN. Only wavelength, pixel size and
/// tilts go into a project; the axis is offered with a doubt, as no format defines its sense.
struct SeriesFacts {
    QStringList listFrame;     ///< in series order
    QString strFormat;         ///< of the first frame: "SMV"
    QSize size;                ///< of the first frame, pixels; not valid when its header does not tell
    QString strDetector;       ///< name of the camera
    ToldNumber kilovolts;      ///< kV
    ToldNumber wavelength;     ///< Å, as told or from the voltage
    ToldNumber cameraLength;   ///< mm
    ToldNumber detectorPixel;  ///< µm
    ToldNumber pixelSize;      ///< Å⁻¹, as told or from camera length and detector pixel
    ToldNumber rotationAxis;   ///< degrees
    ToldNumber exposure;       ///< of a frame, seconds
    ToldNumber beamX;          ///< of the first frame: column, the centre of the first pixel is 0
    ToldNumber beamY;          ///< row
    ToldNumber saturation;     ///< counts
    ToldTilts tilts;
    bool bOfVoltage = false;       ///< the wavelength follows from the voltage
    bool bOfCameraLength = false;  ///< the pixel size follows from camera length and detector pixel
    QStringList listDoubt;         ///< what was guessed, and what contradicts itself, in words for the user
    bool bWhole = true;            ///< false: somebody had it stopped
};

/// Called with the number of headers that were read.
/// @return false to have it stopped
using FnFactsGoOn = std::function<bool(int nDone)>;

/// Reads the headers of all frames, or of some spread over the series where the first and the last tell no
/// tilt and there are thousands, and the texts beside the first frame for what the headers lack.
///
/// A wavelength that no microscope has is left out with a doubt, and so is a pixel size. Of a wavelength and
/// a voltage that agree but for the decimals of the former the voltage is taken. Reads files only, so it may
/// run in any thread.
/// @param dfWavelength  Å, that the user gives in the place of what the frames tell; NaN: none. The told one
///                      stays in the facts, but a pixel size that follows from the camera length is of this.
SeriesFacts factsOfSeries(const QStringList& listFrame, const FnFactsGoOn& fnGoOn = {},
                          double dfWavelength = NAN);

/// Whether one of the doubts is about this number: it names the key that the number stood under.
bool isDoubtful(const ToldNumber& told, const QStringList& listDoubt);

/// Lets the pixel size follow from the camera length where it is not told and a wavelength, Å, becomes known
/// that the frames do not tell.
void followWavelength(SeriesFacts& facts, double dfWavelength);

}  // namespace tessera
