// forEachSampledFrame: a look at a few frames spread evenly over a series.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runreport.h"
#include "imaging/imgobj.h"

#include <functional>

/// Calls fnFrame with the first image of at most nMost frames, in order, the first and the last frame among
/// them.
///
/// A frame that cannot be read or has no pixels is passed over without a word: the run that needs it tells.
/// @return false when the report asked to stop
bool forEachSampledFrame(const DataSet& dataSet, int nMost, CRunReport& report,
                         const std::function<void(const CImgObj<float>& imgFrame)>& fnFrame);
