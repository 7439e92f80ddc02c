#include "window/reciprocal/manualcell.h"

namespace tessera {

namespace {

const float g_fManualStart = 0.1f;  // Å⁻¹

Vec3D axisVector(int nVector, float fLength)
{
    return {nVector == 0 ? fLength : 0.f, nVector == 1 ? fLength : 0.f, nVector == 2 ? fLength : 0.f};
}

}  // namespace

QList<Vec3D> firstManualCell()
{
    return {axisVector(0, g_fManualStart), axisVector(1, g_fManualStart), axisVector(2, g_fManualStart)};
}

Vec3D atLength(const Vec3D& vec, int nVector, double dfLength)
{
    const double dfFormer = double(length(vec));
    return dfFormer > 0 ? scaledDouble(vec, dfLength / dfFormer) : axisVector(nVector, float(dfLength));
}

}  // namespace tessera
