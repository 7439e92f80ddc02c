// System and centring of a lattice by its metric, against the fourteen types and another library's space
// groups.
#include "simulate/bravaistype.h"
#include "simulate/latticeproposal.h"
#include "simulate/structurefactor.h"

#include <gtest/gtest.h>
#include <QJsonArray>
#include <gemmi/symmetry.hpp>

namespace tessera {

namespace {

Matrix3 directOf(const Matrix3& matReciprocal)
{
    return transposed(inverseOf(matReciprocal));
}

QJsonArray jsonMatrix(const Matrix3& mat)
{
    QJsonArray array;
    for (const Vector3& vec : mat) {
        array.append(QJsonArray{vec[0], vec[1], vec[2]});
    }
    return array;
}

}  // namespace

TEST(BravaisType, OfAllFourteenIsToldFromAnyBasis)
{
    const struct {
        const char* pSymbol;
        const char* pCentring;
        std::array<double, 6> adfCell;
    } aRow[] = {{"aP", "P", {7.13, 7.85, 5.57, 89.99, 101.1, 106}},
                {"mP", "P", {9.7, 8.9, 5.25, 90, 105.6, 90}},
                {"mC", "C", {9.7, 8.9, 5.25, 90, 105.6, 90}},
                {"mC", "A", {9.7, 8.9, 5.25, 90, 95, 90}},
                {"mC", "I", {9.7, 8.9, 15.25, 90, 105.6, 90}},
                {"oP", "P", {4.75, 10.2, 5.98, 90, 90, 90}},
                {"oC", "C", {4.75, 10.2, 5.98, 90, 90, 90}},
                {"oC", "B", {4.75, 10.2, 15, 90, 90, 90}},
                {"oI", "I", {4.75, 10.2, 5.98, 90, 90, 90}},
                {"oF", "F", {18.3, 18.6, 6.6, 90, 90, 90}},
                {"tP", "P", {7.8, 7.8, 5, 90, 90, 90}},
                {"tI", "I", {3.78, 3.78, 9.5, 90, 90, 90}},
                {"tI", "I", {9.5, 9.5, 3.78, 90, 90, 90}},
                {"hP", "P", {4.9, 4.9, 5.4, 90, 90, 120}},
                {"hR", "R", {4.99, 4.99, 17, 90, 90, 120}},
                {"hR", "R", {9, 9, 3, 90, 90, 120}},
                {"cP", "P", {8.9, 8.9, 8.9, 90, 90, 90}},
                {"cI", "I", {11.5, 11.5, 11.5, 90, 90, 90}},
                {"cF", "F", {5.43, 5.43, 5.43, 90, 90, 90}}};
    const Matrix3 aSkew[] = {{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}},
                             {Vector3{1, 2, 3}, Vector3{0, 1, 4}, Vector3{0, 0, 1}},
                             {Vector3{-3, 1, 0}, Vector3{5, -2, 1}, Vector3{1, 0, -2}}};
    for (const auto& row : aRow) {
        for (const Matrix3& matSkew : aSkew) {
            ASSERT_NEAR(std::abs(determinantOf(matSkew)), 1, 1e-9);
            const Matrix3 mat = primitiveIndicesOf(QLatin1String(row.pCentring)) *
                                reciprocalBasisOfCell(row.adfCell);
            const BravaisType type = bravaisTypeOf(matSkew * directOf(mat));
            EXPECT_EQ(type.symbol().toStdString(), row.pSymbol)
                << row.pCentring << ' ' << type.strSystem.toStdString() << ' ' << row.adfCell[0];
        }
    }
}

TEST(BravaisType, OfTheCrystalsIsThatOfTheirSpaceGroups)
{
    for (const CrystalStructure& structure : crystalStructures()) {
        const gemmi::SpaceGroup* pGroup = gemmi::find_spacegroup_by_name(
            structure.strSpaceGroup.toStdString(), structure.adfCell[3], structure.adfCell[5]);
        ASSERT_TRUE(pGroup) << structure.strName.toStdString();
        const BravaisType group{QLatin1String(pGroup->crystal_system_str()),
                                QString(QLatin1Char(pGroup->centring_type()))};
        const CStructureFactor crystal(structure);
        const BravaisType type = bravaisTypeOf(
            directOf(crystal.primitiveBasis() * crystal.reciprocalBasis()));
        EXPECT_EQ(type.symbol().toStdString(), group.symbol().toStdString())
            << structure.strName.toStdString();
    }
}

namespace {

/// True: monoclinic C, and the driver's basis primitive: a' = (a+b)/2, b' = (b-a)/2, c' = c.
struct LatticeProposals : testing::Test {
    const Matrix3 matTrue = reciprocalBasisOfCell({9.746, 8.899, 5.251, 90, 105.63, 90});
    const Matrix3 matPrimitive = primitiveIndicesOf(QStringLiteral("C"));
    const Matrix3 matFound = matPrimitive * matTrue;
    const BravaisType typeTrue{QStringLiteral("monoclinic"), QStringLiteral("C")};
};

}  // namespace

TEST_F(LatticeProposals, AreJudgedInAnySetting)
{
    const Matrix3 matToC{Vector3{1, -1, 0}, Vector3{1, 1, 0}, Vector3{0, 0, 1}};
    const Matrix3 matToI{Vector3{1, -1, 1}, Vector3{1, 1, 0}, Vector3{0, 0, 1}};  // a + c in place of a
    const Matrix3 matWhole{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
    const QJsonArray arrayRight{QJsonObject{{"system", "triclinic"}, {"centring", "P"}},
                                QJsonObject{{"system", "Monoclinic"}, {"centring", "C"}}};
    const struct {
        const char* pCase;
        const char* pSystem;
        const char* pCentring;
        Matrix3 matAxes;
        bool bSystem, bCentring, bSpans, bAmong;
    } aRow[] = {{"right", "monoclinic", "C", matToC, true, true, true, true},
                {"body-centred setting", "monoclinic", "I", matToI, true, true, true, true},
                {"centring told but not made", "monoclinic", "C", matWhole, true, true, false, true},
                {"centring missed", "monoclinic", "P", matToC, true, false, false, true},
                {"too high", "orthorhombic", "C", matToC, false, true, true, true},
                {"no type at all", "monoclinic", "F", matToC, false, false, false, true}};
    for (const auto& row : aRow) {
        const QJsonObject lattice{{"system", row.pSystem},
                                  {"centring", row.pCentring},
                                  {"matrix", jsonMatrix(row.matAxes)},
                                  {"candidates", arrayRight}};
        const LatticeProposal p = judgeProposal(lattice, &matFound, matTrue, matPrimitive, typeTrue);
        EXPECT_EQ(p.bSystemRight, row.bSystem) << row.pCase;
        EXPECT_EQ(p.bCentringRight, row.bCentring) << row.pCase;
        EXPECT_EQ(p.bSpans, row.bSpans) << row.pCase;
        EXPECT_EQ(p.bAmongCandidates, row.bAmong) << row.pCase;
        EXPECT_EQ(p.isRight(), row.bSystem && row.bCentring) << row.pCase;
    }
}

TEST_F(LatticeProposals, MayLackCandidatesMatrixOrAll)
{
    const QJsonObject lone{{"system", "triclinic"}, {"centring", "P"}};
    EXPECT_FALSE(judgeProposal(lone, nullptr, matTrue, matPrimitive, typeTrue).bAmongCandidates);
    EXPECT_FALSE(judgeProposal(lone, nullptr, matTrue, matPrimitive, typeTrue).bMatrixRead);
    EXPECT_FALSE(judgeProposal({}, &matFound, matTrue, matPrimitive, typeTrue).bRead);
}

// In both settings of the hexagonal axes.
TEST_F(LatticeProposals, OfRhombohedralCrystalsAreRightInEitherSetting)
{
    const Matrix3 matHexagonal = reciprocalBasisOfCell({4.99, 4.99, 17.06, 90, 90, 120});
    const Matrix3 matObverse = primitiveIndicesOf(QStringLiteral("R"));
    const Matrix3 matReverse{Vector3{-1, 0, 0}, Vector3{0, -1, 0}, Vector3{0, 0, 1}};
    for (const Matrix3& mat : {matObverse, matObverse * matReverse}) {
        const QJsonObject lattice{
            {"system", "trigonal"},
            {"centring", "R"},
            {"matrix", jsonMatrix({Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}})}};
        const LatticeProposal p = judgeProposal(lattice, &matHexagonal, matHexagonal, mat,
                                                {QStringLiteral("rhombohedral"), QStringLiteral("R")});
        EXPECT_TRUE(p.isRight());
        EXPECT_TRUE(p.bSpans);
    }
}

}  // namespace tessera
