#include "geometry/rotationmode.h"

#include <QLocale>
#include <QStringList>

namespace tessera {

namespace {

const double g_dfWidest = 10;  // degrees; microscopes reach a precession angle of a few degrees

}  // namespace

std::optional<RotationMode> rotationModeOf(const QString& strText)
{
    if (strText == QLatin1String("continuous")) {
        return RotationMode{RotationKind::Continuous, 0};
    }
    if (strText == QLatin1String("stepped")) {
        return RotationMode{RotationKind::Stepped, 0};
    }
    const QStringList listPart = strText.split(QLatin1Char(','));
    bool bNumber = false;
    const double dfAngle = listPart.value(1).toDouble(&bNumber);
    if (listPart.size() != 2 || listPart[0] != QLatin1String("precession") || !bNumber || !(dfAngle > 0) ||
        dfAngle > g_dfWidest) {
        return {};
    }
    return RotationMode{RotationKind::Precession, dfAngle};
}

QString rotationModeText(const RotationMode& rotation)
{
    switch (rotation.kind) {
        case RotationKind::Continuous:
            return QStringLiteral("continuous");
        case RotationKind::Stepped:
            return QStringLiteral("stepped");
        case RotationKind::Precession:
            break;
    }
    return QStringLiteral("precession,") +
           QString::number(rotation.dfPrecessionAngle, 'g', QLocale::FloatingPointShortest);
}

}  // namespace tessera
