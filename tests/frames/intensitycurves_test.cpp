#include "frames/intensitycurves.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessera {

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
        EXPECT_EQ(std::pair(nLower, nUpper), std::pair(row.nLower, row.nUpper));
    }
}

TEST(FitIntensityProfile, FitsTheSeriesOfTheMaximumAndFallsBackOnShortOnes)
{
    QList<int> listBreak;
    for (int i = 0; i < 40; ++i) {
        listBreak.append(i == 0 || i == 20);
    }
    // chain 0 goes on into a second series with other intensities; chain 1 has two peaks; chain 2 is whole
    const QList<QList<Peak3D>> listChain{chain(14, 19, 500, 17.4, 1.2) + chain(20, 24, 90, 22, 1),
                                         chain(30, 31, 50, 31, 1), chain(2, 9, 80, 6.25, 0.7)};
    for (int nMode : {0, 1}) {
        const struct {
            int nID;
            double dfInt, dfFrame, dfHalfWidth;
        } aRow[] = {{2, nMode ? 800. : 80., 6.25, 0.7},
                    {0, nMode ? 5000. : 500., 17.4, 1.2},
                    {1, nMode ? 22. : 11., 5, 0},  // too short: its own intensity
                    {7, -5, -5, -5}};              // no chain
        QList<Peak3D> list;
        for (const auto& row : aRow) {
            Peak3D peak;
            peak.nID = row.nID;
            peak.nFrame = 4;
            peak.dfIPoint = 11;
            peak.dfI2D = 22;
            peak.dfIntFit = peak.dfFrameFit = peak.dfHalfWidth = -5;
            list.append(peak);
        }
        fitIntensityProfileForSharpPeaks(listChain, listBreak, nMode, list);
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(list[i].dfIntFit, aRow[i].dfInt, 1e-5 * std::fabs(aRow[i].dfInt));
            EXPECT_NEAR(list[i].dfFrameFit, aRow[i].dfFrame, 1e-5);
            EXPECT_NEAR(std::fabs(list[i].dfHalfWidth), std::fabs(aRow[i].dfHalfWidth), 1e-5);
        }
    }
}

}  // namespace

}  // namespace tessera
