// ReciprocalBasis: the three vectors a*, b*, c* of a cell.
#pragma once

#include "records/vec3d.h"

#include <QList>

#include <array>
#include <optional>

namespace tessera {

/// a*, b*, c* in Å⁻¹, laboratory frame at tilt 0 (x rotation axis, z beam). The three may be co-planar.
struct ReciprocalBasis {
    Vec3D a;  ///< a*
    Vec3D b;  ///< b*
    Vec3D c;  ///< c*

    /// h·a* + k·b* + l·c*, summed in this order in single precision.
    Vec3D point(int h, int k, int l) const
    {
        return scaled(a, float(h)) + scaled(b, float(k)) + scaled(c, float(l));
    }
    /// The three vectors in the order a*, b*, c*.
    std::array<Vec3D, 3> vectors() const { return {a, b, c}; }
    /// The list form, which the data set and the cell files use.
    QList<Vec3D> toList() const { return {a, b, c}; }
};

/// The basis of a list of three vectors; nothing for a list of another length.
std::optional<ReciprocalBasis> basisFromList(const QList<Vec3D>& listCell);

/// Whether all nine components are finite numbers.
bool isFinite(const ReciprocalBasis& basis);

}  // namespace tessera
