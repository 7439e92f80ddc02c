// Merged judgement: what the intensities of several crystals are worth, and the doubts about their symmetry.
#pragma once

#include "crystals/crystalmerging.h"
#include "crystals/meancell.h"
#include "integration/observation.h"

#include <vector>

namespace tessera {

/// Judges and merges the observations of the used crystals, and warns of a symmetry that these do not have.
///
/// @param listObservation  scaled, with the indices of the group; each crystal stands for a frame
/// @param merged           settled, chosen and scaled; gets the mean cell and the result
void judgeMerged(const std::vector<Crystal>& listCrystal, std::vector<Observation>&& listObservation,
                 const MeanCell& cell, double dfWavelength, const CrystalMergeOptions& options,
                 CRunReport& report, MergedCrystals& merged);

}  // namespace tessera
