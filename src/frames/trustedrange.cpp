#include "frames/trustedrange.h"

#include "imagefiles/frameformats.h"

namespace tessera {

TrustedRange trustedRangeOf(const QStringList& listFrameFile)
{
    if (listFrameFile.isEmpty()) {
        return {};
    }
    const ToldNumber saturation = frameHeader(listFrameFile.first()).saturation;
    return saturation.isTold() && saturation.df > 0 ? TrustedRange{saturation.df, saturation.strSource}
                                                    : TrustedRange();
}

TrustedRange trustedRangeOf(const SeriesData& series)
{
    TrustedRange range = trustedRangeOf(series.m_listFrameFile);
    range.dfSaturation *= series.m_reading.isPlain() ? 1 : series.m_reading.pixelCount();
    return range;
}

}  // namespace tessera
