#include "crystal/cellrefinement.h"

#include "crystal/crystalparacal.h"
#include "crystal/testreflection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

const double g_aTrueCell[6] = {8.58, 12.97, 7.22, 90.6, 116.1, 88.4};

QList<Peak3D> simulated(double dfSigma, unsigned nSeed)
{
    CCrystalParaCal cell;
    cell.setUnitCell(g_aTrueCell[0], g_aTrueCell[1], g_aTrueCell[2], g_aTrueCell[3], g_aTrueCell[4],
                     g_aTrueCell[5]);
    std::mt19937 generator(nSeed);
    std::normal_distribution<double> noise(0, 1);
    QList<Peak3D> list;
    for (int h = 0; h <= 4; ++h)
        for (int k = -4; k <= 4; ++k)
            for (int l = -4; l <= 4; ++l)
                if (h != 0 || k != 0 || l != 0)
                    list.append(reflection(h, k, l, 0, cell.calDStar(h, k, l) + dfSigma * noise(generator)));
    return list;
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

TEST(CellRefinement, TellsStartResultAndFiguresOfMerit)
{
    const QList<Peak3D> list = simulated(0.002, 11);
    const double aStart[6] = {8.7, 12.8, 7.3, 91, 115, 89};
    Refined r;
    refine(r, list, aStart);
    ASSERT_TRUE(r.bDone);
    EXPECT_TRUE(std::equal(r.aCell, r.aCell + 6, r.found.dfCell));
    for (bool bAfter : {false, true}) {
        double dfSquares = 0, dfSizes = 0, dfSum = 0;
        const double* p = bAfter ? r.aCell : aStart;
        CCrystalParaCal cell;
        cell.setUnitCell(p[0], p[1], p[2], p[3], p[4], p[5]);
        for (const Peak3D& peak : list) {
            const double dfError = cell.calDStar(int(peak.dfH), int(peak.dfK), int(peak.dfL)) - peak.dfDStar;
            dfSquares += dfError * dfError;
            dfSizes += std::fabs(dfError);
            dfSum += peak.dfDStar;
        }
        const double* pRms = bAfter ? r.found.dfRmsAfter : r.found.dfRmsBefore;
        EXPECT_NEAR(pRms[0], std::sqrt(dfSquares / list.size()), 1e-9);
        EXPECT_NEAR(pRms[1], dfSizes / dfSum, 1e-9);
    }
    // The start values are those of the cell handed in, whatever its angles.
    const QStringList listStart{"Unit cell refinement: 404 points.",
                                "Unit cell before UCLS refinement: 8.7, 12.8, 7.3, 91, 115, 89",
                                "A-F before UCLS refinement: 0.0",
                                "RMS of the d* errors before fitting: 0.0",
                                "A-F after UCLS refinement: 0.0",
                                "A-F UCLS esd: ",
                                "Unit cell after UCLS refinement: 8.5",
                                "Unit cell UCLS e.s.d: 0.0",
                                "RMS of the d* errors after fitting: 0.00"};
    ASSERT_EQ(r.report.m_listLine.size(), listStart.size());
    for (int n = 0; n < listStart.size(); ++n)
        EXPECT_TRUE(r.report.m_listLine[n].startsWith(listStart[n])) << r.report.m_listLine[n].toStdString();
    EXPECT_TRUE(r.report.m_listLine[4].endsWith(QString("; result = %1").arg(r.found.nInfo)));
}

// Errors of d*² of one size, as the fit takes them to be: the e.s.d. are the scatter of many such fits.
TEST(CellRefinement, TheErrorsOfTheCellAreTheScatterOfItsFits)
{
    const QList<Peak3D> listTrue = simulated(0, 0);
    std::mt19937 generator(3);
    std::normal_distribution<double> noise(0, 0.0005);
    const int nFits = 400;
    double aSquares[12] = {}, aVariance[12] = {};
    Refined truth;
    refine(truth, listTrue, g_aTrueCell);
    for (int i = 0; i < nFits; ++i) {
        QList<Peak3D> list = listTrue;
        for (Peak3D& peak : list)
            peak.dfDStar = std::sqrt(peak.dfDStar * peak.dfDStar + noise(generator));
        Refined r;
        refine(r, list, g_aTrueCell);
        ASSERT_TRUE(r.bDone);
        for (int n = 0; n < 12; ++n) {
            const double df = n < 6 ? r.aCell[n] - g_aTrueCell[n]
                                    : r.found.dfCoefficient[n - 6] - truth.found.dfCoefficient[n - 6];
            aSquares[n] += df * df / nFits;
            aVariance[n] += std::pow(n < 6 ? r.found.dfCellStdErr[n] : r.found.dfCoefficientStdErr[n - 6],
                                     2) /
                            nFits;
        }
    }
    for (int n = 0; n < 12; ++n)  // a root of 400 squares is good to 3.5 %
        EXPECT_NEAR(std::sqrt(aVariance[n] / aSquares[n]), 1, 0.1) << n;
}

TEST(CellRefinement, SaysWhatTheReflectionsLeaveOpenAndThatThereIsNoCell)
{
    QList<Peak3D> listFlat, listNone = simulated(0, 0);
    for (const Peak3D& peak : simulated(0.002, 5))
        if (peak.dfL == 0)
            listFlat.append(peak);
    for (Peak3D& peak : listNone)
        peak.dfDStar = 0;
    Refined flat, none;
    refine(flat, listFlat, g_aTrueCell);
    refine(none, listNone, g_aTrueCell);
    EXPECT_TRUE(flat.report.said("\nred Not determined by these reflections: C, E, F. ") && flat.bDone);
    EXPECT_EQ(flat.found.dfCoefficientStdErr[2], 0);
    EXPECT_GT(flat.found.dfCoefficientStdErr[3], 0);
    EXPECT_EQ(none.report.marked().last(), "red The fit gives no unit cell; the cell stays as it was.");
    EXPECT_TRUE(!none.bDone && std::equal(none.aCell, none.aCell + 6, g_aTrueCell));
}

TEST(CellRefinement, FiveReflectionsAreTooFewAndSixHaveNoErrors)
{
    const QList<Peak3D> listAll = simulated(0, 0);
    Refined few, six;
    refine(few, listAll.mid(0, 5), g_aTrueCell);
    EXPECT_FALSE(few.bDone);
    EXPECT_EQ(few.report.marked(),
              (QStringList{"Unit cell refinement: 5 points.", "red Too few peaks for refinement."}));
    EXPECT_TRUE(std::equal(few.aCell, few.aCell + 6, g_aTrueCell));

    // Six reflections fix six coefficients exactly and say nothing of their errors.
    QList<Peak3D> listSix;
    for (const Peak3D& p : listAll)
        if (p.dfH >= 0 && p.dfK >= 0 && p.dfL >= 0 && std::max({p.dfH, p.dfK, p.dfL}) == 1 &&
            p.dfH + p.dfK + p.dfL <= 2)
            listSix.append(p);
    ASSERT_EQ(listSix.size(), 6);
    refine(six, listSix, g_aTrueCell);
    EXPECT_TRUE(six.bDone);
    EXPECT_NEAR(six.aCell[4], g_aTrueCell[4], 1e-6);
    EXPECT_FALSE(std::isfinite(six.found.dfCellStdErr[0]));
}
