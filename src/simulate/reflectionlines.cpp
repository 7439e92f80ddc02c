#include "simulate/reflectionlines.h"

#include <QFile>
#include <QStringList>

#include <cmath>

namespace tessera {

namespace {
bool readFields(const QByteArray& line, ReflectionLine& reflection)
{
    bool bGood = line.size() >= 28;
    for (int i = 0; bGood && i < 3; ++i) {
        reflection.anIndex[i] = line.mid(4 * i, 4).trimmed().toInt(&bGood);
    }
    bool bSigma = false;
    reflection.dfIntensity = bGood ? line.mid(12, 8).trimmed().toDouble(&bGood) : 0;
    reflection.dfSigma = line.mid(20, 8).trimmed().toDouble(&bSigma);
    return bGood && bSigma && std::isfinite(reflection.dfIntensity) && std::isfinite(reflection.dfSigma);
}

double numberWithoutError(const QString& str, bool& bGood)
{
    return str.section(QLatin1Char('('), 0, 0).toDouble(&bGood);
}
}  // namespace

std::optional<std::vector<ReflectionLine>> readReflectionLines(const QString& strFileName, QString& strError)
{
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly)) {
        strError = QStringLiteral("cannot open %1").arg(strFileName);
        return {};
    }
    std::vector<ReflectionLine> listRead;
    while (!file.atEnd()) {
        ReflectionLine reflection;
        const QByteArray line = file.readLine();
        if (!readFields(line, reflection)) {
            strError = QStringLiteral("%1, line %2: no reflection").arg(strFileName).arg(listRead.size() + 1);
            return {};
        }
        if (reflection.anIndex == std::array<int, 3>{}) {
            return listRead;
        }
        listRead.push_back(reflection);
    }
    strError = QStringLiteral("%1 does not end with 0 0 0").arg(strFileName);
    return {};
}

std::optional<std::array<double, 6>> readCellOfStructureFile(const QString& strFileName)
{
    static const QStringList listName = {
        QStringLiteral("_cell_length_a"),   QStringLiteral("_cell_length_b"),
        QStringLiteral("_cell_length_c"),   QStringLiteral("_cell_angle_alpha"),
        QStringLiteral("_cell_angle_beta"), QStringLiteral("_cell_angle_gamma")};
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    std::array<double, 6> adfCell{};
    unsigned nRead = 0;
    while (!file.atEnd()) {
        const QStringList listWord = QString::fromUtf8(file.readLine()).simplified().split(QLatin1Char(' '));
        bool bGood = false;
        if (listWord.first().toUpper() == QLatin1String("CELL") && listWord.size() >= 8) {
            for (int i = 0; i < 6; ++i) {
                adfCell[i] = numberWithoutError(listWord[i + 2], bGood);
                nRead |= unsigned(bGood) << i;
            }
        }
        const int nName = listName.indexOf(listWord.first());
        if (nName >= 0 && listWord.size() >= 2) {
            adfCell[nName] = numberWithoutError(listWord[1], bGood);
            nRead |= unsigned(bGood) << nName;
        }
    }
    if (nRead != 63) {
        return {};
    }
    return adfCell;
}

}  // namespace tessera
