// Residuals of peaks against what a simulation has put into them.
#include "refinement/spotresiduals.h"
#include "tests/recordingreport.h"
#include "tests/refinement/simulatedspots.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessera {

namespace {

SeriesTruth cubicTruth(std::mt19937& random)
{
    SeriesTruth truth;
    truth.matDirect = turnedCell(12, 12, 12, 90, 90, 90, random);
    truth.dfNoise = 0;
    return truth;
}

struct Means {
    double dfX = 0, dfY = 0, dfRadial = 0, dfCircle = 0, dfAlong = 0, dfCube = 0;
    int n = 0;
};
Means meansOf(const std::vector<SpotResidual>& listResidual, double dfLow, double dfHigh)
{
    Means means;
    for (const SpotResidual& residual : listResidual) {
        if (residual.radius() < dfLow || residual.radius() > dfHigh) {
            continue;
        }
        means.dfX += residual.dfX;
        means.dfY += residual.dfY;
        means.dfRadial += residual.alongRadius();
        means.dfCircle += residual.alongCircle();
        means.dfAlong += residual.dfAlong;
        // The lens moves a place by where it was without it.
        means.dfCube += std::pow(residual.radius() - residual.alongRadius(), 3) / (256. * 256.);
        ++means.n;
    }
    for (double* pdf :
         {&means.dfX, &means.dfY, &means.dfRadial, &means.dfCircle, &means.dfAlong, &means.dfCube}) {
        *pdf /= means.n;
    }
    return means;
}

}  // namespace

TEST(SpotResiduals, ShowTheOffsetOfTheBeamInTheFramesOwnDirections)
{
    for (const double dfAxis : {-40.0, 115.0}) {
        std::mt19937 random(1);
        SeriesTruth truth = cubicTruth(random);
        truth.dfAxis = dfAxis;
        truth.dfCentreX = 0.8;
        truth.dfCentreY = -0.5;
        const std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
        const std::vector<SpotResidual> listResidual = spotResiduals(listSpot, startOf(truth, 0, random));
        ASSERT_EQ(listResidual.size(), listSpot.size());
        const Means means = meansOf(listResidual, 0, 1000);
        EXPECT_NEAR(means.dfX, 0.8, 0.03);
        EXPECT_NEAR(means.dfY, -0.5, 0.03);
        EXPECT_NEAR(means.dfAlong, 0, 0.2);
        EXPECT_EQ(listResidual[7].anIndex, listSpot[7].anIndex);
        EXPECT_EQ(listResidual[7].place.dfX, listSpot[7].place.dfX);
    }
}

TEST(SpotResiduals, TellBarrelAndSpiralApart)
{
    std::mt19937 random(2);
    SeriesTruth truth = cubicTruth(random);
    truth.dfRadial = 0.03;
    truth.dfSpiral = -0.02;
    const Means means = meansOf(spotResiduals(simulatedSpots(truth, random), startOf(truth, 0, random)), 120,
                                220);
    ASSERT_GT(means.n, 200);
    // A barrel brings points inwards; a spiral below 0 moves them clockwise.
    EXPECT_NEAR(means.dfRadial, -0.03 * means.dfCube, 0.05);
    EXPECT_NEAR(means.dfCircle, -0.02 * means.dfCube, 0.05);
}

/// A tenth of the peaks are false, with the indices that lie next to them: the model keeps those of the
/// lattice.
TEST(SpotResiduals, OfAModelAreThoseOfThePeaksThatItFits)
{
    std::mt19937 random(3);
    SeriesTruth truth = cubicTruth(random);
    std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    const size_t nTrue = listSpot.size();
    std::uniform_real_distribution<double> place(-220, 220);
    const DiffractionGeometry start = startOf(truth, 0.0005, random);
    for (size_t n = 0; n < nTrue / 10; ++n) {
        GeometrySpot spot = listSpot[n];
        spot.place = {place(random), place(random)};
        const DoubleVector index = indicesOfPoint(start, pointOfPlace(start, spot.place, spot.dfTilt));
        for (size_t i = 0; i < 3; ++i) {
            spot.anIndex[i] = int(std::lround(index[i]));
        }
        listSpot.push_back(spot);
    }
    CRecordingReport report;
    const GeometryRefinement refinement = refineGeometry(listSpot, start, {}, report);
    ASSERT_TRUE(refinement.done()) << refinement.strReason.toStdString();
    const std::vector<GeometrySpot> listKept = spotsOfModel(listSpot, start, refinement.best());
    EXPECT_GT(listKept.size(), 0.9 * double(nTrue));
    EXPECT_LT(listKept.size(), 1.1 * double(nTrue));
    double dfSquares = 0;
    for (const SpotResidual& residual : spotResiduals(listKept, refinement.best().geometry)) {
        dfSquares += residual.dfX * residual.dfX + residual.dfY * residual.dfY;
    }
    EXPECT_LT(std::sqrt(dfSquares / (2 * double(listKept.size()))), 0.5) << "whole pixels alone";
    EXPECT_TRUE(spotsOfModel({}, start, refinement.best()).empty());
}

}  // namespace tessera
