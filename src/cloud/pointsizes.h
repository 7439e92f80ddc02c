// Sizes of the points: the logarithm of their intensities, and classes of size.
#pragma once

#include "records/peak3d.h"

#include <array>
#include <vector>

namespace tessera {

/// Size of each point in pixels before zoom: ln²(x)·fRatio/10, where x is 4000 for the greatest intensity
/// and in proportion below, but 1.01 at least. Intensity, x and logarithm are single precision.
///
/// The logarithm shows reflections four thousand times apart in one picture. Where no intensity is above 0
/// all points have x = 1.01, as has one whose intensity is no number; an infinite one has 4000.
std::vector<float> pointSizes(const QList<Peak3D>& listPoint, double fRatio);

/// The visible points in 64 equal steps of size.
struct PointSizeClasses {
    float fSmallest = 0.f;                           ///< of the visible points; 0 without any
    float fGreatest = 0.f;                           ///< of the visible points; 0 without any
    std::array<float, 64> m_fSizeClass = {};         ///< lower edge of each class
    std::array<std::vector<int>, 64> m_pnSizeClass;  ///< the points of each class, ascending
    std::array<int, 64> m_nSizeClassCount = {};      ///< points of each class
};

/// @param vecSize     size per point, as pointSizes() gives them
/// @param vecVisible  0 for points that are left out
PointSizeClasses pointSizeClasses(const std::vector<float>& vecSize, const std::vector<char>& vecVisible);

}  // namespace tessera
