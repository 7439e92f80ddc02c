// Sorting by digits against the stable sort by comparison.
#include "reciprocal/sortedplaces.h"

#include "reciprocal/bydstar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

TEST(SortedPlaces, AreThoseOfTheStableSort)
{
    std::mt19937_64 random(2);
    std::vector<double> vecSpecial = {0.0, -0.0, NAN, -NAN, INFINITY, -INFINITY, 1e-310, -1e-310, 1, 1, -1};
    for (const size_t nCount : {0, 1, 2, 5000}) {
        std::vector<double> vecValue = nCount > 2 ? vecSpecial : std::vector<double>();
        while (vecValue.size() <
               nCount) {  // few different ones among many, of single precision and of double
            const double df = double(random() % 4001) / 1000 - 2;
            vecValue.push_back(random() % 2 ? double(float(df)) : df * 1e-3);
        }
        std::vector<uint64_t> vecKey;
        std::vector<int> vecExpected;
        for (const double df : vecValue) {
            vecKey.push_back(ascendingKey(df));
            vecExpected.push_back(int(vecExpected.size()));
        }
        std::stable_sort(vecExpected.begin(), vecExpected.end(),
                         [&](int a, int b) { return numbersAscending(vecValue[a], vecValue[b]); });
        EXPECT_EQ(sortedPlaces(vecKey), vecExpected) << nCount;
    }
}

}  // namespace tessera
