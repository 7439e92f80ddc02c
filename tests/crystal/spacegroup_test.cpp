#include "crystal/spacegroup.h"

#include "crystal/spacegroupoperations.h"
#include "crystal/spacegrouptable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include <gemmi/symmetry.hpp>

namespace tessera {

// The truth is gemmi's table of settings, which is built from Hall symbols, not from explicit ones.

namespace {

std::vector<gemmi::Op> asGemmi(const std::vector<CSymOp>& vecOperation)
{
    std::vector<gemmi::Op> vecOp;
    for (const CSymOp& op : vecOperation) {
        vecOp.emplace_back();
        for (int n = 0; n < 9; ++n) {
            vecOp.back().rot[n / 3][n % 3] = int(std::lround(op.dfRotation[n] * gemmi::Op::DEN));
        }
        for (int n = 0; n < 3; ++n) {
            vecOp.back().tran[n] = int(std::lround(op.dfTranslation[n] * gemmi::Op::DEN));
        }
        vecOp.back().wrap();
    }
    return vecOp;
}

// The tabulated setting with the same operations, or none.
const gemmi::SpaceGroup* settingOf(int nNumber, std::vector<gemmi::Op> vecOp)
{
    std::sort(vecOp.begin(), vecOp.end());
    for (const gemmi::SpaceGroup& setting : gemmi::spacegroup_tables::main) {
        if (setting.number == nNumber && setting.operations().all_ops_sorted() == vecOp) {
            return &setting;
        }
    }
    return nullptr;
}

}  // namespace

TEST(SpaceGroup, EveryGroupIsATabulatedSettingOfItsSymbolWithItsAbsences)
{
    // Where the tables give two origins, the codes take the first, but for 222.
    CSpaceGroup spaceGroup;
    for (int n = 1; n <= 230; ++n) {
        ASSERT_TRUE(spaceGroup.setSpaceGroup(n));
        const gemmi::SpaceGroup* pSetting = settingOf(n, asGemmi(spaceGroup.vecOperation));
        ASSERT_NE(pSetting, nullptr) << n << ", " << spaceGroup.vecOperation.size();
        std::string strFull = spaceGroupSymbol(n);
        if (n >= 3 && n <= 15) {  // monoclinic, unique axis b: the full symbol names all three axes
            strFull = strFull.substr(0, 1) + " 1" + strFull.substr(1) + " 1";
        }
        EXPECT_EQ(strFull, pSetting->hm) << n;
        const char chExpected = strFull[0] == 'R' ? 'H' : n == 222 ? '2' : '1';
        EXPECT_TRUE(pSetting->ext == '\0' || pSetting->ext == chExpected) << n << ' ' << pSetting->ext;

        const gemmi::GroupOps ops = pSetting->operations();
        int nWrong = 0;
        for (int i = 0; i < 13 * 13 * 13; ++i) {
            const int h = i / 169 - 6, k = i / 13 % 13 - 6, l = i % 13 - 6;
            nWrong += spaceGroup.isAbsent(h, k, l) != ops.is_systematically_absent({{h, k, l}});
        }
        EXPECT_EQ(nWrong, 0) << n;
    }
    EXPECT_FALSE(spaceGroup.setSpaceGroup(231));
    EXPECT_EQ(spaceGroup.vecOperation.size(), 96u);
}

TEST(SpaceGroup, LaueGroupHoldsTheRotationsOfTheGroupAndTheInversionAndNoMore)
{
    for (int n = 1; n <= 230; ++n) {
        std::set<gemmi::Op::Rot> setRotation, setLaue;
        for (const gemmi::Op& op : asGemmi(operationsOfSpaceGroup(n))) {
            setRotation.insert({op.rot, op.negated_rot()});
        }
        for (const gemmi::Op& op : asGemmi(operationsOfSpaceGroup(laueGroupNumber(n)))) {
            setLaue.insert(op.rot);
        }
        EXPECT_EQ(setRotation, setLaue) << n;
    }
}

TEST(SpaceGroup, NumbersOfNoGroupHaveTheIdentityAlone)
{
    EXPECT_EQ(generatorsOfSpaceGroup(0).size(), 1u);
    EXPECT_EQ(generatorsOfSpaceGroup(231).size(), 1u);
}

}  // namespace tessera
