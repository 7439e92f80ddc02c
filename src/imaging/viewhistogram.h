// CValueAxis, ViewHistogram: how the values of an image are distributed, for the eye.
#pragma once

#include <vector>

namespace tessera {

/// A scale of pixel values: linear, or where they span decades rising with the logarithm of the distance from
/// its lower end.
class CValueAxis {
public:
    /// From 0 to 1, linear.
    CValueAxis() = default;
    /// @param dfUnit  what an even scale keeps apart: from there on the places go with the logarithm; 0: even
    CValueAxis(double dfFirst, double dfLast, double dfUnit);

    double first() const { return m_dfFirst; }  ///< the value at its beginning
    double last() const { return m_dfLast; }    ///< the value at its end
    bool isLogarithmic() const { return m_dfUnit > 0; }

    double place(double dfValue) const;  ///< 0 at first(), 1 at last(), cut off there
    double value(double dfPlace) const;  ///< at a place from 0 to 1; the inverse of place()

private:
    double m_dfFirst = 0, m_dfLast = 1, m_dfUnit = 0;
};

/// The samples of an image by their values.
struct ViewHistogram {
    CValueAxis axis;
    std::vector<int> vecCount;  ///< samples in bins as wide as each other on the axis; empty without samples
};

/// Counts some 200 000 of the finite samples, evenly taken.
///
/// The axis goes from the 1st permille, below which lie dead pixels, to the largest. It is logarithmic where
/// the way to the largest is more than a hundred times that to the median: with even bins all of the
/// background would then be in one. What lies below the axis is in its first bin.
ViewHistogram viewHistogram(const float* pData, int n, int nBins);

}  // namespace tessera
