#include "crystals/crystalsapart.h"

#include "crystals/settingchoices.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Measurements of one compound reach 0.5 to 1 even where scattering is dynamical, those of two reach 0.1.
constexpr double g_dfLeastCorrelation = 0.3;

QString tooFew(const SettledCrystal& crystal)
{
    return QStringLiteral(
               "It shares %1 reflections with the others, too few to tell whether it is one of them.")
        .arg(crystal.nCommon);
}

/// The correlation that may occur by chance; it is higher for the best of several settings.
double chanceOf(const SettledCrystal& crystal)
{
    const double dfDeviations = 3 + std::sqrt(2 * std::log(double(crystal.nAlternatives)));
    return std::tanh(dfDeviations / std::sqrt(double(std::max(1, crystal.nCommon - 3))));
}

QString whyApart(const SettledCrystal& crystal, size_t nOfKind)
{
    if (crystal.nCommon < g_nFewCommon) {
        return tooFew(crystal);
    }
    const QString strCorrelation =
        QStringLiteral(
            "Its lattice agrees, but its intensities correlate with those of the others by %1 "
            "over %2 reflections")
            .arg(crystal.dfCorrelation, 0, 'f', 2)
            .arg(crystal.nCommon);
    return nOfKind > 1 ? strCorrelation + QStringLiteral(
                                              " and are alike in %1 crystals: another compound of the "
                                              "same lattice.")
                                              .arg(nOfKind)
                       : strCorrelation + QStringLiteral(": another compound, or wrong indices.");
}

}  // namespace

bool ApartCrystals::isNone() const
{
    return std::all_of(listReason.begin(), listReason.end(),
                       [](const QString& str) { return str.isEmpty(); });
}

ApartCrystals findApart(const SettledCrystals& settled, const std::vector<Joint>& listJoint)
{
    const std::vector<SettledCrystal>& list = settled.listSettled;
    const double dfHeight = std::sqrt(1 - g_dfLeastCorrelation * g_dfLeastCorrelation);
    const std::vector<int> listCluster = clustersBelow(listJoint, int(list.size()), dfHeight);
    std::vector<std::vector<int>> listBranch;
    std::vector<size_t> listReflections;
    for (size_t n = 0; n < list.size(); ++n) {
        const auto nBranch = size_t(listCluster[n]);
        listBranch.resize(std::max(listBranch.size(), nBranch + 1));
        listReflections.resize(listBranch.size(), 0);
        listBranch[nBranch].push_back(int(n));
        listReflections[nBranch] += list[n].listMean.size();
    }
    size_t nKept = 0;
    for (size_t n = 1; n < listBranch.size(); ++n) {
        if (std::make_pair(listBranch[n].size(), listReflections[n]) >
            std::make_pair(listBranch[nKept].size(), listReflections[nKept])) {
            nKept = n;
        }
    }
    ApartCrystals apart;
    apart.listReason.resize(list.size());
    for (size_t n = 0; n < listBranch.size(); ++n) {
        for (const int nPlace : listBranch[n]) {
            const SettledCrystal& crystal = list[nPlace];
            if (n != nKept) {
                apart.listReason[nPlace] = whyApart(crystal, listBranch[n].size());
            } else if (listBranch[n].size() > 1 && crystal.dfCorrelation < chanceOf(crystal)) {
                apart.listReason[nPlace] =
                    crystal.nCommon < g_nFewCommon
                        ? tooFew(crystal)
                        : QStringLiteral(
                              "Its intensities correlate with those of the others by %1 over %2 "
                              "reflections, which may be chance.")
                              .arg(crystal.dfCorrelation, 0, 'f', 2)
                              .arg(crystal.nCommon);
            }
        }
        if (n != nKept && listBranch[n].size() > 1) {
            apart.listKind.push_back(listBranch[n]);
        }
    }
    return apart;
}

}  // namespace tessera
