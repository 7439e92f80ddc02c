#include "frames/median.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

float medianOf(std::vector<float>& vecNumber)
{
    const auto middle = vecNumber.begin() + std::ptrdiff_t(vecNumber.size() / 2);
    std::nth_element(vecNumber.begin(), middle, vecNumber.end());
    return *middle;
}

RobustSpread robustSpread(std::vector<float> vecNumber)
{
    if (vecNumber.empty())
        return {};
    const float fMedian = medianOf(vecNumber);
    for (float& f : vecNumber)
        f = std::fabs(f - fMedian);
    return {fMedian, 1.4826 * double(medianOf(vecNumber))};
}

}  // namespace tessera
