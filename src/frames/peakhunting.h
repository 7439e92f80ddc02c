// Peak hunting: finds the diffraction spots of all frames with their intensities.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QList>

#include <functional>

namespace tessera {

/// Options of the peak search. All functions are called by the calling thread.
struct PeakHuntingOptions {
    int nJobs = 1;            ///< frames processed side by side, from 1; the result does not depend on it
    bool bSave = true;        ///< write the peak list beside the project
    bool bKeepImages = true;  ///< put the images of a frame into m_vecFrameImage; else it stays as it was
    /// Write the list even if no frame has a peak, in place of a list that may be valuable.
    bool bSaveEmpty = true;
    /// Called after the line of a frame, in the order of frames, when m_vecFrameImage has its first image.
    std::function<void(int nFrame, const QList<Peak3D>& listPeak)> fnFrameDone;
    /// Called when the new peaks are in the data set and on the disk, before the end line: mapping and
    /// merging.
    std::function<void()> fnAfterStored;
};

/// Finds the peaks of all frames of the series and replaces m_listPeakFrame and the peak list ".pk".
///
/// At most nJobs + 1 frames are in memory. Positions are whole pixels of the raw frame. A run that was
/// stopped (report.goOn()) or could not load a frame logs a red line, leaves m_listPeakFrame as it was and
/// writes nothing. If the peak list cannot be written, there is only a red line. If there is no peak, the
/// former list is kept as ".pk~", or stays if ".pk~" is longer. Without frames there is a red line and no
/// run.
/// @return Finished if all frames were processed, with the reason if the list was not written; Refused
///         without frames
RunOutcome runPeakHunting(DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                          CRunReport& report, const PeakHuntingOptions& options = {});

}  // namespace tessera
