// ProjectFile: the .ed3d file, which names the frames of a data set and their geometry.
#pragma once

#include "geometry/rotationmode.h"
#include "geometry/seriesdistortion.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace tessera {

/// Whether a project without a line ROTATIONAXIS can be used.
enum class AxisLine {
    Needed,   ///< No: such a project is refused.
    MayLack,  ///< Yes: the caller knows the axis or finds it from the peaks.
};

/// A project file (.ed3d) as read. Its values can be taken into a data set when errorText() is empty.
///
/// The file is a text of keyword lines, "KEYWORD value". Lines that begin with "#" are comments. A keyword
/// is searched from the top as a part of a line, and a line whose second word is no number is skipped.
/// WAVELENGTH (Å), ROTATIONAXIS (degrees) and CCDPIXELSIZE (Å⁻¹ per pixel) are required. STRETCHINGAMP
/// (per cent) and STRETCHINGAZIMUTH (degrees) default to 0. The numbers of SeriesDistortion have the keywords
/// g_aDistortionKeyword, which must be the first word of their line; they default to 0, except for the
/// radius, which defaults to 256 pixels and must be above 0. ROTATIONMODE must be the first word of its
/// line, too, and has a value that rotationModeOf() reads; without it the rotation is continuous. The
/// frames are listed between the lines FILELIST and ENDFILELIST: "FILE name stage beam overall", with tilts
/// in degrees, and a name without blanks that is relative to the folder of the project.
///
/// Besides a missing keyword or list, the reader refuses numbers that are not finite; a wavelength or pixel
/// size that is above 10000 or not above 0 when rounded to the six decimals of the program; a line of more
/// than 1023 characters that is no comment (cut there, its rest would count as a line of its own); NUL
/// bytes; and files above 64 MB, which are images opened as a project by mistake. Whether the frames exist
/// shows only when they are loaded.
class ProjectFile {
public:
    /// Reads a file. On failure only errorText() is new.
    [[nodiscard]] bool read(const QString& strFileName, AxisLine axisLine = AxisLine::Needed);
    /// Does the same for the content of a file; `strFileName` gives folder and name and need not exist.
    [[nodiscard]] bool readBytes(const QByteArray& bytesFile, const QString& strFileName,
                                 AxisLine axisLine = AxisLine::Needed);

    double wavelength() const { return m_dfWavelength; }         ///< Å
    double rotationAxis() const { return m_dfRotationAxis; }     ///< degrees
    bool hasRotationAxis() const { return m_bHasRotationAxis; }  ///< false: rotationAxis() is 0
    double pixelSize() const { return m_dfPixelSize; }           ///< Å⁻¹ per pixel
    const RotationMode& rotation() const { return m_rotation; }  ///< how the crystal moved during a frame
    double stretchingAmplitude() const { return m_dfStretchAmplitude; }  ///< per cent
    double stretchingAzimuth() const { return m_dfStretchAzimuth; }      ///< degrees, as in the file
    const SeriesDistortion& distortion() const { return m_distortion; }  ///< as in the file
    bool tellsDistortion() const { return m_bTellsDistortion; }  ///< has a line for it, even if with a 0
    const QStringList& frameFiles() const { return m_listFrameFile; }        ///< full paths in series order
    const QList<double>& stageTilts() const { return m_listStageTilt; }      ///< degrees, one per frame
    const QList<double>& beamTilts() const { return m_listBeamTilt; }        ///< likewise
    const QList<double>& overallTilts() const { return m_listOverallTilt; }  ///< likewise
    const QString& baseName() const { return m_strBaseName; }                ///< without folder and suffix
    const QString& folder() const { return m_strFolder; }                    ///< absolute
    const QString& errorText() const { return m_strError; }                  ///< empty after a good read

private:
    bool fail(const QString& strError);
    // Each takes its part from the lines of the file. False, with m_strError set, where the part is wrong.
    bool takeGeometry(const QStringList& listLine, AxisLine axisLine);
    bool takeDistortion(const QStringList& listLine);
    bool takeRotation(const QStringList& listLine);
    bool takeFrames(const QStringList& listLine);

    RotationMode m_rotation;
    double m_dfWavelength = 0;
    double m_dfRotationAxis = 0;
    bool m_bHasRotationAxis = false;
    double m_dfPixelSize = 0;
    double m_dfStretchAmplitude = 0;
    double m_dfStretchAzimuth = 0;
    SeriesDistortion m_distortion;
    bool m_bTellsDistortion = false;
    QStringList m_listFrameFile;
    QList<double> m_listStageTilt;
    QList<double> m_listBeamTilt;
    QList<double> m_listOverallTilt;
    QString m_strBaseName;
    QString m_strFolder;
    QString m_strError;
};

}  // namespace tessera
