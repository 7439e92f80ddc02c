#include "tests/window/seriestest.h"

namespace tessera {

void SeriesTest::makeSeries(const QString& strArguments, const QString& strStage)
{
    s_pMade = std::make_unique<QTemporaryDir>();
    ASSERT_NO_FATAL_FAILURE(simulate(s_pMade->path(), strArguments));
    if (!strStage.isEmpty()) {
        const BatchOutcome outcome = runBatch(
            {"--window-defaults", "--to", strStage, s_pMade->filePath("w.ed3d")});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    }
}

void SeriesTest::SetUp()
{
    WindowTest::SetUp();
    ASSERT_NO_FATAL_FAILURE(copySeries("series"));
}

void SeriesTest::copySeries(const QString& strFolder) const
{
    ASSERT_TRUE(QDir().mkpath(path(strFolder)));
    for (const QFileInfo& info : QDir(s_pMade->path()).entryInfoList(QDir::Files)) {
        ASSERT_TRUE(QFile::copy(info.filePath(), path(strFolder + '/' + info.fileName())));
    }
}

}  // namespace tessera
