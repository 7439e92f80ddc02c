// Synthetic observations: a crystal that turns, measured with known scales, errors and outliers.
#pragma once

#include "integration/integrationjudgement.h"
#include "simulate/structurefactor.h"

#include <functional>
#include <set>
#include <vector>

namespace tessera {

struct SyntheticOptions {
    double dfFirstTilt = -70;  ///< degrees
    double dfLastTilt = 70;
    double dfStep = 1;
    double dfDMin = 0.75;                    ///< Å
    std::function<double(double)> fnFading;  ///< of the intensity, by frame; empty: none
    std::function<double(double)> fnB;       ///< Å², exp(-2B(d*/2)²), by frame; empty: none
    double dfElectrons = 300;                ///< counts of the mean reflection
    double dfBackground = 20;                ///< variance that it leaves in each
    double dfA = 1;                          ///< of the error model
    double dfB = 0;
    double dfOutliers = 0;  ///< share of the observations that are ten times too strong, or lost
    unsigned nSeed = 1;
    bool bPrimitive = true;   ///< the cell in force is the reduced primitive one, else that of the source
    bool bForbidden = false;  ///< multiple scattering gives absent reflections 5% of the mean of their shell
};

struct SyntheticSeries {
    IntegratedSeries integrated;
    SeriesGeometry series;
    JudgedLattice lattice;
    std::vector<double> listTrue;  ///< true intensity of each observation, before all that befalls it
    std::set<int> setOutlier;
};

/// The truth by a formula of its own: passages by a search over the frames, intensities by CStructureFactor.
SyntheticSeries syntheticSeries(const CrystalStructure& structure, const SyntheticOptions& options = {});

/// One of the simulator's structures, or one of those below.
///
/// Laue classes that the simulator's crystals lack, as structure types, some with elements in place of others
/// for which the simulator has no scattering factors: "pyrite" (m-3), "scheelite" (4/m), "apatite" (6/m),
/// "dolomite" (-3), "antimonate" (-31m).
CrystalStructure structureNamed(const QString& strName);

}  // namespace tessera
