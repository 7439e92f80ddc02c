#include "integration/geometryforintegration.h"

#include "frames/firstimage.h"
#include "reciprocal/mapping.h"
#include "refinement/geometryofseries.h"

#include <algorithm>
#include <vector>

namespace tessera {

namespace {

/// The most frequent size among some frames, so that a single wrong file does not determine the size.
QSize sizeOfFrames(const DataSet& dataSet)
{
    const int nLookedAt = 5;
    const SeriesSnapshot series(dataSet);
    const int nFrames = series.frameCount();
    std::vector<QSize> listSize;
    const auto look = [&](int nFrame) {
        CRunReport silent;
        const auto pImage = firstImage(series, nFrame, {}, silent);
        if (pImage) {
            listSize.emplace_back(pImage->Width(), pImage->Height());
        }
    };
    for (int n = 0; n < std::min(nFrames, nLookedAt); ++n) {
        look(int(qint64(n) * nFrames / std::min(nFrames, nLookedAt)));
    }
    for (int n = 0; n < nFrames && listSize.empty(); ++n) {
        look(n);
    }
    QSize best;
    for (const QSize& size : listSize) {
        if (std::count(listSize.begin(), listSize.end(), size) >
            std::count(listSize.begin(), listSize.end(), best)) {
            best = size;
        }
    }
    return best;
}

}  // namespace

std::optional<SeriesGeometry> seriesGeometry(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined)
{
    const int nFrames = dataSet.m_listFrameFile.size();
    const BeamCentres centres = beamCentres(dataSet);
    const std::optional<DiffractionGeometry> given = geometryOfSeries(dataSet, mapping);
    if (!given || nFrames == 0 || dataSet.m_listOverallTilt.size() != nFrames ||
        centres.m_listShift.size() != nFrames) {
        return std::nullopt;
    }
    SeriesGeometry series;
    const GeometryModel* pModel = refined && refined->done() ? &refined->best() : nullptr;
    series.geometry = pModel ? pModel->geometry : *given;
    for (int n = 0; n < nFrames; ++n) {
        series.listTilt.push_back(relaxedTilt(dataSet, n, nFrames));
        const QPointF ptBeam = frameCentre(centres, n);
        // The in-plane terms of the model contain its centre.
        const bool bDrift = pModel && size_t(n) < pModel->listDrift.size();
        const FramePlace drift = bDrift ? pModel->listDrift[n] : FramePlace{};
        series.listBeam.push_back({ptBeam.x() + drift.dfX, ptBeam.y() + drift.dfY});
    }
    series.sizeFrame = sizeOfFrames(dataSet);
    return series;
}

}  // namespace tessera
