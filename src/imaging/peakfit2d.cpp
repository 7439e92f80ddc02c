#include "imaging/peakfit2d.h"

#include "imaging/lmdiffit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

// The box that is fitted; what the residuals need.
struct FitBox {
    CImgObj<float> img;
    CImgObj<float> imgMask;  // 1 where a pixel enters the fit, 0 elsewhere
};

int lorentzResiduals(void* pContext, int, int, const double* p, double* pResidual, int nFlag)
{
    if (nFlag == 0)
        return 0;
    const FitBox& box = *static_cast<const FitBox*>(pContext);
    const float* pPixel = box.img.Data();
    const float* pMask = box.imgMask.Data();
    for (int r = 0; r < box.img.Height(); r++) {
        const double dfY = (r - p[3]) * (r - p[3]) / p[4];
        for (int c = 0; c < box.img.Width(); c++) {
            const double dfX = (c - p[1]) * (c - p[1]) / p[2];
            *pResidual++ = (p[0] / (1.0 + dfX + dfY) - *pPixel++) * *pMask++;
        }
    }
    return 0;
}

// Truncation that holds for any number; not a number gives 0.
int truncated(double df)
{
    return std::isnan(df) ? 0 : int(std::min(std::max(df, -1e9), 1e9));
}

}  // namespace

std::vector<double> FitPeak2D(const CImgObj<float>& img, double& x, double& y, int nHalfSize,
                              double dfSaturation)
{
    std::vector<double> vecResult(11, -1.0);
    if (!std::isfinite(x) || !std::isfinite(y))
        return vecResult;
    const int nLeft = std::max(truncated(x - nHalfSize), 0);
    const int nTop = std::max(truncated(y - nHalfSize), 0);
    const int nRight = std::min(truncated(x + nHalfSize), img.Width() - 1);
    const int nBottom = std::min(truncated(y + nHalfSize), img.Height() - 1);
    const int nWidth = nRight - nLeft + 1;
    const int nHeight = nBottom - nTop + 1;
    if (nWidth < 1 || nHeight < 1)
        return vecResult;

    FitBox box;
    box.img = img.SubImage(nLeft, nTop, nWidth, nHeight);
    box.imgMask.Create(nWidth, nHeight);
    float* pPixel = box.img.Data();
    float* pMask = box.imgMask.Data();
    const std::size_t nCount = std::size_t(nWidth) * std::size_t(nHeight);
    std::size_t nUsable = 0;
    for (std::size_t i = 0; i < nCount; i++) {
        pMask[i] = pPixel[i] >= dfSaturation ? 0.f : 1.f;
        if (!std::isfinite(pPixel[i])) {  // 0 times infinity is no residual
            pMask[i] = 0.f;
            pPixel[i] = 0.f;
        }
        nUsable += pMask[i] != 0.f;
    }

    const double dfStartX = x - nLeft;
    const double dfStartY = y - nTop;
    const int nStartX = truncated(dfStartX);
    const int nStartY = truncated(dfStartY);
    const bool bInside = nStartX >= 0 && nStartX < nWidth && nStartY >= 0 && nStartY < nHeight;
    double dfHeight = 1.0;
    if (bInside) {
        const float fPixel =
            img.Data()[std::size_t(nTop + nStartY) * std::size_t(img.Width()) + std::size_t(nLeft + nStartX)];
        if (std::isfinite(fPixel))
            dfHeight = fPixel;
    }
    std::vector<double> vecPara{dfHeight, dfStartX, 1.0, dfStartY, 1.0};

    CLmdifFit fit;
    const int nInfo = fit.Run(lorentzResiduals, int(nCount), vecPara, &box);
    x = nLeft + vecPara[1];
    y = nTop + vecPara[3];
    std::copy(vecPara.begin(), vecPara.end(), vecResult.begin());
    std::copy(fit.StdErr().begin(), fit.StdErr().end(), vecResult.begin() + 5);
    if (nUsable <= vecPara.size())
        std::fill(vecResult.begin() + 5, vecResult.begin() + 10, std::numeric_limits<double>::infinity());
    vecResult[10] = nInfo;
    return vecResult;
}

std::vector<std::vector<double>> FitPeakList(const CImgObj<float>& img, std::vector<double>& vecX,
                                             std::vector<double>& vecY, int nHalfSize, double dfSaturation)
{
    std::vector<std::vector<double>> vecResult;
    if (vecX.size() != vecY.size())
        return vecResult;
    for (std::size_t i = 0; i < vecX.size(); i++)
        vecResult.push_back(FitPeak2D(img, vecX[i], vecY[i], nHalfSize, dfSaturation));
    return vecResult;
}
