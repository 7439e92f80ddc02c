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

int readReflectionText(const QByteArray& bytesText, QList<Vec3D>& listPoint, QList<HKLRef>& listReflection)
{
    listPoint.clear();
    listReflection.clear();
    Vec3D vecPoint;
    HKLRef reflection;
    forEachTextLine(bytesText, [&](const char* pBegin, const char* pEnd) {
        if (!scanReflection(CTextScanner(pBegin, pEnd), vecPoint, reflection)) {
            return;
        }
        listPoint.append(vecPoint);
        listReflection.append(reflection);
    });
    return listPoint.size();
}

bool readReflectionList(const QString& strFileName, QList<Vec3D>& listPoint, QList<HKLRef>& listReflection,
                        QString* pstrReason)
{
    QByteArray bytesFile;
    if (!readFileBytes(strFileName, bytesFile, g_nMaxReflectionList, pstrReason)) {
        return false;
    }
    QList<Vec3D> listNewPoint;
    QList<HKLRef> listNewReflection;
    if (readReflectionText(bytesFile, listNewPoint, listNewReflection) == 0) {
        return giveReason(pstrReason, strFileName, QStringLiteral("no line holds a reflection"));
    }
    listPoint = listNewPoint;
    listReflection = listNewReflection;
    return true;
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
