// The model of the geometry against the mapping, against complex numbers, and its derivatives.

#include "reciprocal/mapping.h"
#include "refinement/geometryofseries.h"
#include "refinement/geometryrounds.h"
#include "tests/refinement/simulatedspots.h"

#include <gtest/gtest.h>

namespace tessera {

namespace {

SeriesTruth distortedTruth(std::mt19937& random)
{
    SeriesTruth truth;
    truth.matDirect = turnedCell(7, 9, 11, 85, 97, 103, random);
    truth.dfOutOfPlane = 1.2;
    truth.dfTiltScale = 1.01;
    truth.dfStretching = 0.01;
    truth.dfStretchingAzimuth = 25;
    truth.dfEllipse = 0.013;
    truth.dfEllipseAzimuth = 70;
    truth.dfRadial = 0.02;
    truth.dfSpiral = -0.006;
    truth.dfParabolic = 0.008;
    truth.dfParabolicAzimuth = 35;
    truth.dfCentreX = 0.7;
    truth.dfCentreY = -1.1;
    return truth;
}

DiffractionGeometry geometryOf(const SeriesTruth& truth)
{
    std::mt19937 random(1);
    DiffractionGeometry geometry = startOf(truth, 0, random);
    const auto twice = [](double dfAzimuth) { return 2 * radians(dfAzimuth); };
    PlaneTerms<double>& plane = geometry.plane;
    plane.centreX = truth.dfCentreX;
    plane.centreY = truth.dfCentreY;
    plane.stretchingCos = truth.dfStretching * std::cos(twice(truth.dfStretchingAzimuth));
    plane.stretchingSin = truth.dfStretching * std::sin(twice(truth.dfStretchingAzimuth));
    plane.ellipseCos = truth.dfEllipse * std::cos(twice(truth.dfEllipseAzimuth));
    plane.ellipseSin = truth.dfEllipse * std::sin(twice(truth.dfEllipseAzimuth));
    plane.radial = truth.dfRadial;
    plane.spiral = truth.dfSpiral;
    plane.parabolicCos = truth.dfParabolic * std::cos(radians(truth.dfParabolicAzimuth));
    plane.parabolicSin = truth.dfParabolic * std::sin(radians(truth.dfParabolicAzimuth));
    geometry.turn.scale = truth.dfTiltScale;
    geometry.turn.outOfPlane = truth.dfOutOfPlane;
    return geometry;
}

}  // namespace

TEST(DiffractionGeometry, withoutNewTermsItIsTheMapping)
{
    DataSet dataSet;
    dataSet.m_dfWavelength = 0.0251;
    dataSet.m_dfPixelSize = 0.004;
    dataSet.m_dfStretchAmplitude = 1.5;
    dataSet.m_dfStretchAzimuth = 33;
    DiffractionGeometry geometry;
    geometry.dfWavelength = dataSet.m_dfWavelength;
    geometry.dfPixelSize = dataSet.m_dfPixelSize;
    geometry.dfMiddleTilt = 7;
    geometry.plane.axis = -140.5;
    geometry.plane.stretchingCos = 0.015 * std::cos(radians(66));
    geometry.plane.stretchingSin = 0.015 * std::sin(radians(66));
    for (const double dfTilt : {-50.0, 0.0, 23.5}) {
        for (const QPointF pt : {QPointF(0, 0), QPointF(200, -30), QPointF(-1, 170)}) {
            Peak3D peak;
            peak.dfX2D = pt.x() + 256;
            peak.dfY2D = pt.y() + 250;
            mapPeakTo3D(peak, {256, 250}, rotationZ(-140.5), rotationX(dfTilt), dataSet, true);
            const DoubleVector point = pointOfPlace(geometry, {pt.x(), pt.y()}, dfTilt);
            EXPECT_NEAR(point[0], peak.fX3D, 3e-6);  // the mapping has single precision
            EXPECT_NEAR(point[1], peak.fY3D, 3e-6);
            EXPECT_NEAR(point[2], peak.fZ3D, 3e-6);
        }
    }
}

namespace {

/// A place as it was before the lens of toldSeries() moved it, in complex numbers with y up: each term by
/// what it says of the pattern.
QPointF undoneByHand(const QPointF& pt, bool bStretching)
{
    using Complex = std::complex<double>;
    const Complex z(pt.x(), -pt.y());
    Complex before = z;  // what the projector lenses moved to z, and they come last
    for (int n = 0; n < 200; ++n) {
        const double dfRatio = std::abs(before) / 240;
        before = z + before * (Complex(0.02, 0.006) * dfRatio * dfRatio -  // outwards, against the turn
                               0.009 * dfRatio * std::cos(std::arg(before) - radians(-110)));
    }
    const double dfAlong = bStretching ? 0.015 * std::cos(2 * (std::arg(z) - radians(33))) : 0;
    // Shorter where it is longer.
    const Complex undone = before + z * dfAlong -
                           0.012 * std::polar(1.0, 2 * radians(70)) * std::conj(before);
    return {undone.real(), -undone.imag()};
}

/// A series whose project tells a stretching and a lens of every order.
DataSet toldSeries()
{
    DataSet dataSet;
    dataSet.m_dfWavelength = 0.0251;
    dataSet.m_dfPixelSize = 0.004;
    dataSet.m_dfRotationAxis = -140.5;
    dataSet.m_dfStretchAmplitude = 1.5;
    dataSet.m_dfStretchAzimuth = 33;
    dataSet.m_listOverallTilt = {-50, 60};
    dataSet.m_listCell = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
    dataSet.m_distortion = {1.2, 70, 2, -0.6, 0.9, -110, 240, 0.8};
    return dataSet;
}

const QPointF g_aPlace[] = {{0, 0}, {200, -30}, {-1, 270}, {-210, -190}};

}  // namespace

TEST(DiffractionGeometry, theCorrectionUndoesWhatAProjectTells)
{
    const DataSet dataSet = toldSeries();
    for (const bool bStretching : {false, true}) {
        const CPlaceCorrection correction = placeCorrection(dataSet, bStretching);
        for (const QPointF& pt : g_aPlace) {
            const QPointF ptUndone = correction.undone(pt), ptByHand = undoneByHand(pt, bStretching);
            EXPECT_NEAR(ptUndone.x(), ptByHand.x(), 1e-9);
            EXPECT_NEAR(ptUndone.y(), ptByHand.y(), 1e-9);
            const QPointF ptBack = correction.putBack(ptUndone).value();
            EXPECT_NEAR(ptBack.x(), pt.x(), 1e-9);
            EXPECT_NEAR(ptBack.y(), pt.y(), 1e-9);
        }
    }
}

TEST(DiffractionGeometry, ofAProjectIsThatOfTheMappingAndLeadsBack)
{
    const DataSet dataSet = toldSeries();
    MappingParameters mapping;
    for (const bool bStretching : {false, true}) {
        mapping.m_bApplyStretching = bStretching;
        const DiffractionGeometry geometry = geometryOfSeries(dataSet, mapping).value();
        for (const QPointF& pt : g_aPlace) {
            for (const double dfTilt : {-50.0, 23.5}) {
                Peak3D peak;
                peak.dfX2D = pt.x() + 256;
                peak.dfY2D = pt.y() + 250;
                mapPeakTo3D(peak, {256, 250}, rotationZ(-140.5), rotationAboutAxis(dfTilt, 0.8), dataSet,
                            bStretching);
                const DoubleVector point = pointOfPlace(geometry, {pt.x(), pt.y()}, dfTilt);
                const double dfLimit = 1e-3 * dataSet.m_dfPixelSize;
                EXPECT_NEAR(point[0], peak.fX3D, dfLimit);
                EXPECT_NEAR(point[1], peak.fY3D, dfLimit);
                EXPECT_NEAR(point[2], peak.fZ3D, dfLimit);
            }
        }
        SeriesDistortion back = seriesDistortion(geometry);
        for (const DistortionKeyword& row : g_aDistortionKeyword) {
            EXPECT_NEAR(back.*row.pMember, dataSet.m_distortion.*row.pMember, 1e-9) << row.pszKeyword;
        }
    }
}

TEST(DiffractionGeometry, placesAreThoseOfTheComplexFormulaAndLeadBack)
{
    std::mt19937 random(2);
    const SeriesTruth truth = distortedTruth(random);
    const DiffractionGeometry geometry = geometryOf(truth);
    const Eigen::Matrix3d matReciprocal = truth.matDirect.inverse();
    for (const double dfTilt : {-31.0, 2.0, 44.0}) {
        for (const DoubleVector& index :
             {DoubleVector{1, -2, 3}, DoubleVector{4, 0, -5}, DoubleVector{0, 0, 1}}) {
            const Eigen::Vector3d g = matReciprocal * Eigen::Vector3d(index[0], index[1], index[2]);
            const Eigen::Vector3d lab = turnOfFrame(truth, dfTilt) * g;
            const FramePlace expected = placeOf(truth, lab);
            const std::optional<FramePlace> found = placeOfReflection(geometry, index, dfTilt);
            ASSERT_TRUE(found);
            EXPECT_NEAR(found->dfX, expected.dfX, 1e-7);
            EXPECT_NEAR(found->dfY, expected.dfY, 1e-7);
            // Back from the place: the same in the plane, on the sphere along the beam.
            const DoubleVector point = pointOfPlace(geometry, *found, dfTilt);
            const Eigen::Vector3d back = turnOfFrame(truth, dfTilt) *
                                         Eigen::Vector3d(point[0], point[1], point[2]);
            EXPECT_NEAR(back.x(), lab.x(), 1e-9);
            EXPECT_NEAR(back.y(), lab.y(), 1e-9);
            const double dfK = 1 / truth.dfWavelength;
            EXPECT_NEAR(back.x() * back.x() + back.y() * back.y() + std::pow(back.z() - dfK, 2), dfK * dfK,
                        1e-8);
        }
    }
    const DoubleVector index = indicesOfPoint(geometry, {geometry.aBasis[1][0] * 2 - geometry.aBasis[2][0],
                                                         geometry.aBasis[1][1] * 2 - geometry.aBasis[2][1],
                                                         geometry.aBasis[1][2] * 2 - geometry.aBasis[2][2]});
    EXPECT_NEAR(index[0], 0, 1e-12);
    EXPECT_NEAR(index[1], 2, 1e-12);
    EXPECT_NEAR(index[2], -1, 1e-12);
    EXPECT_FALSE(placeOfReflection(geometry, {1000, 0, 0}, 0)) << "beyond the sphere";
}

namespace {

/// Spots of a distorted series, all of them in use.
struct DistortedSpots {
    DistortedSpots()
    {
        std::mt19937 random(3);
        SeriesTruth truth = distortedTruth(random);
        truth.dfReach = 0.4;
        matBasis = truth.matDirect.inverse().transpose();
        work.fixed = geometryOf(truth);
        work.dfAzimuthZero = truth.dfAxis + 3;
        work.listSpot = simulatedSpots(truth, random);
        numberChains(work.listSpot);
        for (size_t n = 0; n < work.listSpot.size(); ++n) {
            work.listUsed.push_back(int(n));
        }
    }
    GeometryWork work;
    Eigen::Matrix3d matBasis;
};

/// Compares the derivatives of all residuals by every number with central differences.
void expectDifferenceQuotients(const GeometryWork& work, const GeometryNumbers& numbers, const CellForm& form)
{
    const CGeometryResiduals residuals = work.residuals();
    ASSERT_GT(residuals.spots(), 50);
    ASSERT_LT(residuals.chains(), residuals.spots());
    std::vector<int> listFree;
    for (int n = 0; n < GeometryNumbersEnd; ++n) {
        if (!isOfCell(n) || n < form.freeNumbers()) {
            listFree.push_back(n);
        }
    }
    Eigen::VectorXd vec, vecUp, vecDown;
    RowMatrix jacobian;
    residuals.evaluate(numbers, form, listFree, vec, &jacobian);
    for (size_t n = 0; n < listFree.size(); ++n) {
        const double dfStep = 1e-5;
        GeometryNumbers up = numbers, down = numbers;
        up[size_t(listFree[n])] += dfStep;
        down[size_t(listFree[n])] -= dfStep;
        residuals.evaluate(up, form, {}, vecUp, nullptr);
        residuals.evaluate(down, form, {}, vecDown, nullptr);
        const Eigen::VectorXd quotient = (vecUp - vecDown) / (2 * dfStep);
        const Eigen::VectorXd column = jacobian.col(Eigen::Index(n));
        EXPECT_LT((quotient - column).norm(), 1e-6 * column.norm())
            << geometryNumberName(listFree[n]).toStdString();
    }
}

}  // namespace

TEST(GeometryResiduals, derivativesWithAFreeCellAreDifferenceQuotients)
{
    const DistortedSpots spots;
    const CellForm form;
    GeometryNumbers numbers = numbersOf(spots.work.fixed, spots.work.dfAzimuthZero);
    form.setStart(numbers, spots.matBasis);
    expectDifferenceQuotients(spots.work, numbers, form);
}

TEST(GeometryResiduals, derivativesWithAMonoclinicCentredCellAreDifferenceQuotients)
{
    const DistortedSpots spots;
    CellConstraint constraint;
    constraint.system = LatticeSystem::Monoclinic;
    constraint.matTransform << 1, 1, 0, -1, 1, 0, 0, 0, 1;
    const CellForm form(constraint, spots.matBasis);
    ASSERT_TRUE(form.isConstrained());
    GeometryNumbers numbers = numbersOf(spots.work.fixed, spots.work.dfAzimuthZero);
    form.setStart(numbers, spots.matBasis);
    numbers[0] = 0.01;
    numbers[2] = -0.02;
    expectDifferenceQuotients(spots.work, numbers, form);
}

}  // namespace tessera
