// Calibration: the geometry of a microscope from one crystal, stored in a file for other crystals.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// Axis and lens of a microscope at one camera length.
struct Calibration {
    QString strSeries;                  ///< name of the series from which it is
    QString strDate;                    ///< ISO 8601
    double dfWavelength = 0;            ///< Å
    double dfSeriesPixelSize = 0;       ///< pixel size used for the series, Å⁻¹ per pixel
    std::optional<double> dfPixelSize;  ///< Å⁻¹ per pixel, if it was determined, as with a known cell
    double dfRotationAxis = 0;          ///< degrees, −180 to 180
    double dfStretchAmplitude = 0;      ///< per cent, not below 0
    double dfStretchAzimuth = 0;        ///< degrees; the pattern is longer along it, as in project files
    SeriesDistortion distortion;        ///< the other distortions
    QMap<QString, double> mapError;  ///< standard errors by name, in the units of the file, as far as known
};

/// The text of a calibration file: one JSON object, UTF-8, in the units above. All numbers are written so
/// that reading them gives the same bits.
QByteArray calibrationText(const Calibration& calibration);

/// Reads the text of a calibration file.
///
/// Refused are texts that are no JSON object of this format and version or above 1 MB, and numbers that are
/// missing, invalid or out of range. Unknown keys are ignored, and errors that are no positive numbers.
///
/// @param pstrReason  may be null; takes why it cannot be used
std::optional<Calibration> calibrationOfText(const QByteArray& bytes, QString* pstrReason = nullptr);

/// Does the same for a file, which the reason names.
std::optional<Calibration> readCalibration(const QString& strFile, QString* pstrReason = nullptr);
/// Writes a calibration file, whole or not at all.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
[[nodiscard]] bool writeCalibration(const QString& strFile, const Calibration& calibration,
                                    QString* pstrReason = nullptr);

/// The calibration of a data set, without errors and without a determined pixel size.
Calibration calibrationOf(const DataSet& dataSet, const MappingParameters& mapping);

/// Converts a calibration from pixels of binned frames to pixels of the files, in which all calibrations
/// are stored. Without binning nothing changes.
void toFilePixels(Calibration& calibration, const SeriesData& series);

/// Whether a JSON object is a calibration of any version.
bool isCalibration(const QJsonObject& object);

/// Whether a pixel size, Å⁻¹, is that of another camera length or binning than in the calibration.
bool isOtherCameraLength(const Calibration& calibration, double dfPixelSize);

/// Takes axis, stretching, distortion and, if it was determined, the pixel size into a data set. The peaks
/// must be mapped again.
/// @return warnings about another wavelength or pixel size, which means another camera length or binning
QStringList takeCalibration(DataSet& dataSet, MappingParameters& mapping, const Calibration& ofFiles);

}  // namespace tessera
