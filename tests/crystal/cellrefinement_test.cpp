#include "crystal/cellrefinement.h"

#include "crystal/crystalparacal.h"
#include "crystal/lmderfit.h"
#include "crystal/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <thread>

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
    RecordingReport report;
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
    EXPECT_LT(r.found.dfRmsAfter[0], r.found.dfRmsBefore[0]);
}

TEST(CellRefinement, DeviationsFollowTheStandardErrors)
{
    // Over 200 noisy sets the error in units of the e.s.d. has unit variance in each parameter. The noise
    // goes on d*² here, which is what the fit weights equally.
    double aSquares[6] = {};
    const int nSets = 200;
    for (int nSet = 0; nSet < nSets; ++nSet) {
        QList<Peak3D> list = simulated(0, 0, 3);
        std::mt19937 generator(unsigned(100 + nSet));
        std::normal_distribution<double> noise(0, 1e-4);
        for (Peak3D& peak : list)
            peak.dfDStar = std::sqrt(peak.dfDStar * peak.dfDStar + noise(generator));
        Refined r;
        refine(r, list, g_aTrueCell);
        ASSERT_TRUE(r.bDone);
        for (int n = 0; n < 6; ++n)
            aSquares[n] += std::pow((r.aCell[n] - g_aTrueCell[n]) / r.found.dfCellStdErr[n], 2) / nSets;
    }
    for (int n = 0; n < 6; ++n)
        EXPECT_NEAR(aSquares[n], 1, 0.4) << n;  // 4 sigma of a variance from 200 draws
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
    ASSERT_EQ(r.report.listLine.size(), 9);
    EXPECT_EQ(r.report.listLine[0], "Unit cell refinement: 40 points.");
    EXPECT_EQ(r.report.listLine[1], "Unit cell before UCLS refinement: 10, 20, 25, 90, 90, 90");
    EXPECT_TRUE(r.report.listLine[2].startsWith("A-F before UCLS refinement: 0.01, 0.0025, 0.0016, "));
    EXPECT_TRUE(r.report.listLine[3].startsWith("RMS of the d* errors before fitting: "));
    EXPECT_TRUE(r.report.listLine[4].startsWith("A-F after UCLS refinement: 0.01, 0.0025, 0.0016, "));
    EXPECT_TRUE(r.report.listLine[4].endsWith(QString("; result = %1").arg(r.found.nInfo)));
    EXPECT_TRUE(r.report.listLine[5].startsWith("A-F UCLS esd: "));
    EXPECT_EQ(r.report.listLine[6], "Unit cell after UCLS refinement: 10, 20, 25, 90, 90, 90");
    EXPECT_TRUE(r.report.listLine[7].startsWith("Unit cell UCLS e.s.d: "));
    EXPECT_TRUE(r.report.listLine[8].startsWith("RMS of the d* errors after fitting: "));
}

TEST(CellRefinement, FewBrokenAndJustEnoughReflections)
{
    const QList<Peak3D> listAll = simulated(0, 0);
    Refined few, six, negative, broken;
    refine(few, listAll.mid(0, 5), g_aTrueCell);
    EXPECT_FALSE(few.bDone);
    EXPECT_EQ(few.report.listLine,
              (QStringList{"Unit cell refinement: 5 points.", "Too few peaks for refinement."}));
    EXPECT_EQ(few.report.listColor[1], Qt::red);
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

    // d* that no cell has, and no numbers: the cell that came in stays.
    QList<Peak3D> listBad = listSix;
    listBad[5].dfDStar = 5;
    refine(negative, listBad, g_aTrueCell);
    listBad[2].dfDStar = std::nan("");
    refine(broken, listBad, g_aTrueCell);
    for (const Refined* p : {&negative, &broken}) {
        EXPECT_FALSE(p->bDone);
        EXPECT_TRUE(std::equal(p->aCell, p->aCell + 6, g_aTrueCell));
    }
}

TEST(CellRefinement, FitsRunSideBySide)
{
    const QList<Peak3D> list1 = simulated(0.002, 1), list2 = simulated(0.002, 2, 5);
    Refined alone1, alone2, beside1, beside2;
    refine(alone1, list1, g_aTrueCell);
    refine(alone2, list2, g_aTrueCell);
    std::thread thread1([&] {
        for (int n = 0; n < 50; ++n)
            refine(beside1, list1, g_aTrueCell);
    });
    std::thread thread2([&] {
        for (int n = 0; n < 50; ++n)
            refine(beside2, list2, g_aTrueCell);
    });
    thread1.join();
    thread2.join();
    for (int n = 0; n < 6; ++n) {
        EXPECT_EQ(alone1.aCell[n], beside1.aCell[n]);
        EXPECT_EQ(alone2.aCell[n], beside2.aCell[n]);
    }
}

TEST(LmderFit, RefusedInputKeepsTheParameters)
{
    CLmderFit fit(3);
    const LmderFunction none = [](void*, int, int, const double*, double*, double*, int, int) { return 0; };
    EXPECT_EQ(fit.Run(none, 0), -1);
    EXPECT_EQ(fit.m_vecStdErr, std::vector<double>(3, 0.0));
    fit.SetParams({1, 2});
    EXPECT_EQ(fit.m_vecParam, std::vector<double>(3, 1.0));
    fit.SetParams({4, 5, 6});
    EXPECT_EQ(fit.Run(none, 2), 0);  // fewer residuals than parameters
    EXPECT_EQ(fit.m_vecParam, (std::vector<double>{4, 5, 6}));
    EXPECT_TRUE(std::isnan(fit.m_vecStdErr[0]) && std::isnan(fit.m_vecCovariance[8]));
    EXPECT_LT(fit.Run([](void*, int, int, const double*, double*, double*, int, int) { return -7; }, 5), 0);
    EXPECT_TRUE(std::isnan(fit.m_vecStdErr[2]));
}
