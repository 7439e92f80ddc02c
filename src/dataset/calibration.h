// Calibration: what one crystal tells of a microscope, kept in a file for the next ones.
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
    QString strSeries;                  ///< name of the series that told it
    QString strDate;                    ///< ISO 8601
    double dfWavelength = 0;            ///< Å
    double dfSeriesPixelSize = 0;       ///< Å⁻¹ per pixel, that the series was worked with
    std::optional<double> dfPixelSize;  ///< Å⁻¹ per pixel, where something determined it, as a known cell
    double dfRotationAxis = 0;          ///< degrees, −180 to 180
    double dfStretchAmplitude = 0;      ///< per cent, not below 0
    double dfStretchAzimuth = 0;        ///< degrees, along which the pattern is longer, as in project files
    SeriesDistortion distortion;
    QMap<QString, double> mapError;  ///< standard errors by name, in the units of the file; those known
};

/// The text of a calibration file: one JSON object, UTF-8, in the units above. All numbers are written so
/// that they come back to the bit.
QByteArray calibrationText(const Calibration& calibration);

/// Reads the text of a calibration file.
///
/// Refused are what is no JSON object of this format and version, numbers that are missing, no numbers or out
/// of range, and texts above 1 MB. Keys that are not known are passed over; of the errors those that are no
/// positive numbers.
///
/// @param pstrReason  may be null; why it cannot be used
std::optional<Calibration> calibrationOfText(const QByteArray& bytes, QString* pstrReason = nullptr);

/// The same of a file; the reason names it.
std::optional<Calibration> readCalibration(const QString& strFile, QString* pstrReason = nullptr);
[[nodiscard]] bool writeCalibration(const QString& strFile, const Calibration& calibration,
                                    QString* pstrReason = nullptr);

/// What a data set tells now; without errors and with no pixel size of its own.
Calibration calibrationOf(const DataSet& dataSet, const MappingParameters& mapping);

/// Makes of a calibration in pixels of the frames as they are worked with one in those of the files, which
/// all calibrations hold: the same unless frames are binned.
void toFilePixels(Calibration& calibration, const SeriesData& series);

/// Whether an object says that it is such a file, of whatever version.
bool isCalibration(const QJsonObject& object);

/// Whether a pixel size, Å⁻¹, is that of another camera length or binning than the calibration's series had.
bool isOtherCameraLength(const Calibration& calibration, double dfPixelSize);

/// Puts axis, stretching, distortion and, where it was determined, pixel size into a data set. Peaks are to
/// be mapped anew.
/// @return warnings: another wavelength, and another size of the pixels, so another camera length or binning
QStringList takeCalibration(DataSet& dataSet, MappingParameters& mapping, const Calibration& ofFiles);

}  // namespace tessera
