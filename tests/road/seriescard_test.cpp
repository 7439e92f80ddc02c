// What a list says of series that were opened before.
#include "road/seriescard.h"

#include "dataset/unitcellfile.h"
#include "geometry/reciprocalbasis.h"
#include "tests/batch/batchprogram.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace tessera {

namespace {

class Cards : public testing::Test {
protected:
    QString write(const QString& strName, const QByteArray& bytes) const
    {
        writeBytes(m_dir.filePath(strName), bytes);
        return m_dir.filePath(strName);
    }
    QString writeProject(const QString& strName) const
    {
        return write(strName,
                     "WAVELENGTH 0.0251\nCCDPIXELSIZE 0.004\nFILELIST\nFILE a.png 0 0 0\n"
                     "FILE b.png 1 0 1\nENDFILELIST\n");
    }
    /// Of a cell with right angles.
    static QByteArray cellText(float fA, float fB, float fC)
    {
        return unitCellText(*basisFromList({{1 / fA, 0, 0}, {0, 1 / fB, 0}, {0, 0, 1 / fC}}));
    }

    QTemporaryDir m_dir;
};

}  // namespace

TEST_F(Cards, TellFramesCellAndLatticeByWhatStandsBesideTheProject)
{
    const QString strProject = writeProject("s.ed3d");
    SeriesCard card = seriesCard({strProject});
    EXPECT_TRUE(card.bThere);
    EXPECT_EQ(card.strName, "s.ed3d");
    EXPECT_EQ(card.nFrames, 2);
    EXPECT_FALSE(card.cell);
    EXPECT_EQ(card.strLattice, "");

    // Without a cell file the summary of the driver is what there is.
    const QByteArray bytesSummary =
        R"("cell": {"parameters": [5, 5, 5, 90, 90, 90]}, "lattice": {"symbol": "cF", "system": "cubic"})";
    write("s.json", "{" + bytesSummary + "}");
    card = seriesCard({strProject});
    ASSERT_TRUE(card.cell);
    EXPECT_EQ(card.cell->a, 5);
    EXPECT_EQ(card.strLattice, "cF, cubic");

    // The cell file counts; a summary of another cell says nothing of it, and its metric has to do.
    write("s.uc", cellText(8, 8, 6));
    card = seriesCard({strProject});
    ASSERT_TRUE(card.cell);
    EXPECT_NEAR(card.cell->c, 6, 1e-3);
    EXPECT_EQ(card.strLattice, "tP, tetragonal");

    // The record of a run knows the centring of this very cell, which the metric cannot tell.
    write("s.run.json", R"({"stages": [{"name": "shifts", "found": {}}, {"name": "cell", "found": {"cell":
          {"parameters": [8, 8, 6, 90, 90, 90]}, "lattice": {"symbol": "tI", "system": "tetragonal"}}}]})");
    EXPECT_EQ(seriesCard({strProject}).strLattice, "tI, tetragonal");
}

TEST_F(Cards, StayEmptyWhereThereIsNothingToRead)
{
    const SeriesCard gone = seriesCard({m_dir.filePath("gone.ed3d")});
    EXPECT_FALSE(gone.bThere);
    EXPECT_EQ(gone.strName, "gone.ed3d");
    EXPECT_EQ(gone.strFolder, m_dir.path());
    EXPECT_FALSE(seriesCard({}).bThere);

    write("torn.uc", "a* 0.1 0");
    write("torn.json", "{\"cell\": {\"parameters\": [1, 2, \"x\"");
    const SeriesCard torn = seriesCard({writeProject("torn.ed3d")});
    EXPECT_TRUE(torn.bThere);
    EXPECT_EQ(torn.nFrames, 2);
    EXPECT_FALSE(torn.cell);

    const SeriesCard bad = seriesCard({write("bad.ed3d", "no project")});
    EXPECT_TRUE(bad.bThere);
    EXPECT_EQ(bad.nFrames, 0);
    EXPECT_EQ(seriesCard({write("x1.mrc", "x"), m_dir.filePath("x2.mrc")}).nFrames, 2);
}

}  // namespace tessera
