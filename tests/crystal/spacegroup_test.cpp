#include "crystal/spacegroup.h"

#include "crystal/spacegroupoperations.h"
#include "crystal/spacegrouptable.h"
#include "crystal/symtable.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wall"
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wshadow"
#include <gemmi/symmetry.hpp>
#pragma GCC diagnostic pop
#include <gtest/gtest.h>
#include <QCryptographicHash>

#include <algorithm>
#include <cmath>
#include <set>

// The truth is gemmi's table of settings, which is built from Hall symbols, not from explicit ones.

namespace {

std::vector<gemmi::Op> asGemmi(const std::vector<CSymOp>& vecOperation)
{
    std::vector<gemmi::Op> vecOp;
    for (const CSymOp& op : vecOperation) {
        gemmi::Op out;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                out.rot[i][j] = int(std::lround(op.dfRotation[3 * i + j] * gemmi::Op::DEN));
            out.tran[i] = int(std::lround(op.dfTranslation[i] * gemmi::Op::DEN)) % gemmi::Op::DEN;
        }
        vecOp.push_back(out);
    }
    std::sort(vecOp.begin(), vecOp.end());
    return vecOp;
}

// The tabulated setting with the same operations, or none.
const gemmi::SpaceGroup* settingOf(int nNumber, const std::vector<CSymOp>& vecOperation)
{
    const std::vector<gemmi::Op> vecOp = asGemmi(vecOperation);
    for (const gemmi::SpaceGroup& setting : gemmi::spacegroup_tables::main)
        if (setting.number == nNumber && setting.operations().all_ops_sorted() == vecOp)
            return &setting;
    return nullptr;
}

bool sameOperation(const CSymOp& op1, const CSymOp& op2)
{
    for (int n = 0; n < 9; ++n)
        if (std::fabs(op1.dfRotation[n] - op2.dfRotation[n]) > 1e-6)
            return false;
    for (int n = 0; n < 3; ++n) {
        const double df = std::fabs(op1.dfTranslation[n] - op2.dfTranslation[n]);
        if (df > 1e-6 && std::fabs(df - 1) > 1e-6)
            return false;
    }
    return true;
}

std::vector<CSymOp> plainlyClosed(std::vector<CSymOp> vecOp)
{
    const auto add = [&vecOp](const CSymOp& op) {
        for (const CSymOp& other : vecOp)
            if (sameOperation(op, other))
                return false;
        vecOp.push_back(op);
        return true;
    };
    for (bool bChanged = true; bChanged;) {
        bChanged = false;
        for (std::size_t i = 0; i < vecOp.size(); ++i)
            for (std::size_t j = i; j < vecOp.size(); ++j) {
                bChanged |= add(multiplied(vecOp[i], vecOp[j]));
                bChanged |= add(multiplied(vecOp[j], vecOp[i]));
            }
    }
    return vecOp;
}

}  // namespace

TEST(SpaceGroup, EveryGroupIsATabulatedSettingOfItsSymbolWithItsAbsences)
{
    // Where the tables give two origins, the codes take the first, but for 222.
    CSpaceGroup spaceGroup;
    for (int n = 1; n <= 230; ++n) {
        ASSERT_TRUE(spaceGroup.setSpaceGroup(n));
        const gemmi::SpaceGroup* pSetting = settingOf(n, spaceGroup.vecOperation);
        ASSERT_NE(pSetting, nullptr) << n << ", " << spaceGroup.vecOperation.size();
        std::string strFull = spaceGroupSymbol(n);
        if (n >= 3 && n <= 15)  // monoclinic, unique axis b: the full symbol names all three axes
            strFull = strFull.substr(0, 1) + " 1" + strFull.substr(1) + " 1";
        EXPECT_EQ(strFull, pSetting->hm) << n;
        const char chExpected = strFull[0] == 'R' ? 'H' : n == 222 ? '2' : '1';
        EXPECT_TRUE(pSetting->ext == '\0' || pSetting->ext == chExpected) << n << ' ' << pSetting->ext;

        const gemmi::GroupOps ops = pSetting->operations();
        int nWrong = 0;
        for (int h = -6; h <= 6; ++h)
            for (int k = -6; k <= 6; ++k)
                for (int l = -6; l <= 6; ++l)
                    nWrong += spaceGroup.isAbsent(h, k, l) != ops.is_systematically_absent({{h, k, l}});
        EXPECT_EQ(nWrong, 0) << n;
    }
}

TEST(SpaceGroup, LaueGroupHoldsTheRotationsOfTheGroupAndTheInversionAndNoMore)
{
    for (int n = 1; n <= 230; ++n) {
        const auto rotations = [](int nNumber, bool bWithInversion) {
            std::set<std::vector<double>> set;
            for (const CSymOp& op : operationsOfSpaceGroup(nNumber))
                for (int nSign : {1, -1}) {
                    std::vector<double> vecR;
                    for (double df : op.dfRotation)
                        vecR.push_back(nSign * df + 0.0);
                    if (nSign == 1 || bWithInversion)
                        set.insert(vecR);
                }
            return set;
        };
        const int nLaue = laueGroupNumber(n);
        EXPECT_EQ(rotations(n, true), rotations(nLaue, false)) << n << ' ' << nLaue;
    }
}

TEST(SpaceGroup, FastClosingGivesThePlainLoopsListInItsOrder)
{
    for (int n = 1; n <= 230; ++n) {
        const std::vector<CSymOp> vecFast = operationsOfSpaceGroup(n),
                                  vecPlain = plainlyClosed(generatorsOfCode(correctedSpaceGroupCode(n)));
        ASSERT_EQ(vecFast.size(), vecPlain.size()) << n;
        for (std::size_t i = 0; i < vecFast.size(); ++i)
            ASSERT_TRUE(sameOperation(vecFast[i], vecPlain[i])) << n << ", operation " << i;
    }
}

TEST(SpaceGroup, CodesStandAsTabulatedAndTwoAreClosedCorrected)
{
    QCryptographicHash hash(QCryptographicHash::Md5);  // of the published table, a line SYMBOL|CODE for each
    for (int n = 1; n <= 230; ++n)
        hash.addData(QByteArray::fromStdString(spaceGroupSymbol(n) + '|' + spaceGroupCode(n) + '\n'));
    EXPECT_EQ(hash.result().toHex().toStdString(), "c4ca28dc72d861716dd9ea4e47d30808");
    for (int n = 1; n <= 230; ++n)
        EXPECT_EQ(correctedSpaceGroupCode(n) == spaceGroupCode(n), n != 39 && n != 131) << n;
    // The generators of 39 as tabulated: the third is a twofold axis along y, not a mirror.
    const std::vector<CSymOp> vecOp = generatorsOfSpaceGroup(39);
    ASSERT_EQ(vecOp.size(), 4u);
    EXPECT_TRUE(sameOperation(vecOp[3], CSymTable().operation('c' - 'a', 7, 3, 7)));
}
