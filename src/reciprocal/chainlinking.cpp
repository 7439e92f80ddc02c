#include "reciprocal/chainlinking.h"

#include "reciprocal/nearestpeak.h"
#include "records/progress.h"

#include <vector>

namespace tessera {

std::optional<QList<QList<Peak3D>>> linkChains(const QList<QList<Peak3D>>& listPeakFrame,
                                               double dfMaxDistance, const FnChainIsOver& fnIsOver,
                                               CRunReport& report)
{
    QList<QList<Peak3D>> listChain;
    const int nFrames = listPeakFrame.size();
    std::vector<QList<Peak3D>> vecOpen;
    CNearestPeak nearest(dfMaxDistance);
    CProgress progress(report, QStringLiteral("%p%"), 0, (nFrames - 1) / 10);
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        if (nFrame % 10 == 0 || nFrame == nFrames - 1) {
            progress.set(nFrame / 10);
            if (!report.goOn()) {
                return std::nullopt;
            }
        }
        size_t nStillOpen = 0;
        for (size_t n = 0; n < vecOpen.size(); ++n) {
            if (fnIsOver(nFrame, vecOpen[n].constLast())) {
                listChain.append(vecOpen[n]);
            } else if (nStillOpen++ != n) {
                vecOpen[nStillOpen - 1].swap(vecOpen[n]);
            }
        }
        vecOpen.resize(nStillOpen);

        // The last peaks before this frame: a peak of this frame must not join another one of this frame.
        nearest.clear();
        for (size_t n = 0; n < vecOpen.size(); ++n) {
            nearest.add(vecOpen[n].constLast().dfX2D, vecOpen[n].constLast().dfY2D, int(n));
        }
        nearest.prepare();
        for (const Peak3D& peak : listPeakFrame[nFrame]) {
            const int nChain = nearest.find(peak.dfX2D, peak.dfY2D);
            if (nChain >= 0) {
                vecOpen[nChain].append(peak);
            } else {
                vecOpen.push_back({peak});
            }
        }
    }
    for (const QList<Peak3D>& listOpen : vecOpen) {
        listChain.append(listOpen);
    }
    progress.end();
    if (!report.goOn()) {
        return std::nullopt;
    }
    return listChain;
}

}  // namespace tessera
