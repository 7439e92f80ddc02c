// CSeriesFrames: reads the frames of a series for the integration, which goes on if some cannot be read.
#pragma once

#include "dataset/dataset.h"
#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"

#include <QSize>
#include <QString>

#include <memory>

namespace tessera {

/// A frame, or the reason why it could not be read.
struct SeriesFrame {
    std::unique_ptr<CImgObj<float>> pImage;  ///< null if the frame could not be read
    QString strFault;                        ///< the reason
};

/// Reads single frames; threads may share it.
class CSeriesFrames {
public:
    /// @param sizeFrame  size that the frames must have
    CSeriesFrames(const DataSet& dataSet, const QSize& sizeFrame) : m_series(dataSet), m_size(sizeFrame) {}

    /// Reads a frame. One of another size counts as unreadable.
    /// @throw CShortMemory
    SeriesFrame read(int nFrame) const;

private:
    const SeriesSnapshot m_series;
    const QSize m_size;
};

}  // namespace tessera
