#include "dataset/unitcellfile.h"

#include "crystal/cellarithmetic.h"
#include "dataset/fixednumber.h"
#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/wholefile.h"

#include <QFileInfo>

#include <cmath>
#include <limits>

namespace tessera {

static const char* const g_aVectorLabel[] = {"a*", "b*", "c*"};

QList<Vec3D> readUnitCellLines(QList<QByteArray> listLine, QString* pstrReason)
{
    dropComments(listLine);
    QList<Vec3D> listCell;
    for (int i = 0; i < 3; ++i) {
        const QByteArray strLine = i < listLine.size() ? listLine[i].trimmed() : QByteArray();
        const QByteArray strNumbers = strLine.mid(2);
        CTextScanner scanner(strNumbers);
        double adf[3];
        bool bGood = strLine.startsWith(g_aVectorLabel[i]);
        for (double& df : adf)
            bGood = bGood && scanner.readDouble(df) &&
                    std::abs(df) <= double(std::numeric_limits<float>::max());
        if (!bGood) {
            giveReason(pstrReason,
                       QStringLiteral("no vector %1 in its place").arg(QLatin1String(g_aVectorLabel[i])));
            return QList<Vec3D>();
        }
        listCell.append(Vec3D{float(adf[0]), float(adf[1]), float(adf[2])});
    }
    return listCell;
}

QList<Vec3D> readUnitCellFile(const QString& strFileName, QString* pstrReason)
{
    return readLinesOfFile(strFileName, pstrReason, [](const QList<QByteArray>& listLine, QString* p) {
        return readUnitCellLines(listLine, p);
    });
}

QByteArray unitCellText(const QList<Vec3D>& listCell)
{
    QByteArray strText("\xEF\xBB\xBF# ");
    Vec3D vecA, vecB, vecC;
    if (reciprocalToDirectBasis(listCell[0], listCell[1], listCell[2], vecA, vecB, vecC)) {
        double adf[6];
        basisToCellParameters(vecA, vecB, vecC, adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]);
        const char* const aBefore[] = {"a=", " Å, b=", " Å, c=", " Å, α=", "°, β=", "°, γ="};
        for (int i = 0; i < 6; ++i) {
            strText.append(aBefore[i]);
            appendFixed(strText, adf[i], 3);
        }
        strText.append("°\n");
    } else {
        strText.append("co-planar vectors!\n");
    }
    for (int i = 0; i < 3; ++i) {
        strText.append(g_aVectorLabel[i]).append(' ');
        for (float f : {listCell[i].x, listCell[i].y, listCell[i].z})
            appendFixed(strText, double(f), 8, 12);
        strText.append('\n');
    }
    return strText;
}

bool saveUnitCellFile(DataSet& data, const QString& strFileName, QString* pstrReason)
{
    if (strFileName.isEmpty())
        return giveReason(pstrReason, QStringLiteral("no name for the unit cell file"));
    if (data.m_listCell.size() != 3)
        return giveReason(pstrReason, strFileName, QStringLiteral("no cell to write"));
    const QByteArray strText = unitCellText(data.m_listCell);
    if (!writeWholeFile(strFileName, strText, pstrReason))
        return false;
    data.m_strWorkingDir = QFileInfo(strFileName).absolutePath();
    return true;
}

}  // namespace tessera
