// A data set with frames that have names only.
#pragma once

#include "dataset/dataset.h"
#include "tests/filebytes.h"

namespace tessera {

inline void setFrames(DataSet& data, int nFrames)
{
    data.m_listFrameFile.clear();
    for (int i = 0; i < nFrames; ++i) {
        data.m_listFrameFile.append(QStringLiteral("f%1.mrc").arg(i));
    }
}

}  // namespace tessera
