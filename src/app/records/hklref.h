// HKLRef and HKL5: reflections by whole indices.
#pragma once

/// A reflection by rounded indices (half away from zero), with its intensity.
struct HKLRef {
    int nH = 0;
    int nK = 0;
    int nL = 0;
    double dfI = 0;
};

/// One line of an HKL list read from a file.
struct HKL5 {
    int nH = 0;
    int nK = 0;
    int nL = 0;
    float fI = 0;
    float fValue5 = 0;
};
