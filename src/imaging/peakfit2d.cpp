#include "imaging/peakfit2d.h"

#include "imaging/imageview.h"
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
    std::size_t nCount = 0;
    std::size_t nUsable = 0;  // pixels that enter the fit
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

// The mean of the outermost pixels of the box that enter the fit; 0 if there are none.
double meanOfEdge(const FitBox& box)
{
    const auto imgMask = viewOf(box.imgMask);
    const auto img = viewOf(box.img);
    double dfSum = 0;
    int nCount = 0;
    for (int r = 0; r < img.nHeight; ++r) {
        const bool bEndRow = r == 0 || r == img.nHeight - 1;
        for (int c = 0; c < img.nWidth; c += bEndRow ? 1 : std::max(img.nWidth - 1, 1)) {
            if (imgMask.at(c, r) != 0.f) {
                dfSum += double(img.at(c, r));
                ++nCount;
            }
        }
    }
    return nCount > 0 ? dfSum / nCount : 0.0;
}

// Truncation that is defined for any number, limited to ±1e9; NaN gives 0.
int truncated(double df)
{
    return std::isnan(df) ? 0 : int(std::min(std::max(df, -1e9), 1e9));
}

// The pixels around a place, cut off at the edges of the image.
struct BoxPlace {
    int nLeft, nTop, nWidth, nHeight;

    bool isEmpty() const { return nWidth < 1 || nHeight < 1; }
};

BoxPlace boxAround(const CImgObj<float>& img, double x, double y, int nHalfSize)
{
    const int nLeft = std::max(truncated(x - nHalfSize), 0);
    const int nTop = std::max(truncated(y - nHalfSize), 0);
    const int nRight = std::min(truncated(x + nHalfSize), img.Width() - 1);
    const int nBottom = std::min(truncated(y + nHalfSize), img.Height() - 1);
    return {nLeft, nTop, nRight - nLeft + 1, nBottom - nTop + 1};
}

FitBox fitBox(const CImgObj<float>& img, const BoxPlace& place, double dfSaturation)
{
    FitBox box;
    box.img = img.SubImage(place.nLeft, place.nTop, place.nWidth, place.nHeight);
    box.imgMask.Create(place.nWidth, place.nHeight);
    float* pPixel = box.img.Data();
    float* pMask = box.imgMask.Data();
    box.nCount = viewOf(box.img).count();
    for (std::size_t i = 0; i < box.nCount; ++i) {
        pMask[i] = pPixel[i] >= dfSaturation ? 0.f : 1.f;
        if (!std::isfinite(pPixel[i])) {  // 0 times infinity is no residual
            pMask[i] = 0.f;
            pPixel[i] = 0.f;
        }
        box.nUsable += pMask[i] != 0.f;
    }
    box.vecColumn.resize(place.nWidth);
    return box;
}

// Height, centre in the box and squared half widths to start from.
std::vector<double> startOfFit(const CImgObj<float>& img, const BoxPlace& place, double x, double y)
{
    const double dfStartX = x - place.nLeft;
    const double dfStartY = y - place.nTop;
    const int nStartX = truncated(dfStartX);
    const int nStartY = truncated(dfStartY);
    double dfHeight = 1.0;
    if (nStartX >= 0 && nStartX < place.nWidth && nStartY >= 0 && nStartY < place.nHeight) {
        const float fPixel = viewOf(img).at(place.nLeft + nStartX, place.nTop + nStartY);
        if (std::isfinite(fPixel)) {
            dfHeight = fPixel;
        }
    }
    return {dfHeight, dfStartX, 1.0, dfStartY, 1.0};
}

}  // namespace

std::vector<double> FitPeak2D(const CImgObj<float>& img, double& x, double& y, int nHalfSize,
                              double dfSaturation, bool bConstantBackground)
{
    std::vector<double> vecResult(bConstantBackground ? 13 : 11, -1.0);
    if (!std::isfinite(x) || !std::isfinite(y)) {
        return vecResult;
    }
    const BoxPlace place = boxAround(img, x, y, nHalfSize);
    if (place.isEmpty()) {
        return vecResult;
    }
    FitBox box = fitBox(img, place, dfSaturation);
    std::vector<double> vecPara = startOfFit(img, place, x, y);
    if (bConstantBackground) {
        vecPara.push_back(meanOfEdge(box));
        vecPara[0] -= vecPara[5];
    }

    CLmdifFit fit;
    const int nInfo = fit.Run(lorentzResiduals, int(box.nCount), vecPara, &box);
    x = place.nLeft + vecPara[1];
    y = place.nTop + vecPara[3];
    std::vector<double> vecError = fit.StdErr();
    if (box.nUsable <= vecPara.size()) {
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
        vecResult[n] = FitPeak2D(img, vecX[n], vecY[n], nHalfSize, dfSaturation, bConstantBackground);
    };
    sideBySide(int(vecResult.size()), nJobs, [&] { return FnPiece(fit); });
    return vecResult;
}

}  // namespace tessera
