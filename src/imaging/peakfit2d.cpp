#include "imaging/peakfit2d.h"

#include "imaging/lmdiffit.h"
#include "imaging/sidebyside.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tessera {

namespace {

const std::size_t g_nLorentzParameters = 5;

// The box that is fitted; what the residuals need.
struct FitBox {
    CImgObj<float> img;
    CImgObj<float> imgMask;         // 1 where a pixel enters the fit, 0 elsewhere
    std::vector<double> vecColumn;  // 1 + (c − x0)²/Bx of each column, the same in every row
};

int lorentzResiduals(void* pContext, int, int n, const double* p, double* pResidual, int nFlag)
{
    if (nFlag == 0) {
        return 0;
    }
    FitBox& box = *static_cast<FitBox*>(pContext);
    const int nWidth = box.img.Width();
    const int nHeight = box.img.Height();
    const float* pPixel = box.img.Data();
    const float* pMask = box.imgMask.Data();
    double* pColumn = box.vecColumn.data();
    const bool bBackground = n > int(g_nLorentzParameters);
    for (int c = 0; c < nWidth; ++c) {
        pColumn[c] = 1.0 + (c - p[1]) * (c - p[1]) / p[2];
    }
    for (int r = 0; r < nHeight; ++r) {
        const double dfY = (r - p[3]) * (r - p[3]) / p[4];
        if (bBackground) {
            for (int c = 0; c < nWidth; ++c) {
                *pResidual++ = (p[0] / (pColumn[c] + dfY) + p[5] - *pPixel++) * *pMask++;
            }
        } else {
            for (int c = 0; c < nWidth; ++c) {
                *pResidual++ = (p[0] / (pColumn[c] + dfY) - *pPixel++) * *pMask++;
            }
        }
    }
    return 0;
}

// Mean of the outermost pixels of the box that enter the fit, 0 where there are none.
double meanOfEdge(const FitBox& box)
{
    double dfSum = 0;
    int nCount = 0;
    for (int r = 0; r < box.img.Height(); ++r) {
        const bool bEndRow = r == 0 || r == box.img.Height() - 1;
        for (int c = 0; c < box.img.Width(); c += bEndRow ? 1 : std::max(box.img.Width() - 1, 1)) {
            const std::size_t i = std::size_t(r) * std::size_t(box.img.Width()) + std::size_t(c);
            if (box.imgMask.Data()[i] != 0.f) {
                dfSum += double(box.img.Data()[i]);
                ++nCount;
            }
        }
    }
    return nCount > 0 ? dfSum / nCount : 0.0;
}

// Truncation that holds for any number; not a number gives 0.
int truncated(double df)
{
    return std::isnan(df) ? 0 : int(std::min(std::max(df, -1e9), 1e9));
}

}  // namespace

std::vector<double> FitPeak2D(const CImgObj<float>& img, double& x, double& y, int nHalfSize,
                              double dfSaturation, bool bConstantBackground)
{
    std::vector<double> vecResult(bConstantBackground ? 13 : 11, -1.0);
    if (!std::isfinite(x) || !std::isfinite(y)) {
        return vecResult;
    }
    const int nLeft = std::max(truncated(x - nHalfSize), 0);
    const int nTop = std::max(truncated(y - nHalfSize), 0);
    const int nRight = std::min(truncated(x + nHalfSize), img.Width() - 1);
    const int nBottom = std::min(truncated(y + nHalfSize), img.Height() - 1);
    const int nWidth = nRight - nLeft + 1;
    const int nHeight = nBottom - nTop + 1;
    if (nWidth < 1 || nHeight < 1) {
        return vecResult;
    }

    FitBox box;
    box.img = img.SubImage(nLeft, nTop, nWidth, nHeight);
    box.imgMask.Create(nWidth, nHeight);
    float* pPixel = box.img.Data();
    float* pMask = box.imgMask.Data();
    const std::size_t nCount = std::size_t(nWidth) * std::size_t(nHeight);
    std::size_t nUsable = 0;
    for (std::size_t i = 0; i < nCount; ++i) {
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
        if (std::isfinite(fPixel)) {
            dfHeight = fPixel;
        }
    }
    std::vector<double> vecPara{dfHeight, dfStartX, 1.0, dfStartY, 1.0};
    if (bConstantBackground) {
        vecPara.push_back(meanOfEdge(box));
        vecPara[0] -= vecPara[5];
    }
    box.vecColumn.resize(std::size_t(nWidth));

    CLmdifFit fit;
    const int nInfo = fit.Run(lorentzResiduals, int(nCount), vecPara, &box);
    x = nLeft + vecPara[1];
    y = nTop + vecPara[3];
    std::vector<double> vecError = fit.StdErr();
    if (nUsable <= vecPara.size()) {
        std::fill(vecError.begin(), vecError.end(), std::numeric_limits<double>::infinity());
    }
    std::copy_n(vecPara.begin(), g_nLorentzParameters, vecResult.begin());
    std::copy_n(vecError.begin(), g_nLorentzParameters, vecResult.begin() + g_nLorentzParameters);
    vecResult[10] = nInfo;
    if (bConstantBackground) {
        vecResult[11] = vecPara[5];
        vecResult[12] = vecError[5];
    }
    return vecResult;
}

std::vector<std::vector<double>> FitPeakList(const CImgObj<float>& img, std::vector<double>& vecX,
                                             std::vector<double>& vecY, int nHalfSize, double dfSaturation,
                                             bool bConstantBackground, int nJobs)
{
    if (vecX.size() != vecY.size()) {
        return {};
    }
    std::vector<std::vector<double>> vecResult(vecX.size());
    const auto fit = [&](int n) {
        const auto i = std::size_t(n);
        vecResult[i] = FitPeak2D(img, vecX[i], vecY[i], nHalfSize, dfSaturation, bConstantBackground);
    };
    sideBySide(int(vecResult.size()), nJobs, [&] { return FnPiece(fit); });
    return vecResult;
}

}  // namespace tessera
