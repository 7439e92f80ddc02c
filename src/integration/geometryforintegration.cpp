#include "integration/geometryforintegration.h"

#include "frames/firstimage.h"
#include "reciprocal/mapping.h"
#include "refinement/geometryofseries.h"

namespace tessera {

namespace {

QSize sizeOfFrames(const DataSet& dataSet)
{
    const SeriesSnapshot series(dataSet);
    for (int n = 0; n < series.frameCount(); ++n) {
        CRunReport silent;
        const auto pImage = firstImage(series, n, {}, silent);
        if (pImage) {
            return {pImage->Width(), pImage->Height()};
        }
    }
    return {};
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
    series.geometry = refined && refined->done() ? refined->best().geometry : *given;
    for (int n = 0; n < nFrames; ++n) {
        series.listTilt.push_back(relaxedTilt(dataSet, n, nFrames));
        const QPointF ptBeam = frameCentre(centres, n);
        // What the refinement finds the beam of single frames to be off by comes in here.
        series.listBeam.push_back({ptBeam.x(), ptBeam.y()});
    }
    series.sizeFrame = sizeOfFrames(dataSet);
    return series;
}

}  // namespace tessera
