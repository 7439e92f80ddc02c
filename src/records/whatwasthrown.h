// whatWasThrown: an exception in words for the log.
#pragma once

#include <QString>

namespace tessera {

/// The words of the exception at hand, as "Error: WHAT". To be called in a `catch (...)`.
///
/// Knows std::exception and the wide texts that the image shifts throw; what else was thrown is thrown on.
QString whatWasThrown();

}  // namespace tessera
