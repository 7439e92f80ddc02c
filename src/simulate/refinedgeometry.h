// RefinedGeometry: the refined cell, orientation and geometry of a driver's summary, judged by the truth.
#pragma once

#include "simulate/latticematch.h"
#include "simulate/simulatedseries.h"

#include <QJsonObject>
#include <QString>

#include <map>
#include <optional>

namespace tessera {

/// A refined cell against the true one in the same setting.
struct JudgedCell {
    bool bRead = false;   ///< there are six numbers
    bool bMatch = false;  ///< they describe the true lattice, or a sublattice of it
    int nVolumeRatio = 0;
    std::array<double, 6> adfFound{}, adfTrue{};  ///< Å, degrees
    CellErrors errors;
    /// (error / standard error)² of each parameter; none where it has no standard error or one of 0, as of an
    /// angle that symmetry holds.
    std::array<std::optional<double>, 6> aRatio;
    /// Mean of these ratios: near 1 if the standard errors are right.
    std::optional<double> meanRatio() const;
};

/// The amplitude in per cent and the azimuth in degrees of a correction, found and true.
struct JudgedDistortion {
    double dfAmplitude = 0, dfAzimuth = 0, dfTrueAmplitude = 0, dfTrueAzimuth = 0;
    /// Amplitude of the ellipse that is left over, per cent: the difference of the vectors A (cos 2phi, sin
    /// 2phi).
    double error() const;
};

/// What was read and judged; what the summary does not have is missing here too.
struct RefinedGeometry {
    bool bRead = false;  ///< the summary has the object
    JudgedCell cell, constrained;
    bool bBasisRead = false;  ///< NAME_refined.uc was read
    LatticeMatch lattice;     ///< of that basis with the true lattice
    /// Turn from the true to the refined basis: angle, and the parts about the laboratory's x (rotation
    /// axis), y and z (towards the source), degrees. Only where the lattice is right.
    std::optional<double> orientationError;
    Vector3 vecTurn{};
    std::optional<JudgedDistortion> stretching, ellipse;
    /// Errors by the names of their JSON keys. Degrees: axis, axisOutOfPlane. Per cent: radial and spiral at
    /// the true reference radius (where there is no third order, at the found one), tiltScale. Pixels:
    /// centreX, centreY, against the mean offset of the pattern from the beam.
    std::map<QString, double> mapError;
    QJsonObject told;  ///< rmsPixels, before, after, fixed, as the summary has them
};

/// Judges the object "geometry" of a summary. Its distortions are those that undo what the lenses did, as the
/// driver's options and the merging page have the stretching: the azimuth is that along which the correction
/// lengthens, across the one along which the pattern is longer; the radial term of a barrel is above 0, as
/// its correction goes outward, and the spiral term is above 0 where the correction goes clockwise on the
/// screen. The truth is brought to these senses to first order: an ellipse of 1 % undone by its own amplitude
/// leaves 0.01 % in the scale, a third order of 2 % leaves 0.12 % at the reference radius.
/// @param pmatRefined  a*, b*, c* in the rows of NAME_refined.uc; null without it
/// @param nLattice     which of the crystals was found, from 0
RefinedGeometry judgeGeometry(const QJsonObject& geometry, const Matrix3* pmatRefined,
                              const SimulatedSeries& truth, int nLattice);

/// For scripts and for reading; empty where nothing was read.
QJsonObject geometryToJson(const RefinedGeometry& geometry);
QString geometryToText(const RefinedGeometry& geometry);

}  // namespace tessera
