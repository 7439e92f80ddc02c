// Crystal settings: the indices of all crystals of a group in one setting, by their intensities.
#pragma once

#include "crystals/cellsettings.h"
#include "crystals/crystal.h"
#include "crystals/linkage.h"
#include "integration/scaling.h"
#include "lattice/latticebasis.h"
#include "records/runreport.h"

#include <Eigen/Core>

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// An intensity, merged at least over the Friedel mates, which are equal in every kinematical pattern.
struct FriedelIntensity {
    std::array<int, 3> anIndex = {};  ///< of both mates the one whose first number other than 0 is positive
    double dfIntensity = 0;
    double dfSigma = 0;
};

/// Indices in another setting, rounded.
/// @param mat  from the given indices to the new ones
/// @return nothing where they come out fractional, as for a reflection that the other cell does not have
std::optional<std::array<int, 3>> wholeIndex(const Eigen::Matrix3d& mat, const std::array<int, 3>& anIndex);

/// Sorted by index, each once. `matIndices` transforms the indices first; reflections whose indices become
/// fractional are left out.
std::vector<FriedelIntensity> friedelMerged(const std::vector<ScaledIntensity>& list,
                                            const Eigen::Matrix3d& matIndices);

/// How two lists of intensities agree.
struct IntensityCorrelation {
    int nCommon = 0;           ///< reflections that both have
    double dfCorrelation = 0;  ///< 0 where fewer than three are common
};

/// Pearson's correlation coefficient of the reflections that two lists have in common. Both are sorted by
/// index, each index once, as friedelMerged() makes them.
IntensityCorrelation correlationOf(const std::vector<FriedelIntensity>& first,
                                   const std::vector<FriedelIntensity>& second);

/// One crystal brought to the setting of its group.
struct SettledCrystal {
    int nCrystal = 0;                        ///< place in the list of the crystals
    Eigen::Matrix3d matIndices;              ///< from the indices of its own cell to those of the group's
                                             ///< reduced cell
    std::vector<FriedelIntensity> listMean;  ///< in the setting of the group, each once for all that the
                                             ///< symmetry of the group makes equivalent
    double dfCorrelation = 0;                ///< of the normalized amplitudes with the mean of all the others
    double dfSecond = 0;                     ///< the same in the best of the other alternatives; 0 if none
                                             ///< of them shares enough reflections
    int nCommon = 0;                         ///< reflections that it shares with the others
    int nAlternatives = 1;   ///< settings that the lattice allows and the symmetry does not make equal
    int nAlternative = 0;    ///< which of them: 0 is the closest by the cell alone
    bool bBySharing = true;  ///< false: it shares too little to choose, and has the closest one
};

struct SettlingOptions {
    CellTolerance tolerance;
    QString strLaueClass;  ///< of the group; empty: by the intensities
    int nJobs = 1;         ///< threads; the result is the same for any number
};

struct SettledCrystals {
    std::vector<SettledCrystal> listSettled;  ///< in the order of the members
    std::vector<int> listOutside;             ///< members whose lattice no setting brings near the group's
    QString strLaueClass;                     ///< in which equivalents were merged
    ObservationSymmetry symmetry;             ///< from the indices of the group's reduced cell
    /// The distance of each two settled crystals, from 0 to 1: sqrt(1 - r²) of the correlation r of their
    /// normalized amplitudes, or 1 for an r below 0. Two crystals may share few reflections or none. So r is
    /// a weighted mean: the correlation of the reflections that they share has their number as its weight;
    /// the product of the correlations of both crystals with the mean of all others has the weight ten.
    CDistances distances{0};
};

/// Chooses for each crystal, of the settings that the lattices allow, the one that agrees with the others: at
/// first with no symmetry but Friedel's, by the crystals with the most reflections; then by all, under the
/// Laue class that these have together, so that crystals with few reflections share more.
///
/// @param listMember  places of the crystals in `listCrystal`
/// @param reference   reduced basis that all are brought to
/// @return nothing settled when the report asked to stop
SettledCrystals settleCrystals(const std::vector<Crystal>& listCrystal, const std::vector<int>& listMember,
                               const LatticeBasis& reference, const SettlingOptions& options,
                               CRunReport& report);

}  // namespace tessera
