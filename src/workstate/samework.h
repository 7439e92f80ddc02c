// Sameness of what a work state holds: quick where lists are shared, to the bit where they are not.
#pragma once

#include "workstate/workstate.h"

#include <QList>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace tessera {

/// Two numbers that are none are the same, else they would differ for ever.
inline bool areSame(double dfA, double dfB)
{
    return dfA == dfB || (std::isnan(dfA) && std::isnan(dfB));
}

/// Whether two states point at the same lists, as far as these grow with the data: a comparison is quick
/// then.
bool shareLists(const WorkState& a, const WorkState& b);

bool areSame(const Peak3D& a, const Peak3D& b);  ///< all members
/// What peak hunting has found: frame, number, place on the frame, intensities.
bool areSameOnFrame(const Peak3D& a, const Peak3D& b);
bool areSame(const Vec3D& a, const Vec3D& b);
bool areSame(const PointGroup& a, const PointGroup& b);  ///< label, points, colour, whether it is shown

/// Lists that share their data are the same without a look inside.
template <class T>
bool areSame(const QList<T>& listA, const QList<T>& listB)
{
    return listA.isSharedWith(listB) || std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                                                   [](const T& a, const T& b) { return areSame(a, b); });
}

template <class T>
bool areSame(const QVector<T>& listA, const QVector<T>& listB)
{
    return listA.isSharedWith(listB) || std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                                                   [](const T& a, const T& b) { return areSame(a, b); });
}

}  // namespace tessera
