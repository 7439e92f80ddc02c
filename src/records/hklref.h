// HKLRef: a reflection by whole indices.
#pragma once

namespace tessera {

/// A reflection by rounded indices (half away from zero), with its intensity.
struct HKLRef {
    int nH = 0;
    int nK = 0;
    int nL = 0;
    double dfI = 0;
};

}  // namespace tessera
