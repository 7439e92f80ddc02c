// FrameSummary: what a frame file tells of itself before a project stands.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

struct FrameSummary {
    int nWidth = 0;  ///< pixels
    int nHeight = 0;
    QString strFormat;       ///< such as "MRC"
    double dfKilovolts = 0;  ///< accelerating voltage, kV; 0 when not told
    double dfPixelSize = 0;  ///< in reciprocal space, Å⁻¹; 0 when not told
};

/// Reads the first image of a frame file as loadFirstImage() does and keeps its size; also what the header
/// tells of the microscope, in a format that has it.
/// @param pstrReason  may be null; on failure what is wrong with the file
/// @return false, with `summary` as it was, when there is no image in it
[[nodiscard]] bool readFrameSummary(const QString& strFileName, FrameSummary& summary,
                                    QString* pstrReason = nullptr);

/// Whether all files of a series are there and of the size of the first. Only what can differ is read:
/// files of another length or format, and of these no more than the header if that tells the size.
/// @param pstrReason  may be null; else names the first file that is not alike
[[nodiscard]] bool areFramesAlike(const QStringList& listFile, QString* pstrReason = nullptr);

}  // namespace tessera
