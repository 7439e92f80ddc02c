// forEachSampledFrame: a look at a few frames spread evenly over a series.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runreport.h"
#include "frames/framesequence.h"
#include "imaging/imagelist.h"

#include <functional>
#include <optional>
#include <vector>

/// Numbers of at most nMost frames in order, the first and the last frame among them.
std::vector<int> sampledFrames(int nFrames, int nMost);

/// The images of a sampled frame, the first of them with pixels; none when it cannot be read.
ImageList sampledImages(const QString& strFileName, const QList<QPoint>& listHotPixel);

/// Looks at the first image of at most nMost frames, nJobs of them side by side, and hands over what was seen
/// in order.
///
/// A frame that cannot be read or has no pixels is passed over without a word: the run that needs it tells.
/// @param fnMakeLook  gives each thread its function, which makes a Result of an image
/// @param fnTake      called by the caller's thread
/// @return false when the report asked to stop
template <class Result>
bool forEachSampledFrame(const DataSet& dataSet, int nMost, int nJobs, CRunReport& report,
                         const std::function<std::function<Result(const CImgObj<float>&)>()>& fnMakeLook,
                         const std::function<void(Result& result)>& fnTake)
{
    const QStringList listFile = dataSet.m_listFrameFile;
    const QList<QPoint> listHotPixel = dataSet.m_listHotPixel;
    const std::vector<int> vecFrame = sampledFrames(listFile.size(), nMost);
    const int nCount = int(vecFrame.size());
    CFrameSequence<std::optional<Result>> sequence(nCount, nJobs, [&] {
        return [&, fnLook = fnMakeLook()](int i) -> std::optional<Result> {
            const ImageList vecImage = sampledImages(listFile[vecFrame[size_t(i)]], listHotPixel);
            return vecImage.empty() ? std::nullopt : std::make_optional(fnLook(*vecImage.front()));
        };
    });
    for (int i = 0; i < nCount; ++i) {
        if (!report.goOn())
            return false;
        std::optional<Result> result = sequence.take(i);
        if (result)
            fnTake(*result);
    }
    return true;
}
