// Medians, and the spread of numbers around theirs.
#pragma once

#include <vector>

namespace tessera {

/// The upper median of numbers, at least one; leaves them in another order.
float medianOf(std::vector<float>& vecNumber);

/// What most of some numbers are, whatever the others.
struct RobustSpread {
    float fMedian = 0;
    double dfDeviation = 0;  ///< the standard deviation, if the numbers scatter normally
};

/// Median and 1.4826 times the median distance from it; 0 without numbers.
///
/// Source: Hampel (1974), J. Am. Stat. Assoc. 69, 383.
RobustSpread robustSpread(std::vector<float> vecNumber);

}  // namespace tessera
