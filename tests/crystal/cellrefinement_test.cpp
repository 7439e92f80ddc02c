#include "crystal/cellrefinement.h"

#include "crystal/crystalparacal.h"
#include "imaging/lmderfit.h"
#include "tests/crystal/testreflection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

namespace {

const CellParameters g_trueCell{7.1, 9.3, 11.2, 71, 82, 64};

// 404 reflections without errors.
QList<Peak3D> simulated()
{
    const CCrystalParaCal cell(g_trueCell);
    QList<Peak3D> list;
    for (int h = 0; h <= 4; ++h) {
        for (int k = -4; k <= 4; ++k) {
            for (int l = -4; l <= 4; ++l) {
                if (h != 0 || k != 0 || l != 0) {
                    list.append(reflection(h, k, l, 0, cell.calDStar(h, k, l)));
                }
            }
        }
    }
    return list;
}

struct Refined {
    explicit Refined(const QList<Peak3D>& list) : found(unitCellRefinement(list, g_trueCell, report)) {}

    CRecordingReport report;
    std::optional<CellRefinement> found;
};

}  // namespace

TEST(CellRefinement, TellsStartResultAndFiguresOfMerit)
{
    speakGerman();
    QList<Peak3D> list = simulated();
    double dfSquares = 0;
    for (Peak3D& peak : list) {
        dfSquares += peak.dfDStar * peak.dfDStar;
        peak.dfDStar *= 1.01;  // a cell smaller than that of the start
    }
    const Refined r(list);
    ASSERT_TRUE(r.found);
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(r.found->cell.numbers()[n], g_trueCell.numbers()[n] / (n < 3 ? 1.01 : 1), 1e-9);
    }
    EXPECT_NEAR(r.found->dfRmsBefore[0], 0.01 * std::sqrt(dfSquares / list.size()), 1e-12);
    EXPECT_NEAR(r.found->dfRmsBefore[1], 0.01 / 1.01, 1e-12);
    EXPECT_NEAR(r.found->dfRmsAfter[0] + r.found->dfRmsAfter[1], 0, 1e-12);
    const QStringList listStart{"Unit cell refinement: 404 points.",
                                "Unit cell before UCLS refinement: 7,1, 9,3, 11,2, 71, 82, 64",
                                "A-F before UCLS refinement: 0,0",
                                "RMS of the d* errors before fitting: 0,00",
                                "A-F after UCLS refinement: 0,0",
                                "A-F UCLS esd: ",
                                "Unit cell after UCLS refinement: 7,029",
                                "Unit cell UCLS e.s.d: ",
                                "RMS of the d* errors after fitting: "};
    ASSERT_EQ(r.report.m_listLine.size(), listStart.size());
    for (int n = 0; n < listStart.size(); ++n) {
        EXPECT_TRUE(r.report.m_listLine[n].startsWith(listStart[n])) << r.report.m_listLine[n].toStdString();
    }
    EXPECT_TRUE(r.report.m_listLine[4].endsWith(QString("; result = %1").arg(r.found->nInfo)));
}

// With errors of d*² of one size, as the fit takes them to be, the e.s.d. are the scatter of many fits.
TEST(CellRefinement, TheErrorsOfTheCellAreTheScatterOfItsFits)
{
    const QList<Peak3D> listTrue = simulated();
    const Refined truth(listTrue);
    std::mt19937 generator(3);
    std::normal_distribution<double> noise(0, 0.0005);
    double aSquares[12] = {}, aVariance[12] = {};
    const auto add = [&](size_t n, double dfError, double dfStdErr) {
        aSquares[n] += dfError * dfError;
        aVariance[n] += dfStdErr * dfStdErr;
    };
    for (int i = 0; i < 2000; ++i) {
        QList<Peak3D> list = listTrue;
        for (Peak3D& peak : list) {
            peak.dfDStar = std::sqrt(peak.dfDStar * peak.dfDStar + noise(generator));
        }
        const Refined r(list);
        ASSERT_TRUE(r.found);
        for (size_t n = 0; n < 6; ++n) {
            add(n, r.found->cell.numbers()[n] - g_trueCell.numbers()[n], r.found->cellStdErr.numbers()[n]);
            add(n + 6, r.found->dfCoefficient[n] - truth.found->dfCoefficient[n],
                r.found->dfCoefficientStdErr[n]);
        }
    }
    for (int n = 0; n < 12; ++n) {  // a root of 2000 squares is good to 1.6 %
        EXPECT_NEAR(std::sqrt(aVariance[n] / aSquares[n]), 1, 0.05) << n;
    }
}

TEST(CellRefinement, SaysWhatTheReflectionsDoNotTell)
{
    QList<Peak3D> listFlat, listSix, listNone = simulated();
    for (Peak3D& p : listNone) {
        if (p.dfL == 0) {
            listFlat.append(p);
        }
        if (std::min({p.dfH, p.dfK, p.dfL}) >= 0 && std::max({p.dfH, p.dfK, p.dfL}) == 1 &&
            p.dfH + p.dfK + p.dfL <= 2) {
            listSix.append(p);
        }
        p.dfDStar = 0;
    }
    const Refined flat(listFlat), six(listSix), few(listSix.mid(1)), none(listNone);
    EXPECT_TRUE(flat.report.said("\nred Not determined by these reflections: C, E, F. "));
    EXPECT_TRUE(flat.found);
    EXPECT_EQ(flat.found->dfCoefficientStdErr[2], 0);
    EXPECT_EQ(none.report.marked().last(), "red The fit gives no unit cell; the cell stays as it was.");
    EXPECT_FALSE(none.found);
    EXPECT_FALSE(few.found);
    EXPECT_EQ(few.report.marked(),
              (QStringList{"Unit cell refinement: 5 points.", "red Too few peaks for refinement."}));
    // Six reflections fix six coefficients exactly and say nothing of their errors.
    ASSERT_TRUE(six.found);
    EXPECT_FALSE(std::isfinite(six.found->cellStdErr.a));
    EXPECT_NEAR(six.found->cell.beta, g_trueCell.beta, 1e-6);

    // The six numbers one by one are refined in place, or stay.
    CellParameters cell{7, 9, 11, 70, 80, 65};
    const auto refine = [&](const QList<Peak3D>& list) {
        CRunReport silent;
        return unitCellRefinement(list, cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma, silent);
    };
    EXPECT_FALSE(refine(listNone));
    EXPECT_EQ(cell.numbers(), (std::array<double, 6>{7, 9, 11, 70, 80, 65}));
    EXPECT_TRUE(refine(simulated()));
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(cell.numbers()[n], g_trueCell.numbers()[n], 1e-9);
    }
}

// One line through points that are not on one, by derivatives; the step of finite differences is not in use.
TEST(LmderFit, GivesTheRegressionLineWhateverTheStepOfDifferences)
{
    static const double adfY[] = {1, 3.5, 4, 8, 8.5};
    const LmderFunction fn = [](void*, int m, int, const double* x, double* fvec, double* fjac, int ldfjac,
                                int iflag) {
        for (int i = 0; i < m; ++i) {
            if (iflag == 1) {
                fvec[i] = x[0] + x[1] * i - adfY[i];
            } else if (iflag == 2) {
                fjac[i] = 1;
                fjac[i + ldfjac] = i;
            }
        }
        return 0;
    };
    for (double dfStep : {0.0, 10.0}) {
        CLmderFit fit(2);
        EXPECT_EQ(fit.m_dfEpsFcn, 0);
        fit.m_dfEpsFcn = dfStep;
        EXPECT_GT(fit.Run(fn, 5), 0);
        EXPECT_NEAR(fit.m_vecParam[0], 1.1, 1e-9);  // mean 5 less two slopes
        EXPECT_NEAR(fit.m_vecParam[1], 1.95, 1e-9);
        // Squares 2.475 over 3 degrees of freedom, and 10 for the spread of the places.
        EXPECT_NEAR(fit.m_vecStdErr[1], std::sqrt(2.475 / 30), 1e-6);
    }
}

}  // namespace tessera
