// Geometry refinement: cell, axis, beam and distortions of a series against its indexed peaks.
#pragma once

#include "records/runreport.h"
#include "refinement/geometrysolver.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

/// What may be fitted beside the cell, the axis, the direct beam and the stretching along the radius.
struct GeometryRefinementOptions {
    bool bEllipse = true;  ///< in place of the stretching
    bool bThirdOrder = true;
    bool bParabolic = true;
    bool bDrift = true;  ///< of the direct beam, smooth in the frame number and by frames that jump
    bool bTiltScale = true;
    bool bAxisOutOfPlane = true;
    int nJobs = 1;    ///< threads; the result is the same for every number
    int nFrames = 0;  ///< of the series, which a drift is told for; those up to the last peak are anyway
    std::vector<int> listFixed;                  ///< GeometryNumber: to stay as they are
    std::vector<CellConstraint> listConstraint;  ///< Bravais types to try, the most symmetric first
};

/// A number that was not fitted, with the reason in words.
struct FixedNumber {
    int nNumber = 0;
    QString strWhy;
};

/// A fit with what follows from it.
struct GeometryModel {
    GeometryFit fit;
    DiffractionGeometry geometry;
    GeometryNumbers errors = {};  ///< standard errors of the free numbers; 0 of the others
    CellParameters cell;          ///< conventional where it is constrained, else that in force
    CellParameters cellErrors;    ///< standard errors
    bool bEllipse = false;        ///< the ellipse in place of the stretching
    double dfRms = 0;             ///< pixels, of the kept peaks along one direction of the plane
    double dfRmsSeen = 0;         ///< the same of each half of the frames with a fit to it; infinite for none
    double dfRmsUnseen = 0;       ///< and with the fit to the other half
    /// Pixels, of each frame from the first: what its direct beam is off by beside the centre. Empty where no
    /// drift is left over.
    std::vector<FramePlace> listDrift;
    int nDriftIntervals = 0;  ///< of the smooth part of the drift; 0 where there is none
    int nJumps = 0;           ///< frames whose beam stands apart from the smooth part and from other frames
};

struct GeometryRefinement {
    QString strReason;  ///< why there is none; empty where it was done
    DiffractionGeometry before;
    GeometryModel free;
    std::optional<GeometryModel>
        constrained;                     ///< under the Bravais type that costs no more than 2 % of the rms
    std::vector<FixedNumber> listFixed;  ///< of the last model
    int nPeaks = 0;                      ///< given with indices
    int nJoined = 0;                     ///< of those without, that lay where reflections are expected
    int nFitBefore = 0;                  ///< of them within the last limits, with the geometry before
    int nFitAfter = 0;                   ///< and after
    double dfRmsBefore = 0;              ///< pixels, of the peaks kept
    double dfRmsAfter = 0;
    double dfTiltRange = 0;    ///< degrees
    bool bFinePlaces = false;  ///< the fine places of the spots were taken

    bool done() const { return strReason.isEmpty(); }
    /// The constrained model, or the free one.
    const GeometryModel& best() const { return constrained ? *constrained : free; }
};

/// Fits the geometry to indexed peaks.
///
/// Rounds: fit, index each chain of peaks anew with the geometry that came out, within a tolerance that
/// shrinks, drop what lies far off, until nothing changes. Third order, ellipse, scale of the tilts and an
/// axis out of the plane come in if they lower the rms of frames that they were not fitted to (every second
/// one, in turn). A drift of the direct beam that is left over is taken out beside the fit, see frameDrift().
/// Fine places of the spots are taken where they lower that rms. What the peaks cannot tell is fixed, with a
/// line of the log. Then the same under the Bravais types.
///
/// The size of a pixel is never fitted: without a known cell no peak tells it from the size of the cell, so
/// that all lengths of the cell have its error in common. Standard errors hold what the residuals show, not
/// that.
///
/// Peaks without indices that lie where reflections are expected, once the terms are chosen, take part too.
/// @param listSpot  peaks, indexed and others; their chains are numbered here
/// @param start     with wavelength, size of a pixel and the cell in force
/// @return with a reason where fewer than 20 peaks, indices in one plane, or a cell that few of the peaks fit
///         leave nothing to fit, where the run was stopped, or where the end is worse than the beginning
/// Source: Brázda, Klementová, Krysiak & Palatinus (2022), IUCrJ 9, 735–755.
GeometryRefinement refineGeometry(std::vector<GeometrySpot> listSpot, const DiffractionGeometry& start,
                                  const GeometryRefinementOptions& options, CRunReport& report);

}  // namespace tessera
