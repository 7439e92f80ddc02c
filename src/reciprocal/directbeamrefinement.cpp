#include "reciprocal/directbeamrefinement.h"

#include "crystal/reflectionindices.h"
#include "geometry/matrix3.h"
#include "geometry/rotationgeometry.h"
#include "imaging/lmdiffit.h"

#include <QLatin1Char>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nParam = 6;
constexpr int g_nPairsPerLook = 4096;  // between two calls of goOn()

Peak3D differenceRecord(const PeakPair& pair, double dfAmplitude, double dfAzimuth, double dfPixelSize)
{
    const Peak3D &a = pair.peakFirst, &b = pair.peakSecond;
    const QPointF pt = applyStretching({a.dfX2D - b.dfX2D, a.dfY2D - b.dfY2D}, dfAmplitude, dfAzimuth);
    Peak3D record;
    record.setHKL(roundedIndex(a.dfH) - roundedIndex(b.dfH), roundedIndex(a.dfK) - roundedIndex(b.dfK),
                  roundedIndex(a.dfL) - roundedIndex(b.dfL));
    record.dfX2D = pt.x();
    record.dfY2D = pt.y();
    record.dfIPoint = a.dfIPoint * b.dfIPoint;
    record.dfDStar = std::sqrt(pt.x() * pt.x() + pt.y() * pt.y()) * dfPixelSize;
    record.nFrame = a.nFrame;
    return record;
}

// Distances between map and measurement, in single precision.
int residuals(void* pContext, int m, int, const double* p, double* pResidual, int nFlag)
{
    const QList<Peak3D>& listRecord = *static_cast<const QList<Peak3D>*>(pContext);
    if (nFlag == 0) {
        return 0;
    }
    for (int i = 0; i < m; ++i) {
        const Peak3D& d = listRecord[i];
        const float h = float(d.dfH), k = float(d.dfK), l = float(d.dfL);
        const float x = float(p[0]) * h + float(p[2]) * k + float(p[4]) * l - float(d.dfX2D);
        const float y = float(p[1]) * h + float(p[3]) * k + float(p[5]) * l - float(d.dfY2D);
        pResidual[i] = double(std::sqrt(x * x + y * y));
    }
    return 0;
}

// The matrix that maps the records by least squares; 0 if their indices lie in a plane.
CMatrix3 leastSquaresMap(const QList<Peak3D>& listRecord)
{
    CMatrix3 matSquares(0, 0, 0, 0, 0, 0, 0, 0, 0), matMixed = matSquares;
    for (const Peak3D& d : listRecord) {
        const double aIndex[3] = {d.dfH, d.dfK, d.dfL}, aPlace[3] = {d.dfX2D, d.dfY2D, 0};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                matSquares.at(i, j) += aIndex[i] * aIndex[j];
                matMixed.at(i, j) += aIndex[i] * aPlace[j];
            }
        }
    }
    if (!matSquares.isRegular()) {  // sums of products of whole numbers: the determinant is one too
        return {0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
    return matSquares.inverted().multiplied(matMixed).transposed();
}

CMatrix3 startMap(const QList<Peak3D>& listRecord, CRunReport& report)
{
    CMatrix3 matIndex, matPlace;
    for (int n = 0; n < 3; ++n) {
        const Peak3D& d = listRecord[n];
        for (int i = 0; i < 3; ++i) {
            matIndex.at(n, i) = i == 0 ? d.dfH : i == 1 ? d.dfK : d.dfL;
            matPlace.at(n, i) = i == 0 ? d.dfX2D : i == 1 ? d.dfY2D : 0;
        }
    }
    if (!matIndex.isRegular()) {
        return leastSquaresMap(listRecord);
    }
    const CMatrix3 matMap = matIndex.inverted().multiplied(matPlace).transposed();
    QStringList listLine;
    for (const Peak3D& d : listRecord) {
        const Vec3D v = matMap.multiplied(Vec3D{float(d.dfH), float(d.dfK), float(d.dfL)});
        listLine.append(QStringLiteral("[%1,%2,%3] (%4, %5, %6)")
                            .arg(d.dfH, 4)
                            .arg(d.dfK, 4)
                            .arg(d.dfL, 4)
                            .arg(double(v.x), 6, 'f', 1)
                            .arg(double(v.y), 6, 'f', 1)
                            .arg(double(v.z), 6, 'f', 1));
    }
    report.addMessage(listLine.join(QLatin1Char('\n')));
    return matMap;
}

QString sixNumbers(const QString& strHead, const std::array<double, 6>& adf)
{
    return strHead + QStringLiteral(": %1, %2, %3, %4, %5, %6")
                         .arg(adf[0])
                         .arg(adf[1])
                         .arg(adf[2])
                         .arg(adf[3])
                         .arg(adf[4])
                         .arg(adf[5]);
}

void fitMap(DifferenceMap& map, CRunReport& report)
{
    const CMatrix3 mat = startMap(map.listDifference, report);
    map.adfStart = {mat.at(0, 0), mat.at(1, 0), mat.at(0, 1), mat.at(1, 1), mat.at(0, 2), mat.at(1, 2) + 1.0};
    report.addMessage(sixNumbers(QStringLiteral("Starting values"), map.adfStart));

    std::vector<double> vecParam(map.adfStart.begin(), map.adfStart.end());
    const int nRecords = map.listDifference.size();
    CLmdifFit fit;
    fit.SetFunctionError(
        double(std::numeric_limits<float>::epsilon()));  // smaller steps drown in the rounding
    map.nInfo = fit.Run(residuals, nRecords, vecParam, &map.listDifference);
    std::vector<double> vecResidual(static_cast<std::size_t>(nRecords));
    residuals(&map.listDifference, nRecords, g_nParam, vecParam.data(), vecResidual.data(), 1);
    for (double df : vecResidual) {
        map.dfSumSquares += df * df;
    }
    std::copy(vecParam.begin(), vecParam.end(), map.adfEnd.begin());
    std::copy(fit.StdErr().begin(), fit.StdErr().end(), map.adfStdErr.begin());
    report.addMessage(sixNumbers(QStringLiteral("End values"), map.adfEnd));
    report.addMessage(sixNumbers(QStringLiteral("Error"), map.adfStdErr));
    report.addMessage(QStringLiteral("Info = %1, sumErr = %2").arg(map.nInfo).arg(map.dfSumSquares));
}

// The map of one frame; false when the run was stopped before it.
bool mapFrame(const QList<PeakPair>& listPair, double dfAmplitude, double dfAzimuth, double dfPixelSize,
              CRunReport& report, DifferenceMap& map)
{
    QStringList listLine;
    for (const PeakPair& pair : listPair) {
        const Peak3D record = differenceRecord(pair, dfAmplitude, dfAzimuth, dfPixelSize);
        map.listDifference.append(record);
        listLine.append(QStringLiteral("[%1,%2,%3] (%4, %5)")
                            .arg(record.dfH, 4)
                            .arg(record.dfK, 4)
                            .arg(record.dfL, 4)
                            .arg(record.dfX2D, 6, 'f', 1)
                            .arg(record.dfY2D, 6, 'f', 1));
        if (listLine.size() % g_nPairsPerLook == 0 && !report.goOn()) {
            return false;
        }
    }
    map.nPairs = listPair.size();
    if (!listLine.isEmpty()) {
        report.addMessage(listLine.join(QLatin1Char('\n')));
    }
    if (listPair.size() >= 3) {
        fitMap(map, report);
    }
    return true;
}

}  // namespace

QVector<DifferenceMap> refineDirectBeamPosition(const QVector<QList<PeakPair>>& vecListPeakPair,
                                                double dfAmplitude, double dfAzimuth, double dfPixelSize,
                                                CRunReport& report)
{
    QVector<DifferenceMap> vecMap;
    for (const QList<PeakPair>& listPair : vecListPeakPair) {
        DifferenceMap map;
        if (!mapFrame(listPair, dfAmplitude, dfAzimuth, dfPixelSize, report, map)) {
            break;
        }
        vecMap.append(map);
        if (!report.goOn()) {
            break;
        }
    }
    return vecMap;
}

QVector<DifferenceMap> refineDirectBeamPosition(const QVector<QList<Peak3D>>& vecPeak,
                                                const PeakPairLimits& limits, const CSpaceGroup& spaceGroup,
                                                double dfAmplitude, double dfAzimuth, CRunReport& report)
{
    QVector<DifferenceMap> vecMap;
    const std::optional<std::vector<PeakPairPlace>> vecPlace = peakPairPlaces(vecPeak, limits, spaceGroup,
                                                                              report);
    if (!vecPlace) {
        return vecMap;
    }
    bool bStopped = false;
    auto it = vecPlace->begin();
    for (int nList = 0; nList < vecPeak.size() && !bStopped; ++nList) {
        if (vecPeak[nList].size() < 2) {
            continue;
        }
        QList<PeakPair> listPair;
        for (; it != vecPlace->end() && it->nList == nList; ++it) {
            listPair.append({vecPeak[nList][it->nFirst], vecPeak[nList][it->nSecond]});
        }
        DifferenceMap map;
        bStopped = !mapFrame(listPair, dfAmplitude, dfAzimuth, limits.dfPixelSize, report, map);
        map.listDifference.clear();
        if (!bStopped) {
            vecMap.append(map);
        }
        bStopped = bStopped || !report.goOn();
    }
    return vecMap;
}

}  // namespace tessera
