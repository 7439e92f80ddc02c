// Length window: which of some vectors, sorted by length, are about as long as each of them.
#pragma once

#include <vector>

namespace tessera {

/// Of a list sorted by d*, for each place the places whose d* differs from its own by less than a limit.
struct LengthWindow {
    std::vector<int> vecBegin;
    std::vector<int> vecEnd;
};

/// @param vecDStar  ascending, with what is no number at the end: that is alone in its window
LengthWindow windowOnLengths(const std::vector<double>& vecDStar, double dfLimit);

}  // namespace tessera
