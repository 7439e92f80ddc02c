// Passages against closed forms and a search step by step; predictions against the spots of the simulator.
#include "integration/prediction.h"
#include "integration/passagegeometry.h"
#include "tests/integration/simulatedintegration.h"

#include <Eigen/Dense>

namespace tessera {

namespace {

SeriesGeometry seriesOf(const std::vector<double>& listTilt)
{
    SeriesGeometry series;
    series.geometry.aBasis = {DoubleVector{0.3, 0, 0}, DoubleVector{0, 0.3, 0}, DoubleVector{0, 0, 0.3}};
    series.geometry.dfWavelength = 0.0251;
    series.geometry.dfPixelSize = 0.005;
    series.geometry.dfMiddleTilt = (listTilt.front() + listTilt.back()) / 2;
    series.listTilt = listTilt;
    series.listBeam.assign(listTilt.size(), {256, 256});
    series.sizeFrame = {512, 512};
    return series;
}

std::vector<double> steps(double dfFirst, double dfStep, int nFrames)
{
    std::vector<double> list;
    for (int n = 0; n < nFrames; ++n) {
        list.push_back(dfFirst + n * dfStep);
    }
    return list;
}

// The distance of a point from the sphere at a tilt, by rotations of another library.
double distanceFromSphere(const SeriesGeometry& series, const Eigen::Vector3d& point, double dfTilt)
{
    const TurnTerms<double>& turn = series.geometry.turn;
    const double dfMiddle = series.geometry.dfMiddleTilt, r = std::acos(-1.0) / 180;
    const Eigen::Vector3d axis(std::cos(turn.outOfPlane * r), 0, std::sin(turn.outOfPlane * r));
    const double dfAngle = turn.offset + dfMiddle + turn.scale * (dfTilt - dfMiddle);
    const double dfK = 1 / series.geometry.dfWavelength;
    return dfK - (Eigen::AngleAxisd(-dfAngle * r, axis) * point - Eigen::Vector3d(0, 0, dfK)).norm();
}

}  // namespace

TEST(Passages, OfAPointAcrossTheAxisAreKnown)
{
    // (0, g, 0) rises to -g·sin(tilt), and lies on the sphere where that is g²·λ/2.
    const double g = 0.6, dfAngle = -degrees(std::asin(g * 0.0251 / 2));
    const CPassageGeometry passages(seriesOf(steps(-20, 0.5, 81)));
    const auto list = passages.crossings({0, g, 0}, 0);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_NEAR(list[0].dfTilt, dfAngle, 1e-9);
    EXPECT_NEAR(list[0].dfFrame, (dfAngle + 20) / 0.5, 1e-9);
    EXPECT_NEAR(list[0].dfSpeed, radians(g * std::cos(radians(dfAngle))), 1e-12);

    // Round and round it comes twice a turn; from 10 degrees on in the other sense at another side first.
    EXPECT_EQ(CPassageGeometry(seriesOf(steps(-359, 2, 360))).crossings({0, g, 0}, 0).size(), 4u);
    EXPECT_EQ(CPassageGeometry(seriesOf(steps(10, -2, 181))).crossings({0, g, 0}, 0).size(), 2u);
    // A point on the axis does not move; a point beyond 2/λ never crosses the sphere.
    EXPECT_TRUE(passages.crossings({0.5, 0, 0}, 0).empty());
    EXPECT_TRUE(passages.crossings({0, 90, 0}, 0).empty());
    // Half a frame beyond the ends, and as far as one asks.
    EXPECT_EQ(CPassageGeometry(seriesOf(steps(0, 0.5, 9))).crossings({0, g, 0}, 0).size(), 0u);
    EXPECT_EQ(CPassageGeometry(seriesOf(steps(0, 0.5, 9))).crossings({0, g, 0}, 1).size(), 1u);
    EXPECT_EQ(CPassageGeometry(seriesOf(steps(-0.2, 0.5, 9))).crossings({0, g, 0}, 0).size(), 1u);
}

TEST(Passages, AreThoseThatASearchStepByStepFinds)
{
    // Uneven steps, back and forth as beam tilts go, and every term of the turn.
    std::vector<double> listTilt;
    for (int n = 0; n < 60; ++n) {
        listTilt.push_back(-40 + 1.3 * n + 4 * std::sin(0.9 * n));
    }
    SeriesGeometry series = seriesOf(listTilt);
    series.geometry.turn = {1.5, 1.02, 0.7};
    const CPassageGeometry passages(series);
    int nFound = 0;
    for (int n = 0; n < 200; ++n) {
        const Eigen::Vector3d point(std::sin(1.7 * n), std::cos(2.3 * n), 0.5 * std::sin(0.6 * n));
        std::vector<double> listFrame;
        const auto at = [&](double dfFrame) {
            return distanceFromSphere(series, point, passages.tiltAt(dfFrame));
        };
        const double dfStep = 0.01;
        for (double df = -0.5; df < 59.5 - dfStep / 2; df += dfStep) {
            if (at(df) * at(df + dfStep) < 0) {
                listFrame.push_back(df + dfStep / 2);
            }
        }
        const auto list = passages.crossings({point.x(), point.y(), point.z()}, 0);
        ASSERT_EQ(list.size(), listFrame.size()) << n;
        for (size_t i = 0; i < list.size(); ++i) {
            ++nFound;
            EXPECT_NEAR(list[i].dfFrame, listFrame[i], dfStep);
            EXPECT_NEAR(at(list[i].dfFrame), 0, 1e-9);
            const double dfChange = distanceFromSphere(series, point, list[i].dfTilt + 1e-4) -
                                    distanceFromSphere(series, point, list[i].dfTilt - 1e-4);
            EXPECT_NEAR(list[i].dfSpeed, std::abs(dfChange) / 2e-4, 1e-6);
        }
    }
    EXPECT_GT(nFound, 100);
}

TEST(RockingCurve, PartsAddUpAndPrecessionHasTwoPeaks)
{
    for (const RotationKind kind :
         {RotationKind::Continuous, RotationKind::Stepped, RotationKind::Precession}) {
        const RockingCurve curve{{kind, 0.8}, 0.003, 0.1};
        double dfSum = 0;
        for (int n = -60; n < 60; ++n) {
            dfSum += curve.part(0.001 * n, 0.001 * (n + 0.5), 0.001 * (n + 1), 0.7);
        }
        EXPECT_NEAR(dfSum, 1, 1e-6);
    }
    // The mean over the cone, by a sum of its own.
    const RockingCurve curve{{RotationKind::Precession, 1.0}, 0.002, 0};
    const double dfCone = std::acos(-1.0) / 180 * 0.9;
    const auto density = [&](double e) { return curve.part(e - 5e-5, e, e + 5e-5, 0.9) / 1e-4; };
    for (const double e : {0.0, 0.004, 0.013, 0.016, 0.02}) {
        double dfMean = 0;
        for (int n = 0; n < 100000; ++n) {
            const double x = (e - dfCone * std::sin(2 * std::acos(-1.0) * n / 100000)) / 0.002;
            dfMean += std::exp(-x * x / 2) / (0.002 * std::sqrt(2 * std::acos(-1.0))) / 100000;
        }
        EXPECT_NEAR(density(e), dfMean, 1e-6 * density(0.013)) << e;
    }
    EXPECT_GT(density(0.014), 2 * density(0));
    EXPECT_NEAR(density(0.014), density(-0.014), 1e-9);
}

TEST(Prediction, HasTheSpotsOfTheSimulator)
{
    CSimulatedFrames frames(smallCrystal());
    PredictionOptions options;
    options.bBeyondEnds = true;
    std::map<std::array<int, 3>, std::vector<Observation>> mapPredicted;
    for (const Observation& o : predictObservations(frames.m_geometry, options)) {
        mapPredicted[o.anIndex].push_back(o);
    }
    const CPassageGeometry passages(frames.m_geometry);
    int nStrong = 0, nMissing = 0;
    for (const TruthSpot& spot : frames.m_series.listSpot) {
        if (std::abs(spot.dfExcitation) > 0.012 || spot.dfX < 4 || spot.dfY < 4 || spot.dfX > 251 ||
            spot.dfY > 251) {
            continue;
        }
        const std::array<int, 3> anIndex = {spot.nH, spot.nK, spot.nL};
        ++nStrong;
        const auto& list = mapPredicted[anIndex];
        const bool bThere = std::any_of(list.begin(), list.end(), [&](const Observation& o) {
            return o.nFirstFrame <= spot.nFrame && spot.nFrame <= o.nLastFrame;
        });
        // Those that only come near the sphere and turn back cross it nowhere.
        nMissing += bThere ? 0 : 1;
        const auto place = passages.placeOn(anIndex, spot.nFrame);
        ASSERT_TRUE(place);
        EXPECT_NEAR(place->dfX, spot.dfX, 0.06);
        EXPECT_NEAR(place->dfY, spot.dfY, 0.06);
        EXPECT_NEAR(passages.excitationAt(passages.pointOf(anIndex), spot.nFrame), spot.dfExcitation, 1e-6);
    }
    EXPECT_GT(nStrong, 300);
    EXPECT_LE(nMissing, nStrong / 100);
}

namespace {

/// 31 frames of a cubic cell with edges of 0.105 Å⁻¹ along the axes of the laboratory.
SeriesGeometry cubicSeries()
{
    SeriesGeometry series = seriesOf(steps(-15, 1, 31));
    series.geometry.aBasis = {DoubleVector{0.105, 0, 0}, DoubleVector{0, 0.105, 0},
                              DoubleVector{0, 0, 0.105}};
    return series;
}

}  // namespace

TEST(Prediction, FlagsWhatIsNotWhole)
{
    const SeriesGeometry series = cubicSeries();
    const PredictionOptions options;
    std::map<std::array<int, 3>, unsigned> mapFlags;
    for (const Observation& o : predictObservations(series, options)) {
        mapFlags[o.anIndex] |= o.nFlags | 1u << 31;
        EXPECT_GE(o.nFirstFrame, 0);
        EXPECT_LE(o.nLastFrame, 30);
    }
    EXPECT_EQ(mapFlags.at({0, 2, 0}), 1u << 31);  // through the middle
    const auto has = [&](ReflectionFlag flag) {
        return std::any_of(mapFlags.begin(), mapFlags.end(),
                           [&](const auto& one) { return one.second & flag; });
    };
    EXPECT_TRUE(has(FlagBeginsBefore));
    EXPECT_TRUE(has(FlagEndsAfter));
    EXPECT_TRUE(has(FlagOffFrame));

    // A tenth of Å⁻¹ off the axis takes some 17 degrees: fast in steps of 1 degree, slow in such of a
    // quarter.
    EXPECT_EQ(mapFlags.at({3, 1, 0}), 1u << 31);
    for (const Observation& o : predictObservations(
             [&] {
                 SeriesGeometry fine = series;
                 fine.listTilt = steps(-15, 0.25, 121);
                 fine.listBeam.assign(121, {256, 256});
                 return fine;
             }(),
             options)) {
        EXPECT_EQ((o.nFlags & FlagSlow) != 0, o.dfSpeed * 0.25 * 40 < 0.03) << o.dfSpeed;
    }
}

TEST(Prediction, HasNoAbsentReflectionsAndNoneOfAFlatCellOrAtRest)
{
    const SeriesGeometry series = cubicSeries();
    PredictionOptions options;
    options.chCentring = 'I';
    for (const Observation& o : predictObservations(series, options)) {
        EXPECT_EQ((o.anIndex[0] + o.anIndex[1] + o.anIndex[2]) % 2, 0);
    }
    SeriesGeometry flat = series;
    flat.geometry.aBasis[2] = flat.geometry.aBasis[0];
    EXPECT_TRUE(predictObservations(flat, options).empty());
    flat = series;
    flat.listTilt.assign(31, 3.0);
    EXPECT_TRUE(predictObservations(flat, options).empty());
}

namespace {

/// The series of cubicSeries() without the frames 12 to 14.
SeriesGeometry holedSeries()
{
    SeriesGeometry series = cubicSeries();
    series.listTilt.erase(series.listTilt.begin() + 12, series.listTilt.begin() + 15);
    series.listBeam.resize(28);
    return series;
}

}  // namespace

TEST(Passages, KnowTheHoles)
{
    const CPassageGeometry passages(holedSeries());
    EXPECT_TRUE(passages.isHoleBehind(11));
    EXPECT_FALSE(passages.isHoleBehind(10));
    EXPECT_FALSE(passages.isHoleBehind(12));
    EXPECT_FALSE(CPassageGeometry(cubicSeries()).isHoleBehind(11));
}

TEST(Passages, LeaveFramesAtAHoleAsTheyWereExposed)
{
    const CPassageGeometry passages(cubicSeries()), passagesHoled(holedSeries());
    const std::vector<Observation> listObservation = predictObservations(cubicSeries(), {});
    EXPECT_GT(listObservation.size(), 350U);
    for (const Observation& o : listObservation) {
        const DoubleVector point = passages.pointOf(o.anIndex);
        for (const int n : {0, 5, 11, 15, 30}) {
            const int nHoled = n < 12 ? n : n - 3;
            EXPECT_NEAR(passagesHoled.excitationAtStart(point, nHoled), passages.excitationAtStart(point, n),
                        1e-12);
            EXPECT_NEAR(passagesHoled.excitationAt(point, nHoled), passages.excitationAt(point, n), 1e-12);
            EXPECT_NEAR(passagesHoled.excitationAtEnd(point, nHoled), passages.excitationAtEnd(point, n),
                        1e-12);
        }
    }
}

TEST(Prediction, FlagsWhatAHoleTakesAndNothingElse)
{
    const SeriesGeometry whole = cubicSeries();
    const CPassageGeometry passages(whole);
    const PredictionOptions options;
    const RockingCurve curve = rockingCurveOf(options, whole.rotation);
    std::map<std::pair<std::array<int, 3>, int>, unsigned> mapFlags;  // by indices and tilt of the passage
    for (const Observation& o : predictObservations(holedSeries(), options)) {
        mapFlags[{o.anIndex, int(std::lround(o.dfTilt * 1000))}] = o.nFlags;
    }
    int nLost = 0, nKept = 0;
    for (const Observation& o : predictObservations(whole, options)) {
        const DoubleVector point = passages.pointOf(o.anIndex);
        double dfLost = 0;
        for (int n = 12; n < 15; ++n) {
            dfLost += curve.part(passages.excitationAtStart(point, n), passages.excitationAt(point, n),
                                 passages.excitationAtEnd(point, n), o.dfDStar);
        }
        const auto found = mapFlags.find({o.anIndex, int(std::lround(o.dfTilt * 1000))});
        const unsigned nFlags = found == mapFlags.end() ? unsigned(FlagEndsAfter) : found->second;
        if (dfLost > 0.1) {
            EXPECT_TRUE(nFlags & (FlagEndsAfter | FlagSlow)) << dfLost << " at " << o.dfTilt;
            ++nLost;
        } else if (dfLost < 0.001 && found != mapFlags.end()) {
            EXPECT_EQ(nFlags, o.nFlags) << o.dfTilt;
            ++nKept;
        }
    }
    EXPECT_GT(nLost, 50);
    EXPECT_GT(nKept, 300);
}

TEST(Prediction, RefusesWhatWouldNotEnd)
{
    const SeriesGeometry series = seriesOf(steps(-15, 1, 31));
    PredictionOptions options;
    EXPECT_TRUE(whyNotPredicted(CPassageGeometry(series), options).isEmpty());
    // No frame shows what lies beyond its corners.
    const size_t nToCorner = predictObservations(series, options).size();
    options.dfMaxDStar = 10;
    const size_t nToMost = predictObservations(series, options).size();
    EXPECT_GE(nToMost, nToCorner);
    EXPECT_LE(double(nToMost), 1.1 * double(nToCorner));

    SeriesGeometry large = series;
    for (DoubleVector& axis : large.geometry.aBasis) {
        for (double& df : axis) {
            df /= 100;
        }
    }
    EXPECT_FALSE(whyNotPredicted(CPassageGeometry(large), options).isEmpty());
    EXPECT_TRUE(predictObservations(large, options).empty());
    options.dfMaxDStar = 0.05;
    EXPECT_TRUE(whyNotPredicted(CPassageGeometry(large), options).isEmpty());
    large.geometry.aBasis[2] = large.geometry.aBasis[0];
    EXPECT_FALSE(whyNotPredicted(CPassageGeometry(large), options).isEmpty());
}

}  // namespace tessera
