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

/// Reads the first image of a frame file as loadFirstImage() does and keeps its size; of a DM3 file also
/// what its tags tell of the microscope.
/// @param pstrReason  may be null; on failure what is wrong with the file
/// @return false, with `summary` as it was, when there is no image in it
[[nodiscard]] bool readFrameSummary(const QString& strFileName, FrameSummary& summary,
                                    QString* pstrReason = nullptr);

/// Whether all files of a series are there and of the size of the first. Only what can differ is read:
/// headers of pictures, and files of another length.
/// @param pstrReason  may be null; else names the first file that is not alike
[[nodiscard]] bool areFramesAlike(const QStringList& listFile, QString* pstrReason = nullptr);

}  // namespace tessera
