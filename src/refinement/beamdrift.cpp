#include "refinement/beamdrift.h"

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

}  // namespace tessera
