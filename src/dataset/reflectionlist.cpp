#include "dataset/reflectionlist.h"

#include "dataset/textlines.h"
#include "dataset/textscanner.h"

#include <cmath>

namespace tessera {

const qint64 g_nMaxReflectionList = 500000000;  // bytes, some 8 million reflections

namespace {

bool scanReflection(CTextScanner scanner, Vec3D& vecPoint, HKLRef& reflection)
{
    int nSerial;
    float aValue[8];  // h k l, x y z, an unknown number, the intensity
    if (!scanner.readInt(nSerial)) {
        return false;
    }
    for (float& fValue : aValue) {
        if (!scanner.readFloat(fValue) || !std::isfinite(fValue)) {
            return false;
        }
    }
    for (int i = 0; i < 3; ++i) {
        if (std::abs(aValue[i]) >= 2147483648.f) {
            return false;
        }
    }
    QByteArray strWord;
    if (!scanner.readWord(strWord) || strWord.contains('s')) {
        return false;
    }
    reflection = {int(aValue[0]), int(aValue[1]), int(aValue[2]), aValue[7]};
    vecPoint = {aValue[3], aValue[4], aValue[5]};
    return true;
}

}  // namespace

ReflectionList readReflectionText(const QByteArray& bytesText)
{
    ReflectionList list;
    Vec3D vecPoint;
    HKLRef reflection;
    forEachTextLine(bytesText, [&](const char* pBegin, const char* pEnd) {
        if (!scanReflection(CTextScanner(pBegin, pEnd), vecPoint, reflection)) {
            return;
        }
        list.listPoint.append(vecPoint);
        list.listReflection.append(reflection);
    });
    return list;
}

std::optional<ReflectionList> readReflectionList(const QString& strFileName, QString* pstrReason)
{
    const std::optional<QByteArray> bytesFile = readFileBytes(strFileName, g_nMaxReflectionList, pstrReason);
    if (!bytesFile) {
        return {};
    }
    const ReflectionList list = readReflectionText(*bytesFile);
    if (list.listPoint.isEmpty()) {
        giveReason(pstrReason, strFileName, QStringLiteral("no line holds a reflection"));
        return {};
    }
    return list;
}

QList<Peak3D> peaksOfReflectionList(const QList<Vec3D>& listPoint, const QList<HKLRef>& listReflection)
{
    QList<Peak3D> listPeak;
    const int n = qMin(listPoint.size(), listReflection.size());
    listPeak.reserve(n);
    for (int i = 0; i < n; ++i) {
        Peak3D peak;
        peak.setPoint(listPoint[i]);
        peak.dfDStar = length(listPoint[i]);
        peak.dfIPoint = listReflection[i].dfI;
        peak.nID = i;
        listPeak.append(peak);
    }
    return listPeak;
}

}  // namespace tessera
