#include "simulate/lensdistortion.h"

#include "simulate/angles.h"

#include <cmath>
#include <complex>
#include <limits>

namespace tessera {

std::array<double, 2> distorted(const std::array<double, 2>& ptOffset, const LensDistortion& lens)
{
    double x = ptOffset[0], y = ptOffset[1];
    if (lens.hasEllipse()) {
        const double dfTwice = radians(2 * lens.dfEllipseAzimuth);
        const double dfCos = lens.dfEllipseAmplitude / 100 * std::cos(dfTwice);
        const double dfSin = lens.dfEllipseAmplitude / 100 * std::sin(dfTwice);
        // Of y down the off-diagonal elements change their sign.
        const double dfX = x + dfCos * x - dfSin * y;
        y = y - dfSin * x - dfCos * y;
        x = dfX;
    }
    if (lens.hasThirdOrder()) {
        const double dfSquare = (x * x + y * y) / (lens.dfRadius * lens.dfRadius);
        const double dfOutward = lens.dfRadial / 100 * dfSquare, dfAround = lens.dfSpiral / 100 * dfSquare;
        // Counter-clockwise on the screen is from (1, 0) towards (0, -1).
        const double dfX = x + dfOutward * x + dfAround * y;
        y = y + dfOutward * y - dfAround * x;
        x = dfX;
    }
    return {x, y};
}

std::array<double, 2> thirdOrderThatUndoes(const LensDistortion& lens)
{
    // Counter-clockwise is the sense of complex numbers: a point at 1 goes to 1 + k, and back from there.
    const std::complex<double> there(1 + lens.dfRadial / 100, lens.dfSpiral / 100);
    const std::complex<double> back = (1.0 / there - 1.0) / std::norm(there);
    return {100 * back.real(), -100 * back.imag()};
}

double undistortedReach(double dfPixels, const LensDistortion& lens)
{
    double dfReach = dfPixels;
    if (lens.dfRadial < 0) {
        // Distances grow up to the fold, where d/dr (r + k r³) is 0. The spiral only adds to them.
        const double dfCubic = lens.dfRadial / 100 / (lens.dfRadius * lens.dfRadius);
        const auto onFrame = [&](double df) { return df + dfCubic * df * df * df; };
        double dfFar = std::sqrt(-1 / (3 * dfCubic));
        if (onFrame(dfFar) < dfPixels) {
            return std::numeric_limits<double>::infinity();
        }
        for (int i = 0; i < 60; ++i) {
            const double dfMiddle = (dfReach + dfFar) / 2;
            (onFrame(dfMiddle) < dfPixels ? dfReach : dfFar) = dfMiddle;
        }
        dfReach = dfFar;
    }
    return dfReach / (1 - std::abs(lens.dfEllipseAmplitude) / 100);
}

}  // namespace tessera
