#include "integration/reflectionflags.h"

#include <gtest/gtest.h>

namespace tessera {

TEST(ReflectionFlags, EachHasANameOfItsOwn)
{
    const QStringList list = reflectionFlagNames(~0u);
    EXPECT_EQ(list.size(), 13);
    EXPECT_EQ(QStringList(list).removeDuplicates(), 0);
    EXPECT_FALSE(list.contains(QString()));
    EXPECT_EQ(reflectionFlagNames(FlagSlow | FlagOverlap).join(", "), "slow, overlap");
}

}  // namespace tessera
