#include "dataset/unitcellfile.h"

#include "crystal/cellarithmetic.h"
#include "dataset/fixednumber.h"
#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/wholefile.h"

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
        for (double& df : adf) {
            bGood = bGood && scanner.readDouble(df) &&
                    std::abs(df) <= double(std::numeric_limits<float>::max());
        }
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

QByteArray unitCellText(const ReciprocalBasis& basis)
{
    QByteArray strText("\xEF\xBB\xBF# ");
    if (const std::optional<CellParameters> cell = cellParameters(basis)) {
        const std::array<double, 6> adf = cell->numbers();
        const char* const aBefore[] = {"a=", " Å, b=", " Å, c=", " Å, α=", "°, β=", "°, γ="};
        for (int i = 0; i < 6; ++i) {
            strText.append(aBefore[i]);
            appendFixed(strText, adf[i], 3);
        }
        strText.append("°\n");
    } else {
        strText.append("co-planar vectors!\n");
    }
    const std::array<Vec3D, 3> aVector = basis.vectors();
    for (int i = 0; i < 3; ++i) {
        strText.append(g_aVectorLabel[i]).append(' ');
        for (float f : {aVector[i].x, aVector[i].y, aVector[i].z}) {
            appendFixed(strText, double(f), 8, 12);
        }
        strText.append('\n');
    }
    return strText;
}

bool saveUnitCellFile(const DataSet& data, const QString& strFileName, QString* pstrReason)
{
    if (strFileName.isEmpty()) {
        return giveReason(pstrReason, QStringLiteral("no name for the unit cell file"));
    }
    const std::optional<ReciprocalBasis> basis = cellInForce(data);
    if (!basis) {
        return giveReason(pstrReason, strFileName, QStringLiteral("no cell to write"));
    }
    return writeWholeFile(strFileName, unitCellText(*basis), pstrReason);
}

}  // namespace tessera
