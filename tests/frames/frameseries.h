// Series of synthetic frames on disk, and a report that remembers what a run said.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runreport.h"
#include "imagefiles/mrcfile.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cmath>
#include <functional>
#include <random>

class RecordingReport : public CRunReport {
public:
    void addMessage(const QString& strText, Qt::GlobalColor color) override
    {
        listLine.append((color == Qt::red ? "red " : color == Qt::blue ? "blue " : "") + strText);
    }
    void setProgress(int nValue) override { nProgress = nValue; }
    bool goOn() override { return nGoOnLeft-- > 0; }

    /// Without time stamps and durations, which differ from run to run.
    QString log() const
    {
        return listLine.join('\n')
            .replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d>"), ">")
            .replace(QRegularExpression("in \\S+ min \\S+ sec"), "in time");
    }
    bool said(const QString& strPart) const { return log().contains(strPart); }

    QStringList listLine;
    int nProgress = 0;
    int nGoOnLeft = 1000000;  ///< the run is asked to stop after so many questions
};

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
        const QString strFile =
            dir.filePath(QString("f%1.mrc").arg(dataSet.m_listFrameFile.size(), 4, 10, QChar('0')));
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
