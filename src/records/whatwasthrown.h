// whatWasThrown: an exception in words for the log.
#pragma once

#include <QString>

namespace tessera {

/// The text of the exception being handled, as "Error: WHAT". Must be called within `catch (...)`.
///
/// Handles std::exception and the wide texts that the image shifts throw; anything else is rethrown.
QString whatWasThrown();

}  // namespace tessera
