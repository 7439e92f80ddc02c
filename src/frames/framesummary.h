// FrameSummary: what a frame file and its header tell about a series.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// What is known from one frame file.
struct FrameSummary {
    int nWidth = 0;  ///< pixels
    int nHeight = 0;
    QString strFormat;       ///< such as "MRC"
    double dfKilovolts = 0;  ///< accelerating voltage, kV; 0: unknown
    double dfPixelSize = 0;  ///< size of a pixel in reciprocal space, Å⁻¹; 0: unknown
};

/// Reads the first image of a frame file, as loadFirstImage() does, and the header, if the format has one
/// that tells about the microscope.
/// @param pstrReason  may be null; takes on failure what is wrong with the file
/// @return nothing when the file has no readable image
[[nodiscard]] std::optional<FrameSummary> readFrameSummary(const QString& strFileName,
                                                           QString* pstrReason = nullptr);

/// Whether all files of a series exist and have the size of the first one. Only files of another length or
/// format are read, and if possible only their headers.
/// @param pstrReason  may be null; takes the first file that differs
[[nodiscard]] bool areFramesAlike(const QStringList& listFile, QString* pstrReason = nullptr);

}  // namespace tessera
