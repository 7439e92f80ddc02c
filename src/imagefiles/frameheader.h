// FrameHeader: what the header of a frame file tells of the image and of the microscope.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <cmath>
#include <limits>

namespace tessera {

/// A number that a header may have, with its place there, which the user sees beside the value.
struct ToldNumber {
    /// The number; NaN when the header does not have it.
    double df = std::numeric_limits<double>::quiet_NaN();
    QString strSource;  ///< its name in the format: "DISTANCE", "FEI2: HT", "Stage Alpha"; else empty

    /// Whether the header has the number.
    bool isTold() const { return std::isfinite(df); }
};

/// The header of a frame. Units are those of the pages and of "New Project". Values that the format writes
/// for unknown numbers (0, -1, NaN) and impossible ones are left out: voltages, lengths, times and pixel
/// sizes are above 0.
struct FrameHeader {
    QSize size;       ///< size of the image, pixels; invalid when the header does not tell it
    int nImages = 1;  ///< number of images of the file

    ToldNumber kilovolts;      ///< accelerating voltage, kV
    ToldNumber wavelength;     ///< Å, only where the file gives the wavelength itself
    ToldNumber pixelSize;      ///< in reciprocal space, Å⁻¹, only where the file gives it itself
    ToldNumber cameraLength;   ///< effective camera length, mm
    ToldNumber detectorPixel;  ///< side of a pixel of the image, that is after binning, µm
    ToldNumber tilt;           ///< degrees, of a frame at rest, or where start and step are unknown
    ToldNumber tiltStart;      ///< at the start of the frame, degrees
    ToldNumber tiltStep;       ///< from the start of this frame to that of the next, degrees, with its sign
    ToldNumber rotationAxis;   ///< degrees, counter-clockwise on the screen from 3 o'clock
    ToldNumber exposure;       ///< exposure time of the frame, seconds
    ToldNumber beamX;          ///< column of the direct beam; the centre of the first pixel is 0
    ToldNumber beamY;          ///< row of the direct beam from the top, likewise
    ToldNumber saturation;     ///< counts from which a pixel is saturated
    QString strDetector;       ///< name of the camera; empty when unknown
    QStringList listDoubt;     ///< which of all this is guessed, in lines for the user
};

}  // namespace tessera
