// Crystal settings: the indices of all crystals of a group in one setting, by their intensities.
#pragma once

#include "crystals/crystal.h"
#include "lattice/latticebasis.h"
#include "records/runreport.h"

#include <Eigen/Core>

#include <array>
#include <vector>

namespace tessera {

/// Merged intensities under the symmetry that every diffraction pattern has, Friedel's.
struct FriedelIntensity {
    std::array<int, 3> anIndex = {};  ///< the one of both mates whose first number that is not 0 is positive
    double dfIntensity = 0;
    double dfSigma = 0;
};

/// Indices in another setting; false where they come out fractional.
bool wholeIndex(const Eigen::Matrix3d& mat, const std::array<int, 3>& anIndex, std::array<int, 3>& anNew);

/// Sorted by index, each once. `matIndices` transforms the indices first; what comes out fractional is left
/// out.
std::vector<FriedelIntensity> friedelMerged(const std::vector<ScaledIntensity>& list,
                                            const Eigen::Matrix3d& matIndices);

struct IntensityCorrelation {
    int nCommon = 0;
    double dfCorrelation = 0;  ///< 0 where fewer than three are common
};

/// Pearson's coefficient of what two lists have in common.
IntensityCorrelation correlationOf(const std::vector<FriedelIntensity>& first,
                                   const std::vector<FriedelIntensity>& second);

/// One crystal brought to the setting of its group.
struct SettledCrystal {
    int nCrystal = 0;                        ///< place in the list of the crystals
    Eigen::Matrix3d matIndices;              ///< from the indices of its own cell
    std::vector<FriedelIntensity> listMean;  ///< in the setting of the group
    double dfCorrelation = 0;                ///< with the mean of all the others
    double dfSecond = 0;  ///< the best of the other settings, of the crystals' symmetry and
                          ///< without
    int nCommon = 0;      ///< reflections that it shares with the others
};

/// Chooses for each crystal, of the settings that the lattices allow, the one that agrees with the others:
/// the crystal with the most reflections first, then always the one that shares most with those that are
/// settled; after that each is tried anew against the mean of all others, until nothing changes.
/// Source: the idea of Brehm & Diederichs (2014), Acta Cryst. D70, 101–109.
///
/// @param listMember  places of the crystals in `listCrystal`
/// @param reference   reduced basis that all are brought to
std::vector<SettledCrystal> settleCrystals(const std::vector<Crystal>& listCrystal,
                                           const std::vector<int>& listMember, const LatticeBasis& reference,
                                           CRunReport& report);

}  // namespace tessera
