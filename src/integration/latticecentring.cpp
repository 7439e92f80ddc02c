#include "integration/latticecentring.h"

namespace tessera {

bool isLatticePoint(char chCentring, const std::array<int, 3>& anIndex)
{
    const auto [h, k, l] = anIndex;
    const auto isEven = [](int n) { return n % 2 == 0; };
    switch (chCentring) {
        case 'A':
            return isEven(k + l);
        case 'B':
            return isEven(h + l);
        case 'C':
            return isEven(h + k);
        case 'I':
            return isEven(h + k + l);
        case 'F':
            return isEven(h + k) && isEven(k + l);
        case 'R':
            return (-h + k + l) % 3 == 0;
        default:
            return true;
    }
}

}  // namespace tessera
