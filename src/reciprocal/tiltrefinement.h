// Tilt refinement: the nine components of a*, b*, c* against the tilts at which reflections were seen.
#pragma once

#include "crystal/cellmessage.h"
#include "crystal/ewald.h"
#include "dataset/dataset.h"
#include "reciprocal/tiltfit.h"
#include "records/hklref.h"
#include "records/runreport.h"

#include <QList>
#include <QString>

#include <optional>
#include <vector>

namespace tessera {

constexpr double g_dfTiltWavelength = 0.0251;  ///< Å, of electrons of 200 kV

/// How a refinement is done.
struct TiltRefinementOptions {
    double dfWavelength = g_dfTiltWavelength;  ///< Å, of the calculated tilts
    QList<HKLRef> listExcluded;                ///< left out by rounded indices; the intensities don't count
    QString strLatticeHost = latticeServiceHost();   ///< of the link in the log
    double dfFunctionError = g_dfTiltFunctionError;  ///< relative, for the steps of the fit
};

/// What a refinement found.
struct TiltRefinement {
    bool bExchanged = false;        ///< a* and b* are exchanged, and with them h and k of the reflections
    int nInfo = 0;                  ///< result of the fit; 0 without reflections
    ReciprocalBasis basisBefore;    ///< the working copy of the cell, right-handed
    ReciprocalBasis basis;          ///< the refined one
    std::vector<double> vecStdErr;  ///< of the nine components
    QList<Peak3D> listPeak;         ///< the reflections that the fit used, with dfTiltFit
    double dfSquaresBefore = 0;     ///< of the errors against the tilts of the frames, degrees²
    double dfSquaresAfter = 0;
};

/// The wavelength for the tilts of a data set, Å: 0.0251 at 200 kV, and where that of the data set rounds to
/// another number that one, with a line that says so. The tilts stay the same when a cell grows as the
/// wavelength shrinks, so that a wrong one makes all lengths wrong by the same factor, and no error shows it.
double wavelengthOfTilts(const DataSet& dataSet, CRunReport& report);

/// The rows of the log that say a basis: "a* …", "b* …", "c* …".
void addBasisLines(const ReciprocalBasis& basis, CRunReport& report);

/// A basis of positive triple product.
struct RightHandedCell {
    ReciprocalBasis basis;
    bool bExchanged = false;  ///< a* and b* were exchanged, and with them h and k must be
};

/// The cell in force as a right-handed working copy: a* and b* are exchanged, with a red line, when the
/// triple product is negative. Writes the volume and the three lines. None, with a red line, without a cell.
/// @param strHead  if not empty, a line before the three
std::optional<RightHandedCell> rightHandedCell(const DataSet& dataSet, CRunReport& report,
                                               const QString& strHead = {});

/// The reflections that filterReflections() keeps and that are not excluded, with h and k exchanged if asked.
QList<Peak3D> reflectionsForTilts(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                  double dfLeastIntensity, const QList<HKLRef>& listExcluded, bool bExchanged,
                                  CRunReport& report);

/// The geometry of a data set for filterReflections() and calFramePosition().
FramePositionGeometry framePositionGeometry(const DataSet& dataSet);

/// The direct cell of the basis as an HTML line with the link that tests its lattice; a red line if the
/// vectors are co-planar.
void addRefinedCell(const ReciprocalBasis& basis, const QString& strLatticeHost, CRunReport& report);

/// Refines a*, b*, c* so that the calculated tilts agree with the tilts of the frames (dfFrameTilt) of
/// strong reflections away from the axis.
///
/// The tilts hardly tell a common scale of the vectors: nothing but the curvature of the sphere does. If the
/// working copy of a left-handed cell has a* and b* exchanged, so have the reflections h and k. Nothing of
/// the data set is changed.
///
/// Column TiltO of the table is dfFrameTilt in this and the next refinement, and Delta1 and Delta2 are
/// against it. The errors against the tilts of the curves are those of calExpectedFrameNo().
/// @param listPeak  merged reflections with indices, raw positions, dfFrameFit
/// @return none without a cell in force
std::optional<TiltRefinement> refineBasisVectors(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                 CRunReport& report,
                                                 const TiltRefinementOptions& options = {});

/// The same against the tilts of the curves fitted through the frames (dfTiltFit), with weaker reflections
/// too and without the excluded ones.
/// @return none without a cell in force
std::optional<TiltRefinement> refineUnitCellUsingFrameNo(const QList<Peak3D>& listPeak,
                                                         const DataSet& dataSet, CRunReport& report,
                                                         const TiltRefinementOptions& options = {});

}  // namespace tessera
