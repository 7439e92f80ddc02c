// RunResult: how a run ended, with what it made.
#pragma once

#include "records/runoutcome.h"

#include <optional>
#include <utility>

namespace tessera {

/// What a run returns that makes something: either how it ended early, or what it made. Both convert to a
/// RunResult, so that such a run ends by `return refuseRun(report, strReason)` or by `return made`.
template <class T>
struct RunResult {
    RunResult(RunOutcome ended) : outcome(std::move(ended)) {}  ///< nothing was made
    RunResult(T value) : made(std::move(value)) {}              ///< the run finished

    RunOutcome outcome;
    std::optional<T> made;  ///< set if the run finished, and only then

    /// Whether the run did all its work.
    bool finished() const { return made.has_value(); }
};

}  // namespace tessera
