#include "simulate/simulatedseries.h"

#include "simulate/angles.h"
#include "simulate/crystalstructures.h"
#include "simulate/exposuremode.h"
#include "simulate/forbiddenreflections.h"
#include "simulate/randomsource.h"
#include "simulate/rotationprojection.h"
#include "simulate/secondlattice.h"
#include "simulate/spotprofile.h"
#include "simulate/supercell.h"

#include <algorithm>

namespace tessera {

namespace {

// Streams of random numbers beside those of the frames, which go by the frame number.
constexpr std::uint64_t g_nStreamDrift = 1ull << 40;
constexpr std::uint64_t g_nStreamHotPixel = 2ull << 40;
constexpr std::uint64_t g_nStreamOrientation = 3ull << 40;
constexpr std::uint64_t g_nStreamSecond = 4ull << 40;
constexpr std::uint64_t g_nStreamWander = 5ull << 40;
constexpr std::uint64_t g_nStreamJump = 6ull << 40;

// Pixels from the beam to the farthest corner, with room for what moves the beam and the pattern.
double reachOnFrame(const SimulationParameters& p)
{
    return p.dfDrift + p.dfWander + p.dfJump +
           std::hypot(std::max(p.dfCenterX, p.nSize - p.dfCenterX),
                      std::max(p.dfCenterY, p.nSize - p.dfCenterY));
}

// What is wrong with the parameters of the distortions between the true pattern and the frame; empty if
// nothing.
QString whatIsWrongInTheLens(const SimulationParameters& p)
{
    const LensDistortion& lens = p.lens;
    if (!(std::abs(p.dfStretchAmplitude) < 50)) {
        return QStringLiteral("a stretching of %1 %; less than 50 % can be made").arg(p.dfStretchAmplitude);
    }
    if (!(std::abs(lens.dfEllipseAmplitude) < 50 && std::abs(lens.dfRadial) < 50 &&
          std::abs(lens.dfSpiral) < 50)) {
        return QStringLiteral("an ellipse and a distortion of the third order of less than 50 % can be made");
    }
    if (!(lens.dfRadius > 0)) {
        return QStringLiteral("the reference radius of the distortion must be above 0");
    }
    if (!std::isfinite(undistortedReach(reachOnFrame(p), lens))) {
        return QStringLiteral("a barrel of %1 % at %2 pixels folds the pattern over on the frame")
            .arg(-lens.dfRadial)
            .arg(lens.dfRadius);
    }
    if (!(p.dfWander >= 0 && p.dfJump >= 0 && p.nJumpEvery >= 0)) {
        return QStringLiteral("offsets of the pattern from the beam cannot be negative");
    }
    return QString();
}

// What is wrong with the parameters of rotation, exposure and counting; empty if nothing.
QString whatIsWrongInTheExposure(const SimulationParameters& p)
{
    if (!(p.dfPrecession >= 0 && p.dfPrecession <= 10)) {
        return QStringLiteral("a precession of %1°; 0 to 10 can be made").arg(p.dfPrecession);
    }
    if (!(p.dfFade > 0 && p.dfFadeB >= 0)) {
        return QStringLiteral("a crystal fades to a share above 0, and its B does not fall");
    }
    if (!(p.dfScaleWobble >= 0 && p.dfScaleWobble < 1)) {
        return QStringLiteral("the scale can wobble by 0 up to below 1");
    }
    if (!(p.dfGain > 0)) {
        return QStringLiteral("the gain must be above 0");
    }
    if (p.nBlankFrame < 0 || p.nBlankFrame > p.nFrames) {
        return QStringLiteral("no frame %1 to be blank").arg(p.nBlankFrame);
    }
    if (!(p.dfForbidden >= 0 && p.dfForbidden <= 1) || (p.dfForbidden > 0 && p.nSupercell > 1)) {
        return QStringLiteral("the share of forbidden reflections lies in 0 to 1, without a supercell");
    }
    return QString();
}

QString whatIsWrong(const SimulationParameters& p)
{
    if (!findCrystalStructure(p.strCrystal)) {
        return QStringLiteral("no crystal of the name %1").arg(p.strCrystal);
    }
    if (p.nFrames < 1 || p.nFrames > 5000) {
        return QStringLiteral("%1 frames; 1 to 5000 can be made").arg(p.nFrames);
    }
    if (p.nSize < 32 || p.nSize > 4096) {
        return QStringLiteral("%1 pixels a side; 32 to 4096 can be made").arg(p.nSize);
    }
    if (!(p.dfWavelength > 0 && p.dfPixelSize > 0 && p.dfSpotSigma > 0 && p.dfBeamSigma > 0 &&
          p.dfRocking > 0)) {
        return QStringLiteral("wavelength, pixel size, spot and beam size and rocking width must be above 0");
    }
    if (!(p.dfExposure >= 0 && p.dfBeamCounts >= 0 && p.dfBackground >= 0 && p.dfReadNoise >= 0 &&
          p.dfMosaicity >= 0 && p.dfDrift >= 0 && p.dfSaturation >= 0)) {
        return QStringLiteral("counts, noise, mosaicity and drift cannot be negative");
    }
    const QString strLens = whatIsWrongInTheLens(p);
    if (!strLens.isEmpty()) {
        return strLens;
    }
    if (p.nHotPixels < 0 || p.nHotPixels > p.nSize) {
        return QStringLiteral("%1 hot pixels; 0 to %2 can be made").arg(p.nHotPixels).arg(p.nSize);
    }
    if (!(p.dfSecondShare >= 0 && std::isfinite(p.dfSecondTurn))) {
        return QStringLiteral("the second lattice cannot have a negative intensity");
    }
    // Four average cells of the longest axis of all crystals still part their reflections by two spot sizes.
    if (p.nSupercell < 1 || p.nSupercell > 4 || p.nSupercellAxis < 0 || p.nSupercellAxis > 2) {
        return QStringLiteral("a supercell of %1; 1 to 4 average cells can be made").arg(p.nSupercell);
    }
    const QString strExposure = whatIsWrongInTheExposure(p);
    if (!strExposure.isEmpty()) {
        return strExposure;
    }
    if (!(p.dfOddShare > 0 && p.dfOddShare <= 1)) {
        return QStringLiteral("the share of the supercell's own reflections lies above 0, up to 1");
    }
    // The indices of the reflections within the frame must fit into memory.
    if (p.dfPixelSize * p.nSize > 8) {
        return QStringLiteral("the frame reaches beyond 4 Å⁻¹; choose a smaller pixel size");
    }
    return QString();
}

// A smooth walk: the step keeps most of its direction from frame to frame.
std::vector<std::array<double, 2>> smoothWalk(const SimulationParameters& p, std::uint64_t nStream)
{
    CRandomSource random(p.nSeed, nStream);
    std::vector<std::array<double, 2>> listShift(p.nFrames, {0, 0});
    double dfStepX = random.normal(), dfStepY = random.normal();
    for (int n = 1; n < p.nFrames; ++n) {
        dfStepX = 0.9 * dfStepX + 0.3 * random.normal();
        dfStepY = 0.9 * dfStepY + 0.3 * random.normal();
        listShift[n] = {listShift[n - 1][0] + dfStepX, listShift[n - 1][1] + dfStepY};
    }
    return listShift;
}

// The path with its farthest excursion as long as was asked for.
std::vector<std::array<double, 2>> scaledPath(std::vector<std::array<double, 2>> listShift, double dfWanted)
{
    double dfFarthest = 0;
    for (const auto& shift : listShift) {
        dfFarthest = std::max(dfFarthest, std::hypot(shift[0], shift[1]));
    }
    for (auto& shift : listShift) {
        for (double& df : shift) {
            df = dfFarthest > 0 ? df * dfWanted / dfFarthest : 0;
        }
    }
    return listShift;
}

// Offsets of the pattern that cannot be found by the direct beam: a walk around it, and single frames whose
// pattern jumped in a random direction.
std::vector<std::array<double, 2>> patternOffsets(const SimulationParameters& p)
{
    const bool bJumps = p.nJumpEvery > 0 && p.dfJump > 0;
    if (!(p.dfWander > 0) && !bJumps) {
        return {};
    }
    auto listOffset = smoothWalk(p, g_nStreamWander);
    double dfMeanX = 0, dfMeanY = 0;
    for (const auto& offset : listOffset) {
        dfMeanX += offset[0] / p.nFrames;
        dfMeanY += offset[1] / p.nFrames;
    }
    for (auto& offset : listOffset) {
        offset = {offset[0] - dfMeanX, offset[1] - dfMeanY};
    }
    listOffset = scaledPath(std::move(listOffset), p.dfWander);
    CRandomSource random(p.nSeed, g_nStreamJump);
    for (int n = bJumps ? p.nJumpEvery / 2 : p.nFrames; n < p.nFrames; n += p.nJumpEvery) {
        const double dfAngle = 2 * g_dfPi * random.uniform();
        listOffset[n][0] += p.dfJump * std::cos(dfAngle);
        listOffset[n][1] += p.dfJump * std::sin(dfAngle);
    }
    return listOffset;
}

std::vector<QPoint> hotPixels(const SimulationParameters& p)
{
    CRandomSource random(p.nSeed, g_nStreamHotPixel);
    std::vector<QPoint> listPixel;
    for (int nTry = 0; nTry < 100 * p.nHotPixels && int(listPixel.size()) < p.nHotPixels; ++nTry) {
        const QPoint pt(3 + int(random.uniform() * (p.nSize - 6)), 3 + int(random.uniform() * (p.nSize - 6)));
        if (std::none_of(listPixel.begin(), listPixel.end(),
                         [&](const QPoint& ptOld) { return (pt - ptOld).manhattanLength() < 6; })) {
            listPixel.push_back(pt);
        }
    }
    return listPixel;
}

void fillTilts(const SimulationParameters& p, SimulatedSeries& series)
{
    for (int n = 0; n < p.nFrames; ++n) {
        const int nInner = p.nBeamTilt > 1 ? n % p.nBeamTilt : 0;
        series.listStage.push_back(p.dfTiltStart + (n - nInner) * p.dfTiltStep);
        series.listBeamTilt.push_back(nInner * p.dfTiltStep);
        series.listOverall.push_back(p.dfTiltStart + n * p.dfTiltStep);
    }
}

// Mean |F|² of the average structure up to 1 Å⁻¹, the unit of the exposure.
double meanSquareF(const std::vector<Reflection>& listReflection, const Supercell& supercell)
{
    double dfSum = 0;
    int nMean = 0;
    for (const Reflection& reflection : listReflection) {
        if (reflection.dfDStar < 1 && supercell.isOfAverage(reflection)) {
            dfSum += reflection.dfSquareF;
            ++nMean;
        }
    }
    return nMean > 0 ? dfSum / nMean : 1;
}

// Bases of the crystal and of the second one, if there is one.
void orient(const CStructureFactor& crystal, const Supercell& supercell, SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    CRandomSource random(std::uint64_t(p.nOrientation), g_nStreamOrientation);
    const double dfU1 = random.uniform(), dfU2 = random.uniform(), dfU3 = random.uniform();
    const Matrix3 matOrientation = orientationFromUniform(dfU1, dfU2, dfU3);
    Matrix3 matBasis;
    for (int i = 0; i < 3; ++i) {
        matBasis[i] = matOrientation * crystal.reciprocalBasis()[i];
    }
    series.matBasis = supercellBasis(matBasis, supercell);
    if (series.latticeCount() > 1) {
        CRandomSource randomSecond(std::uint64_t(p.nOrientation), g_nStreamSecond);
        series.matSecondBasis = secondBasis(
            p, series.matBasis, supercellBasis(crystal.reciprocalBasis(), supercell), randomSecond);
    }
}

// The spots of one lattice on one frame.
void addSpots(const CRotationProjection& projection, const std::vector<Reflection>& listReflection,
              double dfMeanSquareF, int nFrame, int nLattice, SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    const double dfRadius = spotDiscRadius(p), dfDiscPixels = g_dfPi * dfRadius * dfRadius;
    const double dfInDisc = spotShareWithin(p, dfRadius);
    const CExposureMode mode(p, projection);
    const double dfTilt = series.listOverall[nFrame];
    const std::array<double, 2> ptPattern = series.patternOffset(nFrame);
    const double dfPatternX = p.dfCenterX + series.listShift[nFrame][0] + ptPattern[0];
    const double dfPatternY = p.dfCenterY + series.listShift[nFrame][1] + ptPattern[1];
    const double dfShare = nLattice == 0 ? 1 : p.dfSecondShare;
    for (const Reflection& reflection : listReflection) {
        const Vector3 vecLattice = Vector3{double(reflection.nH), double(reflection.nK),
                                           double(reflection.nL)} *
                                   series.basis(nLattice);
        const double dfRecorded = mode.recordedMean(vecLattice, dfTilt, reflection.dfDStar);
        if (!(dfRecorded > 0)) {
            continue;
        }
        const double dfScale = series.listScale[nFrame] *
                               std::exp(-series.listDecay[nFrame] * reflection.dfDStar * reflection.dfDStar /
                                        2);
        const double dfCounts = dfShare * (p.dfExposure * reflection.dfSquareF / dfMeanSquareF * dfRecorded) *
                                dfScale;
        if (!(dfCounts > 0.01)) {
            continue;
        }
        const Vector3 vecTurned = projection.turned(vecLattice, dfTilt);
        const auto offset = distorted(projection.spotOffset(vecTurned), p.lens);
        TruthSpot spot;
        spot.nFrame = nFrame;
        spot.dfX = dfPatternX + offset[0];
        spot.dfY = dfPatternY + offset[1];
        if (spot.dfX < -dfRadius || spot.dfY < -dfRadius || spot.dfX > p.nSize + dfRadius ||
            spot.dfY > p.nSize + dfRadius) {
            continue;
        }
        spot.nH = reflection.nH;
        spot.nK = reflection.nK;
        spot.nL = reflection.nL;
        spot.dfCounts = dfCounts * dfInDisc;
        const double dfBackground = p.dfGain * diffuseBackground(p, std::hypot(offset[0], offset[1])) +
                                    p.dfReadNoise * p.dfReadNoise;
        spot.dfSignalToNoise = spot.dfCounts /
                               std::sqrt(p.dfGain * spot.dfCounts + dfDiscPixels * dfBackground);
        spot.dfExcitation = projection.excitationError(vecTurned);
        spot.nLattice = nLattice;
        series.listDrawn[nFrame].push_back(spot);
        const bool bInside = spot.dfX >= 0 && spot.dfY >= 0 && spot.dfX <= p.nSize - 1 &&
                             spot.dfY <= p.nSize - 1;
        if (bInside && spot.dfSignalToNoise >= 0.5) {
            series.listSpot.push_back(spot);
        }
    }
}
}  // namespace

double spotDiscRadius(const SimulationParameters& parameters)
{
    return 3 * parameters.dfSpotSigma;
}

double diffuseBackground(const SimulationParameters& parameters, double dfDistance)
{
    // Falls to half its height at 0.12 Å⁻¹, as the scattering of thin carbon does.
    const double df = dfDistance * parameters.dfPixelSize / 0.12;
    return parameters.dfBackground * (1 + 4 / (1 + df * df));
}

std::optional<SimulatedSeries> simulateSeries(const SimulationParameters& parameters, QString& strError)
{
    SimulationParameters p = parameters;
    if (p.lens.dfRadius == 0) {
        p.lens.dfRadius = p.nSize / 2.0;
    }
    strError = whatIsWrong(p);
    if (!strError.isEmpty()) {
        return {};
    }
    const CrystalStructure& structure = *findCrystalStructure(p.strCrystal);
    const CStructureFactor crystal(structure);
    const Supercell supercell{p.nSupercell, p.nSupercellAxis, p.dfOddShare};

    SimulatedSeries result;
    result.parameters = p;
    result.adfCell = structure.adfCell;
    result.adfCell[supercell.nAxis] *= supercell.nMultiple;
    result.matPrimitive = supercellPrimitive(crystal, supercell);
    orient(crystal, supercell, result);
    fillTilts(p, result);
    result.listShift = scaledPath(smoothWalk(p, g_nStreamDrift), p.dfDrift);
    result.listPatternOffset = patternOffsets(p);
    result.listHotPixel = hotPixels(p);
    result.listScale = frameScales(p);
    result.listDecay = frameDecays(p);

    const double dfReach = p.dfPixelSize * undistortedReach(reachOnFrame(p), p.lens);
    const double dfMaxDStar = dfReach * (1 + std::abs(p.dfStretchAmplitude) / 100);
    std::vector<Reflection>& listReflection = result.listReflection;
    listReflection = supercellReflections(crystal, supercell, dfMaxDStar);
    const double dfMeanSquareF = meanSquareF(listReflection, supercell);
    if (p.dfForbidden > 0) {
        fillForbidden(crystal, dfMaxDStar, p.dfForbidden, listReflection);
    }
    const CRotationProjection projection(p.dfWavelength, p.dfPixelSize, p.dfAxis, p.dfStretchAmplitude,
                                         p.dfStretchAzimuth);
    result.listDrawn.resize(p.nFrames);
    for (int n = 0; n < p.nFrames; ++n) {
        for (int nLattice = 0; nLattice < result.latticeCount(); ++nLattice) {
            addSpots(projection, listReflection, dfMeanSquareF, n, nLattice, result);
        }
    }
    for (const Reflection& reflection : listReflection) {
        result.listArea.push_back(CExposureMode(p, projection).width(reflection.dfDStar) / p.dfRocking);
    }
    result.listCrossing = findCrossings(result, listReflection, dfMeanSquareF, projection);
    return result;
}

}  // namespace tessera
