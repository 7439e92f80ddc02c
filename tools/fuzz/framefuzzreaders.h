// The fuzzed readers of frame formats, made from the table of formats.
#pragma once

#include "tools/fuzz/fuzzreader.h"

namespace tessera {

/// One for each reader in frameFormats(), held to what its docstring promises; MRC and DM3 also to what their
/// readers of bytes promise. The pictures share one, named by the last row of the table.
std::vector<FuzzReader> frameFuzzReaders();

}  // namespace tessera
