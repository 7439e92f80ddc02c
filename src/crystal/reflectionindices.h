// Reflection indices: rounding, nearness to whole numbers, and search in lists.
#pragma once

#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QList>

namespace tessera {

/// Half away from zero, as a real number: ceil(x − 0.5) for negative x, else floor(x + 0.5).
double roundedIndex(double dfIndex);

/// roundedIndex() as an integer. Numbers outside the range of int give its ends, no number gives 0.
int roundIndex(double dfIndex);

/// The part before the point as an integer, with the same care for the range.
int truncatedInt(double dfValue);

/// True if each component x has |x − round(x)| ≤ fThreshold, the difference taken in double and compared
/// in single precision.
bool isCloseToInteger(const Vec3D& hkl, float fThreshold);

/// The same for the indices of a record, taken in single precision.
bool isCloseToInteger(const Peak3D& peak, float fThreshold);

/// One entry per record, in list order: rounded indices and point intensity.
QList<HKLRef> getRoundedHKLRef(const QList<Peak3D>& listPeak);

/// True if an entry has equal h, k, l; a linear search. For long lists a set of indexKey() does.
bool reflectionExistInList(const HKLRef& hkl, const QList<HKLRef>& listHKL);

}  // namespace tessera
