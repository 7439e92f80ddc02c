// Geometry refinement: cell, axis, beam and distortions of a series against its indexed peaks.
#pragma once

#include "records/runreport.h"
#include "refinement/geometrysolver.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

/// Which terms may be fitted in addition to the cell, the axis, the direct beam and the radial stretching.
struct GeometryRefinementOptions {
    bool bEllipse = true;         ///< elliptical distortion, in place of the stretching
    bool bThirdOrder = true;      ///< third-order distortions
    bool bParabolic = true;       ///< parabolic distortion
    bool bDrift = true;           ///< residual drift of the direct beam, see frameDrift()
    bool bTiltScale = true;       ///< a common factor of all tilts
    bool bAxisOutOfPlane = true;  ///< inclination of the rotation axis to the plane of the frames
    int nJobs = 1;                ///< threads; the result is the same for every number
    int nFrames = 0;  ///< frames of the series; the drift is given at least up to the last frame with peaks
    std::vector<int> listFixed;                  ///< GeometryNumber: numbers that are not refined
    std::vector<CellConstraint> listConstraint;  ///< Bravais types to try, the most symmetric first
};

/// A number that was not fitted.
struct FixedNumber {
    int nNumber = 0;  ///< GeometryNumber
    QString strWhy;   ///< the reason as a predicate: "cannot be distinguished from a free cell"
};

/// A fit with the geometry, the cell and the figures that follow from it.
struct GeometryModel {
    GeometryFit fit;
    DiffractionGeometry geometry;
    GeometryNumbers errors = {};  ///< standard errors of the free numbers, 0 for the fixed ones
    CellParameters cell;          ///< the conventional cell under a constraint, else the cell in force
    CellParameters cellErrors;    ///< standard errors
    bool bEllipse = false;        ///< the ellipse was fitted in place of the stretching
    double dfRms = 0;      ///< pixels, of the peaks in use, in one direction of the plane of the frames
    double dfRmsSeen = 0;  ///< rms of each half of the frames under the fit to that half; infinite for no fit
    double dfRmsUnseen = 0;  ///< rms of each half of the frames under the fit to the other half
    /// Residual drift of the direct beam of each frame, pixels, without the centre. Empty if no drift was
    /// found.
    std::vector<FramePlace> listDrift;
    int nDriftIntervals = 0;  ///< spline intervals of the smooth part of the drift; 0 without a smooth part
    int nJumps = 0;           ///< number of frames whose beam deviates significantly from the smooth part
};

/// The result of refineGeometry().
struct GeometryRefinement {
    QString strReason;           ///< why nothing was refined; empty if the refinement was done
    DiffractionGeometry before;  ///< the geometry before the refinement
    GeometryModel free;          ///< the model with the unconstrained cell
    /// The model under the most symmetric Bravais type that raises the rms by no more than 2 %.
    std::optional<GeometryModel> constrained;
    std::vector<FixedNumber> listFixed;  ///< numbers that were not fitted in best()
    int nPeaks = 0;                      ///< peaks that had indices at the start
    int nJoined = 0;           ///< peaks without indices that were added, as a reflection is expected there
    int nFitBefore = 0;        ///< peaks within the final limits under the geometry before
    int nFitAfter = 0;         ///< peaks within the final limits under the refined geometry
    double dfRmsBefore = 0;    ///< pixels, rms of the peaks in use under the geometry before
    double dfRmsAfter = 0;     ///< pixels, rms of the peaks in use under the refined geometry
    double dfTiltRange = 0;    ///< degrees
    bool bFinePlaces = false;  ///< whether the subpixel places of the spots were used

    /// Whether the geometry was refined.
    bool done() const { return strReason.isEmpty(); }
    /// The constrained model if there is one, else the free one.
    const GeometryModel& best() const { return constrained ? *constrained : free; }
};

/// Fits the geometry to indexed peaks.
///
/// The fit runs in rounds: each round fits the numbers, indexes each chain of peaks anew with the fitted
/// geometry within a tolerance that shrinks from round to round, and drops peaks that lie far off, until the
/// set of peaks no longer changes. Third-order distortions, ellipse, scale of the tilts and an axis out of
/// the plane are fitted if they lower the rms of frames that were left out of the fit (every second frame, in
/// turn). The subpixel places of the spots are used if they lower that rms. A residual drift of the direct
/// beam is removed alongside, see frameDrift(). Numbers that the peaks do not determine are fixed, with a
/// line of the log for each. Peaks without indices take part, too, once the terms are chosen, if they lie
/// where a reflection is expected. Finally the fit is repeated under the Bravais types.
///
/// The pixel size is never fitted: unless the cell is known, the peaks cannot distinguish it from the size of
/// the cell. The lengths of the cell therefore share the error of the pixel size, which the standard errors
/// do not contain: they describe the scatter of the residuals.
/// @param listSpot  peaks with and without indices; their chains are numbered here
/// @param start     the geometry to start from, with wavelength, pixel size and the cell in force
/// @return with a reason if fewer than 20 peaks, indices in one plane, or a cell that fits few of the peaks
///         make a fit impossible, if the run was stopped, or if the result is worse than the start
/// Source: Brázda, Klementová, Krysiak & Palatinus (2022), IUCrJ 9, 735–755.
GeometryRefinement refineGeometry(std::vector<GeometrySpot> listSpot, const DiffractionGeometry& start,
                                  const GeometryRefinementOptions& options, CRunReport& report);

}  // namespace tessera
