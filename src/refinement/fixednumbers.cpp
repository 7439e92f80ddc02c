#include "refinement/fixednumbers.h"

#include <algorithm>

namespace tessera {

void tellFixed(const std::vector<FixedNumber>& listFixed, CRunReport& report)
{
    for (const FixedNumber& fixed : listFixed) {
        report.addMessage(QStringLiteral("Geometry: %1 is fixed: it %2.")
                              .arg(geometryNumberName(fixed.nNumber), fixed.strWhy));
    }
}

void noteOthers(GeometryRefinement& result)
{
    std::vector<FixedNumber>& listFixed = result.listFixed;
    const auto isListed = [&](int nNumber) {
        return std::any_of(listFixed.begin(), listFixed.end(),
                           [&](const FixedNumber& fixed) { return fixed.nNumber == nNumber; });
    };
    if (result.best().bEllipse) {
        listFixed.erase(std::remove_if(listFixed.begin(), listFixed.end(),
                                       [](const FixedNumber& fixed) {
                                           return fixed.nNumber == EllipseAlong ||
                                                  fixed.nNumber == EllipseAcross;
                                       }),
                        listFixed.end());
        listFixed.push_back({StretchingCos, QStringLiteral("is replaced by the ellipse")});
        listFixed.push_back({StretchingSin, QStringLiteral("is replaced by the ellipse")});
        if (!result.constrained) {
            listFixed.push_back({EllipseAlong, QStringLiteral("cannot be distinguished from a free cell")});
        }
    } else {
        for (const int nNumber : {EllipseAlong, EllipseAcross}) {
            if (!isListed(nNumber)) {
                listFixed.push_back({nNumber, QStringLiteral("is replaced by the stretching")});
            }
        }
    }
    if (!isListed(TiltOffset)) {
        listFixed.push_back(
            {TiltOffset, QStringLiteral("cannot be distinguished from a rotation of the crystal")});
    }
}

}  // namespace tessera
