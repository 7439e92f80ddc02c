#include "simulate/scatteringfactors.h"

#include <cmath>
#include <limits>

namespace tessera {

namespace {
struct GaussianSum {
    const char* pElement;
    double adfA[5];  // Å
    double adfB[5];  // Å²
};

// Peng, Ren, Dudarev & Whelan (1996), Acta Cryst. A52, 257-276, table 3 (s from 0 to 2 Å⁻¹).
const GaussianSum g_aSum[] = {
    {"Be", {0.0780, 0.2210, 0.6740, 1.3867, 0.6925}, {0.3131, 2.2381, 10.1517, 30.9061, 78.3273}},
    {"C", {0.0893, 0.2563, 0.7570, 1.0487, 0.3575}, {0.2465, 1.7100, 6.4094, 18.6113, 50.2523}},
    {"O", {0.0974, 0.2921, 0.6910, 0.6990, 0.2039}, {0.2067, 1.3815, 4.6943, 12.7105, 32.4726}},
    {"Na", {0.2142, 0.6853, 0.7692, 1.6589, 1.4482}, {0.3334, 2.3446, 10.0830, 48.3037, 138.2700}},
    {"Mg", {0.2314, 0.6866, 0.9677, 2.1882, 1.1339}, {0.3278, 2.2720, 10.9241, 39.2898, 101.9748}},
    {"Al", {0.2390, 0.6573, 1.2011, 2.5586, 1.2312}, {0.3138, 2.1063, 10.4163, 34.4552, 98.5344}},
    {"Si", {0.2519, 0.6372, 1.3795, 2.5082, 1.0500}, {0.3075, 2.0174, 9.6746, 29.3744, 80.4732}},
    {"Cl", {0.2443, 0.5397, 1.3919, 2.0197, 0.6621}, {0.2468, 1.5242, 6.1537, 16.6687, 42.3086}},
    {"Ca", {0.4054, 1.3880, 2.1602, 3.7532, 2.2063}, {0.3499, 3.0991, 11.9608, 53.9353, 142.3892}},
    {"Ti", {0.3825, 1.2598, 2.0008, 3.0617, 2.0694}, {0.3040, 2.4863, 9.2783, 39.0751, 109.4583}},
};
}  // namespace

double electronScatteringFactor(const QString& strElement, double dfS)
{
    for (const GaussianSum& sum : g_aSum) {
        if (strElement != QLatin1String(sum.pElement)) {
            continue;
        }
        double df = 0;
        for (int i = 0; i < 5; ++i) {
            df += sum.adfA[i] * std::exp(-sum.adfB[i] * dfS * dfS);
        }
        return df;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tessera
