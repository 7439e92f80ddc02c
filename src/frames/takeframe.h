// takeFrame: takes a frame from a sequence and reports where memory is short.
#pragma once

#include "frames/framesequence.h"
#include "records/runreport.h"
#include "records/shortmemory.h"

namespace tessera {

/// Takes the result of a frame from a sequence. A black line tells when memory is short and fewer threads
/// go on, a red line when it is too short even for one thread.
/// @return false in the latter case
template <class Result>
bool takeFrame(CFrameSequence<Result>& sequence, int nFrame, Result& result, CRunReport& report)
{
    const int nJobs = sequence.jobs();
    try {
        result = sequence.take(nFrame);
    } catch (const CShortMemory& error) {
        report.fail(error.text());
        return false;
    }
    if (sequence.jobs() < nJobs) {
        report.addMessage(
            QStringLiteral("Memory is short: the run goes on with fewer frames side by side (as with "
                           "the driver's option --jobs %1).")
                .arg(sequence.jobs()),
            Severity::Info);
    }
    return true;
}

}  // namespace tessera
