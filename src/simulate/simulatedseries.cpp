#include "simulate/simulatedseries.h"

#include "simulate/crystalstructures.h"
#include "simulate/randomsource.h"
#include "simulate/rotationprojection.h"
#include "simulate/secondlattice.h"
#include "simulate/spotprofile.h"
#include "simulate/supercell.h"

#include <algorithm>

namespace tessera {

namespace {
constexpr double g_dfPi = 3.14159265358979323846;

// Streams of random numbers beside those of the frames, which go by the frame number.
constexpr std::uint64_t g_nStreamDrift = 1ull << 40;
constexpr std::uint64_t g_nStreamHotPixel = 2ull << 40;
constexpr std::uint64_t g_nStreamOrientation = 3ull << 40;
constexpr std::uint64_t g_nStreamSecond = 4ull << 40;

QString whatIsWrong(const SimulationParameters& p)
{
    if (!findCrystalStructure(p.strCrystal))
        return QStringLiteral("no crystal of the name %1").arg(p.strCrystal);
    if (p.nFrames < 1 || p.nFrames > 5000)
        return QStringLiteral("%1 frames; 1 to 5000 can be made").arg(p.nFrames);
    if (p.nSize < 32 || p.nSize > 4096)
        return QStringLiteral("%1 pixels a side; 32 to 4096 can be made").arg(p.nSize);
    if (!(p.dfWavelength > 0 && p.dfPixelSize > 0 && p.dfSpotSigma > 0 && p.dfBeamSigma > 0 &&
          p.dfRocking > 0))
        return QStringLiteral("wavelength, pixel size, spot and beam size and rocking width must be above 0");
    if (!(p.dfExposure >= 0 && p.dfBeamCounts >= 0 && p.dfBackground >= 0 && p.dfReadNoise >= 0 &&
          p.dfMosaicity >= 0 && p.dfDrift >= 0 && p.dfSaturation >= 0))
        return QStringLiteral("counts, noise, mosaicity and drift cannot be negative");
    if (!(std::abs(p.dfStretchAmplitude) < 50))
        return QStringLiteral("a stretching of %1 %; less than 50 % can be made").arg(p.dfStretchAmplitude);
    if (p.nHotPixels < 0 || p.nHotPixels > p.nSize)
        return QStringLiteral("%1 hot pixels; 0 to %2 can be made").arg(p.nHotPixels).arg(p.nSize);
    if (!(p.dfSecondShare >= 0 && std::isfinite(p.dfSecondTurn)))
        return QStringLiteral("the second lattice cannot have a negative intensity");
    // Four average cells of the longest axis of all crystals still part their reflections by two spot sizes.
    if (p.nSupercell < 1 || p.nSupercell > 4 || p.nSupercellAxis < 0 || p.nSupercellAxis > 2)
        return QStringLiteral("a supercell of %1; 1 to 4 average cells can be made").arg(p.nSupercell);
    if (!(p.dfOddShare > 0 && p.dfOddShare <= 1))
        return QStringLiteral("the share of the supercell's own reflections lies above 0, up to 1");
    // The whole numbers of a diffraction pattern: what lies beyond can't be listed in memory.
    if (p.dfPixelSize * p.nSize > 8)
        return QStringLiteral("the frame reaches beyond 4 Å⁻¹; choose a smaller pixel size");
    return QString();
}

// A smooth walk: the step keeps most of its direction from frame to frame. Scaled so that the
// farthest excursion from the first frame is what was asked for.
std::vector<std::array<double, 2>> driftPath(const SimulationParameters& p)
{
    CRandomSource random(p.nSeed, g_nStreamDrift);
    std::vector<std::array<double, 2>> listShift(p.nFrames, {0, 0});
    double dfStepX = random.normal(), dfStepY = random.normal(), dfFarthest = 0;
    for (int n = 1; n < p.nFrames; ++n) {
        dfStepX = 0.9 * dfStepX + 0.3 * random.normal();
        dfStepY = 0.9 * dfStepY + 0.3 * random.normal();
        listShift[n] = {listShift[n - 1][0] + dfStepX, listShift[n - 1][1] + dfStepY};
        dfFarthest = std::max(dfFarthest, std::hypot(listShift[n][0], listShift[n][1]));
    }
    for (auto& shift : listShift)
        for (double& df : shift)
            df = dfFarthest > 0 ? df * p.dfDrift / dfFarthest : 0;
    return listShift;
}

std::vector<QPoint> hotPixels(const SimulationParameters& p)
{
    CRandomSource random(p.nSeed, g_nStreamHotPixel);
    std::vector<QPoint> listPixel;
    for (int nTry = 0; nTry < 100 * p.nHotPixels && int(listPixel.size()) < p.nHotPixels; ++nTry) {
        const QPoint pt(3 + int(random.uniform() * (p.nSize - 6)), 3 + int(random.uniform() * (p.nSize - 6)));
        if (std::none_of(listPixel.begin(), listPixel.end(),
                         [&](const QPoint& ptOld) { return (pt - ptOld).manhattanLength() < 6; }))
            listPixel.push_back(pt);
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

// Mean |F|² of the average structure up to 1 Å⁻¹, which the exposure is told by.
double meanSquareF(const std::vector<Reflection>& listReflection, const Supercell& supercell)
{
    double dfSum = 0;
    int nMean = 0;
    for (const Reflection& reflection : listReflection)
        if (reflection.dfDStar < 1 && supercell.isOfAverage(reflection)) {
            dfSum += reflection.dfSquareF;
            ++nMean;
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
    for (int i = 0; i < 3; ++i)
        matBasis[i] = matOrientation * crystal.reciprocalBasis()[i];
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
    const double dfTilt = series.listOverall[nFrame], dfHalf = p.dfTiltStep / 2;
    const double dfBeamX = p.dfCenterX + series.listShift[nFrame][0];
    const double dfBeamY = p.dfCenterY + series.listShift[nFrame][1];
    const double dfShare = nLattice == 0 ? 1 : p.dfSecondShare;
    for (const Reflection& reflection : listReflection) {
        const Vector3 vecLattice = Vector3{double(reflection.nH), double(reflection.nK),
                                           double(reflection.nL)} *
                                   series.basis(nLattice);
        const double dfWidth = std::hypot(p.dfRocking, p.dfMosaicity * g_dfPi / 180 * reflection.dfDStar);
        const double dfFirst = projection.excitationError(projection.turned(vecLattice, dfTilt - dfHalf));
        const double dfLast = projection.excitationError(projection.turned(vecLattice, dfTilt + dfHalf));
        if (std::min(std::abs(dfFirst), std::abs(dfLast)) > 5 * dfWidth && dfFirst * dfLast > 0)
            continue;
        const double dfCounts = dfShare * (p.dfExposure * reflection.dfSquareF / dfMeanSquareF *
                                           meanRockingCurve(dfFirst, dfLast, dfWidth));
        if (!(dfCounts > 0.01))
            continue;
        const Vector3 vecTurned = projection.turned(vecLattice, dfTilt);
        const auto offset = projection.spotOffset(vecTurned);
        TruthSpot spot;
        spot.nFrame = nFrame;
        spot.dfX = dfBeamX + offset[0];
        spot.dfY = dfBeamY + offset[1];
        if (spot.dfX < -dfRadius || spot.dfY < -dfRadius || spot.dfX > p.nSize + dfRadius ||
            spot.dfY > p.nSize + dfRadius)
            continue;
        spot.nH = reflection.nH;
        spot.nK = reflection.nK;
        spot.nL = reflection.nL;
        spot.dfCounts = dfCounts * dfInDisc;
        const double dfBackground = diffuseBackground(p, std::hypot(offset[0], offset[1])) +
                                    p.dfReadNoise * p.dfReadNoise;
        spot.dfSignalToNoise = spot.dfCounts / std::sqrt(spot.dfCounts + dfDiscPixels * dfBackground);
        spot.dfExcitation = projection.excitationError(vecTurned);
        spot.nLattice = nLattice;
        series.listDrawn[nFrame].push_back(spot);
        const bool bInside = spot.dfX >= 0 && spot.dfY >= 0 && spot.dfX <= p.nSize - 1 &&
                             spot.dfY <= p.nSize - 1;
        if (bInside && spot.dfSignalToNoise >= 0.5)
            series.listSpot.push_back(spot);
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

bool simulateSeries(const SimulationParameters& parameters, SimulatedSeries& series, QString& strError)
{
    strError = whatIsWrong(parameters);
    if (!strError.isEmpty())
        return false;
    const SimulationParameters& p = parameters;
    const CrystalStructure& structure = *findCrystalStructure(p.strCrystal);
    const CStructureFactor crystal(structure);
    const Supercell supercell{p.nSupercell, p.nSupercellAxis, p.dfOddShare};

    SimulatedSeries result;
    result.parameters = p;
    result.adfCell = structure.adfCell;
    result.adfCell[size_t(supercell.nAxis)] *= supercell.nMultiple;
    result.matPrimitive = supercellPrimitive(crystal, supercell);
    orient(crystal, supercell, result);
    fillTilts(p, result);
    result.listShift = driftPath(p);
    result.listHotPixel = hotPixels(p);

    // Farthest corner from the beam, with room for drift, distortion and the frame's far side.
    const double dfReach = p.dfPixelSize *
                           (p.dfDrift + std::hypot(std::max(p.dfCenterX, p.nSize - p.dfCenterX),
                                                   std::max(p.dfCenterY, p.nSize - p.dfCenterY)));
    const std::vector<Reflection> listReflection = supercellReflections(
        crystal, supercell, dfReach * (1 + std::abs(p.dfStretchAmplitude) / 100));
    const double dfMeanSquareF = meanSquareF(listReflection, supercell);
    const CRotationProjection projection(p.dfWavelength, p.dfPixelSize, p.dfAxis, p.dfStretchAmplitude,
                                         p.dfStretchAzimuth);
    result.listDrawn.resize(p.nFrames);
    for (int n = 0; n < p.nFrames; ++n)
        for (int nLattice = 0; nLattice < result.latticeCount(); ++nLattice)
            addSpots(projection, listReflection, dfMeanSquareF, n, nLattice, result);
    series = std::move(result);
    return true;
}

}  // namespace tessera
