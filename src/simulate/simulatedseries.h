// SimulatedSeries: the truth of a series, frame by frame, before noise.
#pragma once

#include "simulate/crossings.h"
#include "simulate/matrix3.h"
#include "simulate/simulationparameters.h"

#include <QPoint>

#include <optional>
#include <vector>

namespace tessera {

/// One spot as it must show on its frame.
struct TruthSpot {
    int nFrame = 0;           ///< from 0
    double dfX = 0, dfY = 0;  ///< pixels; whole numbers are pixel centres
    int nH = 0, nK = 0, nL = 0;
    double dfCounts = 0;         ///< expected counts of the spot in its disc, without background
    double dfSignalToNoise = 0;  ///< counts / sqrt(counts + background + read noise variance) in the disc
    double dfExcitation = 0;     ///< excitation error at the middle of the frame's slice, Å⁻¹
    int nLattice = 0;            ///< 1 where the spot is one of the second crystal
};

/// A series with its truth.
struct SimulatedSeries {
    SimulationParameters parameters;
    std::array<double, 6> adfCell{};  ///< Å, degrees
    Matrix3 matBasis{};               ///< a*, b*, c* in the rows, laboratory frame at tilt 0, Å⁻¹
    Matrix3 matPrimitive{};           ///< primitive reciprocal basis as rows of indices
    Matrix3 matSecondBasis{};         ///< as matBasis, of the second crystal if there is one
    std::vector<double> listStage, listBeamTilt, listOverall;  ///< degrees, one per frame
    std::vector<std::array<double, 2>> listShift;              ///< pixels, the first is 0
    /// Pixels that the pattern lies off the direct beam, one per frame; empty where it does not.
    std::vector<std::array<double, 2>> listPatternOffset;
    std::vector<TruthSpot> listSpot;                ///< frame by frame; those with a ratio of at least 0.5
    std::vector<std::vector<TruthSpot>> listDrawn;  ///< per frame, all spots that leave any count
    std::vector<QPoint> listHotPixel;
    std::vector<double> listScale;           ///< of the spots, one per frame
    std::vector<double> listDecay;           ///< Å², one per frame: intensities fall by exp(-B d*²/2)
    std::vector<Reflection> listReflection;  ///< all that the frames can reach, with their true |F|²
    std::vector<double> listArea;        ///< of their rocking curves, relative to one without mosaic spread
    std::vector<Crossing> listCrossing;  ///< their passages

    int latticeCount() const { return parameters.dfSecondShare > 0 ? 2 : 1; }
    std::array<double, 2> patternOffset(int nFrame) const
    {
        return listPatternOffset.empty() ? std::array<double, 2>{} : listPatternOffset[nFrame];
    }
    const Matrix3& basis(int nLattice) const { return nLattice == 0 ? matBasis : matSecondBasis; }
};

/// Radius in pixels of the disc on which counts and noise of a spot are told: three sigma.
double spotDiscRadius(const SimulationParameters& parameters);

/// Expected background of a frame in counts per pixel, at a distance from the beam in pixels:
/// diffuse scattering that falls with the distance, on an even floor.
double diffuseBackground(const SimulationParameters& parameters, double dfDistance);

/// Works out the whole series. Unknown crystals and parameters out of range give nothing and a reason.
std::optional<SimulatedSeries> simulateSeries(const SimulationParameters& parameters, QString& strError);

}  // namespace tessera
