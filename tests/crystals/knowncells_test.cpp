// The user's table of cells: its dialects, lines that tell nothing, and which cell a lattice is.
#include "crystals/knowncells.h"

#include "tests/filebytes.h"

#include <QTemporaryDir>

namespace tessera {
namespace {

QString told(const KnownCell& known)
{
    QStringList list = {known.strName};
    for (const double df : known.cell.numbers()) {
        list.append(QString::number(df));
    }
    return (list << QString(QLatin1Char(known.chCentring)) << known.strSpaceGroup
                 << hillFormula(known.formula))
        .join(QLatin1Char('|'));
}

TEST(KnownCells, readsTheTablesThatPeopleHave)
{
    struct Case {
        const char* szWhat;
        QByteArray bytes;
        const char* szTold;
    };
    const Case aCase[] = {
        {"plain, order of the guide", "quartz,4.913,4.913,5.405,90,90,120,P3121,SiO2\n",
         "quartz|4.913|4.913|5.405|90|90|120|P|P3121|O2 Si"},
        {"no more than the numbers", "x,4,5,6,90,91,92", "x|4|5|6|90|91|92|P||"},
        {"decimal commas of a spreadsheet",
         "\xEF\xBB\xBFname;a;b;c;alpha;beta;gamma\r\n\"x; y\";4,1;5,2;6,3;90;91,5;90\r\n",
         "x; y|4.1|5.2|6.3|90|91.5|90|P||"},
        {"tabulators, errors, another order",
         "# from the literature\n\ngamma [deg]\tbeta (deg)\talpha\tC / "
         "A\tb\ta\tSpace_Group\tMineral\tremark\n"
         "90\t90.00(2)\t90\t5.98\t10.207(3)\t4.756\t62\tforsterite\tnice\n",
         "forsterite|4.756|10.207|5.98|90|90|90|P|P n m a|"},
        {"a centring, quotes in quotes, old Macintosh", "\"a \"\"b\"\"\",5.43,5.43,5.43,90,90,90,F\r# end\r",
         "a \"b\"|5.43|5.43|5.43|90|90|90|F||"},
        {"Latin-1", "gr\xFCn;4;5;6;90;90;90\n", "grün|4|5|6|90|90|90|P||"},
        {"a semicolon and a tabulator in quotes",
         "\"iron; \"\"alpha\"\"\",2.866,2.866,2.866,90,90,90,I,\"Fe\t\"\n",
         "iron; \"alpha\"|2.866|2.866|2.866|90|90|90|I||Fe"},
        {"units", "name,a (nm),b/pm,c [A\xCC\x8A],alpha / rad,beta (\xC2\xB0),gamma\nx,0.4,500,6,1.5,91,92\n",
         "x|4|5|6|85.9437|91|92|P||"},
    };
    for (const Case& table : aCase) {
        const KnownCells cells = knownCellsOf(table.bytes);
        EXPECT_TRUE(cells.listFault.isEmpty()) << table.szWhat << cells.listFault.join(' ').toStdString();
        ASSERT_EQ(cells.listCell.size(), 1u) << table.szWhat;
        EXPECT_EQ(told(cells.listCell[0]), QString::fromUtf8(table.szTold)) << table.szWhat;
    }
}

TEST(KnownCells, leavesOutLinesThatTellNothing)
{
    const KnownCells cells = knownCellsOf(
        "name,a,b,c,alpha,beta,gamma,sg,formula\n"
        "short,1,2\n"
        "good,4,5,6,90,90,90,C 2/c,\n"
        "word,4,five,6,90,90,90\n"
        ",4,5,6,90,90,90\n"
        "flat,4,5,6,30,30,90\n"
        "zero,0,5,6,90,90,90\n"
        "group,4,5,6,90,90,90,P 99 1\n"
        "formula,4,5,6,90,90,90,P,Xx2\n"
        "nan,nan,5,6,90,90,90\n");
    ASSERT_EQ(cells.listCell.size(), 1u);
    EXPECT_EQ(cells.listCell[0].chCentring, 'C');
    EXPECT_EQ(cells.listCell[0].nLine, 3);
    const char* const aszFault[] = {"line 2: it has 3 columns",
                                    "line 4: \"five\"",
                                    "line 5: it has no name",
                                    "line 6: its six",
                                    "line 7: its six",
                                    "line 8: \"P 99 1\"",
                                    "line 9: ",
                                    "line 10: \"nan\""};
    ASSERT_EQ(cells.listFault.size(), int(std::size(aszFault))) << cells.listFault.join('\n').toStdString();
    for (int n = 0; n < cells.listFault.size(); ++n) {
        EXPECT_TRUE(cells.listFault[n].startsWith(QLatin1String(aszFault[n])))
            << cells.listFault[n].toStdString();
    }
    const KnownCells inches = knownCellsOf("name,a,b,c (inch),alpha,beta,gamma\nx,4,5,6,90,90,90\n");
    EXPECT_TRUE(inches.listCell.empty());
    EXPECT_EQ(inches.listFault.join('|'), "line 1: the unit in \"c (inch)\" is not known");
    const QTemporaryDir dir;
    QString strReason;
    EXPECT_FALSE(readKnownCells(writeBytes(dir.filePath("c.csv"), "# nothing\nx,1,2\n"), &strReason));
    EXPECT_TRUE(strReason.contains("it holds no cell; line 2")) << strReason.toStdString();
    EXPECT_FALSE(readKnownCells(dir.path(), &strReason));
}

TEST(KnownCells, areNoWayIntoATerminalAndNoNovel)
{
    const QByteArray bytesLong(1 << 20, 'n');
    const KnownCells cells = knownCellsOf("a\x1b[31mb\x07 c,5,6,7,80,85,75\n" + bytesLong +
                                          ",5,6,7,80,85,75\nd," + bytesLong + ",6,7,80,85,75\n");
    ASSERT_EQ(cells.listCell.size(), 1u);
    EXPECT_EQ(cells.listCell[0].strName, "a [31mb c");
    ASSERT_EQ(cells.listFault.size(), 2);
    EXPECT_EQ(cells.listFault[0], "line 2: its name has more than 200 letters");
    EXPECT_LT(cells.listFault[1].size(), 120);
    QString strReason;
    // A regular file by its mode, which without rights of the system is not opened at all.
    EXPECT_FALSE(readKnownCells(QStringLiteral("/proc/kmsg"), &strReason));
    EXPECT_FALSE(strReason.isEmpty());
}

TEST(KnownCells, takesTheClosestLatticeInWhateverSetting)
{
    // Body-centred, and the same lattice by its primitive cell: half the diagonals of the cube.
    const double dfEdge = 3.165 * std::sqrt(3.0) / 2, dfAngle = 109.4712206;
    const LatticeBasis primitive =
        reducedCell({dfEdge, dfEdge, dfEdge, dfAngle, dfAngle, dfAngle}, 'P').basis;
    const KnownCells cells = knownCellsOf(
        "far,3.3,3.3,3.3,90,90,90,I\n"
        "primitive cube,3.165,3.165,3.165,90,90,90,P\n"
        "tungsten,3.165,3.165,3.165,90,90,90,I\n"
        "near,3.2,3.2,3.2,90,90,90,I\n");
    const std::optional<KnownCellMatch> match = matchKnownCell(primitive, cells.listCell, {4, 3});
    ASSERT_TRUE(match);
    EXPECT_EQ(match->nKnown, 2);
    EXPECT_LT(match->dfMisfit, 1e-3);
    EXPECT_EQ(match->strNext, "near");  // 1.1 % off; the first one 4.3 %
    EXPECT_FALSE(matchKnownCell(primitive, {cells.listCell[1]}, {4, 3}));
    const std::optional<KnownCellMatch> off = matchKnownCell(primitive, {cells.listCell[3]}, {4, 3});
    ASSERT_TRUE(off);
    EXPECT_NEAR(off->dfLengths, 100 * (3.2 / 3.165 - 1), 0.05);
}

// Calcite, R -3 c, whose rhombohedral cell has a third of the volume of the hexagonal one (Graf (1961), Am.
// Mineral. 46, 1283-1316: 4.9899 and 17.064 Å; a_R² = a²/3 + c²/9, sin(α_R/2) = a / (2 a_R)).
TEST(KnownCells, takeTheAxesOfARhombohedralLatticeFromItsAngles)
{
    const double dfA = 4.9899, dfC = 17.064, dfEdge = std::sqrt(dfA * dfA / 3 + dfC * dfC / 9);
    const QString strAngle = QString::number(2 * std::asin(dfA / (2 * dfEdge)) * 180 / M_PI, 'f', 6);
    const QString strEdge = QString::number(dfEdge, 'f', 6);
    const LatticeBasis lattice = reducedCell({dfA, dfA, dfC, 90, 90, 120}, 'R').basis;
    for (const char* pszGroup : {"R", "R -3 c", "167"}) {
        const QString strCell =
            QStringLiteral("rhombohedral,%1,%1,%1,%2,%2,%2,GROUP\n").arg(strEdge, strAngle);
        for (const QString& strLine :
             {strCell, QStringLiteral("hexagonal,4.9899,4.9899,17.064,90,90,120,GROUP\n")}) {
            const KnownCells cells = knownCellsOf(QString(strLine).replace("GROUP", pszGroup).toUtf8());
            ASSERT_EQ(cells.listCell.size(), 1u) << pszGroup << strLine.toStdString();
            const auto match = matchKnownCell(lattice, cells.listCell, {4, 3});
            ASSERT_TRUE(match) << pszGroup << strLine.toStdString();
            EXPECT_LT(match->dfMisfit, 1e-3) << pszGroup << strLine.toStdString();
        }
    }
}

}  // namespace
}  // namespace tessera
