// Indexed peaks: the frame peaks of the indexed reflections, sorted by frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

namespace tessera {

/// Frames of the data set: its frame files or, in a set without files, its shifts.
int frameCount(const DataSet& dataSet);

/// One list a frame, in the order of the flat list; peaks of no valid frame are left out.
QVector<QList<Peak3D>> sortPeakFrame(const QList<Peak3D>& listPeak, int nFrames);

/// Replaces m_vecPeakIndexedOnFrame by all chain members of the given reflections, at raw pixel positions
/// and with rounded indices, and m_vecReflectionFrame by the frame of each reflection (−1: none).
///
/// An empty list changes nothing. Neither does one without any chains, as after an extraction of intensities
/// or for a list from a file: a red line says that the peaks have to be merged again. Reflections that round
/// to (0, 0, 0) or have no chain are passed over. A negative nID gives "Abnormal min ID: %1" in red and
/// leaves m_vecReflectionFrame as it was.
void buildIndexedPeaksOnFrame(DataSet& dataSet, const QList<Peak3D>& listPeakIndexed, CRunReport& report);

}  // namespace tessera
