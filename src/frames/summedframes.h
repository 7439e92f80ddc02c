// exportSummedFrames: writes the sums of the frames of each beam tilt series as MRC files.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

#include <functional>

namespace tessera {

/// Writes one image "NNN.mrc" (16 bit unsigned) for each beam tilt series: the sum of its frames, each
/// moved back by its shift truncated to whole pixels, divided by 20 and limited to 0..65535.
///
/// A group starts at each frame with the flag 1 in m_listBeamTiltBreak and ends before the next flag that
/// is not 0. Frames before the first group belong to none. The log gets the groups; for each group its
/// number, frames, mean tilt and half tilt range in degrees; and at the end the shifts.
///
/// A group with a frame that cannot be loaded, or has another size than the first frame of the series, is
/// not written, and the export continues with the next one. If there is not one shift for each frame, no
/// shifts are used, and a red line tells so. Of the pixels out of range, the first ten of a group have a
/// line each and the others one line together. Unusable pixels are left out, and the sum of the other
/// frames is scaled to the number of all; a pixel that is unusable on all frames becomes 0. When goOn() of
/// the report asks to stop, the export ends before the next frame; a sum that is complete by then is
/// written.
///
/// An export that would overwrite a frame of its own series is refused as a whole, with a red line. If a
/// file cannot be written, a red line tells why.
/// @param strFolder    must exist; files of the same names are replaced
/// @param fnGroupDone  called when m_vecFrameImage has the sum of a group; it is empty at the end
/// @return Finished if every group was written and the user did not stop the export; Refused, with a red
///         line, where there is no group
RunOutcome exportSummedFrames(DataSet& dataSet, const QString& strFolder, CRunReport& report,
                              const std::function<void(int nGroup)>& fnGroupDone = {});

}  // namespace tessera
