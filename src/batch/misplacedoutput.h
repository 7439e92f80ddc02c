// misplacedOutput: output files of a run that would destroy its input.
#pragma once

#include "batch/batchoptions.h"

namespace tessera {

/// Looks where the run would write: the files of --json and --report, the results, and the exports. None of
/// them may be a file that the run reads, by whatever path or link; and those of --json and --report none of
/// the others, no folder and, by its suffix, no frame or result of another run, as the pattern "*.mrc" of a
/// shell would make it. Devices and pipes are written to and destroy nothing. Of the input only the project
/// is read, for its frames.
///
/// A cell file that is the run's own is no harm: it is not written again.
/// @return empty, or what is wrong
QString misplacedOutput(const BatchOptions& batch);

}  // namespace tessera
