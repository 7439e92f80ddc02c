// Severity: how much a line of the message log matters.
#pragma once

namespace tessera {

/// How much a line of the message log matters. The window shows it as a colour.
enum class Severity {
    Info,       ///< results and information
    Milestone,  ///< the start and the regular end of a run
    Warning,    ///< the run goes on, but the user should know of it
    Error,      ///< a fault, or why a run ended early
};

}  // namespace tessera
