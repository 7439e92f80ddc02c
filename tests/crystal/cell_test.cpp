#include "crystal/cellarithmetic.h"
#include "crystal/celltransformation.h"
#include "crystal/crystalparacal.h"
#include "crystal/uclscell.h"
#include "tests/crystal/testreflection.h"
#include "tests/reciprocal/simulatedlattice.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace tessera {

TEST(Cell, BasisMetricAndDirectCellAgreeWithGemmi)
{
    const gemmi::UnitCell aCell[] = {{5.43, 5.43, 5.43, 90, 90, 90},
                                     {20.07, 19.92, 13.42, 90, 90, 90},
                                     {4.913, 4.913, 5.405, 90, 90, 120},
                                     {8.577, 12.972, 7.218, 90.3, 116.0, 89.1},  // triclinic feldspar
                                     {7.1, 9.3, 11.2, 71, 82, 64}};
    for (const gemmi::UnitCell& truth : aCell) {
        const auto q = [&truth](int h, int k, int l) { return truth.calculate_1_d2_double(h, k, l); };
        const double aTrue[6] = {truth.a, truth.b, truth.c, truth.alpha, truth.beta, truth.gamma};
        double f[6];
        ASSERT_TRUE(cellParametersFromList(reciprocalBasis(truth), f[0], f[1], f[2], f[3], f[4], f[5]));
        const double A = q(1, 0, 0), B = q(0, 1, 0), C = q(0, 0, 1);  // of gemmi's reciprocal metric
        CUclsCell ucls;
        ucls.setCoefficients(A, B, C, q(1, 1, 0) - A - B, q(0, 1, 1) - B - C, q(1, 0, 1) - A - C);
        const double aMetric[6] = {ucls.calA(),     ucls.calB(),    ucls.calC(),
                                   ucls.calAlpha(), ucls.calBeta(), ucls.calGamma()};
        for (size_t n = 0; n < 6; ++n) {
            EXPECT_NEAR(f[n], aTrue[n], 2e-6 * aTrue[n]) << n;
            EXPECT_NEAR(aMetric[n] * (n < 3 ? 1 : gemmi::deg(1.0)), aTrue[n], 1e-8) << n;
        }
        // The determinant of the reciprocal metric is 1/V², and G is 4 times that.
        EXPECT_NEAR(ucls.m_dfG * truth.volume * truth.volume, 4, 1e-8);
        CCrystalParaCal calculator;
        calculator.setUnitCell(truth.a, truth.b, truth.c, truth.alpha, truth.beta, truth.gamma);
        EXPECT_NEAR(calculator.getVolume(), truth.volume, 1e-9 * truth.volume);
        for (int n = 0; n < 343; ++n) {
            const int h = n / 49 - 3, k = n / 7 % 7 - 3, l = n % 7 - 3;
            EXPECT_NEAR(calculator.calDStar(h, k, l), std::sqrt(q(h, k, l)), 1e-10);
        }
    }
}

// Rounding leaves a volume to most vectors of one plane, turned or as a singular matrix makes them of a cell.
TEST(Cell, CoPlanarVectorsAreNoBasisHoweverTheyLie)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> number(-1, 1);
    const auto vector = [&] { return std::array<double, 3>{number(random), number(random), number(random)}; };
    int nFlat = 0;
    for (int n = 0; n < 60; ++n) {
        const std::array<double, 3> a = vector(), b = vector(), c = vector();
        const double dfX = 3 * number(random), dfY = 3 * number(random);
        for (double dfOff : {0.0, 3e-3}) {  // of the third vector from the plane of the others
            QList<Vec3D> listCell{{}, {}, {}};
            for (size_t i = 0; i < 3; ++i) {
                const double adf[] = {0.1 * a[i], 0.05 * b[i],
                                      0.1 * (dfX * a[i] + dfY * b[i] + dfOff * c[i])};
                for (int k = 0; k < 3; ++k) {
                    (i == 0 ? listCell[k].x : i == 1 ? listCell[k].y : listCell[k].z) = float(adf[k]);
                }
            }
            double adfCell[6] = {1, 2, 3, 4, 5, 6};
            EXPECT_EQ(cellParametersFromList(listCell, adfCell[0], adfCell[1], adfCell[2], adfCell[3],
                                             adfCell[4], adfCell[5]),
                      dfOff > 0)
                << n;
            EXPECT_EQ(adfCell[5] == 6, dfOff == 0) << n;
            nFlat += dfOff == 0 && dot(listCell[0], cross(listCell[1], listCell[2])) != 0;
            // The rows of a singular matrix: two at will, and a third from them.
            const CMatrix3 matSingular(2, 1, 0, dfX, 0, 1, 2 + 3 * dfX, 1, 3);
            CRecordingReport report;
            transformUnitCell(basisFromList(listCell), matSingular, TransformationSpace::Reciprocal, report,
                              "h");
            EXPECT_EQ(report.marked(), QStringList{"red Warning: co-planar reciprocal basis vectors!"}) << n;
        }
    }
    EXPECT_GT(nFlat, 20) << "with a volume of rounding";
    Vec3D a, b, c;
    EXPECT_FALSE(reciprocalToDirectBasis({}, {0, 1, 0}, {0, 0, 1}, a, b, c));
    EXPECT_FALSE(reciprocalToDirectBasis({NAN, 0, 0}, {0, 1, 0}, {0, 0, 1}, a, b, c));
    const float f = 1e-5f;  // small vectors, large cell
    EXPECT_TRUE(reciprocalToDirectBasis({f, 0, 0}, {0, f, 0}, {0, 0, f}, a, b, c));
}

TEST(Cell, NeedsThreeVectorsThatSpanASpace)
{
    const Vec3D a{0.1f, 0, 0}, b{0, 0.05f, 0}, c{0, 0, 0.04f}, vecInfinite{0, 0, float(INFINITY)};
    for (const QList<Vec3D>& list : {QList<Vec3D>{}, QList<Vec3D>{a, b}, QList<Vec3D>{a, b, c, c},
                                     QList<Vec3D>{a, b, a + b}, QList<Vec3D>{a, b, vecInfinite}}) {
        double f[6] = {1, 2, 3, 4, 5, 6};
        EXPECT_FALSE(cellParametersFromList(list, f[0], f[1], f[2], f[3], f[4], f[5]));
        for (int n = 0; n < 6; ++n) {
            EXPECT_EQ(f[n], n + 1);
        }
    }
    // The basis is dual: the way there is the way back.
    Vec3D aDirect[3], aBack[3];
    ASSERT_TRUE(reciprocalToDirectBasis(a, a + b, c, aDirect[0], aDirect[1], aDirect[2]));
    ASSERT_TRUE(reciprocalToDirectBasis(aDirect[0], aDirect[1], aDirect[2], aBack[0], aBack[1], aBack[2]));
    EXPECT_NEAR(dot(aDirect[0], a + b), 0, 1e-6f);
    EXPECT_LT(length(aBack[0] - a) + length(aBack[1] - (a + b)) + length(aBack[2] - c), 1e-7f);
}

// What other matrices give is held by the pages of the window.
TEST(TransformUnitCell, SaysTheNewCellOrWhyThereIsNone)
{
    speakGerman();
    const auto reciprocal = TransformationSpace::Reciprocal, real = TransformationSpace::Real;
    const CMatrix3 matSingular(1, 0, 0, 1, 0, 0, 0, 0, 1), matSwap(0, 1, 0, 1, 0, 0, 0, 0, 1);
    const Vec3D a{0.1f, 0, 0}, b{0, 0.05f, 0}, c{0, 0, 0.04f};
    const QString strSwapped =
        "<br>Transformed unit cell: a=20,000 Å, b=10,000 Å, c=25,000 Å, α= 90,00°, β= 90,00°, γ= 90,00°, "
        "V=5.000,0 Å³ <a href=\"http://h/%3/cctbx/cctbx_web.cgi?target_module=lattice_symmetry&ucparams="
        "20,10,25,90,90,90\">Test lattice type</a>";
    const struct {
        QList<Vec3D> listFound;
        CMatrix3 matrix;
        TransformationSpace space;
        QList<Vec3D> listCell;  // empty: none
        QString strMessage;
    } aRow[] = {
        {{}, matSwap, real, {}, "Unit cell information is missing."},
        {{a, b, c}, matSingular, real, {}, "red TransformUnitCell: singlular matrix!"},
        {{a, b, c}, matSingular, reciprocal, {a, a, c}, "red Warning: co-planar reciprocal basis vectors!"},
        {{a, b, c}, matSwap, reciprocal, {b, a, c}, strSwapped}};
    for (const auto& row : aRow) {
        CRecordingReport report;
        const std::optional<ReciprocalBasis> basis = transformUnitCell(
            basisFromList(row.listFound), row.matrix, row.space, report, "http://h/%3");
        const QList<Vec3D> listCell = basis ? basis->toList() : QList<Vec3D>();
        EXPECT_TRUE(report.log().startsWith(row.strMessage)) << report.log().toStdString();
        ASSERT_EQ(listCell.size(), row.listCell.size());
        for (int n = 0; n < row.listCell.size(); ++n) {
            EXPECT_LE(length(listCell[n] - row.listCell[n]), 1e-8f) << &row - aRow << ' ' << n;
        }
    }
}

}  // namespace tessera
