// Exports: writes the data in other forms, through the same functions as the window's menu.
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

/// Which exports are made, and how.
struct ExportOptions {
    QList<ExportKind> listKind;                        ///< in the order in which they are made
    bool bOnly = false;                                ///< run no stage
    QString strPictureFolder;                          ///< empty: the folder of the result files
    QString strPictureFormat = QStringLiteral("png");  ///< suffix of the pictures
    double dfScale = 0.5;                              ///< factor of the sides of "scaled"
    int nVolumeEdge = 500;                             ///< voxels along each side
    VirtualFrameOptions virtualFrames;                 ///< for the list for dynamical refinement
    bool bVolumeScaled = false;                        ///< scale the values of the volume to 0 to 255
    std::optional<double>
        dfContrastMin;  ///< counts shown black; none: from the first frame, as in the window
    std::optional<double> dfContrastMax;    ///< counts shown white, likewise
    std::vector<SectionPlane> listSection;  ///< sections of reciprocal space, made after the other exports
    SectionOptions section;

    /// Whether nothing is to be exported.
    bool isEmpty() const { return listKind.isEmpty() && listSection.empty(); }
    /// Whether one of the exports corrects the drift.
    bool needsShifts() const
    {
        return !listSection.empty() || std::any_of(listKind.begin(), listKind.end(), [](ExportKind kind) {
            return kind == ExportKind::Smv || kind == ExportKind::Volume || isForOtherProgram(kind);
        });
    }
};

/// Makes one export, other than those of writeForOtherProgram().
/// @return true if all files were written; else the log has the reason
bool writeExport(ExportKind kind, const ExportOptions& exports, const DataSet& dataSet, CRunReport& report);

}  // namespace tessera
