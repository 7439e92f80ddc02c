// RoadResults: the results of all parts of a road.
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

/// The series as it was opened.
struct OpenResult {
    QString strName;  ///< name of the project, or of the first image without suffix
    int nFrames = 0;
    double dfTurn = 0;  ///< difference of the smallest and the greatest tilt, degrees
    QString strChoice;  ///< which frames are used and how; empty: all frames as they are
};

/// The result of the stage shifts.
struct ShiftResult {
    QRect rcRegion;         ///< reference region, raw pixels
    QPointF ptCentre;       ///< direct beam on the first frame, raw pixels
    double dfMaxShift = 0;  ///< greatest coordinate of a shift, pixels
    QList<int> listJump;  ///< numbers, from 1, of frames whose shift differs too much from their neighbours'
};

/// The result of the stage peaks.
struct PeakResult {
    double dfThreshold = 0;         ///< smallest value of the band-passed image at a peak
    double dfFrameScale = 1;        ///< factor of the pixels
    double dfPeakRadius = 0;        ///< sigma of the inner Gaussian, pixels
    double dfBackgroundRadius = 0;  ///< sigma of the outer Gaussian, pixels
    int nPeaks = 0;
};

/// The result of the stage merge.
struct MergeResult {
    int nPeaks = 0;          ///< peaks in chains
    int nOutsideLimits = 0;  ///< peaks outside the limits of resolution and intensity
    int nChains = 0;
    int nReflections = 0;
};

/// The cell in force.
struct CellResult {
    std::optional<CellParameters> parameters;  ///< none if the vectors of the cell are coplanar
    double dfVolume = 0;                       ///< Å³
    std::optional<LatticeFit> fit;             ///< fit of all mapped peaks; none without mapped peaks
};

/// The result of the stage index.
struct IndexResult {
    int nIndexed = 0;
    int nDuplicated = 0;
    int nUnindexed = 0;
    int nOnEdge = 0;                        ///< reflections that are strongest on the first or last frame
    double dfShare = 0;                     ///< fraction of the selected reflections that was indexed, 0 to 1
    std::optional<CellRefinement> refined;  ///< refined against the d* of the indexed reflections
    std::optional<CentreOffset> centreOffset;  ///< offset of the direct beam; none if it is not determined
    bool bOppositeSense = false;               ///< the rotation seems to have the opposite sense
};

/// The result of the stage integrate.
struct IntegrateResult {
    std::optional<IntegrationResult> result;  ///< none if there are no intensities
    IntegrationFiles files;
    QString strReason;  ///< why there are no intensities
};

/// How the peak positions of a refinement were measured: pixels of peak hunting, fits on the frames, and fits
/// with a constant background.
enum class PairPositions { WholePixels, SubPixels, SubPixelsConstant };

/// A refinement of the cell from pairs of peaks.
struct PairRefinement {
    PairPositions positions = PairPositions::WholePixels;
    DifferenceVectorRefinement found;
};

/// The result of the stage refine.
struct RefineResult {
    double dfDStarLow = 0;   ///< lower limit of the pairs, Å⁻¹
    double dfDStarHigh = 0;  ///< upper limit of the pairs, Å⁻¹
    QList<PairRefinement> listRun;
};

/// A section of reciprocal space that was written.
struct SectionResult {
    QString strPlane;        ///< "hk0"
    double dfMaxDStar = 0;   ///< Å⁻¹
    double dfThickness = 0;  ///< Å⁻¹
    double dfStep = 0;       ///< Å⁻¹ per pixel
    double dfSeen = 0;       ///< measured fraction of the disc up to dfMaxDStar, 0 to 1
    QStringList listFile;    ///< MRC and PNG
};

/// The time that a part of the road took.
struct PartTime {
    QString strPart;  ///< a stage or an export
    double dfSeconds = 0;
};

/// The results of a road, as far as it got. A part that failed may have left an incomplete result.
struct RoadResults {
    std::optional<OpenResult> open;
    std::optional<ShiftResult> shifts;
    std::optional<PeakResult> peaks;
    std::optional<AxisFound> axis;  ///< none if it was not searched, or not found
    std::optional<MergeResult> merge;
    std::optional<CellResult> cell;          ///< as the last stage concerned left it
    std::optional<LatticeAnalysis> lattice;  ///< lattice of the cell in force
    std::optional<IndexResult> index;
    std::optional<GeometryRefinement> geometry;
    std::optional<IntegrateResult> integrate;
    std::optional<RefineResult> refine;
    std::optional<QStringList> listExported;  ///< exports that are done; none if no export was started
    QList<SectionResult> listSection;         ///< sections that were written

    QStringList listFile;            ///< paths of the files that the stages have written
    QList<Judgement> listJudgement;  ///< judgements of the parts, in their order
    QStringList listHint;            ///< hints at the cause if a cell was judged bad, see misfithint.h

    std::optional<RoadStage> lastStage;       ///< the last stage that finished
    QString strFailed;                        ///< the first part that failed: "open", a stage or an export
    StageResult end;                          ///< result of the first part that did not finish
    QStringList listWarning;                  ///< red lines of the log, except the reason in `end`
    std::optional<QList<PartTime>> listTime;  ///< none if an exception ended the road
};

}  // namespace tessera
