// The geometry written for other programs, compared with that of the series.
#include "exchange/exchangeframes.h"
#include "exchange/exchangereflections.h"
#include "exchange/greytiff.h"
#include "exchange/petsinput.h"
#include "exchange/untrustedareas.h"
#include "exchange/xdsinput.h"
#include "exchange/zoneaxiscif.h"
#include "imagefiles/smvfile.h"
#include "integration/passagegeometry.h"
#include "records/sealedfile.h"

#include <gtest/gtest.h>
#include <QImage>
#include <QTemporaryDir>

#include <cmath>

namespace tessera {

namespace {

/// A triclinic crystal before a lens that distorts in all ways, about an axis out of the plane.
SeriesGeometry crookedSeries(double dfStep)
{
    SeriesGeometry series;
    DiffractionGeometry& geometry = series.geometry;
    geometry.aBasis = {DoubleVector{0.11, 0.02, -0.01}, DoubleVector{-0.015, 0.08, 0.03},
                       DoubleVector{0.005, -0.02, 0.0623}};
    geometry.dfWavelength = 0.0251;
    geometry.dfPixelSize = 0.004;
    geometry.plane.centreX = 0.7;
    geometry.plane.centreY = -0.4;
    geometry.plane.axis = -38.5;
    geometry.plane.ellipseCos = 0.01;
    geometry.plane.ellipseSin = -0.004;
    geometry.plane.radial = 0.01;
    geometry.plane.spiral = 0.005;
    geometry.turn = {1.2, 1.01, 0.3};
    series.sizeFrame = {512, 400};
    for (int n = 0; n < 80; ++n) {
        series.listTilt.push_back(-20 * dfStep + dfStep * n);
        series.listBeam.push_back({250.3 + std::sin(n * 0.1), 190.6 + std::cos(n * 0.1)});
    }
    geometry.dfMiddleTilt = (series.listTilt.front() + series.listTilt.back()) / 2;
    return series;
}

FrameNumbering plainNumbering(const SeriesGeometry& series)
{
    return numberingOfAngles(anglesOf(series));
}

QStringList names(const QString& strPattern, const std::vector<int>& listNumber)
{
    QStringList list;
    for (const int n : listNumber) {
        list.append(strPattern.arg(n, 3, 10, QLatin1Char('0')));
    }
    return list;
}

/// The value behind a keyword of XDS.INP.
QString valueOf(const QByteArray& bytes, const QString& strKey)
{
    const QString strText = QString::fromUtf8(bytes);
    const int n = strText.indexOf(QLatin1Char(' ') + strKey);
    return n < 0 ? QString()
                 : strText.mid(n + strKey.size() + 1).section('\n', 0, 0).section("  ", 0, 0).trimmed();
}

/// A peak of frame 70, in the row of another one and next to no lattice point.
GeometrySpot strayPeak(GeometrySpot stray, const SeriesGeometry& series,
                       const std::vector<FramePlace>& listBeam)
{
    stray.nFrame = 70;
    stray.dfTilt = series.listTilt[70];
    const auto isOff = [&] {
        const DoubleVector index = indicesOfPoint(
            series.geometry,
            pointOfPlace(series.geometry,
                         {stray.place.dfX + listBeam[70].dfX - series.listBeam[70].dfX, stray.place.dfY},
                         stray.dfTilt));
        return std::any_of(index.begin(), index.end(),
                           [](double df) { return std::abs(df - std::round(df)) > 0.4; });
    };
    while (!isOff()) {
        stray.place.dfX += 1;
    }
    return stray;
}

/// Frames in a folder that has s1.img to s4.img, of the project "a b".
class ExchangeChoice : public testing::Test {
protected:
    void SetUp() override
    {
        CImgObj<float> image;
        ASSERT_TRUE(image.Create(4, 4));
        std::fill(image.Data(), image.Data() + 16, 7.f);
        for (int n = 1; n <= 4; ++n) {
            ASSERT_TRUE(writeSmvImage(smvHeaderTemplate(), image, path(QStringLiteral("s%1.img").arg(n))));
        }
        m_data.m_strProjectDir = m_dir.path();
        m_data.m_strProjectName = "a b";
        m_source.pData = &m_data;
        m_source.strFolder = m_dir.path();
    }
    QString path(const QString& strName) const { return m_dir.filePath(strName); }
    ExchangeFrames choose(const QString& strPattern, double dfDrift)
    {
        m_data.m_listFrameFile.clear();
        m_data.m_listShift.clear();
        m_source.series = {};
        for (int n = 1; n <= 4; ++n) {
            m_data.m_listFrameFile.append(path(strPattern.arg(n)));
            m_data.m_listShift.append({dfDrift * n, -dfDrift * n});
            m_source.series.listTilt.push_back(n);
            m_source.series.listBeam.push_back({100 + dfDrift * n, 100 - dfDrift * n});
        }
        return chooseExchangeFrames(m_source);
    }

    QTemporaryDir m_dir;
    DataSet m_data;
    ExchangeSource m_source;
};

}  // namespace

TEST(Exchange, NumbersOfFrames)
{
    const auto of = [](const QStringList& list) { return numberingOfNames(list); };
    const auto plain = of(names("lyso_%1_300kV.img", {8, 9, 10, 12}));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->pattern('?'), "lyso_???_300kV.img");
    EXPECT_EQ(plain->listNumber, (std::vector<int>{8, 9, 10, 12}));
    EXPECT_EQ(plain->missing(), (std::vector<std::pair<int, int>>{{11, 11}}));
    EXPECT_EQ(of({"s12_7.img"})->pattern('#'), "s12_#.img");
    // Digits that all names begin their number with belong to it.
    EXPECT_EQ(of(names("f1%1.img", {1, 2}))->pattern('#'), "f####.img");
    for (const QStringList& list : {QStringList{"a9.img", "a10.img"},
                                    {"a2.img", "a1.img"},
                                    {"a1.img", "b2.img"},
                                    {"a0.img", "a1.img"},
                                    {"a.img", "a.img"},
                                    {"a1.img", "a1.img"},
                                    {}}) {
        EXPECT_FALSE(of(list)) << list.join(' ').toStdString();
    }
    const FrameNumbering gaps = numberingOfAngles({3, 2, 1, -1.02, -2.01, -3});
    EXPECT_EQ(gaps.listNumber, (std::vector<int>{1, 2, 3, 5, 6, 7}));
    // No steps at all: the order alone.
    EXPECT_EQ(numberingOfAngles({0, 1, 5, 5.1, 20}).listNumber, (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(numberingOfAngles({0, 1, 2, 1, 0}).last(), 5);
}

TEST_F(ExchangeChoice, IsOfTheOriginalsWhereTheyStandStill)
{
    const ExchangeFrames still = choose("s%1.img", 0.2);
    EXPECT_TRUE(still.bOriginal);
    EXPECT_TRUE(still.listMoved.empty());
    EXPECT_EQ(still.numbering.pattern('?'), "s?.img");
    // A refined beam may wander where the shifts do not: copies moved by nothing would be no better.
    m_source.series.listBeam[3].dfX += 3;
    EXPECT_TRUE(chooseExchangeFrames(m_source).bOriginal);
}

// Frames beside the project would be their own targets, so that others are written elsewhere.
TEST_F(ExchangeChoice, IsOfMovedCopiesElsewhereWhereTheOriginalsDrift)
{
    const ExchangeFrames drifting = choose("s%1.img", 1.5);
    EXPECT_FALSE(drifting.bOriginal);
    EXPECT_EQ(drifting.files().first(), path("a_b_smv/00001.img"));
    EXPECT_EQ(drifting.listMoved[3].dfX, -6);
    EXPECT_EQ(drifting.listMoved[0].dfY, 1);
}

TEST_F(ExchangeChoice, IsNamedAfterFramesOfOtherFormats)
{
    EXPECT_EQ(choose("f_%1.mrc", 0.2).files().last(), path("f_4.img"));
    EXPECT_EQ(choose("stack.mrc#%1", 0.2).files().last(), path("stack_0004.img"));
}

TEST(Exchange, PassagesAreThoseOfThePrediction)
{
    for (const double dfStep : {0.7, -0.7}) {
        const SeriesGeometry series = crookedSeries(dfStep);
        const CPassageGeometry passages(series);
        QString strReason;
        const auto told = exchangeGeometry(series, plainNumbering(series), {}, true, &strReason);
        ASSERT_TRUE(told) << strReason.toStdString();
        EXPECT_GT(told->dfWidth, 0);
        EXPECT_LT(told->dfWorstAngle, 1e-9);
        const auto& [a, b, c] = told->aReciprocal;
        EXPECT_GT(dot(a, cross(b, c)), 0);
        int nPassages = 0;
        for (int n = 0; n < 9 * 9 * 9; ++n) {
            const std::array<int, 3> anIndex = {n % 9 - 4, n / 9 % 9 - 4, n / 81 - 4};
            if (n == 9 * 9 * 9 / 2) {  // the direct beam
                continue;
            }
            for (const SphereCrossing& crossing : passages.crossings(passages.pointOf(anIndex), 0)) {
                ++nPassages;
                const double dfAngle = told->dfStart + told->dfWidth * (crossing.dfFrame + 0.5);
                const auto passage = passageNear(*told, told->indexOf(anIndex), dfAngle);
                ASSERT_TRUE(passage);
                EXPECT_NEAR(passage->dfAngle, dfAngle, 1e-8);
                EXPECT_NEAR(std::sqrt(dot(passage->s1, passage->s1)), 1 / 0.0251, 1e-8);
                // The same place as our own formula has it, once its distortion is undone.
                const auto place = placeOfReflection(
                    series.geometry, {double(anIndex[0]), double(anIndex[1]), double(anIndex[2])},
                    crossing.dfTilt);
                ASSERT_TRUE(place);
                const auto flat = undistorted(series.geometry.plane, series.geometry.dfRadius, *place);
                EXPECT_NEAR(passage->place.dfX - told->beam.dfX, flat[0], 1e-6);
                EXPECT_NEAR(passage->place.dfY - told->beam.dfY, flat[1], 1e-6);
                const DoubleVector s1 = beamToPlace(*told, passage->place);
                EXPECT_NEAR(s1[0], passage->s1[0], 1e-9);
                EXPECT_NEAR(s1[1], passage->s1[1], 1e-9);
            }
        }
        EXPECT_GT(nPassages, 100);
    }
}

TEST(Exchange, PeaksComeBackAsTheirReflections)
{
    const SeriesGeometry series = crookedSeries(0.7);
    const CPassageGeometry passages(series);
    const auto told = exchangeGeometry(series, plainNumbering(series), {}, true, nullptr);
    ASSERT_TRUE(told);
    // The peaks are relative to a beam that is off from that of the geometry.
    std::vector<FramePlace> listBeam = series.listBeam;
    std::vector<GeometrySpot> listSpot;
    const std::array<int, 3> anIndex = {2, -6, 5};
    const auto crossings = passages.crossings(passages.pointOf(anIndex), 0);
    ASSERT_FALSE(crossings.empty());
    const int nMiddle = int(std::lround(crossings.front().dfFrame));
    for (int n = nMiddle - 1; n <= nMiddle + 1; ++n) {
        const auto place = passages.placeOn(anIndex, n);
        listBeam[n].dfX += 0.3 * n;
        GeometrySpot spot;
        spot.nFrame = n;
        spot.dfTilt = series.listTilt[n];
        spot.place = {place->dfX - listBeam[n].dfX, place->dfY - listBeam[n].dfY};
        spot.dfWeight = n == nMiddle ? 2 : 1;
        listSpot.push_back(spot);
    }
    listSpot.push_back(strayPeak(listSpot.front(), series, listBeam));
    const auto list = exchangeReflections(*told, listSpot, listBeam, series);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].anIndex, told->indexOf(anIndex));
    EXPECT_EQ(list[0].nPeaks, 3);
    EXPECT_EQ(list[0].nFirst, nMiddle);
    EXPECT_NEAR(list[0].seen.dfAngle, told->listAngle[nMiddle], 1e-9);
    EXPECT_NEAR(list[0].seen.place.dfX, list[0].expected.place.dfX, 0.1);
    EXPECT_NEAR(list[0].seen.dfAngle, list[0].expected.dfAngle, told->dfWidth / 2);
}

TEST(Exchange, XdsInputTellsTheGeometry)
{
    SeriesGeometry series = crookedSeries(0.5);
    series.geometry.turn = {};
    XdsOptions options;
    options.strTemplate = "f_?????.img";
    options.listUntrusted = {QRect(10, 20, 3, 4)};
    const auto told = exchangeGeometry(series, plainNumbering(series), {}, true, nullptr);
    const QByteArray bytes = xdsInput(*told, options);
    EXPECT_TRUE(isSealed(bytes));
    EXPECT_EQ(valueOf(bytes, "ROTATION_AXIS="),
              "0.782608 0.622515 0.000000");  // (cos, -sin) of -38.5 degrees
    EXPECT_EQ(valueOf(bytes, "OSCILLATION_RANGE="), "0.500000");
    EXPECT_EQ(valueOf(bytes, "STARTING_ANGLE="), "-10.25000");
    EXPECT_EQ(valueOf(bytes, "UNTRUSTED_RECTANGLE="), "10 14 20 25");
    EXPECT_NEAR(valueOf(bytes, "DETECTOR_DISTANCE=").toDouble(), 0.055 / 0.004 / 0.0251, 1e-3);
    EXPECT_NEAR(valueOf(bytes, "ORGX=").toDouble(), told->beam.dfX + 1, 1e-3);
    EXPECT_EQ(valueOf(bytes, "DATA_RANGE="), "1 80");
    EXPECT_EQ(valueOf(bytes, "SPACE_GROUP_NUMBER="), "1");

    // Falling tilts turn the axis round, not the width; a frame is left out; there is no cell.
    series = crookedSeries(-0.5);
    series.geometry.turn = {};
    for (auto* pList : {&series.listTilt}) {
        pList->erase(pList->begin() + 30, pList->begin() + 32);
    }
    series.listBeam.resize(78);
    const auto falling = exchangeGeometry(series, plainNumbering(series), {}, false, nullptr);
    const QByteArray bytesFalling = xdsInput(*falling, options);
    EXPECT_EQ(valueOf(bytesFalling, "ROTATION_AXIS="), "-0.782608 -0.622515 0.000000");
    EXPECT_EQ(valueOf(bytesFalling, "OSCILLATION_RANGE="), "0.500000");
    EXPECT_EQ(valueOf(bytesFalling, "STARTING_ANGLE="), "-10.25000");
    EXPECT_EQ(valueOf(bytesFalling, "EXCLUDE_DATA_RANGE="), "31 32");
    EXPECT_EQ(valueOf(bytesFalling, "SPACE_GROUP_NUMBER="), "0");
    EXPECT_FALSE(bytesFalling.contains("UNIT_CELL"));

    series.listTilt.assign(78, 5);
    QString strReason;
    EXPECT_FALSE(exchangeGeometry(series, plainNumbering(series), {}, false, &strReason));
    EXPECT_TRUE(strReason.contains("rotation"));
}

TEST(Exchange, UntrustedAreasCoverTheMask)
{
    const QSize size(300, 200);
    const auto covered = [&](const std::vector<QRect>& listRect) {
        std::vector<char> list(size_t(size.width() * size.height()), 0);
        for (const QRect& rc : listRect) {
            for (int y = rc.top(); y <= rc.bottom(); ++y) {
                for (int x = rc.left(); x <= rc.right(); ++x) {
                    list.at(size_t(y * size.width() + x)) = 1;
                }
            }
        }
        return list;
    };
    std::vector<char> cross(size_t(size.width() * size.height()), 0), disc = cross;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const size_t n = size_t(y * size.width() + x);
            cross[n] = std::abs(x - 150) < 3 || std::abs(y - 100) < 3;
            disc[n] = std::hypot(x - 150, y - 100) > 80;
        }
    }
    const auto listCross = rectanglesOfMask(cross, size);
    EXPECT_EQ(listCross.size(), 3u);
    EXPECT_EQ(covered(listCross), cross);
    const auto listDisc = rectanglesOfMask(disc, size, 60);
    EXPECT_LE(listDisc.size(), 60u);
    const auto coveredDisc = covered(listDisc);
    for (size_t n = 0; n < disc.size(); ++n) {
        ASSERT_GE(coveredDisc[n], disc[n]);
    }
    EXPECT_EQ(coveredDisc[size_t(100 * size.width() + 150)], 0);
}

// Frames moved by -3..2 columns and 0..4 rows: the band widens, and two edges of each side are wrapped.
TEST(Exchange, UntrustedAreasOfMovedFramesAreWider)
{
    const QSize size(300, 200);
    std::vector<char> dot(size_t(size.width() * size.height()), 0);
    dot[size_t(50 * size.width() + 60)] = 1;
    const auto moved = movedMask(dot, size, {{-3, 0}, {2, 4}});
    const auto at = [&](int x, int y) { return moved[size_t(y * size.width() + x)]; };
    EXPECT_TRUE(at(57, 50));
    EXPECT_TRUE(at(62, 54));
    EXPECT_FALSE(at(56, 50));
    EXPECT_FALSE(at(63, 50));
    EXPECT_FALSE(at(60, 49));
    EXPECT_FALSE(at(60, 55));
    EXPECT_TRUE(at(1, 100));
    EXPECT_FALSE(at(2, 100));
    EXPECT_TRUE(at(297, 100));
    EXPECT_FALSE(at(296, 100));
    EXPECT_TRUE(at(90, 3));
    EXPECT_FALSE(at(90, 4));
    EXPECT_FALSE(at(90, 199));
}

TEST(Exchange, OrientationsOfZoneAxes)
{
    IntegrationResult result;
    result.series = crookedSeries(0.7);
    // A setting whose axes are a + b, b, -c: it turns the hand.
    result.chosen.symmetry.anTransform = {{{1, 1, 0}, {0, 1, 0}, {0, 0, -1}}};
    const ZoneAxisBasis basis = zoneAxisBasis(result);
    const std::array<DoubleVector, 3>& aBasis = basis.aReciprocal;
    EXPECT_GT(dot(aBasis[0], cross(aBasis[1], aBasis[2])), 0);
    // A point has the same place whichever indices it goes by: the mirror image of that of the series.
    const std::array<int, 3> anIndex = {2, -1, 3},
                             anSetting = conventionalIndex(result.chosen.symmetry, anIndex);
    const DoubleVector point = CPassageGeometry(result.series).pointOf(anIndex);
    const double dfSign = basis.bReversed ? -1 : 1;
    for (size_t n = 0; n < 3; ++n) {
        const double df = dfSign * (anSetting[0] * aBasis[0][n] + anSetting[1] * aBasis[1][n] +
                                    anSetting[2] * aBasis[2][n]);
        EXPECT_NEAR(df, n == 1 ? -point[n] : point[n], 1e-12);
    }
    const double dfAngle = 23.4, dfOut = 1.2;
    const ZoneAxisFrame zone = zoneAxisFrame(aBasis, dfOut, dfAngle);
    // Rz(omega) Rx(alpha) Ry(beta) is the turn about the axis.
    const DoubleVector axis = {std::cos(radians(dfOut)), 0, std::sin(radians(dfOut))};
    for (const DoubleVector vec : {DoubleVector{1, 2, 3}, DoubleVector{-2, 0.5, 1}}) {
        const DoubleVector wanted = turned(vec, axis, dfAngle);
        const DoubleVector found = turned(
            turned(turned(vec, {0, 1, 0}, zone.dfBeta), {1, 0, 0}, zone.dfAlpha), {0, 0, 1}, zone.dfOmega);
        for (size_t n = 0; n < 3; ++n) {
            EXPECT_NEAR(found[n], wanted[n], 1e-12);
        }
    }
    // u a + v b + w c, turned, runs to the source.
    const auto aDirect = dualBasis(aBasis);
    DoubleVector sum = {};
    for (size_t n = 0; n < 3; ++n) {
        const DoubleVector edge = turned(aDirect[n], axis, dfAngle);
        sum = {sum[0] + zone.aZone[n] * edge[0], sum[1] + zone.aZone[n] * edge[1],
               sum[2] + zone.aZone[n] * edge[2]};
    }
    EXPECT_NEAR(std::hypot(sum[0], sum[1]), 0, 1e-9);
    EXPECT_GT(sum[2], 0);
    EXPECT_EQ(std::max({std::abs(zone.aZone[0]), std::abs(zone.aZone[1]), std::abs(zone.aZone[2])}), 1);
}

TEST(Exchange, ZoneAxesTellHowTheCrystalTurned)
{
    IntegrationResult result;
    result.series = crookedSeries(0.7);
    result.chosen.symmetry.anTransform = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (const auto& [rotation, pszText] : {std::pair<RotationMode, const char*>{{}, "continuous rotation"},
                                            {{RotationKind::Stepped, 0}, "static"},
                                            {{RotationKind::Precession, 0.9}, "precession"}}) {
        result.series.rotation = rotation;
        const QByteArray bytes = zoneAxisCif(result, {});
        EXPECT_TRUE(bytes.contains(QByteArray("geometry: ") + pszText + '\n')) << pszText;
    }
    result.series.rotation = {};
    result.series.listTilt.resize(1);
    result.series.listBeam.resize(1);
    const QByteArray bytes = zoneAxisCif(result, {});
    EXPECT_FALSE(bytes.contains("nan")) << bytes.constData();
    EXPECT_FALSE(bytes.contains("inf")) << bytes.constData();
}

TEST(Exchange, VirtualFramesHoldWholePassages)
{
    IntegratedSeries integrated;
    for (int n = 0; n < 38; ++n) {
        Observation one;
        one.nFirstFrame = n;
        one.nLastFrame = n + 2;
        one.dfSigma = n == 7 ? 0 : 1;  // one that was not measured
        integrated.listObservation.push_back(one);
    }
    const VirtualFrameOptions chosen = chosenVirtualFrames(integrated, 40, {});
    EXPECT_EQ(chosen.nMerged, 6);
    EXPECT_EQ(chosen.nStep, 3);
    const auto list = virtualFrames(integrated, 40, chosen);
    ASSERT_EQ(list.size(), 12u);
    std::vector<int> listTimes(38, 0);
    for (const VirtualFrame& frame : list) {
        EXPECT_EQ(frame.nLast - frame.nFirst, 5);
        for (const int n : frame.listObservation) {
            ++listTimes[n];
            EXPECT_GE(n, frame.nFirst);
            EXPECT_LE(n + 2, frame.nLast);
        }
    }
    for (int n = 0; n < 37; ++n) {
        EXPECT_TRUE(n == 7 ? listTimes[7] == 0 : listTimes[n] >= 1) << n;
    }
    EXPECT_EQ(chosenVirtualFrames(integrated, 4, {9, 0}).nMerged, 4);
}

TEST(Exchange, TiffOfGreyValues)
{
    CImgObj<float> image;
    ASSERT_TRUE(image.Create(3, 2));
    const float afValue[] = {0, 65535, 70000, -5, 12.6f, NAN};
    std::copy(std::begin(afValue), std::end(afValue), image.Data());
    QImage read;
    ASSERT_TRUE(read.loadFromData(greyTiff(image, 16), "tif"));
    ASSERT_EQ(read.size(), QSize(3, 2));
    ASSERT_EQ(read.format(), QImage::Format_Grayscale16);
    const quint16 anWanted[] = {0, 65535, 65535, 0, 13, 0};
    for (int n = 0; n < 6; ++n) {
        EXPECT_EQ(reinterpret_cast<const quint16*>(read.constScanLine(n / 3))[n % 3], anWanted[n]) << n;
    }
    EXPECT_TRUE(greyTiff(CImgObj<float>(), 16).isEmpty());
}

}  // namespace tessera
