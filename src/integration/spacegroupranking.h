// SpaceGroupRanking: space groups by what is absent, with multiple scattering in mind.
#pragma once

#include "integration/laueclass.h"
#include "integration/mergingquality.h"

#include <QString>

#include <vector>

namespace tessera {

/// One reflection condition: the reflections that it forbids against the rest of its zone, row or lattice.
struct ConditionEvidence {
    QString strCondition;  ///< "h0l: h+l = 2n"
    int nForbidden = 0;    ///< merged reflections that it forbids
    double dfRatio = 0;    ///< mean I of the forbidden over mean I of the allowed ones of the same zone
    double dfRatioError = 0;
    double dfLikelihood = 0;  ///< 0 to 1, that it holds
};

struct SpaceGroupCandidate {
    int nNumber = 1;            ///< 1 to 230
    QString strName;            ///< Hermann–Mauguin in the setting of the cell, gemmi's xhm()
    double dfLikelihood = 0;    ///< 0 to 1, all candidates together 1
    QStringList listCondition;  ///< the conditions that it asks for
    bool bCentric = false;
};

struct SpaceGroupRanking {
    std::vector<ConditionEvidence> listCondition;
    std::vector<SpaceGroupCandidate> listCandidate;  ///< the best first
};

/// Dynamical scattering puts intensity where none should be, most into zones whose rows excite one another,
/// so that a forbidden class counts as absent when it is much weaker than the allowed one, not when it is 0.
SpaceGroupRanking rankSpaceGroups(const std::vector<MergedReflection>& listMerged, const LaueCandidate& laue);

}  // namespace tessera
