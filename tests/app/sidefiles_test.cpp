#include "app/dataset/hotpixelfile.h"
#include "app/dataset/maskfile.h"
#include "app/dataset/reflectionlist.h"
#include "app/dataset/shiftfile.h"
#include "app/dataset/textlines.h"
#include "app/dataset/unitcellfile.h"
#include "textfiles.h"

#include <QTemporaryDir>

TEST(ShiftFile, ReadsGoodLinesInTheOrderOfTheirSerials)
{
    const struct {
        const char* strText;
        int nShifts;  // -1: the read fails
    } aRow[] = {{"10 20\n1 0 0\n2 0.5 -1\n", 2},
                {"# c\n10 20 of the beam\n# c\n1 0 0 and more\n#x\n2 1 1\n", 2},
                {"10 20\n1 0 0\n2 nan 1\n2 1 1\n", 2},
                {"10 20\n   1-1234.56-1234.56\n", 1},   // touching, but plain all the same
                {"10 20\n   112345.67    1.00\n", -1},  // touching: serial 112345
                {"10 20\nno frame\n", 0},
                {"# a\n# b\n10 20\n", -1},
                {"inf 20\n1 0 0\n", -1},
                {"10 20\n1 0 0\n3 0 0\n", -1},
                {" \n10 20\n1 0 0\n", -1}};
    for (const auto& row : aRow) {
        ShiftData shift;
        shift.dfCenterX = -7;
        QString strReason;
        EXPECT_EQ(readShiftLines(splitTextLines(row.strText), shift, &strReason), row.nShifts >= 0)
            << row.strText;
        EXPECT_EQ(shift.dfCenterX, row.nShifts >= 0 ? 10 : -7) << row.strText;
        EXPECT_EQ(shift.listShift.size(), qMax(row.nShifts, 0)) << row.strText;
        EXPECT_EQ(strReason.isEmpty(), row.nShifts >= 0) << row.strText;
    }
}

TEST(ShiftFile, IsWrittenInColumnsAndKeepsALongerOneBeside)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.sc");
    const ShiftData shiftLong{255.555, 1024, {{0, 0}, {-0.126, 3.5}, {99999.99, -1234.56}}};
    ASSERT_TRUE(writeShiftFile(strFile, shiftLong));
    const QByteArray bytesLong =
        "  255.56 1024.00\n   1    0.00    0.00\n   2   -0.13    3.50\n"
        "   399999.99-1234.56\n";
    EXPECT_EQ(bytesOf(strFile), bytesLong);
    EXPECT_FALSE(QFile::exists(strFile + "~"));

    const ShiftData shiftThree{1, 2, {{0, 0}, {1, 1}, {2, 2}}};
    ASSERT_TRUE(writeShiftFile(strFile, shiftThree));  // the long one does not read as three frames: not kept
    EXPECT_FALSE(QFile::exists(strFile + "~"));
    const QByteArray bytesThree = bytesOf(strFile);
    ASSERT_TRUE(writeShiftFile(strFile, {3, 4, {{0, 0}, {1, 1}}}));
    EXPECT_EQ(bytesOf(strFile + "~"), bytesThree);
    ShiftData shift;
    ASSERT_TRUE(readShiftFile(strFile, shift));
    EXPECT_EQ(shift.dfCenterX, 3);
    EXPECT_EQ(shift.listShift, QList<QPointF>({{0, 0}, {1, 1}}));

    QString strReason;
    EXPECT_FALSE(writeShiftFile("", shift, &strReason));
    EXPECT_FALSE(writeShiftFile(folder.filePath("none/a.sc"), shift, &strReason));
    EXPECT_TRUE(strReason.contains("none/a.sc")) << strReason.toStdString();
}

TEST(UnitCellFile, IsWrittenWithItsDirectCellAndReadsBack)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.uc");
    DataSet data;
    data.m_listCell = {{0.125f, 0, 0}, {0, 0.1f, 0}, {0, 0, -0.0625f}};
    ASSERT_TRUE(saveUnitCellFile(data, strFile));
    EXPECT_EQ(data.m_strWorkingDir, folder.path());
    EXPECT_EQ(bytesOf(strFile),
              QByteArray("\xEF\xBB\xBF"
                         "# a=8.000 Å, b=10.000 Å, c=16.000 Å, α=90.000°, β=90.000°, γ=90.000°\n"
                         "a*   0.12500000  0.00000000  0.00000000\n"
                         "b*   0.00000000  0.10000000  0.00000000\n"
                         "c*   0.00000000  0.00000000 -0.06250000\n"));
    EXPECT_EQ(readUnitCellFile(strFile), data.m_listCell);

    data.m_listCell[2] = data.m_listCell[0];
    ASSERT_TRUE(saveUnitCellFile(data, strFile));
    EXPECT_TRUE(bytesOf(strFile).startsWith("\xEF\xBB\xBF# co-planar vectors!\na* "));
    EXPECT_EQ(readUnitCellFile(strFile), data.m_listCell);

    const QByteArray bytesBefore = bytesOf(strFile);
    data.m_listCell.removeLast();
    EXPECT_FALSE(saveUnitCellFile(data, strFile));
    EXPECT_EQ(bytesOf(strFile), bytesBefore);
    data.m_listCell.append(Vec3D{});
    EXPECT_FALSE(saveUnitCellFile(data, ""));
    EXPECT_FALSE(saveUnitCellFile(data, folder.filePath("none/a.uc")));
    EXPECT_EQ(data.m_strWorkingDir, folder.path());
}

TEST(UnitCellFile, NeedsThreeVectorsInOrder)
{
    const struct {
        const char* strText;
        bool bGood;
    } aRow[] = {{"a* 1 2 3\nb* 4 5 6\nc* 7 8 9\n", true},
                {"  a*1 2 3 4\n#x\n\tb* 4 5 6 x\nc* 7 8 9\nwhatever\n", true},
                {"note\na* 1 2 3\nb* 4 5 6\nc* 7 8 9\n", false},
                {"a* 1 2 3\nb* 4 5 6\n", false},
                {"a* 1 2 3\nb* 4 5 nan\nc* 7 8 9\n", false},
                {"a* 1 2 1e39\nb* 4 5 6\nc* 7 8 9\n", false}};
    for (const auto& row : aRow) {
        const QList<Vec3D> listCell = readUnitCellLines(splitTextLines(row.strText));
        const QList<Vec3D> listGood = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
        EXPECT_EQ(listCell, row.bGood ? listGood : QList<Vec3D>()) << row.strText;
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
    QList<QPoint> listPixel;
    ASSERT_TRUE(readHotPixelLines(splitTextLines("1 12.9 7.9\n#\nx\n2 1e10 3\n2 -0.9 3\n"), listPixel));
    EXPECT_EQ(listPixel, QList<QPoint>({{12, 7}, {0, 3}}));
    EXPECT_FALSE(readHotPixelLines(splitTextLines("1 1 1\n3 1 1\n"), listPixel));
    EXPECT_EQ(listPixel.size(), 2);
}

TEST(ReflectionList, TakesTenItemsWithoutAnS)
{
    QTemporaryDir folder;
    const QString strFile = putFile(folder.filePath("r.txt"),
                                    "# title\n1 1.9 -2.9 0 0.3 0.4 0 5 100.5 ok\n2 1 1 1 1 1 1 1 1 sus\n"
                                    "3 1 1 1 1 1 1 1 1\n4 1 1 1 nan 1 1 1 1 a\n5 3e9 1 1 1 1 1 1 1 a\n"
                                    "7 1 0 0 0 0 2 0 7 S\r\n");
    QList<Vec3D> listPoint;
    QList<HKLRef> listReflection;
    ASSERT_TRUE(readReflectionList(strFile, listPoint, listReflection));
    const QList<Peak3D> listPeak = peaksOfReflectionList(listPoint, listReflection);
    ASSERT_EQ(listPeak.size(), 2);
    EXPECT_EQ(listReflection[0].nH, 1);
    EXPECT_EQ(listReflection[0].nK, -2);
    EXPECT_EQ(listPeak[0].dfDStar, 0.5);
    EXPECT_EQ(listPeak[0].dfIPoint, 100.5);
    EXPECT_EQ(listPeak[1].nID, 1);
    EXPECT_EQ(listPeak[1].fZ3D, 2.f);
    EXPECT_FALSE(readReflectionList(putFile(folder.filePath("e.txt"), "words\n"), listPoint, listReflection));
    EXPECT_EQ(listPoint.size(), 2);
}
