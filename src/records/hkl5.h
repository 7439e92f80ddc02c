// HKL5: one line of an HKL list.
#pragma once

namespace tessera {

/// One line of an HKL list read from a file.
struct HKL5 {
    int nH = 0;
    int nK = 0;
    int nL = 0;
    float fI = 0;
    float fValue5 = 0;  ///< the fifth number of the line; 0 in records that the program makes itself
};

}  // namespace tessera
