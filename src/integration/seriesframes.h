// CSeriesFrames: the frames of a series for the runs of the integration, whatever of them can be read.
#pragma once

#include "dataset/dataset.h"
#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"

#include <QSize>
#include <QString>

#include <memory>

namespace tessera {

/// A frame, or why there is none.
struct SeriesFrame {
    std::unique_ptr<CImgObj<float>> pImage;
    QString strFault;
};

/// Reads single frames; threads share one.
class CSeriesFrames {
public:
    CSeriesFrames(const DataSet& dataSet, const QSize& sizeFrame) : m_series(dataSet), m_size(sizeFrame) {}

    /// A frame of another size than the others counts as one that cannot be read.
    /// @throw CShortMemory
    SeriesFrame read(int nFrame) const;

private:
    const SeriesSnapshot m_series;
    const QSize m_size;
};

}  // namespace tessera
