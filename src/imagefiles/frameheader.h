// FrameHeader: what a frame file tells of itself and of the microscope, before its pixels are converted.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <cmath>
#include <limits>

namespace tessera {

/// A number that a header may tell, with the place where it stood, which the user sees beside the value.
struct ToldNumber {
    double df = std::numeric_limits<double>::quiet_NaN();  ///< NaN when it is not told
    QString strSource;  ///< as the format names it: "DISTANCE", "FEI2: HT", "Stage Alpha"; empty if not told

    bool isTold() const { return std::isfinite(df); }
};

/// Units are those of the pages and of "New Project". A value that the format writes when it knows none (0,
/// -1, NaN) is not told. Only what is sound is told: a voltage, a length, a time, a size of a pixel is above
/// 0.
struct FrameHeader {
    QSize size;       ///< of the image, pixels; not valid when only reading the image can tell
    int nImages = 1;  ///< that the file holds

    ToldNumber kilovolts;      ///< accelerating voltage, kV
    ToldNumber wavelength;     ///< Å, only where the file has it as such
    ToldNumber pixelSize;      ///< in reciprocal space, Å⁻¹, only where the file has it as such
    ToldNumber cameraLength;   ///< effective, mm
    ToldNumber detectorPixel;  ///< µm, of the pixel as it stands in the image, that is after binning
    ToldNumber tilt;          ///< of the stage as the frame was taken: a frame that stood still, or one whose
                              ///< start and width are not told, degrees
    ToldNumber tiltStart;     ///< at the start of this frame, degrees
    ToldNumber tiltStep;      ///< from this frame's start to that of the next, degrees; its sign as told
    ToldNumber rotationAxis;  ///< degrees, counter-clockwise on the screen from 3 o'clock
    ToldNumber exposure;      ///< of the frame, seconds
    ToldNumber beamX;         ///< column of the direct beam; the centre of the first pixel is 0
    ToldNumber beamY;         ///< row of it, from the top
    ToldNumber saturation;    ///< counts of this many and above are not to be trusted
    QString strDetector;      ///< name of the camera; empty when not told
    QStringList listDoubt;    ///< what of all this rests on a guess, a line each, in words for the user
};

}  // namespace tessera
