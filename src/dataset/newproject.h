// NewProject: makes the text of a project file.
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

/// The series, its geometry and its lens as a project file is to name them.
struct NewProject {
    QStringList listFrame;      ///< paths in series order
    FrameTilts tilts;           ///< degrees, as many as frames
    double dfWavelength = 0;    ///< Å
    double dfPixelSize = 0;     ///< Å⁻¹ per pixel
    double dfRotationAxis = 0;  ///< degrees, counter-clockwise on the screen from 3 o'clock
    bool bAxisKnown = true;     ///< false: the file gets no line for it, and the axis is found from the peaks
    QString strComment;         ///< becomes a comment line of the file unless it is empty
    double dfStretchAmplitude = 0;  ///< per cent
    double dfStretchAzimuth = 0;    ///< degrees, as in the file
    SeriesDistortion distortion;    ///< gets lines unless it is none
    bool bTellDistortion = false;   ///< true: it gets lines even if it is none
    RotationMode rotation;          ///< gets a line unless it is continuous
};

/// Size of a pixel in reciprocal space, q = p / (L λ), Å⁻¹; 0 when one of the three is not above 0.
/// The formula holds for small angles. The mapping of the frames makes the same approximation: it multiplies
/// the distance from the direct beam in pixels by this size.
/// @param dfCameraLength    L, mm
/// @param dfDetectorPixel   p, µm, side of a pixel of the frame, that is after binning
/// @param dfWavelength      λ, Å
double pixelSizeFromCameraLength(double dfCameraLength, double dfDetectorPixel, double dfWavelength);

/// Proposes NAME.ed3d in the folder of the first frame. NAME is the common beginning of the frames' names
/// without the digits at its end, or else the name of the folder. Empty without frames.
QString proposedProjectFile(const QStringList& listFrame);

/// Whether a number, Å, may be the wavelength of electrons in a microscope.
bool isElectronWavelength(double dfWavelength);
/// Whether a number, Å⁻¹, may be the size of a pixel.
bool isPixelSize(double dfPixelSize);

/// The project of a series whose headers give wavelength, pixel size and tilts. The axis is left unknown.
/// @param pstrReason  may be null; takes on failure which of them are missing, in a sentence
/// @return nothing where one of them is missing or there are no frames
std::optional<NewProject> projectOfFacts(const SeriesFacts& facts, QString* pstrReason = nullptr);

/// Makes the text of the project file, in which the frames are named relative to its own folder.
///
/// The text is read back before it is returned. So a name or a number that the format cannot represent, such
/// as a name with a blank, is refused here instead of being lost when the project is opened.
///
/// @param strProjectFile  where the file will be written; need not exist
/// @param pstrReason      may be null; takes on failure what is missing or wrong, in a sentence for the user
/// @return nothing when something is missing or wrong
[[nodiscard]] std::optional<QByteArray> makeProjectText(const NewProject& project,
                                                        const QString& strProjectFile,
                                                        QString* pstrReason = nullptr);

}  // namespace tessera
