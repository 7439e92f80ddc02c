// TwinSeries: a window, and a simulated series that stands twice in the test's folder: below "window" for the
// window and below "driver" for the driver, whose files are compared.
#pragma once

#include "tests/window/windowtest.h"

namespace tessera {

class TwinSeries : public WindowTest {
protected:
    static void SetUpTestSuite()
    {
        s_pSeries = std::make_unique<QTemporaryDir>();
        simulate(s_pSeries->path(),
                 "--frames 41 --size 256 --pixel-size 0.008 --tilt-start -20 --tilt-step 1");
    }
    static void TearDownTestSuite() { s_pSeries.reset(); }
    void SetUp() override
    {
        WindowTest::SetUp();
        for (const QString& strFolder : {path("window"), path("driver")}) {
            ASSERT_TRUE(QDir().mkpath(strFolder));
            for (const QFileInfo& file : QDir(s_pSeries->path()).entryInfoList(QDir::Files)) {
                ASSERT_TRUE(QFile::copy(file.filePath(), strFolder + '/' + file.fileName()));
            }
        }
    }
    void open() { m_pWindow->openFiles({path("window/w.ed3d")}); }
    void solve() { m_pActions->m_pSolve->trigger(); }
    /// Has the driver work on its series.
    void runDriver(const QStringList& listOption)
    {
        const BatchOutcome driver = runBatch(listOption + QStringList{path("driver/w.ed3d")});
        ASSERT_EQ(driver.nStatus, 0) << driver.strText.toStdString();
    }

    static inline std::unique_ptr<QTemporaryDir> s_pSeries;
};

}  // namespace tessera
