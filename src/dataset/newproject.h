// NewProject: what a project file is made from.
#pragma once

#include "dataset/frametilts.h"
#include "dataset/seriesfacts.h"
#include "geometry/rotationmode.h"
#include "geometry/seriesdistortion.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

struct NewProject {
    QStringList listFrame;  ///< paths in series order
    FrameTilts tilts;
    double dfWavelength = 0;    ///< Å
    double dfPixelSize = 0;     ///< Å⁻¹ per pixel
    double dfRotationAxis = 0;  ///< degrees, counter-clockwise on the screen from 3 o'clock
    bool bAxisKnown = true;     ///< false: the file has no line for it, so that it is found from the peaks
    QString strComment;         ///< a line that is no part of the project; empty: none
    double dfStretchAmplitude = 0;  ///< per cent
    double dfStretchAzimuth = 0;    ///< degrees, as in the file
    SeriesDistortion distortion;    ///< has lines where it is not none
    bool bTellDistortion = false;   ///< lines of it also where it is none
    RotationMode rotation;          ///< has a line where it is not continuous
};

/// Size of a pixel in reciprocal space, q = p / (L λ), Å⁻¹; 0 when one of the three is not above 0.
/// Small angles: that is also how the frame is mapped, pixel by pixel from the direct beam.
/// @param dfCameraLength    L, mm
/// @param dfDetectorPixel   p, µm, of the pixel as it stands in the frame, that is after binning
/// @param dfWavelength      λ, Å
double pixelSizeFromCameraLength(double dfCameraLength, double dfDetectorPixel, double dfWavelength);

/// NAME.ed3d beside the first frame: what the names of the frames begin with, up to their numbers, or else
/// the name of the folder. Empty without frames.
QString proposedProjectFile(const QStringList& listFrame);

/// Whether a number, Å, may be the wavelength of electrons in a microscope.
bool isElectronWavelength(double dfWavelength);
/// Whether a number, Å⁻¹, may be the size of a pixel.
bool isPixelSize(double dfPixelSize);

/// The project of frames whose headers tell all that it needs but the axis, which is left to be found.
/// @param pstrReason  may be null; on failure what they do not tell, in a sentence
std::optional<NewProject> projectOfFacts(const SeriesFacts& facts, QString* pstrReason = nullptr);

/// Makes the text of the project file, which names the frames relative to its own folder.
///
/// The text is read back before it is handed out, so that what the file cannot hold, such as a name with a
/// blank, is refused here and not found missing when the project is opened.
///
/// @param strProjectFile  where it will stand; need not exist
/// @param pstrReason      may be null; on failure what is missing or wrong, in a sentence for the user
/// @return false, with `bytesText` as it was, when something is missing or wrong
[[nodiscard]] bool makeProjectText(const NewProject& project, const QString& strProjectFile,
                                   QByteArray& bytesText, QString* pstrReason = nullptr);

}  // namespace tessera
