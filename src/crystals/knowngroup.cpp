#include "crystals/knowngroup.h"

#include "integration/integrationjudgement.h"

#include <gemmi/symmetry.hpp>

#include <algorithm>

namespace tessera {

void preferKnownGroup(const QString& strKnown, IntegrationResult& result, CRunReport& report)
{
    bool bNumber = false;
    const int nNumber = strKnown.toInt(&bNumber);
    const gemmi::SpaceGroup* pGroup = bNumber ? gemmi::find_spacegroup_by_number(nNumber)
                                              : gemmi::find_spacegroup_by_name(strKnown.toStdString());
    std::vector<SpaceGroupCandidate>& list = result.spaceGroups.listCandidate;
    if (strKnown.isEmpty() || !pGroup || list.empty()) {
        return;
    }
    const auto it = std::find_if(list.begin(), list.end(), [&](const SpaceGroupCandidate& candidate) {
        return candidate.nNumber == pGroup->number;
    });
    const double dfBest = std::max_element(
                              list.begin(), list.end(),
                              [](const SpaceGroupCandidate& one, const SpaceGroupCandidate& other) {
                                  return one.dfLikelihood < other.dfLikelihood;
                              })
                              ->dfLikelihood;
    const double dfAsLikely = 0.95;  // of the best likelihood: no condition distinguishes the two groups
    if (it == list.end()) {
        report.addMessage(QStringLiteral("The known space group %1 is none of the Laue class %2.")
                              .arg(strKnown, result.chosen.strClass),
                          Severity::Warning);
    } else if (it->dfLikelihood < dfAsLikely * dfBest) {
        report.addMessage(
            QStringLiteral("The absences speak against the known space group %1: its likelihood is "
                           "%2, the best one has %3.")
                .arg(strKnown, QString::number(it->dfLikelihood, 'f', 2), QString::number(dfBest, 'f', 2)),
            Severity::Warning);
    } else {
        std::rotate(list.begin(), it, it + 1);
        result.spaceGroup = list.front();
        takeWilsonPlot(result);
    }
}

}  // namespace tessera
