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
    Needed,   ///< no: it is refused
    MayLack,  ///< yes: somebody else knows the axis, or finds it
};

/// A project file as read. A value that may stand in a data set once errorText() is empty.
///
/// The file is a text of keyword lines, "KEYWORD value"; lines that begin with "#" do not count. A
/// keyword is looked for as a part of a line, from the top, and a line whose second word is no number is
/// passed over. WAVELENGTH (Å), ROTATIONAXIS (degrees) and CCDPIXELSIZE (Å⁻¹ per pixel) must be there;
/// STRETCHINGAMP (per cent) and STRETCHINGAZIMUTH (degrees) are 0 without a line. So are the numbers of
/// SeriesDistortion, whose keywords are g_aDistortionKeyword and have to be the first word of their line, but
/// for the radius of 256 pixels, which has to be above 0. ROTATIONMODE has to be the first
/// word of its line, too, and has what rotationModeOf() reads; without it the crystal turned steadily.
/// Between the lines FILELIST and ENDFILELIST stand the frames: "FILE name stage beam overall", tilts in
/// degrees, the name without blanks and relative to the folder of the project.
///
/// Refused are, beyond a missing keyword or list, numbers that are not finite; a wavelength or pixel size
/// that is not above 0 at the six decimals the program works with, or above 10000; a line of more than
/// 1023 characters that is no comment (a cut line would shift its rest into a line of its own); NUL
/// bytes; and files above 64 MB, which are pictures that were taken for a project. Frames that do not
/// exist are noticed when they are loaded.
class ProjectFile {
public:
    /// Reads a file. On failure only errorText() is new.
    [[nodiscard]] bool read(const QString& strFileName, AxisLine axisLine = AxisLine::Needed);
    /// The same for the content of a file; `strFileName` gives folder and name and need not exist.
    [[nodiscard]] bool readBytes(const QByteArray& bytesFile, const QString& strFileName,
                                 AxisLine axisLine = AxisLine::Needed);

    double wavelength() const { return m_dfWavelength; }         ///< Å
    double rotationAxis() const { return m_dfRotationAxis; }     ///< degrees
    bool hasRotationAxis() const { return m_bHasRotationAxis; }  ///< false: rotationAxis() is 0
    double pixelSize() const { return m_dfPixelSize; }           ///< Å⁻¹ per pixel
    const RotationMode& rotation() const { return m_rotation; }
    double stretchingAmplitude() const { return m_dfStretchAmplitude; }  ///< per cent
    double stretchingAzimuth() const { return m_dfStretchAzimuth; }      ///< degrees, as in the file
    const SeriesDistortion& distortion() const { return m_distortion; }  ///< as in the file
    bool tellsDistortion() const { return m_bTellsDistortion; }        ///< has a line of it, be its number 0
    const QStringList& frameFiles() const { return m_listFrameFile; }  ///< full paths in series order
    const QList<double>& stageTilts() const { return m_listStageTilt; }  ///< degrees, one per frame
    const QList<double>& beamTilts() const { return m_listBeamTilt; }
    const QList<double>& overallTilts() const { return m_listOverallTilt; }
    const QString& baseName() const { return m_strBaseName; }  ///< without folder and suffix
    const QString& folder() const { return m_strFolder; }      ///< absolute
    const QString& errorText() const { return m_strError; }    ///< empty after a good read

private:
    bool fail(const QString& strError);
    bool takeDistortion(const QStringList& listLine);
    bool takeRotation(const QStringList& listLine);

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
