#include "imagefiles/toldwavelength.h"

#include <cmath>

namespace tessera {

namespace {

/// Å, for electrons of 57 kV; microscopes for diffraction have at least 80 kV.
constexpr double g_dfLongest = 0.05;

/// Voltages in kV and wavelengths in Å: h / sqrt(2 m e V (1 + e V / 2 m c²)) with the constants of CODATA
/// 2018.
constexpr struct {
    int nKilovolts;
    double dfWavelength;
} g_aUsual[] = {{80, 0.0417572},  {100, 0.0370144}, {120, 0.0334922},
                {160, 0.0285101}, {200, 0.0250793}, {300, 0.0196875}};

/// The number of decimals without zeros at the end, at most `nMost`.
int decimalsOf(double df, int nMost)
{
    double dfPower = 1;
    for (int n = 0; n < nMost; ++n, dfPower *= 10) {
        const double dfScaled = df * dfPower;
        if (std::abs(dfScaled - std::round(dfScaled)) < 1e-6) {
            return n;
        }
    }
    return nMost;
}

}  // namespace

void tellWavelength(const QByteArray& bytesValue, const QString& strSource, FrameHeader& header)
{
    bool bNumber = false;
    const double df = bytesValue.toDouble(&bNumber);
    if (!bNumber || !std::isfinite(df) || df <= 0) {
        return;
    }
    if (df > g_dfLongest) {
        header.listDoubt.append(
            QStringLiteral("%1 %2 is not a wavelength of electrons: not used").arg(strSource).arg(df));
        return;
    }
    header.wavelength = {df, strSource};
    constexpr int nEnough = 5;
    const int nDecimals = decimalsOf(df, nEnough);
    const double dfRounding = 0.5 * std::pow(10., -nDecimals);
    const auto* pNearest = &g_aUsual[0];
    for (const auto& usual : g_aUsual) {
        if (std::abs(usual.dfWavelength - df) < std::abs(pNearest->dfWavelength - df)) {
            pNearest = &usual;
        }
    }
    if (nDecimals < nEnough && std::abs(pNearest->dfWavelength - df) <= dfRounding) {
        header.listDoubt.append(QStringLiteral("%1 %2 seems to be rounded: at %3 kV it is %4")
                                    .arg(strSource)
                                    .arg(df)
                                    .arg(pNearest->nKilovolts)
                                    .arg(pNearest->dfWavelength, 0, 'f', nEnough));
    }
}

}  // namespace tessera
