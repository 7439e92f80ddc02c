#include "integration/fadedframes.h"

#include <algorithm>
#include <cstddef>

namespace tessera {

std::vector<char> fadedFrames(const std::vector<double>& listScale, const std::vector<char>& listUsed)
{
    std::vector<double> listSorted;
    for (size_t n = 0; n < listScale.size(); ++n) {
        if (listUsed[n]) {
            listSorted.push_back(listScale[n]);
        }
    }
    std::vector<char> listFaded(listScale.size(), 0);
    if (listSorted.empty()) {
        return listFaded;
    }
    const auto itMiddle = listSorted.begin() + std::ptrdiff_t(listSorted.size() / 2);
    std::nth_element(listSorted.begin(), itMiddle, listSorted.end());
    for (size_t n = 0; n < listScale.size(); ++n) {
        listFaded[n] = listScale[n] > 5 * *itMiddle ? 1 : 0;
    }
    return listFaded;
}

}  // namespace tessera
