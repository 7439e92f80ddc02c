// Frame fuzz readers: the fuzzed readers of frame formats, made from the table of formats.
#pragma once

#include "tools/fuzz/fuzzreader.h"

namespace tessera {

/// One entry for each reader of frameFormats(), which checks what its docstring promises. For MRC and DM3
/// also what the readers of bytes promise is checked. The pictures share one entry, which has the name of
/// the last row of the table.
std::vector<FuzzReader> frameFuzzReaders();

}  // namespace tessera
