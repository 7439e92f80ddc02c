// Series of synthetic frames on disk.
#pragma once

#include "app/dataset/dataset.h"
#include "imagefiles/mrcfile.h"
#include "recordingreport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <functional>
#include <random>

using PixelFunction = std::function<double(int nX, int nY)>;

inline CImgObj<float> makeImage(int nWidth, int nHeight, const PixelFunction& fnPixel)
{
    CImgObj<float> img;
    img.Create(nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
            img.Data()[y * nWidth + x] = float(fnPixel(x, y));
    return img;
}

inline double gaussian(double dfX, double dfY, double dfSigma)
{
    return std::exp(-0.5 * (dfX * dfX + dfY * dfY) / (dfSigma * dfSigma));
}

/// A data set whose frames are files of a folder of its own.
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
        if (!WriteMRC<float>({&img}, strFile))
            qFatal("no frame written");
        dataSet.m_listFrameFile.append(strFile);
    }
    /// Content of a file of the folder; null when there is none.
    QByteArray content(const QString& strName) const
    {
        QFile file(dir.filePath(strName));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    DataSet dataSet;
};
