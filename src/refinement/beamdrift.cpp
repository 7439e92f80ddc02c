#include "refinement/beamdrift.h"

#include <cmath>

namespace tessera {

std::vector<FramePlace> beamOffsets(const GeometryModel& model, int nFrames)
{
    const PlaneTerms<double>& plane = model.geometry.plane;
    std::vector<FramePlace> listOffset(size_t(nFrames < 0 ? 0 : nFrames), {plane.centreX, plane.centreY});
    for (size_t n = 0; n < listOffset.size() && n < model.listDrift.size(); ++n) {
        listOffset[n].dfX += model.listDrift[n].dfX;
        listOffset[n].dfY += model.listDrift[n].dfY;
    }
    return listOffset;
}

double driftRms(const GeometryModel& model)
{
    double dfSum = 0;
    for (const FramePlace& offset : model.listDrift) {
        dfSum += offset.dfX * offset.dfX + offset.dfY * offset.dfY;
    }
    return model.listDrift.empty() ? 0 : std::sqrt(dfSum / double(model.listDrift.size()));
}

}  // namespace tessera
