#include "integration/reflectionflags.h"

namespace tessera {

QString reflectionFlagName(ReflectionFlag flag)
{
    switch (flag) {
        case FlagSlow:
            return QStringLiteral("slow");
        case FlagBeginsBefore:
            return QStringLiteral("begins before");
        case FlagEndsAfter:
            return QStringLiteral("ends after");
        case FlagOffFrame:
            return QStringLiteral("off the frame");
        case FlagMasked:
            return QStringLiteral("masked");
        case FlagSaturated:
            return QStringLiteral("saturated");
        case FlagOverlap:
            return QStringLiteral("overlap");
        case FlagNearBeam:
            return QStringLiteral("near the beam");
        case FlagBlankFrame:
            return QStringLiteral("blank frame");
        case FlagBadBackground:
            return QStringLiteral("bad background");
        case FlagBadProfile:
            return QStringLiteral("bad profile");
        case FlagOutlier:
            return QStringLiteral("outlier");
        case FlagNotFinite:
            return QStringLiteral("not finite");
    }
    return {};
}

QStringList reflectionFlagNames(unsigned nFlags)
{
    QStringList list;
    for (unsigned nFlag = FlagSlow; nFlag <= FlagNotFinite; nFlag <<= 1) {
        if (nFlags & nFlag) {
            list.append(reflectionFlagName(ReflectionFlag(nFlag)));
        }
    }
    return list;
}

}  // namespace tessera
