// RoadResults: what the parts of the road found, in plain numbers.
#pragma once

#include "crystal/cellrefinement.h"
#include "integration/integrationfiles.h"
#include "integration/integrationresult.h"
#include "lattice/axissearch.h"
#include "lattice/latticeanalysis.h"
#include "lattice/latticefit.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/centreoffset.h"
#include "records/cellparameters.h"
#include "refinement/geometryrefinement.h"
#include "road/roadstage.h"
#include "road/stageresult.h"
#include "road/verdict.h"

#include <QList>
#include <QPointF>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

struct OpenResult {
    QString strName;  ///< of the project, or the first image without its suffix
    int nFrames = 0;
    double dfTurn = 0;  ///< degrees between the least and the greatest tilt
    QString strChoice;  ///< which frames are taken and how; empty: all as they come
};

struct ShiftResult {
    QRect rcRegion;         ///< reference region, raw pixels
    QPointF ptCentre;       ///< direct beam on the first frame, raw pixels
    double dfMaxShift = 0;  ///< greatest coordinate of a shift, pixels
    QList<int> listJump;    ///< numbers, from 1, of the frames whose shift stands apart from its neighbours
};

struct PeakResult {
    double dfThreshold = 0;   ///< least value of the band-passed image at a peak
    double dfFrameScale = 1;  ///< what the pixels were multiplied by
    double dfPeakRadius = 0;  ///< sigmas of both Gaussians, pixels
    double dfBackgroundRadius = 0;
    int nPeaks = 0;
};

struct MergeResult {
    int nPeaks = 0;          ///< in chains
    int nOutsideLimits = 0;  ///< kept out by the limits of resolution and intensity
    int nChains = 0;
    int nReflections = 0;
};

struct CellResult {
    std::optional<CellParameters> parameters;  ///< of the cell in force; none where its vectors are co-planar
    double dfVolume = 0;                       ///< Å³
    std::optional<LatticeFit> fit;             ///< of all peaks; none where none are mapped
};

struct IndexResult {
    int nIndexed = 0;
    int nDuplicated = 0;
    int nUnindexed = 0;
    int nOnEdge = 0;                           ///< strongest on the first or the last frame
    double dfShare = 0;                        ///< of the selected reflections that were indexed, 0 to 1
    std::optional<CellRefinement> refined;     ///< from the d* of the indexed reflections
    std::optional<CentreOffset> centreOffset;  ///< of the direct beam; none where it is not determined
    bool bOppositeSense = false;               ///< the tilts say that the series was turned the other way
};

struct IntegrateResult {
    std::optional<IntegrationResult> result;  ///< none where there are no intensities
    IntegrationFiles files;
    QString strReason;  ///< why there are none
};

/// How the positions of the peaks were measured that a cell was refined with.
enum class PairPositions { WholePixels, SubPixels, SubPixelsConstant };

struct PairRefinement {
    PairPositions positions = PairPositions::WholePixels;
    DifferenceVectorRefinement found;
};

struct RefineResult {
    double dfDStarLow = 0;  ///< Å⁻¹, limits of the pairs
    double dfDStarHigh = 0;
    QList<PairRefinement> listRun;
};

/// A section of reciprocal space that is on the disk.
struct SectionResult {
    QString strPlane;        ///< "hk0"
    double dfMaxDStar = 0;   ///< Å⁻¹
    double dfThickness = 0;  ///< Å⁻¹
    double dfStep = 0;       ///< Å⁻¹ per pixel
    double dfSeen = 0;       ///< share of the disc up to d*, 0 to 1
    QStringList listFile;    ///< MRC and PNG
};

struct PartTime {
    QString strPart;  ///< a stage or an export
    double dfSeconds = 0;
};

/// All of a road, up to where it ended. A part that failed may have left a part of its result.
struct RoadResults {
    std::optional<OpenResult> open;
    std::optional<ShiftResult> shifts;
    std::optional<PeakResult> peaks;
    std::optional<AxisFound> axis;  ///< none where it was not looked for, or not found
    std::optional<MergeResult> merge;
    std::optional<CellResult> cell;          ///< of the last stage that looked at it
    std::optional<LatticeAnalysis> lattice;  ///< of the cell in force
    std::optional<IndexResult> index;
    std::optional<GeometryRefinement> geometry;
    std::optional<IntegrateResult> integrate;
    std::optional<RefineResult> refine;
    std::optional<QStringList> listExported;  ///< exports that are done; none where none was begun
    QList<SectionResult> listSection;         ///< that are written

    QStringList listFile;            ///< that the stages have written, with their paths
    QList<Judgement> listJudgement;  ///< of the parts that were looked at, in their order
    QStringList listHint;            ///< what would suit the peaks better, where a cell was judged bad

    std::optional<RoadStage> lastStage;       ///< the last one that finished
    QString strFailed;                        ///< "open", a stage or an export: the first that failed
    StageResult end;                          ///< of the first part that did not finish
    QStringList listWarning;                  ///< red lines of the log but for the reason of the end
    std::optional<QList<PartTime>> listTime;  ///< none where an exception ended the road
};

}  // namespace tessera
