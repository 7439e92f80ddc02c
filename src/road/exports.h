// Exports: other forms of the data, written through the same functions as the window's menu does.
#pragma once

#include "dataset/dataset.h"
#include "exchange/virtualframes.h"
#include "integration/reciprocalsection.h"
#include "records/runreport.h"
#include "road/exportkind.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>
#include <vector>

namespace tessera {

/// Which exports there are to be, and how.
struct ExportOptions {
    QList<ExportKind> listKind;  ///< in the order in which they are made
    bool bOnly = false;          ///< no stage is run
    QString strPictureFolder;    ///< empty: the folder of the result files
    QString strPictureFormat = QStringLiteral("png");
    double dfScale = 0.5;               ///< of the side of "scaled"
    int nVolumeEdge = 500;              ///< voxels
    VirtualFrameOptions virtualFrames;  ///< of the list for dynamical refinement
    bool bVolumeScaled = false;
    std::optional<double> dfContrastMin;  ///< empty: from the first frame, as at its first display
    std::optional<double> dfContrastMax;
    std::vector<SectionPlane> listSection;  ///< planes of reciprocal space, made after the others
    SectionOptions section;

    /// Whether nothing is to be exported.
    bool isEmpty() const { return listKind.isEmpty() && listSection.empty(); }
    /// Whether one of them takes the drift out.
    bool needsShifts() const
    {
        return !listSection.empty() || std::any_of(listKind.begin(), listKind.end(), [](ExportKind kind) {
            return kind == ExportKind::Smv || kind == ExportKind::Volume || isForOtherProgram(kind);
        });
    }
};

/// Makes one export; those for other programs are made by writeForOtherProgram().
/// @return true if all its files are written; else the log says why
bool writeExport(ExportKind kind, const ExportOptions& exports, const DataSet& dataSet, CRunReport& report);

}  // namespace tessera
