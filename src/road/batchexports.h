// BatchExports: the exports that the command line asks for, through the same functions as the window's menu.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

struct BatchExports {
    QStringList listKind;      ///< of batchExportNames(), in the order of the command line
    bool bOnly = false;        ///< no stage is run
    QString strPictureFolder;  ///< empty: the folder of the result files
    QString strPictureFormat = QStringLiteral("png");
    double dfScale = 0.5;
    int nVolumeEdge = 500;
    bool bVolumeScaled = false;
    std::optional<double> dfContrastMin;  ///< empty: from the first frame, as at its first display
    std::optional<double> dfContrastMax;

    bool needsShifts() const
    {
        return listKind.contains(QStringLiteral("smv")) || listKind.contains(QStringLiteral("volume"));
    }
};

inline const QStringList& batchExportNames()
{
    static const QStringList list = {QStringLiteral("smv"), QStringLiteral("scaled"),
                                     QStringLiteral("volume"), QStringLiteral("pictures"),
                                     QStringLiteral("ipf")};
    return list;
}

/// @return true if all files of the export stand
bool runBatchExport(const QString& strKind, const BatchExports& exports, const DataSet& dataSet,
                    CRunReport& report);

}  // namespace tessera
