// TwinSeries: a window on a simulated series, which stands a second time in the folder "driver" for the
// driver, whose files are compared.
#pragma once

#include "tests/window/seriestest.h"

namespace tessera {

class TwinSeries : public SeriesTest {
protected:
    static void SetUpTestSuite()
    {
        makeSeries("--frames 41 --size 256 --pixel-size 0.008 --tilt-start -20 --tilt-step 1");
    }
    void SetUp() override
    {
        SeriesTest::SetUp();
        ASSERT_NO_FATAL_FAILURE(copySeries("driver"));
    }
    void solve() { m_pActions->m_pSolve->trigger(); }
    /// Has the driver work on its series.
    void runDriver(const QStringList& listOption)
    {
        const BatchOutcome driver = runBatch(listOption + QStringList{path("driver/w.ed3d")});
        ASSERT_EQ(driver.nStatus, 0) << driver.strText.toStdString();
    }
};

}  // namespace tessera
