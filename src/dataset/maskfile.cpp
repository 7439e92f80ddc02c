#include "dataset/maskfile.h"

#include "dataset/textlines.h"
#include "dataset/textscanner.h"

#include <QHash>

#include <cmath>

namespace tessera {

int readMaskLines(MaskData& mask, QList<QByteArray> listLine, QString* pstrReason)
{
    dropComments(listLine);
    QList<QPolygonF> listPolygon;
    QHash<int, int> hashPlace;  // place of the polygon with a number
    int nCorner = 0;
    for (const QByteArray& strLine : qAsConst(listLine)) {
        CTextScanner scanner(strLine);
        int nNumber;
        double dfX, dfY;
        if (!scanner.readInt(nNumber) || !scanner.readDouble(dfX) || !scanner.readDouble(dfY) ||
            !std::isfinite(dfX) || !std::isfinite(dfY)) {
            continue;
        }
        ++nCorner;
        auto it = hashPlace.find(nNumber);
        if (it == hashPlace.end()) {
            it = hashPlace.insert(nNumber, listPolygon.size());
            listPolygon.append(QPolygonF());
        }
        listPolygon[it.value()].append(QPointF(dfX, dfY));
    }
    if (nCorner < 3) {
        giveReason(pstrReason, QStringLiteral("%1 corners; 3 are the least").arg(nCorner));
        return 0;
    }
    mask.listPolygon = listPolygon;
    return listPolygon.size();
}

int readMaskFile(MaskData& mask, const QString& strFileName, QString* pstrReason)
{
    return readLinesOfFile(strFileName, pstrReason, [&](const QList<QByteArray>& listLine, QString* p) {
        return readMaskLines(mask, listLine, p);
    });
}

QByteArray maskFileText(const MaskData& mask)
{
    QByteArray bytes;
    for (int n = 0; n < mask.listPolygon.size(); ++n) {
        for (const QPointF& pt : mask.listPolygon[n]) {
            bytes += QByteArray::number(n + 1) + ' ' + QByteArray::number(pt.x(), 'g', 17) + ' ' +
                     QByteArray::number(pt.y(), 'g', 17) + '\n';
        }
    }
    return bytes;
}

}  // namespace tessera
