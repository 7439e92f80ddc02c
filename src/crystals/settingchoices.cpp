#include "crystals/settingchoices.h"

#include "integration/asymmetricunit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

namespace tessera {

namespace {

std::uint64_t keyOf(const std::array<int, 3>& anIndex)
{
    std::uint64_t nKey = 0;
    for (const int n : anIndex) {
        nKey = (nKey << 21) | (std::uint64_t(n + (1 << 20)) & 0x1fffffu);
    }
    return nKey;
}

std::array<int, 3> transformed(const Eigen::Matrix3i& mat, const std::array<int, 3>& anIndex)
{
    const Eigen::Vector3i vec = mat * Eigen::Vector3i(anIndex[0], anIndex[1], anIndex[2]);
    return {vec[0], vec[1], vec[2]};
}

/// Sums of pairs.
class CPairs {
public:
    void add(double dfX, double dfY)
    {
        ++m_nCount;
        m_dfX += dfX;
        m_dfY += dfY;
        m_dfXX += dfX * dfX;
        m_dfYY += dfY * dfY;
        m_dfXY += dfX * dfY;
    }
    SettingAgreement agreement() const
    {
        SettingAgreement agreement;
        agreement.nCommon = m_nCount;
        const double dfXX = m_dfXX - m_dfX * m_dfX / m_nCount, dfYY = m_dfYY - m_dfY * m_dfY / m_nCount;
        if (m_nCount >= 3 && dfXX > 1e-9 * m_dfXX && dfYY > 1e-9 * m_dfYY) {
            agreement.dfCorrelation = std::clamp((m_dfXY - m_dfX * m_dfY / m_nCount) / std::sqrt(dfXX * dfYY),
                                                 -1.0, 1.0);
        }
        return agreement;
    }

private:
    int m_nCount = 0;
    double m_dfX = 0, m_dfY = 0, m_dfXX = 0, m_dfYY = 0, m_dfXY = 0;
};

/// The logarithm of the likelihood of a correlation of so many pairs that follow a line with normal errors,
/// less that of a lattice whose axes are off: a tolerance is two standard deviations of a measured cell.
double scoreOf(const SettingAgreement& agreement, int nPairs, double dfMisfit)
{
    const double dfOfLattice = 2 * dfMisfit * dfMisfit;
    if (agreement.nCommon < g_nFewCommon) {
        return -dfOfLattice;
    }
    const double dfNearOne = 0.999;
    const double df = std::clamp(agreement.dfCorrelation, -dfNearOne, dfNearOne);
    return std::copysign(0.5 * nPairs * std::log(1 - df * df), df) - dfOfLattice;
}

}  // namespace

/// Numbers for reflections that are equivalent.
class CSettingChoices::CNumbering {
public:
    explicit CNumbering(const ObservationSymmetry& symmetry) : m_symmetry(symmetry), m_unit(symmetry.ops) {}

    /// Of an index of the group's reduced cell.
    int numberOf(const std::array<int, 3>& anIndex)
    {
        const auto [it, bNew] = m_mapIndex.emplace(keyOf(anIndex), 0);
        if (bNew) {
            const std::uint64_t nKey = keyOf(representative(anIndex));
            it->second = m_mapNumber.emplace(nKey, int(m_mapNumber.size())).first->second;
        }
        return it->second;
    }
    std::array<int, 3> representative(const std::array<int, 3>& anIndex) const
    {
        return m_unit.representative(conventionalIndex(m_symmetry, anIndex)).anIndex;
    }
    size_t count() const { return m_mapNumber.size(); }

private:
    const ObservationSymmetry& m_symmetry;
    CAsymmetricUnit m_unit;
    std::unordered_map<std::uint64_t, int> m_mapIndex;   ///< number of each index that was asked for
    std::unordered_map<std::uint64_t, int> m_mapNumber;  ///< of each representative
};

CSettingChoices::CSettingChoices(const ObservationSymmetry& symmetry,
                                 const std::vector<SettingInput>& listInput)
{
    CNumbering numbering(symmetry);
    // No operation but those of the class makes two images of such an index equal.
    const std::array<int, 3> anGeneral = {7, 31, 113};
    for (const SettingInput& input : listInput) {
        CrystalState crystal;
        std::vector<std::array<int, 3>> listImage;
        for (size_t n = 0; n < input.listSetting.size(); ++n) {
            const CellSetting& setting = input.listSetting[n];
            const std::array<int, 3> anImage = numbering.representative(
                transformed(setting.matAxes, anGeneral));
            if (std::find(listImage.begin(), listImage.end(), anImage) != listImage.end()) {
                continue;
            }
            listImage.push_back(anImage);
            Alternative alternative;
            alternative.nSetting = int(n);
            alternative.dfMisfit = setting.misfit();
            std::vector<Value>& list = alternative.listValue;
            for (const NormalizedReflection& one : input.listReflection) {
                list.push_back(
                    {numbering.numberOf(transformed(setting.matAxes, one.anIndex)), float(one.dfAmplitude)});
            }
            std::stable_sort(list.begin(), list.end(), [](const Value& left, const Value& right) {
                return left.nReflection < right.nReflection;
            });
            size_t nEnd = 0;
            for (size_t nFirst = 0; nFirst < list.size();) {
                double dfSum = 0;
                size_t nLast = nFirst;
                for (; nLast < list.size() && list[nLast].nReflection == list[nFirst].nReflection; ++nLast) {
                    dfSum += double(list[nLast].fAmplitude);
                }
                list[nEnd++] = {list[nFirst].nReflection, float(dfSum / double(nLast - nFirst))};
                nFirst = nLast;
            }
            list.resize(nEnd);
            list.shrink_to_fit();
            crystal.listAlternative.push_back(std::move(alternative));
        }
        m_listCrystal.push_back(std::move(crystal));
    }
    m_listSum.assign(numbering.count(), 0.0);
    m_listCount.assign(numbering.count(), 0);
}

void CSettingChoices::put(const CrystalState& crystal, int nSign)
{
    for (const Value& value : crystal.chosen()) {
        m_listSum[value.nReflection] += nSign * double(value.fAmplitude);
        m_listCount[value.nReflection] += nSign;
    }
}

CSettingChoices::Comparison CSettingChoices::compare(size_t nCrystal) const
{
    Comparison comparison;
    const std::vector<Alternative>& listAlternative = m_listCrystal[nCrystal].listAlternative;
    int nLeastCommon = 0;
    for (const Alternative& alternative : listAlternative) {
        CPairs pairs;
        for (const Value& value : alternative.listValue) {
            const int nCount = m_listCount[value.nReflection];
            if (nCount > 0) {
                pairs.add(double(value.fAmplitude), m_listSum[value.nReflection] / nCount);
            }
        }
        comparison.listAgreement.push_back(pairs.agreement());
        const int nCommon = comparison.listAgreement.back().nCommon;
        comparison.nMostCommon = std::max(comparison.nMostCommon, nCommon);
        if (nCommon >= g_nFewCommon) {
            nLeastCommon = nLeastCommon == 0 ? nCommon : std::min(nLeastCommon, nCommon);
        }
    }
    // As many pairs for all, or what shares much would win by that alone.
    double dfBest = -HUGE_VAL;
    for (size_t n = 0; n < listAlternative.size(); ++n) {
        const double dfScore = scoreOf(comparison.listAgreement[n], nLeastCommon,
                                       listAlternative[n].dfMisfit);
        if (dfScore > dfBest) {
            dfBest = dfScore;
            comparison.nBest = int(n);
        }
    }
    return comparison;
}

CSettingChoices::Comparison CSettingChoices::compareWithOthers(size_t nCrystal)
{
    const CrystalState& crystal = m_listCrystal[nCrystal];
    if (crystal.bSettled) {
        put(crystal, -1);
    }
    Comparison comparison = compare(nCrystal);
    if (crystal.bSettled) {
        put(crystal, 1);
    }
    return comparison;
}

bool CSettingChoices::grow(CRunReport& report)
{
    const auto count = [](const CrystalState& crystal) { return crystal.chosen().size(); };
    const auto itFirst = std::max_element(
        m_listCrystal.begin(), m_listCrystal.end(),
        [&](const CrystalState& one, const CrystalState& other) { return count(one) < count(other); });
    itFirst->bSettled = true;
    put(*itFirst, 1);
    size_t nSettled = 1;
    while (nSettled < m_listCrystal.size()) {
        std::vector<std::pair<size_t, Comparison>> listNext;
        for (size_t n = 0; n < m_listCrystal.size(); ++n) {
            if (!report.goOn()) {
                return false;
            }
            if (!m_listCrystal[n].bSettled) {
                listNext.emplace_back(n, compare(n));
            }
        }
        std::stable_sort(listNext.begin(), listNext.end(), [](const auto& one, const auto& other) {
            return one.second.nMostCommon > other.second.nMostCommon;
        });
        listNext.resize(std::min(listNext.size(), nSettled));
        if (listNext.front().second.nMostCommon < g_nFewCommon) {
            break;  // the others stand by themselves
        }
        for (const auto& [nNext, comparison] : listNext) {
            if (comparison.nMostCommon >= g_nFewCommon) {
                m_listCrystal[nNext].nChosen = comparison.nBest;
                m_listCrystal[nNext].bSettled = true;
                put(m_listCrystal[nNext], 1);
                ++nSettled;
            }
        }
    }
    return true;
}

bool CSettingChoices::improve(CRunReport& report)
{
    const int nMostRounds = 30;  // a handful is usual
    bool bChanged = true;
    for (int nRound = 0; bChanged && nRound < nMostRounds; ++nRound) {
        bChanged = false;
        for (size_t n = 0; n < m_listCrystal.size(); ++n) {
            if (!report.goOn()) {
                return false;
            }
            CrystalState& crystal = m_listCrystal[n];
            if (crystal.listAlternative.size() < 2 || !crystal.bSettled) {
                continue;
            }
            put(crystal, -1);
            const Comparison comparison = compare(n);
            if (comparison.nMostCommon >= g_nFewCommon && comparison.nBest != crystal.nChosen) {
                crystal.nChosen = comparison.nBest;
                bChanged = true;
            }
            put(crystal, 1);
        }
    }
    return true;
}

bool CSettingChoices::settle(CRunReport& report)
{
    if (m_listCrystal.empty()) {
        return true;
    }
    if (!grow(report) || !improve(report)) {
        return false;
    }
    for (size_t n = 0; n < m_listCrystal.size(); ++n) {
        m_listFinal.push_back(compareWithOthers(n));
    }
    return true;
}

int CSettingChoices::settingOf(size_t nCrystal) const
{
    const CrystalState& crystal = m_listCrystal[nCrystal];
    return crystal.listAlternative[crystal.nChosen].nSetting;
}

SettingAgreement CSettingChoices::agreementOf(size_t nCrystal) const
{
    const std::vector<SettingAgreement>& list = m_listFinal[nCrystal].listAgreement;
    SettingAgreement agreement = list[size_t(m_listCrystal[nCrystal].nChosen)];
    double dfSecond = -1;
    for (size_t n = 0; n < list.size(); ++n) {
        if (int(n) != m_listCrystal[nCrystal].nChosen && list[n].nCommon >= g_nFewCommon) {
            dfSecond = std::max(dfSecond, list[n].dfCorrelation);
        }
    }
    agreement.dfSecond = list.size() > 1 && dfSecond > -1 ? dfSecond : 0;
    return agreement;
}

SettingAgreement CSettingChoices::agreementOf(size_t nOne, size_t nOther) const
{
    const std::vector<Value>&listOne = m_listCrystal[nOne].chosen(),
          &listOther = m_listCrystal[nOther].chosen();
    CPairs pairs;
    auto it = listOther.begin();
    for (const Value& value : listOne) {
        while (it != listOther.end() && it->nReflection < value.nReflection) {
            ++it;
        }
        if (it != listOther.end() && it->nReflection == value.nReflection) {
            pairs.add(double(value.fAmplitude), double(it->fAmplitude));
        }
    }
    return pairs.agreement();
}

}  // namespace tessera
