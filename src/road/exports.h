// Exports: other forms of the data, written through the same functions as the window's menu does.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// Which exports there are to be, and how.
struct ExportOptions {
    QStringList listKind;      ///< of exportNames(), in the order in which they are made
    bool bOnly = false;        ///< no stage is run
    QString strPictureFolder;  ///< empty: the folder of the result files
    QString strPictureFormat = QStringLiteral("png");
    double dfScale = 0.5;   ///< of the side of "scaled"
    int nVolumeEdge = 500;  ///< voxels
    bool bVolumeScaled = false;
    std::optional<double> dfContrastMin;  ///< empty: from the first frame, as at its first display
    std::optional<double> dfContrastMax;

    /// Whether one of them takes the drift out.
    bool needsShifts() const
    {
        return listKind.contains(QStringLiteral("smv")) || listKind.contains(QStringLiteral("volume"));
    }
};

/// The kinds of exports: SMV images, resized copies, reciprocal space, grey pictures, indexed peaks by frame.
inline const QStringList& exportNames()
{
    static const QStringList list = {QStringLiteral("smv"), QStringLiteral("scaled"),
                                     QStringLiteral("volume"), QStringLiteral("pictures"),
                                     QStringLiteral("ipf")};
    return list;
}

/// Makes one export.
/// @param strKind  of exportNames()
/// @return true if all its files are written; else the log says why
bool writeExport(const QString& strKind, const ExportOptions& exports, const DataSet& dataSet,
                 CRunReport& report);

}  // namespace tessera
