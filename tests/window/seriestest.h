// SeriesTest: a window, and a simulated series that is made once for the suite. Each case works on a copy of
// its own, as windows and drivers write beside the frames what they find and what the pages show.
#pragma once

#include "tests/window/windowtest.h"

namespace tessera {

class SeriesTest : public WindowTest {
protected:
    /// For SetUpTestSuite: simulates quartz under the name "w", and has the driver work on it up to a stage,
    /// none where that is empty.
    static void makeSeries(const QString& strArguments, const QString& strStage = {});
    static void TearDownTestSuite() { s_pMade.reset(); }
    void SetUp() override;

    /// A file of the copy.
    QString file(const QString& strName) const { return path("series/" + strName); }
    void open() { m_pWindow->openFiles({file("w.ed3d")}); }
    /// Copies the series into a folder of the test.
    void copySeries(const QString& strFolder) const;

    static inline std::unique_ptr<QTemporaryDir> s_pMade;
};

}  // namespace tessera
