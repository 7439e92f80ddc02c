// SectionPlane: a plane of reciprocal space by the name that crystallographers give it, and its axes.
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

/// Reads the name of a plane. "hk0" and, with any layer in the place of one letter, "hk2", "h-1l" or "3kl";
/// "[u v w]" and "[u v w]=n" for the layers of any zone axis, with u, v and w from -20 to 20.
/// @param pstrReason  may be null; why the text names none
std::optional<SectionPlane> sectionPlane(const QString& strText, QString* pstrReason = nullptr);

/// The layers of an axis of the cell. @param nAxis  0: a, so that nkl is meant; 1: hnl; 2: hkn
SectionPlane axisPlane(int nAxis, int nLayer);

/// The name as a part of a name of a file: "hk0", "uvw_1_1_0_layer_2".
QString sectionFileWord(const SectionPlane& plane);

/// a*, b*, c* in Å⁻¹, laboratory frame at tilt 0.
using SectionBasis = std::array<DoubleVector, 3>;

/// Where a plane lies, and the two directions that it is drawn along.
///
/// The origin of the plane is the point of it that is nearest to the origin of reciprocal space; the first
/// axis runs to the right, the second upwards.
struct SectionFrame {
    std::array<int, 3> anFirst = {1, 0, 0};   ///< a vector of the lattice along the first axis
    std::array<int, 3> anSecond = {0, 1, 0};  ///< another: both span all of the lattice in the layer 0
    DoubleVector vecRight = {1, 0, 0};        ///< unit vectors, laboratory frame at tilt 0
    DoubleVector vecUp = {0, 1, 0};
    DoubleVector vecNormal = {0, 0, 1};
    double dfHeight = 0;   ///< Å⁻¹, of the plane along the normal
    double dfSpacing = 0;  ///< Å⁻¹, from layer to layer
};

/// The frame of a plane. For layers of an axis the two others are the directions, in their order; for other
/// zones the two shortest vectors of the lattice that span it.
/// @return none where the basis spans no cell
std::optional<SectionFrame> sectionFrame(const SectionPlane& plane, const SectionBasis& basis);

/// The point of the plane at a place of it, Å⁻¹ along the first and the second axis.
DoubleVector pointOnSection(const SectionFrame& frame, double dfRight, double dfUp);

}  // namespace tessera
