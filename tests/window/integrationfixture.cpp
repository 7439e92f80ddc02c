#include "tests/window/integrationfixture.h"

#include "simulate/structurefactor.h"

#include <cmath>

namespace tessera {

namespace {

ShellQuality shellOf(double dfDMax, double dfDMin, int nUnique, double dfRInt)
{
    ShellQuality shell;
    shell.dfDMax = dfDMax;
    shell.dfDMin = dfDMin;
    shell.nObserved = 6 * nUnique;
    shell.nUnique = nUnique;
    shell.nPossible = 2 * nUnique;
    shell.dfCompleteness = 0.5;
    shell.dfMultiplicity = 6;
    shell.dfIOverSigma = 12.5;
    shell.dfRInt = dfRInt;
    shell.dfRMeas = 1.1 * dfRInt;
    shell.dfRPim = 0.4 * dfRInt;
    shell.dfCcHalf = 1 - dfRInt / 10;
    return shell;
}

MergingQuality qualityOf(int nFrames, double dfRInt)
{
    MergingQuality quality;
    quality.listShell = {shellOf(20, 3, 30, dfRInt / 2), shellOf(3, 2.4, 31, dfRInt),
                         shellOf(2.4, 2, 32, 2 * dfRInt)};
    quality.listShell.back().dfCcHalf = std::nan("");  // too few
    quality.overall = shellOf(20, 2, 93, dfRInt);
    for (int n = 0; n < nFrames; ++n) {
        quality.listFrame.push_back({10 + n, 1 + n / 100.0, dfRInt, 5});
        quality.listCompletenessByFrame.push_back(0.5 * (n + 1) / nFrames);
    }
    quality.dfWilsonB = 1.5;
    for (const double df : {0.01, 0.02, 0.04}) {
        quality.listWilson.push_back({df, 3 - 2 * quality.dfWilsonB * df});
    }
    return quality;
}

}  // namespace

IntegrationResult quartzResult(int nFrames)
{
    IntegrationResult result;
    // Waves too long for any place on a frame: each observation stays at its own.
    result.series.geometry.aBasis = {{{1, 0.1, 0.2}, {0.1, 1, 0.3}, {0.2, 0.1, 1}}};
    result.series.geometry.dfWavelength = 1000;
    for (int n = 0; n < nFrames; ++n) {
        result.series.listTilt.push_back(-15 + n);
        result.series.listBeam.push_back({96, 96});
    }
    result.series.sizeFrame = QSize(192, 192);
    const CStructureFactor factor(*findCrystalStructure("quartz"));
    int n = 0;
    for (const Reflection& reflection : factor.reflections(0.7)) {
        Observation observation;
        observation.anIndex = {reflection.nH, reflection.nK, reflection.nL};
        observation.dfFrame = n % nFrames;
        observation.dfTilt = -15 + observation.dfFrame;
        observation.place = {5.0 + 9 * (n % 20), 5.0 + 9 * (n / 20 % 20)};
        observation.dfDStar = reflection.dfDStar;
        observation.dfSpeed = 0.01;
        observation.nFirstFrame = std::max(int(observation.dfFrame) - 1, 0);
        observation.nLastFrame = std::min(int(observation.dfFrame) + 1, nFrames - 1);
        observation.dfIntensity = 100 * reflection.dfSquareF;
        observation.dfSigma = 2;
        result.integrated.listObservation.push_back(observation);
        ++n;
    }
    result.integrated.model.dfDiscRadius = 4;
    result.integrated.dfMaxDStar = 0.7;
    result.laue.listOperation = {{"-y,x-y,z", 3, 80, 0.99, 0.03, 0.98},
                                 {"y,x,-z", 2, 70, 0.97, 0.06, 0.95},
                                 {"-x,-y,z", 2, 75, 0.2, 0.7, 0.02}};
    LaueCandidate candidate;
    candidate.strClass = "-3m1";
    candidate.system = LatticeSystem::Hexagonal;
    candidate.dfLikelihood = 0.9;
    result.laue.listCandidate = {candidate, LaueCandidate{"-1", {}, {}, LatticeSystem::Triclinic, 'P', 0.1}};
    result.chosen = candidate;
    result.scaling.listFrameDecay = std::vector<double>(size_t(nFrames), 0.0);
    result.unscaled = qualityOf(nFrames, 0.2);
    result.scaled = qualityOf(nFrames, 0.1);
    result.quality = qualityOf(nFrames, 0.08);
    result.spaceGroups.listCondition = {{"00l: l = 3n", 4, 0.01, 0.005, 0.97}};
    result.spaceGroups.listCandidate = {{152, "P 31 2 1", 0.8, {"00l: l = 3n"}, false},
                                        {150, "P 3 2 1", 0.1, {}, false}};
    result.spaceGroup = result.spaceGroups.listCandidate.front();
    result.forecast.strText = "12 more degrees after the last frame give 90%.";
    result.forecast.dfBest = 0.95;
    result.forecast.listCurve = {{0, 0.5, 0.5}, {12, 0.9, 0.8}, {20, 0.95, 0.95}, {30, 0.95, 0.95}};
    return result;
}

ObservationProfile steepProfile(const Observation& observation)
{
    ObservationProfile profile;
    profile.nFirstFrame = observation.nFirstFrame - 1;
    profile.nSide = 9;
    double dfCounts = 10;
    for (int nFrame = profile.nFirstFrame; nFrame <= observation.nLastFrame + 1; ++nFrame) {
        std::vector<float> window(81, 1.f);
        window[40] = float(dfCounts);
        profile.listWindow.push_back(window);
        profile.listRocking.push_back(dfCounts);
        profile.listModel.push_back(dfCounts / 2);
        profile.listExcitation.push_back(0.001 * nFrame);
        dfCounts *= 10;
    }
    for (int n = 0; n < 81; ++n) {
        profile.listInDisc.push_back(std::hypot(n % 9 - 4, n / 9 - 4) <= 3);
    }
    return profile;
}

}  // namespace tessera
