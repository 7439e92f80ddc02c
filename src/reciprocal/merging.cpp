#include "reciprocal/merging.h"

#include "frames/intensitycurves.h"
#include "geometry/angles.h"
#include "reciprocal/chainlinking.h"
#include "reciprocal/mapping.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace tessera {

namespace {

double intensity(const Peak3D& peak, int nIntensityMode)
{
    return nIntensityMode == 1 ? peak.dfI2D : peak.dfIPoint;
}

/// A peak of a chain with its position turned back into raw pixels.
Peak3D atRawPosition(Peak3D peak, const BeamCentres& centres)
{
    const QPointF ptCentre = frameCentre(centres, peak.nFrame);
    peak.dfX2D += ptCentre.x();
    peak.dfY2D += ptCentre.y();
    return peak;
}

/// The weighted mean of a chain and its strongest peak.
struct ChainMean {
    Peak3D peakBest;
    float fBestWeight = -10000.0f;
    double dfWeightSum = 0;
    Vec3D vecPositionSum;
};

ChainMean meanOfChain(const QList<Peak3D>& listChain, const BeamCentres& centres, int nIntensityMode)
{
    ChainMean mean;
    for (const Peak3D& peak : listChain) {
        const float fWeight = float(intensity(peak, nIntensityMode));
        if (!(fWeight > 0)) {
            continue;
        }
        mean.vecPositionSum = mean.vecPositionSum + scaled(peak.point(), fWeight);
        mean.dfWeightSum += double(fWeight);
        if (fWeight > mean.fBestWeight) {
            mean.peakBest = atRawPosition(peak, centres);
            mean.fBestWeight = fWeight;
        }
    }
    return mean;
}

void fillMerged(Peak3D& peakOut, const ChainMean& mean, double dfIntensity)
{
    const Vec3D vecMean = scaledDouble(mean.vecPositionSum, 1 / mean.dfWeightSum);
    peakOut.setPoint(vecMean);
    peakOut.dfDStar = double(length(vecMean));
    peakOut.dfIPoint = dfIntensity;
    peakOut.dfX2D = mean.peakBest.dfX2D;
    peakOut.dfY2D = mean.peakBest.dfY2D;
    peakOut.dfX2DCorrected = mean.peakBest.dfX2DCorrected;
    peakOut.dfY2DCorrected = mean.peakBest.dfY2DCorrected;
    peakOut.nFrame = mean.peakBest.nFrame;
    peakOut.dfFrameTilt = mean.peakBest.dfFrameTilt;
    peakOut.setHKL(0, 0, 0);
    peakOut.nID = 0;
    peakOut.nRGroup = 0;
}

/// Whether a chain of permitted length gives no reflection because none of its peaks has a weight.
bool hasNoWeight(const QList<Peak3D>& listChain, const PeakMergingParameters& parameters)
{
    if (parameters.m_bIntegrateThroughFrames && listChain.size() < 2) {
        return false;  // an integral needs two peaks
    }
    const int nMode = parameters.m_bIntegrate2D && !parameters.m_bIntegrateThroughFrames ? 1 : 0;
    return std::none_of(listChain.begin(), listChain.end(),
                        [nMode](const Peak3D& peak) { return float(intensity(peak, nMode)) > 0; });
}

bool isSelected(const std::vector<char>* pvecSelected, int nID)
{
    return !pvecSelected || (nID >= 0 && size_t(nID) < pvecSelected->size() && (*pvecSelected)[nID]);
}

int countSelected(const QList<QList<Peak3D>>& listPeakFrame, const std::vector<char>* pvecSelected)
{
    int nCount = 0;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        for (const Peak3D& peak : listPeak) {
            nCount += isSelected(pvecSelected, peak.nID);
        }
    }
    return nCount;
}

/// The chosen peaks of each frame, positions relative to the direct beam. No stretching enters here.
QList<QList<Peak3D>> workingLists(const DataSet& dataSet, const std::vector<char>* pvecSelected)
{
    QList<QList<Peak3D>> listChosen;
    for (const QList<Peak3D>& listShown : dataSet.m_listPeakFrameShown) {
        QList<Peak3D> listPeak;
        std::copy_if(listShown.begin(), listShown.end(), std::back_inserter(listPeak),
                     [&](const Peak3D& peak) { return isSelected(pvecSelected, peak.nID); });
        listChosen.append(listPeak);
    }
    return peaksAroundBeam(listChosen, beamCentres(dataSet));
}

/// A frame lies in the plane through the rotation axis at its tilt; a chain is over once that plane has moved
/// away from its last peak.
FnChainIsOver planeHasPassed(const DataSet& dataSet, const PeakMergingParameters& parameters)
{
    const int nFrames = dataSet.m_listPeakFrameShown.size();
    struct Tilt {
        double dfSin, dfCos;
    };
    std::vector<Tilt> vecTilt;
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        const double dfTilt = radians(relaxedTilt(dataSet, nFrame, nFrames));
        vecTilt.push_back({std::sin(dfTilt), std::cos(dfTilt)});
    }
    const double dfMaxDistance = parameters.m_dfMin3DDistance * dataSet.m_dfPixelSize;
    return [vecTilt, dfMaxDistance](int nFrame, const Peak3D& peakLast) {
        const Tilt& tilt = vecTilt[nFrame];
        return std::fabs(-tilt.dfSin * double(peakLast.fY3D) + tilt.dfCos * double(peakLast.fZ3D)) >
               dfMaxDistance;
    };
}

/// What comes of the chains.
struct MergedChains {
    QList<Peak3D> listMerged;    ///< the reflections
    QList<Peak3D> listShown;     ///< these and the peaks of streaks, in the order of the chains
    QList<int> listStreakIndex;  ///< places of the streaks' peaks in listShown
    int nPeaks = 0;              ///< peaks in all chains
    int nNotPositive = 0;        ///< chains that gave nothing because no peak has a positive intensity
};

/// Merges the chains whose length is within the limits; longer ones become streaks.
MergedChains mergeChains(const QList<QList<Peak3D>>& listChain, const DataSet& dataSet,
                         const PeakMergingParameters& parameters, CRunReport& report)
{
    const BeamCentres centres = beamCentres(dataSet);
    const int nIntensityMode = parameters.m_bIntegrate2D ? 1 : 0;
    const auto merge = parameters.m_bIntegrateThroughFrames ? mergeReflectionsLineIntegration
                                                            : mergeReflectionsMax;
    const double dfMax = parameters.m_dfMax3DLength * dataSet.m_dfPixelSize;
    const double dfMin = parameters.m_dfMin2DLength * dataSet.m_dfPixelSize;
    MergedChains result;
    for (int nChain = 0; nChain < listChain.size(); ++nChain) {
        const QList<Peak3D>& chain = listChain[nChain];
        result.nPeaks += chain.size();
        const double dfLength = double(length(chain.constFirst().point() - chain.constLast().point()));
        if (dfMin <= dfLength && dfLength <= dfMax) {
            Peak3D peakMerged;
            if (merge(peakMerged, chain, centres, nIntensityMode)) {
                peakMerged.nID = nChain;
                result.listShown.append(peakMerged);
                result.listMerged.append(peakMerged);
            } else if (hasNoWeight(chain, parameters)) {
                ++result.nNotPositive;
            }
        } else if (dfLength > dfMax) {
            for (const Peak3D& peak : chain) {
                Peak3D peakStreak = atRawPosition(peak, centres);
                peakStreak.nID = nChain;
                result.listStreakIndex.append(result.listShown.size());
                result.listShown.append(peakStreak);
            }
        } else {
            report.addMessage(QStringLiteral("Abnormal chain length: %1, min:%2").arg(dfLength).arg(dfMin),
                              Severity::Info);
        }
    }
    return result;
}

void tellMerging(const PeakMergingResult& result, int nChains, int nShown, CRunReport& report)
{
    if (result.nOutsideLimits > 0) {
        report.addMessage(
            QStringLiteral("%1 peaks lie outside the intensity or resolution limits and were not merged.")
                .arg(result.nOutsideLimits),
            Severity::Info);
    }
    if (result.nNotPositive > 0) {
        report.addMessage(
            QStringLiteral("%1 chains were dropped, as no peak of theirs has a positive intensity.")
                .arg(result.nNotPositive),
            Severity::Info);
    }
    report.addMessage(QStringLiteral("%1 peaks in %2 chains found. %3 peaks remained after merging.")
                          .arg(result.nPeaks)
                          .arg(nChains)
                          .arg(nShown),
                      Severity::Info);
}

}  // namespace

bool mergeReflectionsMax(Peak3D& peakOut, const QList<Peak3D>& listChain, const BeamCentres& centres,
                         int nIntensityMode)
{
    const ChainMean mean = meanOfChain(listChain, centres, nIntensityMode);
    if (!(mean.dfWeightSum > 0)) {
        return false;
    }
    fillMerged(peakOut, mean, double(mean.fBestWeight));
    return true;
}

bool mergeReflectionsLineIntegration(Peak3D& peakOut, const QList<Peak3D>& listChain,
                                     const BeamCentres& centres, int nIntensityMode)
{
    if (listChain.size() < 2) {
        return false;
    }
    // The mean is weighted by the point intensity in both modes.
    const ChainMean mean = meanOfChain(listChain, centres, 0);
    if (!(mean.dfWeightSum > 0)) {
        return false;
    }

    QList<Peak3D> listByTilt = listChain;
    std::stable_sort(listByTilt.begin(), listByTilt.end(), [](const Peak3D& a, const Peak3D& b) {
        return a.dfFrameTilt < b.dfFrameTilt || (std::isnan(b.dfFrameTilt) && !std::isnan(a.dfFrameTilt));
    });
    float fIntegral = 0;
    for (int n = 0; n + 1 < listByTilt.size(); ++n) {
        const Peak3D& peakP = listByTilt[n];
        const Peak3D& peakQ = listByTilt[n + 1];
        const double dfStep = double(length(peakQ.point() - peakP.point()));
        fIntegral += float((intensity(peakP, nIntensityMode) + intensity(peakQ, nIntensityMode)) *
                           (dfStep * 0.5));
    }
    fillMerged(peakOut, mean, double(fIntegral * 100.f));
    return true;
}

PeakMergingResult peakReduction3D(DataSet& dataSet, const PeakMergingParameters& parameters,
                                  const std::vector<char>* pvecSelected, CRunReport& report, int nJobs)
{
    PeakMergingResult result;
    const int nFrames = dataSet.m_listPeakFrameShown.size();
    if (nFrames != dataSet.m_listShift.size()) {
        result.outcome = refuseRun(report,
                                   QStringLiteral("The number of frames for peaks does not match that of "
                                                  "the shift correction data. Stop."));
        return result;
    }
    if (nFrames > dataSet.m_listOverallTilt.size()) {
        result.outcome = refuseRun(
            report,
            QStringLiteral("The number of frames for peaks does not match that of the tilt angles. Stop."));
        return result;
    }
    if (!report.goOn()) {
        return result;
    }

    const std::optional<QList<QList<Peak3D>>> listChain = linkChains(
        workingLists(dataSet, pvecSelected), parameters.m_dfMax2DDistance,
        planeHasPassed(dataSet, parameters), report);
    if (!listChain) {
        return result;
    }

    const int nIntensityMode = parameters.m_bIntegrate2D ? 1 : 0;
    MergedChains merged = mergeChains(*listChain, dataSet, parameters, report);
    fitIntensityProfileForSharpPeaks(*listChain, dataSet.m_listBeamTiltBreak, nIntensityMode,
                                     merged.listMerged, nJobs);
    dataSet.m_listPeakChain = *listChain;
    dataSet.m_nIntensityMode = nIntensityMode;
    dataSet.m_listPeakMergedShown = merged.listShown;
    dataSet.m_listPeakMerged = merged.listMerged;
    noteMergedMade(dataSet, parameters);
    result.outcome = {};
    result.listStreakIndex = merged.listStreakIndex;
    result.nPeaks = merged.nPeaks;
    result.nNotPositive = merged.nNotPositive;
    result.nOutsideLimits = std::max(0, countSelected(dataSet.m_listPeakFrame, pvecSelected) - result.nPeaks);
    tellMerging(result, listChain->size(), merged.listShown.size(), report);
    return result;
}

}  // namespace tessera
