#include "reciprocal/stretchingtest.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "reciprocal/mapping.h"
#include "records/wholefile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfNetEdge = 27.5;  // Å, of the square net

QString basisLine(const char* pszName, const Vec3D& v)
{
    return QString::asprintf("%s = %8.6f, %8.6f, %8.6f  %8.2f", pszName, double(v.x), double(v.y),
                             double(v.z), degrees(std::atan2(double(v.y), double(v.x))));
}

double angleBetween(const Vec3D& a, const Vec3D& b)
{
    const double dfLengths = double(length(a)) * double(length(b));
    return dfLengths > 0 ? degrees(std::acos(std::clamp(double(dot(a, b)) / dfLengths, -1.0, 1.0))) : 0;
}

}  // namespace

bool testStreching(const QList<Peak3D>& listPeakIndexed, const DataSet& dataSet, CRunReport& report)
{
    QStringList listLine;
    const BeamCentres centres = beamCentres(dataSet);
    for (int n = 0; n < listPeakIndexed.size(); ++n) {
        const Peak3D& peak = listPeakIndexed[n];
        const int h = roundIndex(peak.dfH), k = roundIndex(peak.dfK);
        const double dfOrder = std::sqrt(double(h) * h + double(k) * k);
        const QPointF ptOffset = QPointF(peak.dfX2D, peak.dfY2D) - frameCentre(centres, peak.nFrame);
        const double dfDistance = std::sqrt(ptOffset.x() * ptOffset.x() + ptOffset.y() * ptOffset.y());
        listLine.append(QString::asprintf("%4d %3d %3d %8.1f %8.6f %7.1f %7.1f %8.2f %8.3f", n + 1, h, k,
                                          peak.dfIPoint, dfOrder / g_dfNetEdge, peak.dfX2D, peak.dfY2D,
                                          degrees(std::atan2(ptOffset.y(), ptOffset.x())),
                                          dfOrder == 0 ? 0 : dfDistance / dfOrder));
    }
    if (const std::optional<ReciprocalBasis> basis = cellInForce(dataSet)) {
        listLine.append(basisLine("a*", basis->a));
        listLine.append(basisLine("b*", basis->b));
        listLine.append(QString::asprintf("a*^b* = %8.2f", angleBetween(basis->a, basis->b)));
    }
    QByteArray bytes;
    for (const QString& strLine : listLine) {
        report.addMessage(strLine);
        bytes += strLine.toUtf8() + '\n';
    }
    const QString strFileName = fileOfProject(dataSet, QStringLiteral("_pos.txt"));
    QString strReason;
    if (writeWholeFile(strFileName, bytes, &strReason)) {
        return true;
    }
    report.addMessage(QStringLiteral("Failed to open %1 for writing.").arg(strFileName), Severity::Error);
    report.addMessage(strReason, Severity::Error);
    return false;
}

}  // namespace tessera
