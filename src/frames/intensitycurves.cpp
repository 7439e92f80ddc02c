#include "frames/intensitycurves.h"

#include "imaging/lorentzcurve.h"
#include "imaging/sidebyside.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

bool getReflectionChainData(const QList<QList<Peak3D>>& listPeakChain, int nIntensityMode, int nID,
                            QVector<double>& vecFrameNo, QVector<double>& vecInt)
{
    if (nID < 0 || nID >= listPeakChain.size()) {
        return false;
    }
    const QList<Peak3D>& listChain = listPeakChain[nID];
    vecFrameNo.clear();
    vecInt.clear();
    vecFrameNo.reserve(listChain.size());
    vecInt.reserve(listChain.size());
    for (const Peak3D& peak : listChain) {
        vecFrameNo.append(peak.nFrame + 1);
        vecInt.append(nIntensityMode != 0 ? peak.dfI2D : peak.dfIPoint);
    }
    return true;
}

bool getContinuousBeamTiltSeriesBound(const QList<int>& listBeamTiltBreak, const QVector<double>& vecFrame,
                                      const QVector<double>& vecInt, int& nLowerBound, int& nUpperBound)
{
    if (vecFrame.isEmpty() || vecFrame.size() != vecInt.size()) {
        return false;
    }
    int nBest = 0;
    for (int i = 1; i < vecInt.size(); ++i) {
        if (vecInt[i] > vecInt[nBest] || (std::isnan(vecInt[nBest]) && !std::isnan(vecInt[i]))) {
            nBest = i;
        }
    }
    const int nFrames = listBeamTiltBreak.size();
    const double dfFrame = std::trunc(vecFrame[nBest]);
    if (!(dfFrame >= 1 && dfFrame <= nFrames)) {
        return false;
    }
    const int nFrame = int(dfFrame);

    int nLower = nFrame;
    while (nLower > 1 && listBeamTiltBreak[nLower - 1] != 1) {
        --nLower;
    }
    int nUpper = nFrame + 1;
    while (nUpper <= nFrames && listBeamTiltBreak[nUpper - 1] != 1) {
        ++nUpper;
    }
    nLowerBound = nLower;
    nUpperBound = nUpper <= nFrames ? nUpper - 1 : nFrames + 1;
    return true;
}

QList<QPointF> extractSubChain(const QVector<double>& vecFrame, const QVector<double>& vecInt,
                               int nLowerBound, int nUpperBound)
{
    QList<QPointF> listPoint;
    if (vecFrame.size() != vecInt.size()) {
        return listPoint;
    }
    for (int i = 0; i < vecFrame.size(); ++i) {
        const double dfFrame = std::trunc(vecFrame[i]);
        if (dfFrame >= nLowerBound && dfFrame <= nUpperBound) {
            listPoint.append(QPointF(vecFrame[i], vecInt[i]));
        }
    }
    return listPoint;
}

QList<QPointF> getBeamTiltSeriesDataForFitting(const QList<int>& listBeamTiltBreak,
                                               const QVector<double>& vecFrame, const QVector<double>& vecInt)
{
    int nLower = 0;
    int nUpper = 0;
    if (!getContinuousBeamTiltSeriesBound(listBeamTiltBreak, vecFrame, vecInt, nLower, nUpper)) {
        return {};
    }
    return extractSubChain(vecFrame, vecInt, nLower, nUpper);
}

void fitIntensity(const QList<QPointF>& listInt, QList<double>& listParaResult)
{
    if (listInt.size() < 3) {
        return;
    }
    listParaResult.clear();
    int nBest = 0;
    float fMaximum = float(listInt[0].y());
    for (int i = 1; i < listInt.size(); ++i) {
        if (listInt[i].y() > double(fMaximum) || std::isnan(fMaximum)) {
            fMaximum = float(listInt[i].y());
            nBest = i;
        }
    }
    double adfPara[3] = {double(fMaximum), listInt[nBest].x(), 1.0};
    double adfError[3] = {0, 0, 0};
    const int nInfo = fitLorentzCurve(listInt, adfPara, adfError);
    listParaResult << std::trunc(listInt.first().x()) << 0.0 << double(fMaximum)
                   << std::trunc(listInt[nBest].x()) << double(listInt.size()) << double(nInfo);
    for (double dfPara : adfPara) {
        listParaResult.append(dfPara);
    }
    for (double dfError : adfError) {
        listParaResult.append(dfError);
    }
}

void fitIntensityProfileForSharpPeaks(const QList<QList<Peak3D>>& listPeakChain,
                                      const QList<int>& listBeamTiltBreak, int nIntensityMode,
                                      QList<Peak3D>& listPeakMerged, int nJobs)
{
    const int nPeaksOfPiece = 64;
    std::vector<Peak3D*> vecPeak;
    vecPeak.reserve(listPeakMerged.size());
    for (Peak3D& peak : listPeakMerged) {
        vecPeak.push_back(&peak);
    }
    const auto fitPeak = [&](Peak3D& peak) {
        QVector<double> vecFrame, vecInt;
        if (!getReflectionChainData(listPeakChain, nIntensityMode, peak.nID, vecFrame, vecInt)) {
            return;
        }
        QList<double> listPara;
        fitIntensity(getBeamTiltSeriesDataForFitting(listBeamTiltBreak, vecFrame, vecInt), listPara);
        if (listPara.size() < 6) {
            peak.dfIntFit = nIntensityMode != 0 ? peak.dfI2D : peak.dfIPoint;
            peak.dfFrameFit = peak.nFrame + 1;
            peak.dfHalfWidth = 0;
        } else {
            peak.dfIntFit = listPara[6];
            peak.dfFrameFit = listPara[7];
            peak.dfHalfWidth = listPara[8];
        }
    };
    const auto makeWorker = [&]() -> FnPiece {
        return [&](int nPiece) {
            const size_t nEnd = std::min(vecPeak.size(), size_t(nPiece + 1) * nPeaksOfPiece);
            for (size_t n = size_t(nPiece) * nPeaksOfPiece; n < nEnd; ++n) {
                fitPeak(*vecPeak[n]);
            }
        };
    };
    sideBySide((int(vecPeak.size()) + nPeaksOfPiece - 1) / nPeaksOfPiece, nJobs, makeWorker);
}

}  // namespace tessera
