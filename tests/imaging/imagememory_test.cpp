// Memory of images that is handed round.
#include "imaging/imagememory.h"

#include "imaging/imgobj.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace tessera {

namespace {

const int g_nSide = 1200;  // 5.8 MB of float, enough to be kept

CImgObj<float> imageOf(int nHeight)
{
    CImgObj<float> img;
    img.Create(g_nSide, nHeight);
    img.Data()[0] = 1.f;
    img.Data()[std::size_t(g_nSide) * std::size_t(nHeight) - 1] = 2.f;
    return img;
}

TEST(ImageMemory, IsHandedToTheNextImageOfItsSizeFromWhicheverThreadItCame)
{
    CImageMemory memory(2);
    const CImageMemory::CUse use(memory);
    const float* pFirst = nullptr;
    {
        CImgObj<float> img = imageOf(g_nSide);
        pFirst = img.Data();
        std::thread([img = std::move(img)] {}).join();
    }
    EXPECT_EQ(memory.keptBytes(), std::size_t(g_nSide) * g_nSide * sizeof(float));
    const CImgObj<float> imgOther = imageOf(g_nSide + 1);
    EXPECT_NE(imgOther.Data(), pFirst);
    const CImgObj<float> img = imageOf(g_nSide);
    EXPECT_EQ(img.Data(), pFirst);
    EXPECT_EQ(memory.keptBytes(), 0u);
}

TEST(ImageMemory, KeepsNoMoreThanItShallAndNothingAtItsEnd)
{
    std::vector<CImgObj<float>> vecImage;
    {
        CImageMemory memory(2);
        {
            const CImageMemory::CUse use(memory);
            for (int n = 0; n < 4; ++n) {
                vecImage.push_back(imageOf(g_nSide + n));
            }
        }
        CImgObj<float> imgBefore = imageOf(g_nSide);  // made while nothing is in use
        imgBefore.Release();
        EXPECT_EQ(memory.keptBytes(), 0u);
        for (std::size_t n = 0; n < 3; ++n) {
            vecImage[n].Release();
        }
        EXPECT_EQ(memory.keptBytes(), std::size_t(g_nSide) * (2 * g_nSide + 3) * sizeof(float));
        memory.clear();
        EXPECT_EQ(memory.keptBytes(), 0u);
    }
    EXPECT_EQ(vecImage[3].Data()[0], 1.f);  // outlives what it came from
    vecImage.clear();
}

}  // namespace

}  // namespace tessera
