#include "integration/seriesframes.h"

#include "frames/firstimage.h"

namespace tessera {

SeriesFrame CSeriesFrames::read(int nFrame) const
{
    SeriesFrame frame;
    CRunReport report;
    frame.pImage = firstImage(m_series, nFrame, {}, report, OnShortMemory::Throw);
    if (!frame.pImage) {
        frame.strFault = report.reason();
    } else if (QSize(frame.pImage->Width(), frame.pImage->Height()) != m_size) {
        frame.strFault = QStringLiteral("%1: %2 × %3 pixels, where the series has %4 × %5")
                             .arg(m_series.listFrameFile[nFrame])
                             .arg(frame.pImage->Width())
                             .arg(frame.pImage->Height())
                             .arg(m_size.width())
                             .arg(m_size.height());
        frame.pImage.reset();
    }
    return frame;
}

}  // namespace tessera
