// Series of synthetic frames on disk.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "imagefiles/mrcfile.h"
#include "tests/filebytes.h"
#include "tests/recordingreport.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <functional>
#include <random>

namespace tessera {

using PixelFunction = std::function<double(int nX, int nY)>;

inline CImgObj<float> makeImage(int nWidth, int nHeight, const PixelFunction& fnPixel)
{
    CImgObj<float> img;
    img.Create(nWidth, nHeight);
    for (int i = 0; i < nWidth * nHeight; ++i) {
        img.Data()[i] = float(fnPixel(i % nWidth, i / nWidth));
    }
    return img;
}

inline double gaussian(double dfX, double dfY, double dfSigma)
{
    return std::exp(-0.5 * (dfX * dfX + dfY * dfY) / (dfSigma * dfSigma));
}

inline PeakHuntingParameters radii(double dfPeak, double dfBackground, double dfSmooth = 0.5)
{
    PeakHuntingParameters p;
    p.m_dfPeakRadius = dfPeak;
    p.m_dfBackgroundRadius = dfBackground;
    p.m_dfSmoothRadius = dfSmooth;
    return p;
}

/// A data set whose frames are files of a folder of its own, and what a run needs beside it.
struct FrameSeries {
    FrameSeries()
    {
        dataSet.m_strProjectDir = dir.path();
        dataSet.m_strProjectName = "series";
    }
    void add(const CImgObj<float>& img)
    {
        const QString strFile = dir.filePath(
            QString("f%1.mrc").arg(dataSet.m_listFrameFile.size(), 4, 10, QChar('0')));
        if (!WriteMRC<float>({&img}, strFile)) {
            qFatal("no frame written");
        }
        dataSet.m_listFrameFile.append(strFile);
    }
    void removeFrame(int n) { QFile::remove(dataSet.m_listFrameFile[n]); }
    /// Content of a file of the folder; null when there is none.
    QByteArray content(const QString& strName) const { return readBytes(dir.filePath(strName)); }

    QTemporaryDir dir;
    DataSet dataSet;
    CRecordingReport report;
    CPeakFilters filters;
};

}  // namespace tessera
