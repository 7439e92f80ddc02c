// Severity: how much a line of the message log matters.
#pragma once

namespace tessera {

/// How much a line of the message log matters. Only the window turns it into a colour.
enum class Severity {
    Info,       ///< results and information
    Milestone,  ///< the start and the regular end of a run
    Warning,    ///< the run goes on, but its user should know
    Error,      ///< a fault, or why a run ended early
};

}  // namespace tessera
