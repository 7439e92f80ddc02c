#include "crystal/cellarithmetic.h"
#include "crystal/celltransformation.h"
#include "crystal/crystalparacal.h"
#include "crystal/testreflection.h"
#include "crystal/uclscell.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wall"
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wshadow"
#include <gemmi/unitcell.hpp>
#pragma GCC diagnostic pop
#include <gtest/gtest.h>
#include <QLocale>

#include <cmath>

namespace {

struct CellRow {
    double a, b, c, alpha, beta, gamma;
};
const CellRow g_aCell[] = {{5.43, 5.43, 5.43, 90, 90, 90},
                           {20.07, 19.92, 13.42, 90, 90, 90},
                           {4.913, 4.913, 5.405, 90, 90, 120},
                           {8.577, 12.972, 7.218, 90.3, 116.0, 89.1},  // triclinic feldspar
                           {7.1, 9.3, 11.2, 71, 82, 64}};

// Reciprocal basis in Cartesian axes from gemmi's fractionalization matrix: its rows.
QList<Vec3D> reciprocalBasis(const CellRow& cell)
{
    const gemmi::UnitCell truth(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma);
    QList<Vec3D> list;
    for (int i = 0; i < 3; ++i) {
        const auto* row = truth.frac.mat.a[i];
        list.append({float(row[0]), float(row[1]), float(row[2])});
    }
    return list;
}

void expectSame(const QList<Vec3D>& list1, const QList<Vec3D>& list2, float fTolerance)
{
    ASSERT_EQ(list1.size(), list2.size());
    for (int n = 0; n < list1.size(); ++n)
        EXPECT_LE(length(list1[n] - list2[n]), fTolerance) << n;
}

// A to F of gemmi's reciprocal metric.
void metricOf(const CellRow& cell, double* pCoef)
{
    const gemmi::UnitCell truth(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma);
    const auto q = [&truth](int h, int k, int l) { return truth.calculate_1_d2_double(h, k, l); };
    pCoef[0] = q(1, 0, 0);
    pCoef[1] = q(0, 1, 0);
    pCoef[2] = q(0, 0, 1);
    pCoef[3] = q(1, 1, 0) - pCoef[0] - pCoef[1];
    pCoef[4] = q(0, 1, 1) - pCoef[1] - pCoef[2];
    pCoef[5] = q(1, 0, 1) - pCoef[0] - pCoef[2];
}

}  // namespace

TEST(Cell, BasisMetricAndDirectCellAgreeWithGemmi)
{
    for (const CellRow& cell : g_aCell) {
        const gemmi::UnitCell truth(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma);
        const double aTrue[6] = {cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma};
        double f[6], c[6];
        ASSERT_TRUE(cellParametersFromList(reciprocalBasis(cell), f[0], f[1], f[2], f[3], f[4], f[5]));
        metricOf(cell, c);
        CUclsCell ucls;
        ucls.setCoefficients(c[0], c[1], c[2], c[3], c[4], c[5]);
        const double dfDegrees = 180 / std::acos(-1.0);
        const double aAngle[3] = {ucls.calAlpha(), ucls.calBeta(), ucls.calGamma()};
        const double aMetric[6] = {ucls.calA(),           ucls.calB(),           ucls.calC(),
                                   aAngle[0] * dfDegrees, aAngle[1] * dfDegrees, aAngle[2] * dfDegrees};
        for (int n = 0; n < 6; ++n) {
            EXPECT_NEAR(f[n], aTrue[n], 2e-6 * aTrue[n]) << n;
            EXPECT_NEAR(aMetric[n], aTrue[n], 1e-8) << n;
        }
        // The determinant of the reciprocal metric is 1/V², and G is 4 times that.
        EXPECT_NEAR(ucls.m_dfG * truth.volume * truth.volume, 4, 1e-8);
        CCrystalParaCal calculator;
        calculator.setUnitCell(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma);
        EXPECT_NEAR(calculator.getVolume(), truth.volume, 1e-9 * truth.volume);
        for (int n = 0; n < 343; ++n) {
            const int h = n / 49 - 3, k = n / 7 % 7 - 3, l = n % 7 - 3;
            EXPECT_NEAR(calculator.calDStar(h, k, l), std::sqrt(truth.calculate_1_d2_double(h, k, l)), 1e-10);
        }
    }
}

TEST(UclsCell, VariancesAreThoseOfNumericalDerivatives)
{
    // A full covariance matrix, positive definite: M = L·Lᵀ.
    double aL[36] = {}, aCovariance[36] = {};
    for (int i = 0; i < 6; ++i)
        for (int j = 0; j <= i; ++j)
            aL[6 * i + j] = 1e-6 * (1 + ((7 * i + 3 * j) % 5) - 2 * (i != j));
    for (int i = 0; i < 36; ++i)
        for (int k = 0; k < 6; ++k)
            aCovariance[i] += aL[i / 6 * 6 + k] * aL[i % 6 * 6 + k];

    using Getter = double (CUclsCell::*)() const;
    const Getter aPair[][2] = {
        {&CUclsCell::calA, &CUclsCell::varA},       {&CUclsCell::calB, &CUclsCell::varB},
        {&CUclsCell::calC, &CUclsCell::varC},       {&CUclsCell::calAlpha, &CUclsCell::varAlpha},
        {&CUclsCell::calBeta, &CUclsCell::varBeta}, {&CUclsCell::calGamma, &CUclsCell::varGamma}};
    for (const CellRow& cell : g_aCell) {
        double c[6];
        metricOf(cell, c);
        CUclsCell ucls;
        ucls.setCoefficients(c[0], c[1], c[2], c[3], c[4], c[5]);
        ucls.setCovariance(aCovariance);
        for (const auto& pair : aPair) {
            double g[6], dfVariance = 0;
            for (int n = 0; n < 6; ++n) {
                double aValue[2];
                const double dfStep = 1e-5 * c[0];
                for (int nSide : {0, 1}) {
                    double d[6];
                    std::copy(c, c + 6, d);
                    d[n] += nSide ? dfStep : -dfStep;
                    CUclsCell other;
                    other.setCoefficients(d[0], d[1], d[2], d[3], d[4], d[5]);
                    aValue[nSide] = (other.*pair[0])();
                }
                g[n] = (aValue[1] - aValue[0]) / (2 * dfStep);
            }
            for (int i = 0; i < 36; ++i)
                dfVariance += g[i / 6] * aCovariance[i] * g[i % 6];
            EXPECT_NEAR((ucls.*pair[1])(), dfVariance, 1e-6 * dfVariance) << &pair - aPair;
        }
    }
}

TEST(Matrix3, RowsCountFromOneAndColumnsFromZero)
{
    CMatrix3 matrix(1, 2, 3, 4, 5, 6, 7, 8, 10);
    EXPECT_EQ(matrix.getRow(1), (Vec3D{1, 2, 3}));
    EXPECT_EQ(matrix.getColumn(0), (Vec3D{1, 4, 7}));
    EXPECT_EQ(matrix.determinant(), -3);
    EXPECT_FALSE(matrix.isRegular());
    EXPECT_TRUE(matrix.scaled(-1).isRegular());
}

TEST(TransformUnitCell, IdentityKeepsTheCellAndPrintsTheExactLine)
{
    QLocale::setDefault(QLocale::c());  // the user's locale may set group separators
    const QList<Vec3D> listFound{{0.1f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.04f}};
    for (auto space : {TransformationSpace::Reciprocal, TransformationSpace::Real}) {
        CRecordingReport report;
        QList<Vec3D> listCell;
        ASSERT_TRUE(
            transformUnitCell(listFound, CMatrix3::identity(), space, listCell, report, "http://h/%3"));
        expectSame(listCell, listFound, 1e-8f);
        EXPECT_EQ(report.marked(),
                  QStringList(
                      "<br>Transformed unit cell: a=10.000 Å, b=20.000 Å, c=25.000 Å, α= 90.00°, β= 90.00°, "
                      "γ= 90.00°, V=5000.0 Å³ <a href=\"http://h/%3/cctbx/cctbx_web.cgi?target_module="
                      "lattice_symmetry&ucparams=10,20,25,90,90,90\">Test lattice type</a>"));
    }
}

TEST(TransformUnitCell, RealSpaceRowsMakeTheNewDirectAxes)
{
    const CMatrix3 matrix(1, 1, 0, -1, 1, 0, 0, 1, 2);
    for (const CellRow& cell : g_aCell) {
        const QList<Vec3D> listFound = reciprocalBasis(cell);
        Vec3D a, b, c, a2, b2, c2;
        ASSERT_TRUE(reciprocalToDirectBasis(listFound[0], listFound[1], listFound[2], a, b, c));
        CRecordingReport report;
        QList<Vec3D> listReal, listBack;
        ASSERT_TRUE(transformUnitCell(listFound, matrix, TransformationSpace::Real, listReal, report));
        ASSERT_TRUE(reciprocalToDirectBasis(listReal[0], listReal[1], listReal[2], a2, b2, c2));
        expectSame({a2, b2, c2}, {a + b, b - a, b + c + c}, 1e-4f);
        // The reciprocal basis goes by the inverse of the transposed matrix.
        ASSERT_TRUE(transformUnitCell(listReal, matrix.transposed(), TransformationSpace::Reciprocal,
                                      listBack, report));
        expectSame(listBack, listFound, 1e-6f);
    }
}

TEST(TransformUnitCell, SingularMissingAndHandTurningMatrices)
{
    const QList<Vec3D> listFound{{0.1f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.04f}}, listBefore{{1, 2, 3}};
    const CMatrix3 matSingular(1, 0, 0, 1, 0, 0, 0, 0, 1), matSwap(0, 1, 0, 1, 0, 0, 0, 0, 1);
    CRecordingReport report;
    QList<Vec3D> listCell = listBefore;
    EXPECT_FALSE(transformUnitCell({}, CMatrix3::identity(), TransformationSpace::Real, listCell, report));
    EXPECT_FALSE(transformUnitCell(listFound, matSingular, TransformationSpace::Real, listCell, report));
    EXPECT_EQ(listCell, listBefore);
    EXPECT_TRUE(transformUnitCell(listFound, matSingular, TransformationSpace::Reciprocal, listCell, report));
    EXPECT_EQ(listCell, (QList<Vec3D>{listFound[0], listFound[0], listFound[2]}));
    EXPECT_EQ(report.marked(),
              (QStringList{"Unit cell information is missing.", "red TransformUnitCell: singlular matrix!",
                           "red Warning: co-planar reciprocal basis vectors!"}));
    ASSERT_TRUE(transformUnitCell(listFound, matSwap, TransformationSpace::Real, listCell, report));
    expectSame(listCell, {listFound[1], listFound[0], listFound[2]}, 1e-8f);
}
