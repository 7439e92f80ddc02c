// exportSummedFrames: the frames of each beam tilt series summed, as MRC files.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

#include <functional>

namespace tessera {

/// Writes one image "NNN.mrc" (16 bit unsigned) per beam tilt series: the sum of its frames, each moved back
/// by its shift truncated to whole pixels, divided by 20 and cut to 0..65535.
///
/// A group starts at each frame with the flag 1 in m_listBeamTiltBreak and ends before the next flag that is
/// not 0; frames before the first are in none. The log gets the groups, per group its number, frames, mean
/// tilt and half tilt range in degrees, and at the end the shifts.
///
/// A group of which a frame cannot be loaded, or has another size than the first frame of the series, is not
/// written, and the export goes on with the next. A list of shifts of another length than the series is not
/// used, with a red line. Of the pixels out of range the first ten of a group have a line each, the others
/// one together. A frame's pixels that are no numbers take no part, and the sum of the other frames is raised
/// to the number of all; a pixel that is one on no frame becomes 0. When the report's goOn() asks for the
/// end, the export stops before the next frame; a sum that is complete by then is written.
///
/// An export that would overwrite a frame of its own series is refused as a whole, with a red line, before
/// anything is summed. A file that cannot be written has its reason in red.
/// @param strFolder    must exist; files of the same names are replaced
/// @param fnGroupDone  after the sum of a group stands in m_vecFrameImage, which is empty at the end
/// @return Finished if every group was written and nobody asked for the end; Refused, with a red line, where
///         there is none
RunOutcome exportSummedFrames(DataSet& dataSet, const QString& strFolder, CRunReport& report,
                              const std::function<void(int nGroup)>& fnGroupDone = {});

}  // namespace tessera
