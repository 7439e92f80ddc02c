#include "road/fixedgeometry.h"

#include "refinement/geometrynumbers.h"

#include <utility>

namespace tessera {

std::vector<int> geometryNumbersOf(const QString& strName)
{
    static const std::pair<const char*, std::vector<int>> aPair[] = {
        {"centre", {CentreX, CentreY}},
        {"stretching", {StretchingCos, StretchingSin}},
        {"ellipse", {EllipseAlong, EllipseAcross}},
        {"thirdOrder", {ThirdOrderRadial, ThirdOrderSpiral}},
        {"parabolic", {ParabolicCos, ParabolicSin}}};
    for (const auto& [pszName, listNumber] : aPair) {
        if (strName == QLatin1String(pszName)) {
            return listNumber;
        }
    }
    for (int n = Axis; n < GeometryNumbersEnd; ++n) {
        if (strName == geometryNumberName(n)) {
            return {n};
        }
    }
    return {};
}

}  // namespace tessera
