#include "imagefiles/dm3calibration.h"

#include "imagefiles/pixelconvert.h"

#include <cmath>

namespace tessera {

namespace {

constexpr int TYPE_FLOAT = 6, TYPE_DOUBLE = 7, TYPE_ARRAY = 20;

const TagDirectory* groupIn(const TagDirectory* pGroup, const char* pchLabel)
{
    return pGroup ? dynamic_cast<const TagDirectory*>(DM3File::FindTag(*pGroup, pchLabel)) : nullptr;
}

const TagEntry* entryIn(const TagDirectory* pGroup, const char* pchLabel)
{
    return pGroup ? dynamic_cast<const TagEntry*>(DM3File::FindTag(*pGroup, pchLabel)) : nullptr;
}

template <class T>
T element(const uint8_t* p, bool bSwap)
{
    return bSwap != (Q_BYTE_ORDER == Q_BIG_ENDIAN) ? elementFromBytes<T, true>(p)
                                                   : elementFromBytes<T, false>(p);
}

// A real number above 0, or 0.
double realNumber(const TagEntry* pEntry, bool bSwap)
{
    if (!pEntry || pEntry->vecInfo.empty())
        return 0;
    double df = 0;
    if (pEntry->vecInfo[0] == TYPE_FLOAT && pEntry->nDataSize >= sizeof(float))
        df = double(element<float>(pEntry->pData.get(), bSwap));
    else if (pEntry->vecInfo[0] == TYPE_DOUBLE && pEntry->nDataSize >= sizeof(double))
        df = element<double>(pEntry->pData.get(), bSwap);
    return std::isfinite(df) && df > 0 ? df : 0;
}

QString text(const TagEntry* pEntry, bool bSwap)
{
    QString str;
    if (pEntry && !pEntry->vecInfo.empty() && pEntry->vecInfo[0] == TYPE_ARRAY)
        for (size_t n = 0; n + 2 <= pEntry->nDataSize && str.size() < 16; n += 2)
            str += QChar(element<ushort>(pEntry->pData.get() + n, bSwap));
    return str;
}

}  // namespace

Dm3Calibration dm3Calibration(const DM3File& file)
{
    Dm3Calibration calibration;
    const TagDirectory* pImage = file.GetImageTag();
    const bool bSwap = file.needsSwap();
    calibration.dfKilovolts = realNumber(entryIn(groupIn(pImage, "Microscope Info"), "Voltage"), bSwap) /
                              1000;

    // "Calibrations" also holds "Brightness" with a scale of its own.
    const TagDirectory* pDimension = groupIn(groupIn(pImage, "Calibrations"), "Dimension");
    const QString strUnit = text(entryIn(pDimension, "Units"), bSwap);
    const double dfScale = realNumber(entryIn(pDimension, "Scale"), bSwap);
    if (strUnit == QLatin1String("1/nm"))
        calibration.dfPixelSize = dfScale / 10;
    else if (strUnit == QLatin1String("1/A") || strUnit == QStringLiteral("1/Å"))
        calibration.dfPixelSize = dfScale;
    return calibration;
}

}  // namespace tessera
