#include "frames/intensitycurves.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

double lorentz(double dfF, double dfI, double dfCentre, double dfC)
{
    return dfI / ((dfF - dfCentre) * (dfF - dfCentre) / (dfC * dfC) + 1);
}

/// Peaks on frames nFirst .. nLast (index from 0) along a curve, dfI2D tenfold.
QList<Peak3D> chain(int nFirst, int nLast, double dfI, double dfCentre, double dfC)
{
    QList<Peak3D> list;
    for (int n = nFirst; n <= nLast; ++n) {
        Peak3D peak;
        peak.nFrame = n;
        peak.dfIPoint = lorentz(n + 1, dfI, dfCentre, dfC);
        peak.dfI2D = 10 * peak.dfIPoint;
        list.append(peak);
    }
    return list;
}

TEST(ContinuousBeamTiltSeriesBound, LiesAroundTheFirstMaximum)
{
    const QList<int> listBreak{1, 0, 0, 0, 1, 0, 0, 1, 0, 0};  // frame numbers 1, 5 and 8 start a series
    const struct {
        QVector<double> vecFrame, vecInt;
        bool bFound;
        int nLower, nUpper;
    } aRow[] = {
        {{2, 3, 4}, {1, 5, 2}, true, 1, 4},   {{4, 5, 6}, {1, 5, 2}, true, 5, 7},
        {{3, 4, 5}, {1, 5, 5}, true, 1, 4},    // of equal maxima the first
        {{8, 9, 10}, {1, 2, 5}, true, 8, 11},  // past the last frame
        {{10, 11}, {1, 5}, false, 0, 0},      {{}, {}, false, 0, 0},
    };
    for (const auto& row : aRow) {
        int nLower = 0, nUpper = 0;
        EXPECT_EQ(getContinuousBeamTiltSeriesBound(listBreak, row.vecFrame, row.vecInt, nLower, nUpper),
                  row.bFound);
        EXPECT_EQ(nLower, row.nLower);
        EXPECT_EQ(nUpper, row.nUpper);
    }
}

TEST(FitIntensity, GivesBackALorentzianAndTheInputsMarks)
{
    QList<QPointF> listPoint;
    for (double f : {11.5, 12.0, 13.0, 14.0, 15.0, 16.0})
        listPoint.append({f, lorentz(f, 777.7, 13.3, 1.6)});
    QList<double> listPara{1, 2};
    fitIntensity(listPoint, listPara);
    ASSERT_EQ(listPara.size(), 12);
    EXPECT_EQ(listPara.mid(0, 5), QList<double>({11, listPara[1], double(float(listPoint[2].y())), 13, 6}));
    EXPECT_TRUE(listPara[5] >= 1 && listPara[5] <= 4) << listPara[5];
    EXPECT_NEAR(listPara[6], 777.7, 1e-4);
    EXPECT_NEAR(listPara[7], 13.3, 1e-6);
    EXPECT_NEAR(std::fabs(listPara[8]), 1.6, 1e-6);
    for (int i = 9; i < 12; ++i)
        EXPECT_LT(listPara[i], 1e-3);
}

TEST(FitIntensityProfile, FitsTheSeriesOfTheMaximumAndFallsBackOnShortOnes)
{
    QList<int> listBreak;
    for (int i = 0; i < 40; ++i)
        listBreak.append(i == 0 || i == 20);
    // chain 0 goes on into a second series with other intensities; chain 1 has two peaks; chain 2 is whole
    QList<Peak3D> listAcross = chain(14, 19, 500, 17.4, 1.2);
    listAcross += chain(20, 24, 90, 22, 1);
    const QList<QList<Peak3D>> listChain{listAcross, chain(30, 31, 50, 31, 1), chain(2, 9, 80, 6.25, 0.7)};
    QList<Peak3D> listMerged;
    for (int nID : {2, 0, 1, 7}) {
        Peak3D peak;
        peak.nID = nID;
        peak.nFrame = 4;
        peak.dfIPoint = 11;
        peak.dfI2D = 22;
        peak.dfIntFit = -5;
        listMerged.append(peak);
    }
    const double aadfCurve[3][3] = {{500, 17.4, 1.2}, {0, 0, 0}, {80, 6.25, 0.7}};
    for (int nMode : {0, 1}) {
        QList<Peak3D> list = listMerged;
        fitIntensityProfileForSharpPeaks(listChain, listBreak, nMode, list);
        for (int i : {0, 1}) {
            const double* adf = aadfCurve[list[i].nID];
            EXPECT_NEAR(list[i].dfIntFit, adf[0] * (nMode ? 10 : 1), 0.01);
            EXPECT_NEAR(list[i].dfFrameFit, adf[1], 1e-5);
            EXPECT_NEAR(std::fabs(list[i].dfHalfWidth), adf[2], 1e-5);
        }
        EXPECT_EQ(list[2].dfIntFit, nMode ? 22 : 11);  // too short
        EXPECT_EQ(list[2].dfFrameFit, 5);
        EXPECT_EQ(list[2].dfHalfWidth, 0);
        EXPECT_EQ(list[3].dfIntFit, -5);  // no chain
    }
}

}  // namespace
