// CBasisSolver: fractional indices of a reciprocal vector in a reciprocal basis.
#pragma once

#include "geometry/reciprocalbasis.h"

namespace tessera {

/// Solves v = h·a* + k·b* + l·c* by Cramer's rule.
class CBasisSolver {
public:
    /// Not valid before setBasis().
    CBasisSolver() = default;
    /// For a basis as setBasis() takes it.
    explicit CBasisSolver(const ReciprocalBasis& basis) { setBasis(basis.a, basis.b, basis.c); }
    /// Cross products and determinant in single precision, widened to double. A determinant (the
    /// reciprocal cell volume, Å⁻³) below 1e-6 in size counts as no basis.
    void setBasis(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC);
    bool isValid() const { return bValid; }  ///< whether the basis spans space

    /// The fractional indices of v, computed in double and rounded to single; (0, 0, 0) if not valid.
    Vec3D solve(const Vec3D& v) const
    {
        if (!bValid) {
            return {};
        }
        const double dfX = v.x, dfY = v.y, dfZ = v.z;
        return {float((dfX * dfCofactor[0] + dfY * dfCofactor[1] + dfZ * dfCofactor[2]) / dfDeterminant),
                float((dfX * dfCofactor[3] + dfY * dfCofactor[4] + dfZ * dfCofactor[5]) / dfDeterminant),
                float((dfX * dfCofactor[6] + dfY * dfCofactor[7] + dfZ * dfCofactor[8]) / dfDeterminant)};
    }
    /// a*, b*, c*.
    const Vec3D* basis() const { return vecBasis; }
    /// Nine elements, rows b*×c*, c*×a*, a*×b*.
    const double* cofactors() const { return dfCofactor; }
    /// a*·(b*×c*), Å⁻³.
    double determinant() const { return dfDeterminant; }

private:
    double dfCofactor[9] = {};  ///< rows b*×c*, c*×a*, a*×b*
    double dfDeterminant = 0;   ///< a*·(b*×c*)
    bool bValid = false;
    Vec3D vecBasis[3];
};

}  // namespace tessera
