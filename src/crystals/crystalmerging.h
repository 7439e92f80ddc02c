// Crystal merging: the crystals of one compound to one list of intensities.
#pragma once

#include "crystals/crystalgroups.h"
#include "crystals/crystalscales.h"
#include "crystals/crystalsettings.h"
#include "integration/integrationjudgement.h"
#include "integration/integrationresult.h"
#include "records/runreport.h"
#include "records/runresult.h"

#include <QString>

#include <vector>

namespace tessera {

struct CrystalMergeOptions {
    JudgementOptions judgement;  ///< its scaling is along the crystals: off, as they are scaled before
    bool bKeepAll = false;       ///< true: no crystal is left out for what it does to CC1/2
    int nJobs = 1;               ///< threads; the result is the same for any number
};

/// A crystal that takes no part.
struct LeftOutCrystal {
    int nCrystal = 0;     ///< place in the list of the crystals
    double dfBefore = 0;  ///< CC1/2 of the merged intensities with it; 0: left out before, for another reason
    double dfWithout = 0;  ///< and without
    QString strReason;
};

struct MergedCrystals {
    std::vector<SettledCrystal> listSettled;  ///< all of the group that could be brought to its setting
    std::vector<char> listUsed;               ///< of each of them: 1 where it is merged
    std::vector<CrystalScale> listScale;      ///< of each of them; 1 and 0 of what is not used
    std::vector<double>
        listGain;  ///< what each of them adds to Fisher's z of CC1/2 of the normalized amplitudes
    std::vector<LeftOutCrystal> listLeftOut;
    std::vector<std::vector<int>> listOtherKind;  ///< crystals that were left out, but agree among
                                                  ///< themselves: places in the list of the crystals
    std::vector<Joint> listJoint;  ///< the tree of the settled crystals; heights sqrt(1 - r²) of the
                                   ///< correlations r of their normalized amplitudes
    QString strSettledClass;       ///< the Laue class by which settings were told apart
    CellParameters cellMean;       ///< of the setting of the group, the mean of the used ones
    CellParameters cellSpread;     ///< standard deviation of one crystal
    IntegrationResult result;      ///< as of one crystal; its frames are the crystals
};

/// Brings the crystals of a group to one setting and one scale, leaves out those that make equivalents agree
/// worse, merges and judges. The group's reduced cell is the setting of the intermediate results.
///
/// Left out, each with the reason:
/// - a crystal that shares frames with another one (isDependent()): the run with more frames counts, of equal
/// ones that which ended later;
/// - one whose lattice cannot be brought to that of the group;
/// - one whose intensities are not those of the others, or that shares too little with them
/// (crystalsapart.h);
/// - one that lowers CC1/2, the worst one first, as long as more than three are left (harmfulCrystal()).
RunResult<MergedCrystals> mergeCrystals(const std::vector<Crystal>& listCrystal, const CrystalGroup& group,
                                        const CrystalMergeOptions& options, CRunReport& report);

}  // namespace tessera
