// SpaceGroupRanking: ranks space groups by systematic absences, allowing for multiple scattering.
#pragma once

#include "integration/laueclass.h"
#include "integration/mergingquality.h"

#include <QString>

#include <vector>

namespace tessera {

/// The evidence for one reflection condition.
struct ConditionEvidence {
    QString strCondition;  ///< "h0l: h+l = 2n"
    int nForbidden = 0;    ///< merged reflections that the condition forbids
    double dfRatio =
        0;  ///< mean E² of the forbidden reflections over that of the others of the zone; NaN: unknown
    double dfRatioError = 0;  ///< standard error of the ratio; NaN: unknown
    double dfLikelihood = 0;  ///< probability of the condition or of one that includes it, 0 to 1
};

/// A space group with its probability.
struct SpaceGroupCandidate {
    int nNumber = 1;            ///< 1 to 230
    QString strName;            ///< Hermann–Mauguin symbol in the setting of the cell, gemmi's xhm()
    double dfLikelihood = 0;    ///< probability, 0 to 1; those of all candidates add up to 1
    QStringList listCondition;  ///< its reflection conditions
    bool bCentric = false;      ///< centrosymmetric
};

/// The result of rankSpaceGroups().
struct SpaceGroupRanking {
    std::vector<ConditionEvidence> listCondition;
    std::vector<SpaceGroupCandidate> listCandidate;  ///< the best first
};

/// Ranks the space groups of a Laue class by their reflection conditions.
///
/// Multiple scattering gives forbidden reflections intensity, most in zones in which several rows are excited
/// at once. Forbidden reflections therefore count as absent if they are much weaker than the allowed ones,
/// not only if they are 0.
SpaceGroupRanking rankSpaceGroups(const std::vector<MergedReflection>& listMerged, const LaueCandidate& laue);

}  // namespace tessera
