#include "simulate/truthintensities.h"

#include <QJsonArray>
#include <QStringList>

namespace tessera {

namespace {
QJsonArray columns(const char* pNames)
{
    return QJsonArray::fromStringList(QString::fromLatin1(pNames).split(QLatin1Char(' ')));
}

const char* const g_pReflectionColumns = "h k l squareF area";
const char* const g_pCrossingColumns = "h k l frame x y counts snr inside lattice";

template <typename Container>
QJsonArray jsonArray(const Container& list)
{
    QJsonArray array;
    for (double df : list) {
        array.append(df);
    }
    return array;
}

void readList(const QJsonValue& value, double dfElse, int nFrames, std::vector<double>& list)
{
    const QJsonArray array = value.toArray();
    for (int n = 0; n < nFrames; ++n) {
        list.push_back(array.at(n).toDouble(dfElse));
    }
}

// Rows of numbers, each with as many as there are columns.
bool readRows(const QJsonValue& value, size_t nColumns, std::vector<std::vector<double>>& listRow)
{
    const QJsonArray arrayRow = value.toArray();
    for (const QJsonValue& valueRow : arrayRow) {
        const QJsonArray array = valueRow.toArray();
        std::vector<double> row;
        row.reserve(array.size());
        for (const QJsonValue& one : array) {
            row.push_back(one.toDouble());
        }
        if (row.size() != nColumns) {
            return false;
        }
        listRow.push_back(std::move(row));
    }
    return true;
}
}  // namespace

void writeTrueExposure(const SimulatedSeries& series, QJsonObject& root)
{
    const SimulationParameters& p = series.parameters;
    root[QStringLiteral("rotationMode")] = QJsonObject{{QStringLiteral("kind"), exposureModeName(p)},
                                                       {QStringLiteral("precessionAngle"), p.dfPrecession}};
    root[QStringLiteral("tiltStep")] = p.dfTiltStep;
    root[QStringLiteral("gain")] = p.dfGain;
    root[QStringLiteral("readNoise")] = p.dfReadNoise;
    root[QStringLiteral("rocking")] = p.dfRocking;
    root[QStringLiteral("mosaicity")] = p.dfMosaicity;
    root[QStringLiteral("scales")] = jsonArray(series.listScale);
    root[QStringLiteral("decays")] = jsonArray(series.listDecay);
    root[QStringLiteral("blankFrames")] = p.nBlankFrame > 0 ? QJsonArray{p.nBlankFrame - 1} : QJsonArray{};
    root[QStringLiteral("reflectionColumns")] = columns(g_pReflectionColumns);
    root[QStringLiteral("crossingColumns")] = columns(g_pCrossingColumns);
}

QByteArray trueIntensityRows(const SimulatedSeries& series)
{
    QByteArray data = "    \"reflections\": [";
    const char* pSeparator = "\n";
    for (size_t i = 0; i < series.listReflection.size(); ++i) {
        const Reflection& r = series.listReflection[i];
        data += pSeparator;
        data += QStringLiteral("[%1,%2,%3,%4,%5]")
                    .arg(r.nH)
                    .arg(r.nK)
                    .arg(r.nL)
                    .arg(r.dfSquareF, 0, 'g', 8)
                    .arg(series.listArea[i], 0, 'f', 6)
                    .toLatin1();
        pSeparator = ",\n";
    }
    data += "\n],\n    \"crossings\": [";
    pSeparator = "\n";
    for (const Crossing& c : series.listCrossing) {
        data += pSeparator;
        data += QStringLiteral("[%1,%2,%3,").arg(c.nH).arg(c.nK).arg(c.nL).toLatin1();
        data += QStringLiteral("%1,%2,%3,%4,%5,%6,%7]")
                    .arg(c.dfFrame, 0, 'f', 3)
                    .arg(c.dfX, 0, 'f', 2)
                    .arg(c.dfY, 0, 'f', 2)
                    .arg(c.dfCounts, 0, 'f', 1)
                    .arg(c.dfSignalToNoise, 0, 'f', 2)
                    .arg(c.bInside ? 1 : 0)
                    .arg(c.nLattice)
                    .toLatin1();
        pSeparator = ",\n";
    }
    return data + "\n]";
}

bool readTrueIntensities(const QJsonObject& root, int nFrames, SimulatedSeries& series)
{
    readList(root[QStringLiteral("scales")], 1, nFrames, series.listScale);
    readList(root[QStringLiteral("decays")], 0, nFrames, series.listDecay);
    SimulationParameters& p = series.parameters;
    const QJsonObject mode = root[QStringLiteral("rotationMode")].toObject();
    p.bStepped = mode[QStringLiteral("kind")].toString() == QLatin1String("stepped");
    p.dfPrecession = mode[QStringLiteral("precessionAngle")].toDouble();
    std::vector<std::vector<double>> listReflection, listCrossing;
    if (!readRows(root[QStringLiteral("reflections")], 5, listReflection) ||
        !readRows(root[QStringLiteral("crossings")], 10, listCrossing)) {
        return false;
    }
    for (const auto& row : listReflection) {
        Reflection reflection{int(row[0]), int(row[1]), int(row[2]), 0, row[3]};
        reflection.dfDStar = lengthOf(Vector3{row[0], row[1], row[2]} * series.matBasis);
        series.listReflection.push_back(reflection);
        series.listArea.push_back(row[4]);
    }
    for (const auto& row : listCrossing) {
        Crossing crossing;
        crossing.nH = int(row[0]);
        crossing.nK = int(row[1]);
        crossing.nL = int(row[2]);
        crossing.dfFrame = row[3];
        crossing.dfX = row[4];
        crossing.dfY = row[5];
        crossing.dfCounts = row[6];
        crossing.dfSignalToNoise = row[7];
        crossing.bInside = row[8] != 0;
        crossing.nLattice = int(row[9]);
        series.listCrossing.push_back(crossing);
    }
    return true;
}

}  // namespace tessera
