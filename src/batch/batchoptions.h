// BatchOptions: what the command line of tessera-batch asks for.
#pragma once

#include "records/runparameters.h"
#include "road/batchexports.h"
#include "road/batchstage.h"

#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// Everything the user said. An empty optional is a value that the driver finds itself ("auto") or
/// takes from the project.
struct BatchOptions {
    QStringList listInput;  ///< one project, or images in series order; files of --json with `bSummary`
    bool bSummary = false;  ///< no series: the table of those whose files of --json are given
    QString strOutDir;      ///< empty: beside the project or the first image
    QString strMaskFile;
    QString strCellFile;
    QString strJsonFile;
    BatchStage stageFrom = BatchStage::Shifts;
    BatchStage stageTo = BatchStage::Index;
    int nJobs = 0;    ///< frames worked on side by side; 0: one per core
    int nGroup = -1;  ///< merge only the peaks of this group; -1: all
    bool bWindowDefaults = false;

    std::optional<QRect> rcRegion;  ///< reference region, pixels

    std::optional<double> dfWavelength;  ///< Å
    std::optional<double> dfPixelSize;   ///< Å⁻¹
    std::optional<double> dfRotationAxis;
    std::optional<double> dfTiltStart;
    std::optional<double> dfTiltStep;
    std::optional<double> dfTiltRelaxation;
    std::optional<double> dfStretchAmplitude;
    std::optional<double> dfStretchAzimuth;
    std::optional<bool> bApplyStretching;
    std::optional<double> dfCenterX;
    std::optional<double> dfCenterY;

    PeakHuntingParameters hunting;
    std::optional<double> dfPeakThreshold;
    std::optional<double> dfResolutionMin;
    std::optional<double> dfResolutionMax;
    std::optional<double> dfIntensityMin;
    std::optional<double> dfIntensityMax;
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;
    RefinementParameters refinement;
    std::optional<double> dfRefineIntensityLow;
    std::optional<double> dfRefineIntensityHigh;
    std::optional<double> dfRefineDStarLow;  ///< Å⁻¹
    std::optional<double> dfRefineDStarHigh;
    bool bConstantBackground = false;  ///< refine also with positions fitted beside a constant
    BatchExports exports;

    bool isProject() const;
};

/// Reads the command line. Empty on bad usage, with the reason in `strError`.
/// `strHelp` takes the text that was asked for with --help or --version, and then nothing else counts.
std::optional<BatchOptions> parseBatchOptions(const QStringList& listArgument, QString& strError,
                                              QString& strHelp);

}  // namespace tessera
