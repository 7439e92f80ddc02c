// Medians, and the spread of numbers around theirs.
#pragma once

#include <vector>

namespace tessera {

/// Brings to a place the number that would stand there if all were sorted, with none greater before it and
/// none less behind it: std::nth_element, several times as fast on hundreds of numbers or more.
///
/// Source: Hoare (1961), Commun. ACM 4, 321.
/// @param pAt  from pFirst on, before pEnd
void partAt(float* pFirst, float* pAt, float* pEnd);

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
