#include "frames/framesource.h"

namespace tessera {

namespace {

FrameSource sourceOf(const QStringList& listFrame, const QList<QPoint>& listHotPixel,
                     const SeriesReading& reading, int nFrame)
{
    if (reading.isPlain()) {
        return {{listFrame[nFrame]}, listHotPixel, 1, {}, 0};
    }
    return {reading.listFile.mid(reading.listFirst[nFrame], reading.choice.nSum), listHotPixel,
            reading.choice.nBin, reading.listHotPixel, reading.dfSaturation};
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
