// Peak hunting: the diffraction spots of all frames with their intensities.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QList>

#include <functional>

namespace tessera {

/// How a run of peak hunting works and whom it calls, all from the calling thread.
struct PeakHuntingOptions {
    int nJobs = 1;            ///< frames hunted side by side, from 1; the result is the same for each
    bool bSave = true;        ///< write the peak list beside the project
    bool bKeepImages = true;  ///< hand the images of a frame to m_vecFrameImage; else this stays as it was
    bool bSaveEmpty = true;   ///< also when no frame has a peak, in the place of a list that may be dear
    /// After a frame's line, in frame order; its first image stands in m_vecFrameImage by then.
    std::function<void(int nFrame, const QList<Peak3D>& listPeak)> fnFrameDone;
    /// Mapping and merging: after the new peaks stand in the data set and on disk, before the end line.
    std::function<void()> fnAfterStored;
};

/// Hunts all frames of the series and replaces m_listPeakFrame and the peak list ".pk".
///
/// At most nJobs + 1 frames are in memory. Positions are whole pixels of the raw frame. A run that
/// was stopped (report.goOn()) or met a frame that cannot be loaded says so in red, leaves
/// m_listPeakFrame as it was and writes nothing. A peak list that cannot be written is a red line
/// only. Without any peak the former list is kept as ".pk~", or stays if that keeps a longer one. A data set
/// without frames is a red line and no run.
/// @return Finished if all frames were hunted, with the reason if the list was not written; Refused without
///         frames
RunOutcome runPeakHunting(DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                          CRunReport& report, const PeakHuntingOptions& options = {});

}  // namespace tessera
