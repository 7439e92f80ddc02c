// misplacedOutput: refuses runs whose output files would overwrite their input.
#pragma once

#include "batch/batchoptions.h"

namespace tessera {

/// Checks the files that the run would write: those of --json and --report, the results and the exports. None
/// of them may be a file that the run reads, by any path or link. The files of --json and --report, moreover,
/// must not be another output file, a folder, or an existing file whose suffix is that of a frame or a
/// result: the shell may have expanded "*.mrc" after the option. Devices and pipes are allowed. Of the input,
/// only the project is read, to get its frames.
///
/// The run's own cell file may be given as --cell, since it is not written then.
/// @return empty, or what is wrong
QString misplacedOutput(const BatchOptions& batch);

}  // namespace tessera
