#include "crystal/cellrefinement.h"

#include "crystal/crystalparacal.h"
#include "crystal/testreflection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

const double g_aTrueCell[6] = {8.58, 12.97, 7.22, 90.6, 116.1, 88.4};

QList<Peak3D> simulated(double dfSigma, unsigned nSeed, int nMax = 4)
{
    CCrystalParaCal cell;
    cell.setUnitCell(g_aTrueCell[0], g_aTrueCell[1], g_aTrueCell[2], g_aTrueCell[3], g_aTrueCell[4],
                     g_aTrueCell[5]);
    std::mt19937 generator(nSeed);
    std::normal_distribution<double> noise(0, 1);
    QList<Peak3D> list;
    for (int h = 0; h <= nMax; ++h)
        for (int k = -nMax; k <= nMax; ++k)
            for (int l = -nMax; l <= nMax; ++l)
                if (h != 0 || k != 0 || l != 0)
                    list.append(reflection(h, k, l, 0, cell.calDStar(h, k, l) + dfSigma * noise(generator)));
    return list;
}

// Ordinary least squares by normal equations and Gauss-Jordan elimination.
void plainLeastSquares(const QList<Peak3D>& list, double* pCoef, double* pStdErr)
{
    double m[6][13] = {};
    const auto row = [](const Peak3D& p) {
        return std::vector<double>{p.dfH * p.dfH, p.dfK * p.dfK, p.dfL * p.dfL,
                                   p.dfH * p.dfK, p.dfK * p.dfL, p.dfH * p.dfL};
    };
    for (const Peak3D& peak : list) {
        const auto t = row(peak);
        for (std::size_t i = 0; i < 6; ++i) {
            for (std::size_t j = 0; j < 6; ++j)
                m[i][j] += t[i] * t[j];
            m[i][6] += t[i] * peak.dfDStar * peak.dfDStar;
            m[i][7 + i] = 1;
        }
    }
    for (int i = 0; i < 6; ++i) {
        const double dfPivot = m[i][i];
        for (double& df : m[i])
            df /= dfPivot;
        for (int r = 0; r < 6; ++r) {
            const double dfFactor = m[r][i];
            for (int j = 0; r != i && j < 13; ++j)
                m[r][j] -= dfFactor * m[i][j];
        }
    }
    double dfSquares = 0;
    for (const Peak3D& peak : list) {
        const auto t = row(peak);
        double dfRest = -peak.dfDStar * peak.dfDStar;
        for (std::size_t i = 0; i < 6; ++i)
            dfRest += t[i] * m[i][6];
        dfSquares += dfRest * dfRest;
    }
    for (int i = 0; i < 6; ++i) {
        pCoef[i] = m[i][6];
        pStdErr[i] = std::sqrt(dfSquares / (list.size() - 6) * m[i][7 + i]);
    }
}

struct Refined {
    bool bDone = false;
    double aCell[6];
    CellRefinement found;
    CRecordingReport report;
};

void refine(Refined& r, const QList<Peak3D>& list, const double* pStart)
{
    std::copy(pStart, pStart + 6, r.aCell);
    r.bDone = unitCellRefinement(list, r.aCell[0], r.aCell[1], r.aCell[2], r.aCell[3], r.aCell[4], r.aCell[5],
                                 r.report, &r.found);
}

}  // namespace

TEST(CellRefinement, AgreesWithPlainLeastSquares)
{
    const QList<Peak3D> list = simulated(0.002, 11);
    const double aStart[6] = {8.7, 12.8, 7.3, 91, 115, 89};
    Refined r;
    refine(r, list, aStart);
    ASSERT_TRUE(r.bDone);
    double aCoef[6], aStdErr[6];
    plainLeastSquares(list, aCoef, aStdErr);
    for (int n = 0; n < 6; ++n) {
        EXPECT_NEAR(r.found.dfCoefficient[n], aCoef[n], 1e-9) << n;
        EXPECT_NEAR(r.found.dfCoefficientStdErr[n], aStdErr[n], 1e-5 * aStdErr[n]) << n;
        EXPECT_EQ(r.aCell[n], r.found.dfCell[n]);
    }
    double dfSquares = 0, dfSizes = 0, dfSum = 0;
    CCrystalParaCal cell;
    cell.setUnitCell(r.aCell[0], r.aCell[1], r.aCell[2], r.aCell[3], r.aCell[4], r.aCell[5]);
    for (const Peak3D& peak : list) {
        const double dfError = cell.calDStar(int(peak.dfH), int(peak.dfK), int(peak.dfL)) - peak.dfDStar;
        dfSquares += dfError * dfError;
        dfSizes += std::fabs(dfError);
        dfSum += peak.dfDStar;
    }
    EXPECT_NEAR(r.found.dfRmsAfter[0], std::sqrt(dfSquares / list.size()), 1e-9);
    EXPECT_NEAR(r.found.dfRmsAfter[1], dfSizes / dfSum, 1e-9);
    // The start values are those of the cell handed in, whatever its angles.
    EXPECT_EQ(r.report.m_listLine[1], "Unit cell before UCLS refinement: 8.7, 12.8, 7.3, 91, 115, 89");
    cell.setUnitCell(8.7, 12.8, 7.3, 91, 115, 89);
    dfSquares = 0;
    for (const Peak3D& peak : list)
        dfSquares += std::pow(cell.calDStar(int(peak.dfH), int(peak.dfK), int(peak.dfL)) - peak.dfDStar, 2);
    EXPECT_NEAR(r.found.dfRmsBefore[0], std::sqrt(dfSquares / list.size()), 1e-9);
}

TEST(CellRefinement, PerfectCellComesBackAndTheLogTellsSo)
{
    const double aStart[6] = {10, 20, 25, 90, 90, 90};
    CCrystalParaCal cell;
    cell.setUnitCell(10, 20, 25, 90, 90, 90);
    QList<Peak3D> list{reflection(0, 0, 0)};
    for (int n = 1; n < 40; ++n)
        list.append(reflection(n % 4, n % 5, n % 7, 0, cell.calDStar(n % 4, n % 5, n % 7)));
    Refined r;
    refine(r, list, aStart);
    ASSERT_TRUE(r.bDone);
    const char* const aStartOfLine[] = {"Unit cell refinement: 40 points.",
                                        "Unit cell before UCLS refinement: 10, 20, 25, 90, 90, 90",
                                        "A-F before UCLS refinement: 0.01, 0.0025, 0.0016, ",
                                        "RMS of the d* errors before fitting: ",
                                        "A-F after UCLS refinement: 0.01, 0.0025, 0.0016, ",
                                        "A-F UCLS esd: ",
                                        "Unit cell after UCLS refinement: 10, 20, 25, 90, 90, 90",
                                        "Unit cell UCLS e.s.d: ",
                                        "RMS of the d* errors after fitting: "};
    ASSERT_EQ(r.report.m_listLine.size(), 9);
    for (int n = 0; n < 9; ++n)
        EXPECT_TRUE(r.report.m_listLine[n].startsWith(aStartOfLine[n])) << n;
    EXPECT_TRUE(r.report.m_listLine[4].endsWith(QString("; result = %1").arg(r.found.nInfo)));
}

TEST(CellRefinement, FewBrokenAndJustEnoughReflections)
{
    const QList<Peak3D> listAll = simulated(0, 0);
    Refined few, six, negative, broken;
    refine(few, listAll.mid(0, 5), g_aTrueCell);
    EXPECT_FALSE(few.bDone);
    EXPECT_EQ(few.report.marked(),
              (QStringList{"Unit cell refinement: 5 points.", "red Too few peaks for refinement."}));
    EXPECT_TRUE(std::equal(few.aCell, few.aCell + 6, g_aTrueCell));

    // Six reflections fix six coefficients exactly and say nothing of their errors.
    QList<Peak3D> listSix;
    for (const Peak3D& peak : listAll)
        for (const auto& hkl : {Vec3D{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}})
            if (peak.dfH == double(hkl.x) && peak.dfK == double(hkl.y) && peak.dfL == double(hkl.z))
                listSix.append(peak);
    ASSERT_EQ(listSix.size(), 6);
    refine(six, listSix, g_aTrueCell);
    EXPECT_TRUE(six.bDone);
    EXPECT_NEAR(six.aCell[4], g_aTrueCell[4], 1e-6);
    EXPECT_FALSE(std::isfinite(six.found.dfCellStdErr[0]));

    // A form whose negative minors in pairs make roots that look like lengths, and no numbers: the cell that
    // came in stays.
    QList<Peak3D> listBad;
    for (const Vec3D& v : {Vec3D{1, -1, 0}, {0, 1, -1}, {1, 0, -1}, {2, -1, 0}, {0, 2, -1}, {-1, 0, 2}}) {
        const double h = double(v.x), k = double(v.y), l = double(v.z);
        listBad.append(reflection(
            h, k, l, 0, std::sqrt(-0.7614 * (h * h + k * k + l * l) - 2.7403 * (h * k + k * l + h * l))));
    }
    refine(negative, listBad, g_aTrueCell);
    EXPECT_TRUE(std::isfinite(negative.found.dfCell[0]) && std::isfinite(negative.found.dfCell[5]));
    listBad[2].dfDStar = std::nan("");
    refine(broken, listBad, g_aTrueCell);
    for (const Refined* p : {&negative, &broken}) {
        EXPECT_FALSE(p->bDone);
        EXPECT_TRUE(std::equal(p->aCell, p->aCell + 6, g_aTrueCell));
    }
}
