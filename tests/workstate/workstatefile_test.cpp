#include "workstate/workstatefile.h"

#include <gtest/gtest.h>

namespace {

using namespace tessera;

TEST(WorkStateFile, RefusesWhatIsNoState)
{
    WorkState state;
    state.series.m_dfWavelength = 0.02;
    QString strReason;
    EXPECT_FALSE(workStateFromBytes(QByteArray("no state"), state, &strReason));
    EXPECT_FALSE(strReason.isEmpty());
    EXPECT_EQ(state.series.m_dfWavelength, 0.02);
}

}  // namespace
