// The refinement of the geometry against made-up crystals whose truth is known.

#include "refinement/geometryrefinement.h"
#include "refinement/beamdrift.h"
#include "tests/recordingreport.h"
#include "tests/refinement/simulatedspots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

SeriesTruth plainTruth(std::mt19937& random)
{
    SeriesTruth truth;
    truth.matDirect = turnedCell(6.5, 8.2, 9.7, 88, 95, 101, random);
    truth.dfStretching = 0.012;
    truth.dfStretchingAzimuth = 50;
    truth.dfCentreX = 0.6;
    truth.dfCentreY = -0.4;
    return truth;
}

GeometryRefinement refined(const std::vector<GeometrySpot>& listSpot, const DiffractionGeometry& start,
                           const GeometryRefinementOptions& options = {})
{
    CRecordingReport report;
    return refineGeometry(listSpot, start, options, report);
}

bool isFree(const GeometryModel& model, int nNumber)
{
    return std::binary_search(model.fit.listFree.begin(), model.fit.listFree.end(), nNumber);
}

bool isNamedFixed(const GeometryRefinement& result, int nNumber)
{
    return std::any_of(result.listFixed.begin(), result.listFixed.end(),
                       [&](const FixedNumber& fixed) { return fixed.nNumber == nNumber; });
}

bool allFinite(const GeometryModel& model)
{
    const auto finite = [](double df) { return std::isfinite(df); };
    const std::array<double, 6> aCell = model.cell.numbers(), aError = model.cellErrors.numbers();
    return std::all_of(model.fit.numbers.begin(), model.fit.numbers.end(), finite) &&
           std::all_of(model.errors.begin(), model.errors.end(), finite) &&
           std::all_of(aCell.begin(), aCell.end(), finite) &&
           std::all_of(aError.begin(), aError.end(), finite);
}

/// Six numbers of rows a, b, c.
std::array<double, 6> cellNumbers(const Eigen::Matrix3d& m)
{
    const auto angle = [&](int i, int j) {
        return std::acos(m.row(i).dot(m.row(j)) / m.row(i).norm() / m.row(j).norm()) * 180 / std::acos(-1);
    };
    return {m.row(0).norm(), m.row(1).norm(), m.row(2).norm(), angle(1, 2), angle(0, 2), angle(0, 1)};
}

/// A smooth walk of the beam, in its mean over the frames 0, and jumps of 2 pixels; one frame in so many, 0
/// none.
std::vector<FramePlace> drift(int nFrames, double dfAmplitude, int nJumpEvery)
{
    std::vector<FramePlace> listDrift;
    for (int n = 0; n < nFrames; ++n) {
        const double dfTurn = 2 * g_dfPi * n / nFrames;
        FramePlace place = {dfAmplitude * std::sin(dfTurn), dfAmplitude * std::cos(2 * dfTurn)};
        if (nJumpEvery > 0 && n % nJumpEvery == nJumpEvery / 2) {
            place.dfX += 2 * std::cos(n);
            place.dfY += 2 * std::sin(n);
        }
        listDrift.push_back(place);
    }
    return listDrift;
}

CellConstraint constraintOf(LatticeSystem system)
{
    CellConstraint constraint;
    constraint.system = system;
    constraint.strSymbol = nameOf(system);
    return constraint;
}

/// The errors of estimates as parts of their standard errors, over many small series.
class StandardErrors : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        for (int n = 0; n < 30; ++n) {
            std::mt19937 random(unsigned(100 + n));
            SeriesTruth truth = plainTruth(random);
            truth.dfShare = 0.4;
            if (n % 2 == 1) {
                truth.listDrift = drift(truth.nFrames, 0.5, 0);
            }
            GeometryRefinementOptions options;
            options.bEllipse = options.bTiltScale = options.bAxisOutOfPlane = options.bThirdOrder = false;
            const GeometryRefinement result = refined(simulatedSpots(truth, random),
                                                      startOf(truth, 0.002, random), options);
            ASSERT_TRUE(result.done()) << result.strReason.toStdString();
            s_listSeries.push_back({truth, result.free});
        }
    }
    static void TearDownTestSuite() { s_listSeries.clear(); }

    void add(double dfFound, double dfTrue, double dfError)
    {
        ASSERT_GT(dfError, 0);
        m_dfSum += std::pow((dfFound - dfTrue) / dfError, 2);
        ++m_nCount;
    }
    /// Expects that the mean square of what was added is about 1.
    void expectUnity() const
    {
        const double dfMean = m_dfSum / m_nCount;
        RecordProperty("mean", std::to_string(dfMean));
        EXPECT_GT(dfMean, 0.5);
        EXPECT_LT(dfMean, 2.0);
    }
    struct Estimated {
        SeriesTruth truth;
        GeometryModel model;
    };
    inline static std::vector<Estimated> s_listSeries;

private:
    double m_dfSum = 0;
    int m_nCount = 0;
};

}  // namespace

TEST_F(StandardErrors, areThoseOfTheCell)
{
    for (const auto& [truth, model] : s_listSeries) {
        const std::array<double, 6> aTrue = cellNumbers(truth.matDirect), aFound = model.cell.numbers(),
                                    aError = model.cellErrors.numbers();
        for (size_t i = 0; i < 6; ++i) {
            add(aFound[i], aTrue[i], aError[i]);
        }
    }
    expectUnity();
}

TEST_F(StandardErrors, areThoseOfTheGeometry)
{
    for (const auto& [truth, model] : s_listSeries) {
        const PlaneTerms<double>& plane = model.geometry.plane;
        const double dfTwice = 2 * radians(truth.dfStretchingAzimuth);
        add(plane.axis, truth.dfAxis, model.errors[Axis]);
        add(plane.centreX, truth.dfCentreX, model.errors[CentreX]);
        add(plane.centreY, truth.dfCentreY, model.errors[CentreY]);
        add(plane.stretchingCos, truth.dfStretching * std::cos(dfTwice), model.errors[StretchingCos]);
        add(plane.stretchingSin, truth.dfStretching * std::sin(dfTwice), model.errors[StretchingSin]);
    }
    expectUnity();
}

TEST(GeometryRefinement, findsTheUsualNumbersAndLeavesTheOthersOut)
{
    std::mt19937 random(5);
    const SeriesTruth truth = plainTruth(random);
    DiffractionGeometry start = startOf(truth, 0.002, random);
    start.plane.axis = truth.dfAxis + 2;
    const GeometryRefinement result = refined(simulatedSpots(truth, random), start);
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    const GeometryModel& model = result.best();
    const auto within = [&](GeometryNumber which, double dfTrue) {
        EXPECT_LT(std::abs(model.fit.numbers[which] - dfTrue), 4 * model.errors[which])
            << geometryNumberName(which).toStdString();
    };
    within(Axis, truth.dfAxis);
    within(CentreX, truth.dfCentreX);
    within(CentreY, truth.dfCentreY);
    EXPECT_LT(model.errors[Axis], 0.15);
    EXPECT_LT(model.errors[CentreX], 0.05);
    const Distortion stretching = distortionOf(model.geometry.plane.stretchingCos,
                                               model.geometry.plane.stretchingSin);
    EXPECT_FALSE(model.bEllipse);
    EXPECT_NEAR(stretching.dfAmplitude, truth.dfStretching, 1e-3);
    EXPECT_NEAR(stretching.dfAzimuth, truth.dfStretchingAzimuth, 3);
    EXPECT_FALSE(isFree(model, ThirdOrderRadial));
    EXPECT_TRUE(isNamedFixed(result, ThirdOrderRadial));
    EXPECT_FALSE(isFree(model, ParabolicCos));
    EXPECT_TRUE(model.listDrift.empty()) << model.nDriftIntervals << " intervals, jumps " << model.nJumps;
    EXPECT_LT(result.dfRmsAfter, 0.5);
    EXPECT_GT(result.dfRmsBefore, 1);
    EXPECT_GE(result.nFitAfter, 0.97 * result.nPeaks);
    const std::array<double, 6> aTrue = cellNumbers(truth.matDirect), aFound = model.cell.numbers(),
                                aError = model.cellErrors.numbers();
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_LT(std::abs(aFound[n] - aTrue[n]), 4 * aError[n]) << n;
        EXPECT_LT(aError[n], 2e-3 * aTrue[n]) << n;
    }
}

/// A beam that wanders by a pixel, and one frame in twenty that is off by two.
TEST(GeometryRefinement, driftOfTheBeam)
{
    std::mt19937 random(12);
    SeriesTruth truth = plainTruth(random);
    truth.nFrames = 100;
    truth.dfStep = 0.6;
    truth.listDrift = drift(truth.nFrames, 1, 20);
    GeometryRefinementOptions options;
    options.nFrames = truth.nFrames + 3;
    const std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    const DiffractionGeometry start = startOf(truth, 0.001, random);
    const GeometryRefinement result = refined(listSpot, start, options);
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    const GeometryModel& model = result.best();
    EXPECT_EQ(model.listDrift.size(), size_t(options.nFrames));
    EXPECT_EQ(model.nJumps, 5);
    EXPECT_GT(model.nDriftIntervals, 1);
    const std::vector<FramePlace> listOffset = beamOffsets(model, truth.nFrames);
    double dfSum = 0;
    for (size_t n = 0; n < listOffset.size(); ++n) {
        const FramePlace& expected = truth.listDrift[n];
        const double dfX = listOffset[n].dfX - truth.dfCentreX - expected.dfX;
        const double dfY = listOffset[n].dfY - truth.dfCentreY - expected.dfY;
        EXPECT_LT(std::hypot(dfX, dfY), 0.45) << n;
        dfSum += dfX * dfX + dfY * dfY;
    }
    EXPECT_LT(std::sqrt(dfSum / truth.nFrames), 0.1);
    EXPECT_LT(result.dfRmsAfter, 0.45);
    EXPECT_GT(result.dfRmsBefore, 0.8);
    EXPECT_GE(result.nFitAfter, 0.97 * result.nPeaks) << "the frames that jump have their peaks back";
    const std::array<double, 6> aTrue = cellNumbers(truth.matDirect), aFound = model.cell.numbers(),
                                aError = model.cellErrors.numbers();
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_LT(std::abs(aFound[n] - aTrue[n]), 4 * aError[n]) << n;
    }
    EXPECT_EQ(beamOffsets(model, truth.nFrames + 9).back().dfX, model.geometry.plane.centreX);
    options.bDrift = false;
    const GeometryRefinement without = refined(listSpot, start, options);
    EXPECT_TRUE(without.free.listDrift.empty());
    EXPECT_GT(without.dfRmsAfter, 1.5 * result.dfRmsAfter);
}

TEST(GeometryRefinement, parabolicDistortion)
{
    std::mt19937 random(13);
    SeriesTruth truth = plainTruth(random);
    truth.dfParabolic = 0.02;
    truth.dfParabolicAzimuth = 130;
    GeometryRefinementOptions options;
    const GeometryRefinement result = refined(simulatedSpots(truth, random), startOf(truth, 0.001, random));
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    const GeometryModel& model = result.best();
    ASSERT_TRUE(isFree(model, ParabolicCos));
    EXPECT_LT(model.errors[ParabolicCos], 2e-3);
    EXPECT_NEAR(model.geometry.plane.parabolicCos, 0.02 * std::cos(radians(130)),
                4 * model.errors[ParabolicCos]);
    EXPECT_NEAR(model.geometry.plane.parabolicSin, 0.02 * std::sin(radians(130)),
                4 * model.errors[ParabolicSin]);
    options.listFixed = {ParabolicSin, Axis};
    const GeometryRefinement fixed = refined(simulatedSpots(truth, random), startOf(truth, 0.001, random),
                                             options);
    EXPECT_FALSE(isFree(fixed.free, ParabolicCos));
    EXPECT_TRUE(isNamedFixed(fixed, ParabolicSin));
    EXPECT_TRUE(isNamedFixed(fixed, Axis));
}

/// Peaks without indices get those of the lattice; peaks at random positions are left out.
TEST(GeometryRefinement, peaksWithoutIndices)
{
    std::mt19937 random(15);
    const SeriesTruth truth = plainTruth(random);
    std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    const size_t nTrue = listSpot.size();
    std::uniform_real_distribution<double> place(-220, 220);
    for (size_t n = 0; n < nTrue; ++n) {
        if (n % 3 == 0) {
            listSpot[n].bIndexed = false;
            listSpot[n].anIndex = {};
            GeometrySpot spot = listSpot[n];
            spot.place = {std::round(place(random)), std::round(place(random))};
            listSpot.push_back(spot);
        }
    }
    const GeometryRefinement result = refined(listSpot, startOf(truth, 0.001, random));
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    const int nHidden = int(nTrue + 2) / 3;
    EXPECT_EQ(result.nPeaks, int(nTrue) - nHidden);
    EXPECT_GT(result.nJoined, 0.75 * nHidden);
    EXPECT_LT(result.nJoined, 1.1 * nHidden);
    EXPECT_LE(result.nFitAfter, result.nPeaks);
    EXPECT_LT(result.dfRmsAfter, 0.5);
    EXPECT_NEAR(result.best().geometry.plane.axis, truth.dfAxis, 4 * result.best().errors[Axis]);
}

/// Centres of the spots are taken where they are good, and left where they went astray.
TEST(GeometryRefinement, finePlaces)
{
    std::mt19937 random(14);
    SeriesTruth truth = plainTruth(random);
    truth.dfFineNoise = 0.08;
    std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    const DiffractionGeometry start = startOf(truth, 0.001, random);
    const GeometryRefinement fine = refined(listSpot, start);
    ASSERT_TRUE(fine.done()) << fine.strReason.toStdString();
    EXPECT_TRUE(fine.bFinePlaces);
    EXPECT_NEAR(fine.dfRmsAfter, truth.dfFineNoise, 0.01);
    EXPECT_NEAR(fine.best().geometry.plane.axis, truth.dfAxis, 0.02);
    std::normal_distribution<double> normal;
    for (GeometrySpot& spot : listSpot) {
        spot.finePlace = {spot.place.dfX + normal(random), spot.place.dfY + normal(random)};
    }
    const GeometryRefinement astray = refined(listSpot, start);
    ASSERT_TRUE(astray.done());
    EXPECT_FALSE(astray.bFinePlaces);
    EXPECT_LT(astray.dfRmsAfter, 0.5);
}

/// A cubic lattice through an ellipse and the third order: a free cell takes up a part of the ellipse, the
/// type tells it.
TEST(GeometryRefinement, bravaisTypeSeparatesTheEllipse)
{
    std::mt19937 random(6);
    SeriesTruth truth;
    truth.matDirect = turnedCell(11, 11, 11, 90, 90, 90, random);
    truth.dfEllipse = 0.014;
    truth.dfEllipseAzimuth = 82;
    truth.dfRadial = 0.03;
    truth.dfSpiral = -0.004;
    truth.dfOutOfPlane = 0.8;
    truth.dfReach = 0.75;
    GeometryRefinementOptions options;
    options.listConstraint = {constraintOf(LatticeSystem::Cubic), constraintOf(LatticeSystem::Orthorhombic)};
    const GeometryRefinement result = refined(simulatedSpots(truth, random), startOf(truth, 0.002, random),
                                              options);
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    EXPECT_FALSE(isFree(result.free, EllipseAlong));
    ASSERT_TRUE(result.constrained);
    const GeometryModel& model = *result.constrained;
    EXPECT_EQ(model.fit.form.constraint()->system, LatticeSystem::Cubic);
    EXPECT_TRUE(model.bEllipse);
    const Distortion ellipse = distortionOf(model.geometry.plane.ellipseCos, model.geometry.plane.ellipseSin);
    EXPECT_NEAR(ellipse.dfAmplitude, truth.dfEllipse, 2e-4);
    EXPECT_NEAR(
        degrees(std::remainder(2 * radians(ellipse.dfAzimuth - truth.dfEllipseAzimuth), 2 * g_dfPi)) / 2, 0,
        0.5);
    EXPECT_NEAR(model.geometry.plane.radial, truth.dfRadial, 4 * model.errors[ThirdOrderRadial]);
    EXPECT_NEAR(model.geometry.plane.spiral, truth.dfSpiral, 4 * model.errors[ThirdOrderSpiral]);
    EXPECT_LT(model.errors[ThirdOrderRadial], 3e-3);
    EXPECT_NEAR(model.geometry.turn.outOfPlane, truth.dfOutOfPlane, 4 * model.errors[AxisOutOfPlane]);
    EXPECT_LT(model.errors[AxisOutOfPlane], 0.15);
    EXPECT_NEAR(model.cell.a, 11, 4 * model.cellErrors.a);
    EXPECT_LT(model.cellErrors.a, 0.01);
    EXPECT_EQ(model.cell.b, model.cell.a);
    EXPECT_EQ(model.cell.gamma, 90);
    EXPECT_GT(
        std::abs(result.free.cell.a / result.free.cell.b - 1) + std::abs(result.free.cell.gamma - 90) / 57,
        1e-3)
        << "without the type the ellipse is in the cell";
}

TEST(GeometryRefinement, aTypeThatTheCellDoesNotHaveIsLeftOut)
{
    std::mt19937 random(7);
    SeriesTruth truth;
    truth.matDirect = turnedCell(8, 8.06, 10, 90, 90, 90, random);
    GeometryRefinementOptions options;
    options.listConstraint = {constraintOf(LatticeSystem::Tetragonal),
                              constraintOf(LatticeSystem::Orthorhombic)};
    options.bEllipse = false;
    const GeometryRefinement result = refined(simulatedSpots(truth, random), startOf(truth, 0.001, random),
                                              options);
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    ASSERT_TRUE(result.constrained);
    EXPECT_EQ(result.constrained->fit.form.constraint()->system, LatticeSystem::Orthorhombic);
    EXPECT_NEAR(result.constrained->cell.b, 8.06, 4 * result.constrained->cellErrors.b + 1e-3);
}

TEST(GeometryRefinement, scaleOfTheTilts)
{
    std::mt19937 random(8);
    SeriesTruth truth = plainTruth(random);
    truth.dfTiltScale = 1.01;
    const GeometryRefinement result = refined(simulatedSpots(truth, random), startOf(truth, 0.001, random));
    ASSERT_TRUE(result.done()) << result.strReason.toStdString();
    ASSERT_TRUE(isFree(result.best(), TiltScale));
    EXPECT_NEAR(result.best().geometry.turn.scale, 1.01, 1e-3);
}

/// What cannot be fitted is refused, or fixed and named.
TEST(GeometryRefinement, badInput)
{
    std::mt19937 random(9);
    const SeriesTruth truth = plainTruth(random);
    const std::vector<GeometrySpot> listAll = simulatedSpots(truth, random);
    const DiffractionGeometry start = startOf(truth, 0.001, random);

    std::vector<GeometrySpot> listFew(listAll.begin(), listAll.begin() + 19);
    EXPECT_TRUE(refined(listFew, start).strReason.contains("needs 20"));
    EXPECT_FALSE(refined({}, start).done());

    std::vector<GeometrySpot> listZone;
    std::copy_if(listAll.begin(), listAll.end(), std::back_inserter(listZone),
                 [](const GeometrySpot& spot) { return spot.anIndex[2] == 0; });
    ASSERT_GT(listZone.size(), 40u);
    EXPECT_TRUE(refined(listZone, start).strReason.contains("one plane"));

    std::vector<GeometrySpot> listOdd = listAll;
    listOdd[3].place.dfX = std::nan("");
    listOdd[4].dfWeight = -5;
    const GeometryRefinement odd = refined(listOdd, start);
    EXPECT_TRUE(odd.done());
    EXPECT_TRUE(allFinite(odd.best()));
    EXPECT_EQ(odd.nPeaks, int(listAll.size()) - 1);

    DiffractionGeometry wrong = start;
    wrong.aBasis[0] = start.aBasis[1];
    EXPECT_FALSE(refined(listAll, wrong).done()) << "co-planar";
    wrong = start;
    wrong.dfWavelength = 0;
    EXPECT_FALSE(refined(listAll, wrong).done());
    for (DoubleVector& vec : wrong.aBasis) {
        for (double& df : vec) {
            df *= 1.37;
        }
    }
    wrong.dfWavelength = start.dfWavelength;
    EXPECT_FALSE(refined(listAll, wrong).done() && refined(listAll, wrong).dfRmsAfter > 1)
        << "a cell that is wrong by far is either found from the indices or refused";
}

TEST(GeometryRefinement, halfOfThePeaksFalse)
{
    std::mt19937 random(10);
    const SeriesTruth truth = plainTruth(random);
    std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    std::uniform_real_distribution<double> place(-220, 220);
    const size_t nTrue = listSpot.size();
    for (size_t n = 0; n < nTrue; ++n) {
        GeometrySpot spot = listSpot[n];
        spot.place = {std::round(place(random)), std::round(place(random))};
        spot.anIndex = {int(place(random)) / 40, int(place(random)) / 40, int(place(random)) / 40};
        listSpot.push_back(spot);
    }
    const GeometryRefinement result = refined(listSpot, startOf(truth, 0.001, random));
    if (result.done()) {
        EXPECT_TRUE(allFinite(result.best()));
        EXPECT_NEAR(result.best().geometry.plane.axis, truth.dfAxis, 0.1);
        EXPECT_LT(result.dfRmsAfter, 0.6);
    } else {
        EXPECT_TRUE(result.strReason.contains("Most of the peaks") || result.strReason.contains("worse"))
            << result.strReason.toStdString();
    }
}

/// Frames of a stationary crystal, and a narrow range of tilts: numbers that they do not determine are fixed
/// and named.
TEST(GeometryRefinement, narrowTilts)
{
    std::mt19937 random(11);
    SeriesTruth truth = plainTruth(random);
    truth.dfFirstTilt = 10;
    truth.dfStep = 0;
    truth.nFrames = 8;
    truth.dfWidth = 0.02;
    const GeometryRefinement still = refined(simulatedSpots(truth, random), startOf(truth, 0.0005, random));
    if (still.done()) {
        EXPECT_TRUE(allFinite(still.best()));
        EXPECT_FALSE(isFree(still.best(), Axis));
        EXPECT_TRUE(isNamedFixed(still, Axis));
    }
    truth.dfStep = 0.5;
    truth.nFrames = 21;
    const GeometryRefinement narrow = refined(simulatedSpots(truth, random), startOf(truth, 0.0005, random));
    ASSERT_TRUE(narrow.done()) << narrow.strReason.toStdString();
    EXPECT_TRUE(allFinite(narrow.best()));
    EXPECT_TRUE(isNamedFixed(narrow, AxisOutOfPlane));
    EXPECT_FALSE(isFree(narrow.best(), AxisOutOfPlane));
}

}  // namespace tessera
