// Setting choices: which of its settings each crystal takes, by what the normalized amplitudes say.
#pragma once

#include "crystals/cellsettings.h"
#include "integration/scaling.h"
#include "records/runreport.h"

#include <array>
#include <vector>

namespace tessera {

/// Below so many common reflections a correlation says nothing on which setting is right.
constexpr int g_nFewCommon = 10;

/// A reflection of one crystal against the mean of its resolution there. The fall-off that all settings share
/// would make any two lists alike, and the few strongest reflections would rule the intensities themselves.
struct NormalizedReflection {
    std::array<int, 3> anIndex = {};  ///< of the crystal's reduced cell
    double dfAmplitude = 0;           ///< E, with the sign of the intensity; held between -4 and 4
    double dfSquare = 0;              ///< E²
    double dfSigma = 0;               ///< of E²
};

/// One crystal and how its axes may lie in the group's.
struct SettingInput {
    std::vector<NormalizedReflection> listReflection;
    std::vector<CellSetting> listSetting;  ///< the closest first, at least one
};

/// How one crystal agrees with the mean of all others.
struct SettingAgreement {
    int nCommon = 0;           ///< reflections that others have, too
    double dfCorrelation = 0;  ///< in the chosen setting; 0 where fewer than three are common
    double dfSecond = 0;       ///< the best of the alternatives
};

/// Chooses for each crystal the setting that agrees with the others: the crystal with the most reflections
/// first, then those that share most with the settled ones, each time as many as are settled; after that each
/// is tried anew against the mean of all others, until nothing changes. Settings that the symmetry of the
/// intensities makes equal are one alternative. What alternatives gain in likelihood is weighed against how
/// far the lattice has to be strained for them.
/// Source: the idea of Brehm & Diederichs (2014), Acta Cryst. D70, 101–109.
class CSettingChoices {
public:
    /// @param symmetry  from the indices of the group's reduced cell
    CSettingChoices(const ObservationSymmetry& symmetry, const std::vector<SettingInput>& listInput);

    /// @return false when the report asked to stop
    bool settle(CRunReport& report);

    /// After settle(): place of the chosen setting in the input's list.
    int settingOf(size_t nCrystal) const;
    int alternativeOf(size_t nCrystal) const { return m_listCrystal[nCrystal].nChosen; }
    int alternativeCount(size_t nCrystal) const
    {
        return int(m_listCrystal[nCrystal].listAlternative.size());
    }
    /// False where it shares too little with the others to choose, so that it has the closest one.
    bool isSettled(size_t nCrystal) const { return m_listCrystal[nCrystal].bSettled; }
    SettingAgreement agreementOf(size_t nCrystal) const;
    /// Of two crystals as they are settled.
    SettingAgreement agreementOf(size_t nOne, size_t nOther) const;

private:
    struct Value {
        int nReflection = 0;
        float fAmplitude = 0;
    };
    struct Alternative {
        int nSetting = 0;              ///< the one with the closest cell among equivalent settings
        double dfMisfit = 0;           ///< of the lattice
        std::vector<Value> listValue;  ///< by number of the reflection, equivalents as their mean
    };
    struct CrystalState {
        std::vector<Alternative> listAlternative;
        int nChosen = 0;
        bool bSettled = false;

        const std::vector<Value>& chosen() const { return listAlternative[nChosen].listValue; }
    };
    struct Comparison {
        int nBest = 0;
        int nMostCommon = 0;
        std::vector<SettingAgreement> listAgreement;  ///< of each alternative
    };

    void put(const CrystalState& crystal, int nSign);
    Comparison compare(size_t nCrystal) const;
    Comparison compareWithOthers(size_t nCrystal);
    bool grow(CRunReport& report);
    bool improve(CRunReport& report);

    class CNumbering;
    std::vector<CrystalState> m_listCrystal;
    std::vector<double> m_listSum;  ///< of the amplitudes of the settled crystals, for each reflection
    std::vector<int> m_listCount;
    std::vector<Comparison> m_listFinal;
};

}  // namespace tessera
