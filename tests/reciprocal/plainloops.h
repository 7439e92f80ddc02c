// The plain loops of the cell search and of indexing, as references for the fast ways.
#pragma once

#include "records/peak3d.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/bydstar.h"
#include "reciprocal/differencevectors.h"

#include <QList>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tessera {

/// All that the fast ways may not change, bit by bit; one not-a-number is like another.
inline std::vector<uint64_t> bitsOf(const QList<Peak3D>& listPeak)
{
    std::vector<uint64_t> vecBits;
    for (const Peak3D& peak : listPeak) {
        for (double df : {double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D), peak.dfIPoint,
                          peak.dfDStar, peak.dfH, peak.dfK, peak.dfL, double(peak.nID)}) {
            vecBits.push_back(~uint64_t(0));
            if (!std::isnan(df)) {
                std::memcpy(&vecBits.back(), &df, sizeof(df));
            }
        }
    }
    return vecBits;
}

/// Vectors as the records that the plain loops work on.
inline QList<Peak3D> recordsOf(const std::vector<DifferenceVector>& vecVector)
{
    QList<Peak3D> listRecord;
    for (const DifferenceVector& vector : vecVector) {
        Peak3D record;
        record.setPoint(vector.v);
        record.dfDStar = vector.dfDStar;
        record.dfIPoint = vector.dfWeight;
        listRecord.append(record);
    }
    return listRecord;
}

inline std::vector<DifferenceVector> vectorsOf(const QList<Peak3D>& listRecord)
{
    std::vector<DifferenceVector> vecVector;
    for (const Peak3D& record : listRecord) {
        vecVector.push_back({record.point(), record.dfDStar, record.dfIPoint});
    }
    return vecVector;
}

inline QList<Peak3D> plainDifferenceVectors(const QList<Peak3D>& listPeak, float fMax, float fMin, int nLimit)
{
    QList<Peak3D> listVector;
    for (int i = 0; i < listPeak.size(); ++i) {
        for (int j = i + 1; j < listPeak.size(); ++j) {
            const Vec3D v = listPeak[i].point() - listPeak[j].point();
            const float fSquare = squaredLength(v);
            if (!(fMax * fMax >= fSquare && fSquare >= fMin * fMin)) {
                continue;
            }
            Peak3D record;
            record.setPoint(v);
            record.dfIPoint = std::min(listPeak[i].dfIPoint, listPeak[j].dfIPoint);
            record.dfDStar = double(std::sqrt(fSquare));
            listVector.append(record);
            record.setPoint(-v);
            listVector.append(record);
        }
    }
    if (listVector.size() > nLimit) {
        std::stable_sort(listVector.begin(), listVector.end(),
                         [](const Peak3D& a, const Peak3D& b) { return a.dfIPoint > b.dfIPoint; });
        listVector.erase(listVector.begin() + nLimit, listVector.end());
    }
    return listVector;
}

inline QList<Peak3D> plainAveragedVectors(QList<Peak3D> list, float fTolerance)
{
    sortByDStar(list);
    const float fSquare = fTolerance * fTolerance;
    const double dfHalf = double(fTolerance) * 0.5;
    std::vector<Vec3D> vecSum;
    std::vector<float> vecWeight;
    for (const Peak3D& peak : list) {
        vecSum.push_back(scaledDouble(peak.point(), peak.dfIPoint));
        vecWeight.push_back(float(peak.dfIPoint));
    }
    const auto add = [&](int nTo, int nFrom) {
        vecSum[nTo] = vecSum[nTo] + scaledDouble(list[nFrom].point(), list[nFrom].dfIPoint);
        vecWeight[nTo] = float(double(vecWeight[nTo]) + list[nFrom].dfIPoint);
    };
    for (int i = 0; i < list.size(); ++i) {
        for (int j = i + 1; j < list.size() && list[j].dfDStar - list[i].dfDStar < dfHalf; ++j) {
            if (squaredLength(list[i].point() - list[j].point()) <= fSquare) {
                add(i, j);
                add(j, i);
            }
        }
    }
    QList<Peak3D> listPile;
    for (int n = 0; n < list.size(); ++n) {
        const Vec3D& s = vecSum[n];
        const float w = vecWeight[n];
        Peak3D pile;
        pile.setPoint({s.x / w, s.y / w, s.z / w});
        pile.dfDStar = double(length(pile.point()));
        pile.dfIPoint = double(w);
        pile.nID = n;
        listPile.append(pile);
    }
    sortByDStar(listPile);
    for (int a = 0; a < listPile.size(); ++a) {
        for (int b = a + 1; b < listPile.size() && listPile[b].dfDStar - listPile[a].dfDStar < dfHalf;) {
            if (squaredLength(listPile[a].point() - listPile[b].point()) > fSquare) {
                ++b;
            } else if (listPile[b].dfIPoint > listPile[a].dfIPoint) {
                listPile.removeAt(a--);
                break;
            } else {
                listPile.removeAt(b);
            }
        }
    }
    float fMax = -INFINITY;
    for (const Peak3D& pile : listPile) {
        fMax = std::max(fMax, float(pile.dfIPoint));
    }
    QList<Peak3D> listResult;
    for (const Peak3D& pile : listPile) {
        if (fMax == 0 || !(float(pile.dfIPoint) < fMax / 10)) {
            listResult.append(pile);
        }
    }
    return listResult;
}

/// Returns the number of passes.
inline int plainIndexing(QList<Peak3D>& list, const ReciprocalBasis& basis, float fThreshold, float fRadius)
{
    const CBasisSolver solver(basis);
    sortByDStar(list);
    const int nCount = list.size();
    std::vector<int> vecState(size_t(nCount), 0);
    int nPasses = 0;
    for (bool bNew = true; bNew; ++nPasses) {
        bNew = false;
        for (int i = 0; i < nCount; ++i) {
            if (vecState[i] == 2) {
                continue;
            }
            std::vector<int> vecNear;
            for (int j = i - 1; j >= 1 && list[i].dfDStar - list[j].dfDStar < double(fRadius); --j) {
                vecNear.push_back(j);
            }
            for (int j = i + 1; j < nCount && list[j].dfDStar - list[i].dfDStar < double(fRadius); ++j) {
                vecNear.push_back(j);
            }
            float fH = 0, fK = 0, fL = 0, fW = 0;
            bool bAny = false;
            for (int j : vecNear) {
                const Vec3D d = list[i].point() - list[j].point();
                if (!(squaredLength(d) <= fRadius * fRadius) || vecState[j] != 2) {
                    continue;
                }
                const float w = float(1 / (double(length(d)) + 0.001));
                const Vec3D f = solver.solve(d);
                if (!isCloseToInteger(f, fThreshold)) {
                    continue;
                }
                bAny = true;
                fH += w * (f.x + float(roundedIndex(list[j].dfH)));
                fK += w * (f.y + float(roundedIndex(list[j].dfK)));
                fL += w * (f.z + float(roundedIndex(list[j].dfL)));
                fW += w;
            }
            const Vec3D hkl = bAny ? Vec3D{fH / fW, fK / fW, fL / fW} : solver.solve(list[i].point());
            list[i].setHKL(double(hkl.x), double(hkl.y), double(hkl.z));
            vecState[i] = isCloseToInteger(hkl, fThreshold) ? 2 : 1;
            bNew = bNew || vecState[i] == 2;
        }
    }
    return nPasses;
}

}  // namespace tessera
