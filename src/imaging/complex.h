// COMPLEX: the element of all Fourier transforms.
#pragma once

namespace tessera {

/// A complex number as a plain pair of floats, real part first: the layout of the 2D transform.
struct COMPLEX {
    float re;
    float im;
};
static_assert(sizeof(COMPLEX) == 2 * sizeof(float), "transforms take arrays of COMPLEX as pairs of floats");

}  // namespace tessera
