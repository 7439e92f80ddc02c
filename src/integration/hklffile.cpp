#include "integration/hklffile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfMostForSigma = 0.05;  // rounding by 0.005 is a tenth of this sigma

void appendLine(QByteArray& bytes, const std::array<int, 3>& anIndex, double dfIntensity, double dfSigma)
{
    for (const int nIndex : anIndex) {
        bytes += QByteArray::number(nIndex).rightJustified(4);
    }
    bytes += QByteArray::number(dfIntensity, 'f', 2).rightJustified(8);
    bytes += QByteArray::number(dfSigma, 'f', 2).rightJustified(8);
    bytes += '\n';
}

}  // namespace

double hklfScale(const std::vector<ScaledIntensity>& listIntensity)
{
    double dfMost = 0;
    std::vector<double> listSigma;
    for (const ScaledIntensity& one : listIntensity) {
        // The minus sign takes a column, so negative numbers must be smaller by a factor of ten.
        dfMost = std::max({dfMost, one.dfIntensity, -10 * one.dfIntensity, one.dfSigma});
        listSigma.push_back(one.dfSigma);
    }
    if (!(dfMost > 0)) {
        return 1;
    }
    double dfScale = std::pow(10, std::floor(std::log10(9999.99 / dfMost)));
    const auto tenth = listSigma.begin() + int(listSigma.size() / 10);
    std::nth_element(listSigma.begin(), tenth, listSigma.end());
    if (*tenth * dfScale < g_dfMostForSigma) {
        dfScale *= 10;
    }
    return dfScale;
}

QByteArray hklfText(const std::vector<ScaledIntensity>& listIntensity, double dfScale)
{
    QByteArray bytes;
    bytes.reserve(int(listIntensity.size() + 1) * 29);
    for (const ScaledIntensity& one : listIntensity) {
        appendLine(bytes, one.anIndex, one.dfIntensity * dfScale, std::max(0.01, one.dfSigma * dfScale));
    }
    appendLine(bytes, {0, 0, 0}, 0, 0);
    return bytes;
}

}  // namespace tessera
