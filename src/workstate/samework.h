// Comparison of the contents of work states: quick for lists that share their data, else bit by bit.
#pragma once

#include "workstate/workstate.h"

#include <QList>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace tessera {

/// Whether two numbers are equal; two NaN count as equal, since a state with a NaN would else always differ
/// from itself.
inline bool areSame(double dfA, double dfB)
{
    return dfA == dfB || (std::isnan(dfA) && std::isnan(dfB));
}

/// Whether two states share all lists whose length grows with the data, so that comparing them is quick.
bool shareLists(const WorkState& a, const WorkState& b);

bool areSame(const Peak3D& a, const Peak3D& b);  ///< compares all members
/// Compares only what peak hunting determines: frame, number, place on the frame, intensities.
bool areSameOnFrame(const Peak3D& a, const Peak3D& b);
bool areSame(const Vec3D& a, const Vec3D& b);            ///< compares all components
bool areSame(const PointGroup& a, const PointGroup& b);  ///< label, points, colour, whether it is shown

/// Whether two lists have the same elements. Lists that share their data are not looked into.
template <class T>
bool areSame(const QList<T>& listA, const QList<T>& listB)
{
    return listA.isSharedWith(listB) || std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                                                   [](const T& a, const T& b) { return areSame(a, b); });
}

/// The same for vectors.
template <class T>
bool areSame(const QVector<T>& listA, const QVector<T>& listB)
{
    return listA.isSharedWith(listB) || std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                                                   [](const T& a, const T& b) { return areSame(a, b); });
}

}  // namespace tessera
