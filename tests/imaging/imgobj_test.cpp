// The image container and its conversions.
#include "imaging/imgobj.h"
#include "imaging/imageconversion.h"
#include "imaging/imageregion.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <numeric>
#include <vector>

namespace tessera {

TEST(CImgObj, SubImageAndCopyRegionTakeOnlyWhatLiesInside)
{
    CImgObj<float> img;
    ASSERT_EQ(img.Create(7, 5), 1);
    std::iota(img.Data(), img.Data() + 35, 0.f);
    const struct {
        int x, y, w, h;
        bool bInside;
    } aRow[] = {{0, 0, 7, 5, true},   {2, 1, 3, 4, true},  {6, 4, 1, 1, true},  {-1, 0, 3, 3, false},
                {0, -1, 3, 3, false}, {5, 0, 3, 3, false}, {0, 3, 3, 3, false}, {3, 3, INT_MAX, 1, false}};
    for (const auto& row : aRow) {
        const CImgObj<float> imgSub = img.SubImage(row.x, row.y, row.w, row.h);
        ASSERT_EQ(imgSub.Data() != nullptr, row.bInside) << row.x << " " << row.y << " " << row.w;
        std::vector<float> vecRegion(36, -1.f);
        const int nCopied = CopyRegion(img.Data(), 7, 5, vecRegion.data(), row.x, row.y, row.w, row.h);
        EXPECT_EQ(nCopied, row.bInside || row.h < 1 ? 1 : 0);
        for (int i = 0; i < 36; ++i) {
            const bool bUsed = row.bInside && i < row.w * row.h;
            const float fExpected = bUsed ? float((row.y + i / row.w) * 7 + row.x + i % row.w) : -1.f;
            ASSERT_EQ(vecRegion[i], fExpected);
            if (bUsed) {
                ASSERT_EQ(imgSub.Data()[i], fExpected);
            }
        }
    }
}

TEST(ImageConversion, GivesAmplitudePhaseAndParts)
{
    const COMPLEX value{-3.f, 4.f};
    const float afExpected[] = {5.f, float(std::acos(-0.6)), -3.f, 4.f, 99.f};
    for (int nMode = 0; nMode < 5; ++nMode) {
        float f = 99.f;
        EXPECT_EQ(ComplexToFloat(&value, &f, 1, nMode), nMode < 4);
        EXPECT_FLOAT_EQ(f, afExpected[nMode]) << nMode;
    }
}

}  // namespace tessera
