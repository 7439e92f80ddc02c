// Medians, and robust measures of spread.
#pragma once

#include <vector>

namespace tessera {

/// Partitions numbers: pAt gets the number that it would have if all were sorted, with no greater one
/// before it and no smaller one after it. This is std::nth_element(), but several times as fast for
/// hundreds of numbers or more.
///
/// Source: Hoare (1961), Commun. ACM 4, 321.
/// @param pAt  from pFirst on, before pEnd
void partAt(float* pFirst, float* pAt, float* pEnd);

/// The upper median of at least one number. The order of the numbers changes.
float medianOf(std::vector<float>& vecNumber);

/// Median and spread of numbers, unaffected by outliers.
struct RobustSpread {
    float fMedian = 0;
    double dfDeviation = 0;  ///< standard deviation for normally distributed numbers
};

/// The median, and 1.4826 times the median distance from it; both 0 without numbers.
///
/// Source: Hampel (1974), J. Am. Stat. Assoc. 69, 383.
RobustSpread robustSpread(std::vector<float> vecNumber);

}  // namespace tessera
