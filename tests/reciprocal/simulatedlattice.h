// Simulated reflections of a known cell.
#pragma once

#include "records/peak3d.h"

#include <QList>

#include <cmath>
#include <random>

#include <gemmi/unitcell.hpp>

namespace tessera {

/// a*, b*, c* of a cell, turned into an arbitrary orientation.
inline QList<Vec3D> reciprocalBasis(const gemmi::UnitCell& cell)
{
    const gemmi::Mat33& frac = cell.frac.mat;  // rows are the reciprocal vectors
    const double dfC = std::cos(0.7), dfS = std::sin(0.7), dfD = std::cos(1.1), dfT = std::sin(1.1);
    const gemmi::Mat33 turn(dfC, -dfS, 0, dfS * dfD, dfC * dfD, -dfT, dfS * dfT, dfC * dfT, dfD);
    QList<Vec3D> listBasis;
    for (int n = 0; n < 3; ++n) {
        const gemmi::Vec3 v = turn.multiply(gemmi::Vec3(frac[n][0], frac[n][1], frac[n][2]));
        listBasis.append({float(v.x), float(v.y), float(v.z)});
    }
    return listBasis;
}

/// Sets point and d* of a record.
inline void placeAt(Peak3D& peak, const Vec3D& v)
{
    peak.setPoint(v);
    peak.dfDStar = double(length(v));
}

inline bool all(int, int, int)
{
    return true;
}

/// All reflections up to dfMaxDStar that pass the filter on h, k, l; the truth in dfH, dfK, dfL, intensities
/// from 1 on with many weak ones, points with Gaussian noise (Å⁻¹), nID counting up.
template <class Filter>
QList<Peak3D> simulatedReflections(const QList<Vec3D>& listBasis, double dfMaxDStar, double dfNoise,
                                   Filter filter, unsigned nSeed = 1)
{
    std::mt19937 random(nSeed);
    std::normal_distribution<double> noise(0, 1);
    QList<Peak3D> listPeak;
    const auto limit = [&](int n) { return int(3 * dfMaxDStar / double(length(listBasis[n]))); };
    for (int h = -limit(0); h <= limit(0); ++h) {
        for (int k = -limit(1); k <= limit(1); ++k) {
            for (int l = -limit(2); l <= limit(2); ++l) {
                const Vec3D v = scaled(listBasis[0], float(h)) + scaled(listBasis[1], float(k)) +
                                scaled(listBasis[2], float(l));
                if (double(length(v)) > dfMaxDStar || (h == 0 && k == 0 && l == 0) || !filter(h, k, l)) {
                    continue;
                }
                Peak3D peak;
                placeAt(peak, v + Vec3D{float(dfNoise * noise(random)), float(dfNoise * noise(random)),
                                        float(dfNoise * noise(random))});
                peak.setHKL(h, k, l);
                const double dfGauss = noise(random);
                peak.dfIPoint = double(float(1 + 100 * dfGauss * dfGauss));
                peak.nID = listPeak.size();
                peak.nFrame = 5;
                listPeak.append(peak);
            }
        }
    }
    return listPeak;
}

}  // namespace tessera
