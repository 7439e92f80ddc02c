#include "dataset/hotpixelfile.h"
#include "dataset/maskfile.h"
#include "dataset/reflectionlist.h"
#include "dataset/shiftfile.h"
#include "dataset/textlines.h"
#include "dataset/unitcellfile.h"
#include "tests/dataset/textfiles.h"

#include <QTemporaryDir>

namespace tessera {

TEST(ShiftFile, ReadsGoodLinesInTheOrderOfTheirSerials)
{
    for (const auto& [strText, nShifts] :
         {std::pair("10 20\n1 0 0\n2 0.5 -1\n", 2),
          {"# c\n10 20 of the beam\n# c\n1 0 0 and more\n#x\n2 1 1\n", 2},
          {"10 20\n1 0 0\n2 nan 1\n2 1 1\n", 2},
          {"10 20\n   1-1234.56-1234.56\n", 1},   // touching, but plain all the same
          {"10 20\n   112345.67    1.00\n", -1},  // touching: serial 112345
          {"10 20\nno frame\n", 0},
          {"# a\n# b\n10 20\n", -1},
          {"inf 20\n1 0 0\n", -1},
          {"10 20\n1 0 0\n3 0 0\n", -1},
          {" \n10 20\n1 0 0\n", -1}}) {
        QString strReason;
        const auto shift = readShiftLines(splitTextLines(strText), &strReason);
        EXPECT_EQ(strReason.isEmpty(), nShifts >= 0) << strText;
        EXPECT_EQ(shift ? shift->listShift.size() : -1, nShifts) << strText;
        if (shift) {
            EXPECT_EQ(shift->dfCenterX, 10) << strText;
        }
    }
}

TEST(ShiftFile, IsWrittenInColumnsAndKeepsALongerOneBeside)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.sc");
    ASSERT_TRUE(writeShiftFile(strFile, {255.555, 1024, {{0, 0}, {-0.126, 3.5}, {99999.99, -1234.56}}}));
    EXPECT_EQ(readBytes(strFile),
              "  255.56 1024.00\n   1    0.00    0.00\n   2   -0.13    3.50\n   399999.99-1234.56\n");
    // a file that does not read as more frames is not kept
    ASSERT_TRUE(writeShiftFile(strFile, {1, 2, {{0, 0}, {1, 1}, {2, 2}}}));
    EXPECT_FALSE(QFile::exists(strFile + "~"));
    const QByteArray bytesThree = readBytes(strFile);
    const ShiftData shiftTwo{3, 4, {{0, 0}, {1, 1}}};
    ASSERT_TRUE(writeShiftFile(strFile, shiftTwo));
    EXPECT_EQ(readBytes(strFile + "~"), bytesThree);
    QString strReason;
    ASSERT_TRUE(writeShiftFile(strFile, {3, 4, {{0, 0}}}, &strReason));  // a second early end
    EXPECT_EQ(readBytes(strFile + "~"), bytesThree);
    EXPECT_TRUE(strReason.contains(strFile + "~"));
    ASSERT_TRUE(writeShiftFile(strFile, shiftTwo));
    const auto shift = readShiftFile(strFile);
    ASSERT_TRUE(shift);
    EXPECT_EQ(shift->dfCenterX, 3);
    EXPECT_EQ(shift->listShift, shiftTwo.listShift);
    for (const QString& strBad : {QString(), folder.filePath("none/a.sc")}) {
        EXPECT_FALSE(writeShiftFile(strBad, shiftTwo));
    }
}

TEST(UnitCellFile, IsWrittenWithItsDirectCellAndReadsBack)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.uc");
    DataSet data;
    data.m_listCell = {{0.125f, 0, 0}, {0, 0.1f, 0}, {0, 0, -0.0625f}};
    ASSERT_TRUE(saveUnitCellFile(data, strFile));
    EXPECT_EQ(readBytes(strFile),
              QByteArray("\xEF\xBB\xBF"
                         "# a=8.000 Å, b=10.000 Å, c=16.000 Å, α=90.000°, β=90.000°, γ=90.000°\n"
                         "a*   0.12500000  0.00000000  0.00000000\n"
                         "b*   0.00000000  0.10000000  0.00000000\n"
                         "c*   0.00000000  0.00000000 -0.06250000\n"));
    EXPECT_EQ(readUnitCellFile(strFile), data.m_listCell);
    data.m_listCell[2] = data.m_listCell[0];
    ASSERT_TRUE(saveUnitCellFile(data, strFile));
    EXPECT_TRUE(readBytes(strFile).startsWith("\xEF\xBB\xBF# co-planar vectors!\na* "));
    EXPECT_EQ(readUnitCellFile(strFile), data.m_listCell);
    EXPECT_FALSE(saveUnitCellFile(data, ""));
    EXPECT_FALSE(saveUnitCellFile(data, folder.filePath("none/a.uc")));
    data.m_listCell.removeLast();
    EXPECT_FALSE(saveUnitCellFile(data, strFile));
    EXPECT_EQ(readUnitCellFile(strFile).size(), 3);
}

TEST(UnitCellFile, NeedsThreeVectorsInOrder)
{
    const QList<Vec3D> listGood = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    for (const char* strGood :
         {"a* 1 2 3\nb* 4 5 6\nc* 7 8 9\n", "  a*1 2 3 4\n#x\n\tb* 4 5 6 x\nc* 7 8 9\nwhatever\n"}) {
        EXPECT_EQ(readUnitCellLines(splitTextLines(strGood)), listGood) << strGood;
    }
    for (const char* strBad : {"note\na* 1 2 3\nb* 4 5 6\nc* 7 8 9\n", "a* 1 2 3\nb* 4 5 6\n",
                               "a* 1 2 3\nb* 4 5 nan\nc* 7 8 9\n", "a* 1 2 1e39\nb* 4 5 6\nc* 7 8 9\n"}) {
        EXPECT_TRUE(readUnitCellLines(splitTextLines(strBad)).isEmpty()) << strBad;
    }
}

TEST(MaskFile, GathersTheCornersOfEachNumber)
{
    MaskData mask;
    ASSERT_EQ(readMaskLines(mask, splitTextLines("2 1 1\n# c\n1 2 2\nbad\n2 3 3\n1 4 4\n-5 9 9 x\n")), 3);
    using Corners = QVector<QPointF>;
    EXPECT_EQ(mask.listPolygon[0], Corners({{1, 1}, {3, 3}})) << "number 2 stands first";
    EXPECT_EQ(mask.listPolygon[1], Corners({{2, 2}, {4, 4}}));
    EXPECT_EQ(mask.listPolygon[2], Corners({{9, 9}}));
    EXPECT_EQ(mask.fillRule, Qt::OddEvenFill);
    EXPECT_EQ(readMaskLines(mask, splitTextLines("1 0 0\n1 1 1\n1 inf 2\n")), 0);
    EXPECT_EQ(mask.listPolygon.size(), 3) << "the old mask stays";
}

TEST(HotPixelFile, CutsCoordinatesAndChecksSerials)
{
    EXPECT_EQ(readHotPixelLines(splitTextLines("1 12.9 7.9\n#\nx\n2 1e10 3\n2 -0.9 3\n")),
              QList<QPoint>({{12, 7}, {0, 3}}));
    EXPECT_FALSE(readHotPixelLines(splitTextLines("1 1 1\n3 1 1\n")));
}

TEST(ReflectionList, TakesTenItemsWithoutAnS)
{
    QTemporaryDir folder;
    const QString strFile = writeBytes(folder.filePath("r.txt"),
                                       "# title\n1 1.9 -2.9 0 0.3 0.4 0 5 100.5 ok\n2 1 1 1 1 1 1 1 1 sus\n"
                                       "3 1 1 1 1 1 1 1 1\n4 1 1 1 nan 1 1 1 1 a\n5 3e9 1 1 1 1 1 1 1 a\n"
                                       "7 1 0 0 0 0 2 0 7 S\r\n");
    const auto list = readReflectionList(strFile);
    ASSERT_TRUE(list);
    QString strText;
    for (const Peak3D& peak : peaksOfReflectionList(list->listPoint, list->listReflection)) {
        const HKLRef& reflection = list->listReflection[peak.nID];
        strText += QString::asprintf("#%d: %d %d %g %g; ", peak.nID, reflection.nH, reflection.nK,
                                     peak.dfDStar, peak.dfIPoint);
    }
    EXPECT_EQ(strText, QString("#0: 1 -2 0.5 100.5; #1: 1 0 2 7; "));
    EXPECT_FALSE(readReflectionList(writeBytes(folder.filePath("e.txt"), "words\n")));
    // Longer than a file beside the frames may be: two million reflections have some 100 MB.
    const QByteArray bytesLong = QByteArray(g_nMaxTextFile, '#') + "\n7 1 0 0 0 0 2 0 7 k";
    const auto listLong = readReflectionList(writeBytes(folder.filePath("l.txt"), bytesLong));
    ASSERT_TRUE(listLong);
    EXPECT_EQ(listLong->listPoint.size(), 1);
}

}  // namespace tessera
