#include "frames/framesource.h"

#include <algorithm>

namespace tessera {

namespace {

FrameSource sourceOf(const QStringList& listFrame, const QList<QPoint>& listHotPixel,
                     const SeriesReading& reading, int nFrame)
{
    if (reading.isPlain()) {
        return {{listFrame[nFrame]}, listHotPixel, 1, {}, 0};
    }
    FrameSource source = {reading.listFile.mid(reading.listFirst.value(nFrame), reading.choice.nSum),
                          listHotPixel, std::max(1, reading.choice.nBin), reading.listHotPixel,
                          reading.dfSaturation};
    if (source.listFile.isEmpty()) {  // can only come from a manipulated state file
        source.listFile.append(listFrame[nFrame]);
    }
    return source;
}

}  // namespace

FrameSource frameSource(const SeriesSnapshot& series, int nFrame)
{
    return sourceOf(series.listFrameFile, series.listHotPixel, series.reading, nFrame);
}

FrameSource frameSource(const SeriesData& series, int nFrame)
{
    return sourceOf(series.m_listFrameFile, series.m_listHotPixel, series.m_reading, nFrame);
}

}  // namespace tessera
