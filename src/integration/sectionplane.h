// SectionPlane: a plane of reciprocal space, such as hk0, with its name and axes.
#pragma once

#include "geometry/doublevector.h"

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace tessera {

/// All points with u·h + v·k + w·l = n, in indices of the cell in force.
struct SectionPlane {
    QString strName;                        ///< "hk0", "h-1l", "[1 1 0]=2"
    std::array<int, 3> anZone = {0, 0, 1};  ///< u v w, without a common factor
    int nLayer = 0;                         ///< n
};

/// Parses the name of a plane: "hk0" or, with any number in place of a letter, "hk2", "h-1l" or "3kl"; "[u v
/// w]" or "[u v w]=n" for a layer of any zone axis, with u, v and w from -20 to 20.
/// @param pstrReason  may be null; gets the reason if the text is not a plane
std::optional<SectionPlane> sectionPlane(const QString& strText, QString* pstrReason = nullptr);

/// A layer of a cell axis.
/// @param nAxis  0: the plane nkl; 1: hnl; 2: hkn
SectionPlane axisPlane(int nAxis, int nLayer);

/// The name of a plane for use in file names: "hk0", "uvw_1_1_0_layer_2".
QString sectionFileWord(const SectionPlane& plane);

/// a*, b*, c* in Å⁻¹, laboratory frame at tilt 0.
using SectionBasis = std::array<DoubleVector, 3>;

/// The position and orientation of a plane.
///
/// The origin of the plane is its point nearest to the origin of reciprocal space; the first axis points to
/// the right, the second upwards.
struct SectionFrame {
    std::array<int, 3> anFirst = {1, 0, 0};   ///< a lattice vector along the first axis
    std::array<int, 3> anSecond = {0, 1, 0};  ///< with anFirst, spans the lattice of layer 0
    DoubleVector vecRight = {1, 0, 0};        ///< unit vector of the first axis, laboratory frame at tilt 0
    DoubleVector vecUp = {0, 1, 0};           ///< unit vector of the second axis
    DoubleVector vecNormal = {0, 0, 1};       ///< unit vector normal to the plane
    double dfHeight = 0;   ///< distance of the plane from the origin along the normal, Å⁻¹
    double dfSpacing = 0;  ///< distance of neighbouring layers, Å⁻¹
};

/// The frame of a plane. For a layer of a cell axis, the directions are the two other axes in their order;
/// for other zones, the two shortest lattice vectors that span the zone.
/// @return none if the basis does not span a cell
std::optional<SectionFrame> sectionFrame(const SectionPlane& plane, const SectionBasis& basis);

/// The point of reciprocal space at a place of the plane, given in Å⁻¹ along the first and the second axis.
DoubleVector pointOnSection(const SectionFrame& frame, double dfRight, double dfUp);

}  // namespace tessera
