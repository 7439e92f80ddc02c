#include "lattice/twofoldaxes.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessera {

namespace {

/// All triples without a common divisor, one of each pair of opposite ones.
std::vector<Eigen::Vector3i> directions(int nMost)
{
    std::vector<Eigen::Vector3i> list;
    for (int h = 0; h <= nMost; ++h) {
        for (int k = h == 0 ? 0 : -nMost; k <= nMost; ++k) {
            for (int l = h == 0 && k == 0 ? 0 : -nMost; l <= nMost; ++l) {
                if (std::gcd(std::gcd(h, k), l) == 1) {
                    list.emplace_back(h, k, l);
                }
            }
        }
    }
    return list;
}

}  // namespace

std::vector<TwofoldAxis> twofoldAxes(const LatticeBasis& reduced, double dfMaxObliquity)
{
    const std::vector<Eigen::Vector3i> listIndices = directions(2);
    const Eigen::Matrix3d matReciprocal = reduced.inverse();  // columns a*, b*, c*
    std::vector<TwofoldAxis> listAxis;
    for (const Eigen::Vector3i& row : listIndices) {
        const Eigen::Vector3d vecRow = reduced.transpose() * row.cast<double>();
        for (const Eigen::Vector3i& plane : listIndices) {
            // The number of net planes that one step along the row crosses. With more than two, a rotation
            // by 180° does not take the lattice to itself.
            const int nPlanes = row.dot(plane);
            if (nPlanes == 0 || std::abs(nPlanes) > 2) {
                continue;
            }
            const Eigen::Vector3d vecNormal = matReciprocal * plane.cast<double>();
            const double dfObliquity = degrees(
                std::atan2(vecRow.cross(vecNormal).norm(), std::abs(vecRow.dot(vecNormal))));
            if (dfObliquity <= dfMaxObliquity) {
                const Eigen::Matrix3i matTurn = 2 / nPlanes * row * plane.transpose();
                listAxis.push_back({matTurn - Eigen::Matrix3i::Identity(), dfObliquity});
            }
        }
    }
    std::stable_sort(listAxis.begin(), listAxis.end(), [](const TwofoldAxis& axis, const TwofoldAxis& other) {
        return axis.dfObliquity < other.dfObliquity;
    });
    return listAxis;
}

}  // namespace tessera
