// Peak table: the texts of its columns and their order. A second entry runs it in a locale with decimal
// commas.
#include "reciprocal/peaktable.h"
#include "reciprocal/mysortfilterproxymodel.h"
#include "reciprocal/tablemodel.h"
#include "tests/printtexts.h"
#include "tests/reciprocal/testpeaks.h"

#include <gtest/gtest.h>

#include <utility>

namespace tessera {

// Read by the leak check of an address-sanitized build: without an application Qt keeps its collator to the
// end.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:localeAwareCompare\n";
}

namespace {

DataSet seriesOfTable()
{
    DataSet data;
    data.m_dfCenterX = 500.25;
    data.m_dfCenterY = 400.5;
    data.m_listShift = {{0, 0}, {1.5, -2}};
    data.m_dfRotationAxis = 30;
    data.m_spaceGroup.setSpaceGroup(225);  // F: h, k, l all even or all odd
    return data;
}

/// An absent reflection, the origin, one that is not indexed on a frame without a shift, and an allowed one.
QList<Peak3D> peaksOfTable()
{
    Peak3D absent = reflection(1.02, -2.01, 2.98, 12345.67, 7);
    absent.dfIntFit = 999.96;
    absent.dfDStar = 0.16;
    absent.nFrame = 1;
    absent.dfFrameFit = 12.0004;
    absent.dfHalfWidth = 1.25;
    absent.dfX2D = 1510.75;
    absent.dfY2D = 300.25;
    absent.dfX2DCorrected = -1234.5;
    absent.dfY2DCorrected = 0.126;
    absent.nRGroup = 3;
    Peak3D origin = peakAt(123.4, 812.6, 0, 0);
    origin.dfFrameFit = 12.01;
    Peak3D unindexed = origin;
    unindexed.nFrame = 2;
    unindexed.setHKL(1, 0.5, -0.94);
    unindexed.dfFrameFit = 11.9995;
    unindexed.dfDStar = 2;
    Peak3D allowed = unindexed;
    allowed.setHKL(0.96, -1, -3);
    allowed.dfX2D = 1234567;
    return {absent, origin, unindexed, allowed};
}

}  // namespace

TEST(PeakTable, HasEveryColumnInItsFormAndLocale)
{
    // Distance and angle to the axis: by the normal of the axis, and by the scalar product with it.
    // Two passages of one reflection: the nearer to the frame of the peak is the one; another is not
    // measured.
    const auto pIntegrated = std::make_shared<CIntegratedPeaks>();
    pIntegrated->add({1, -2, 3}, {40, 5, 1, QString(), 0});
    pIntegrated->add({1, -2, 3}, {3.5, -1234.56, 0.26, QStringLiteral("slow, overlap"), 1});
    pIntegrated->add({1, -1, -3}, {2, 99, 0, QStringLiteral("masked"), 2});
    const char* apchRow[] = {
        "7|1.02|-2.01|2.98|1|-2|3|12,345.7|1,000.0|6.25|0.160|2|12|1.25|419.4|524.3|5.6|24.4|1,510.75|300.25|"
        "1,009.00|-98.25|-1,234.50|0.13|0|3|-1,234.6|0.3|slow, overlap",
        "0|0.00|0.00|0.00|0|0|0|0.0|0.0|0.00|0.000|1|12.01|0.00|168.5|0.0|227.6|17.6|123.4|812.6|"
        "-376.85|412.10|0.00|0.00|1|0|||",
        "0|1.00|0.50|-0.94|*|*|*|0.0|0.0|0.50|2.000|3|12.00|0.00|0.0|0.0|0.0|0.0|123.4|812.6|"
        "0.00|0.00|0.00|0.00|1|0|||",
        "0|0.96|-1.00|-3.00|1|-1|-3|0.0|0.0|0.50|2.000|3|12.00|0.00|0.0|0.0|0.0|0.0|1.23457e+06|812.6|"
        "0.00|0.00|0.00|0.00|1|0|||masked",
    };
    for (const bool bGerman : {false, true}) {
        const QLocale locale(bGerman ? QLocale::German : QLocale::English);
        const DataSet data = seriesOfTable();
        const CPeakTable table(peaksOfTable(), data, 0.05, locale, pIntegrated);
        ASSERT_EQ(table.rowCount(), 4);
        for (int i = 0; i < 4; ++i) {
            QStringList listExpected = QString::fromLatin1(apchRow[i]).split('|');
            for (int k = 7; bGerman && k < 28; ++k) {
                if (k != 11 && k != 24 && k != 25) {
                    listExpected[k].replace(',', ';').replace('.', ',').replace(';', '.');
                }
            }
            QStringList listText;
            for (int k = 0; k < g_nPeakTableColumns; ++k) {
                listText.append(table.text(i, k));
            }
            EXPECT_EQ(listText.join('|'), listExpected.join('|'));
        }
    }
}

TEST(PeakTable, SortsByNumberOrElseByText)
{
    const QLocale locale = QLocale::system();
    ASSERT_EQ(locale.decimalPoint(), QChar(qgetenv("LC_ALL").startsWith("de") ? ',' : '.'));
    const auto number = [&](double df) { return locale.toString(df, 'f', 2); };
    TableModel model;
    MySortFilterProxyModel sorted;
    sorted.setSourceModel(&model);
    model.setDefaultAlignment(130);

    // Places in the source as they have to come, from the least; a pair with "*" goes by text. The same
    // column comes again with other cells.
    const std::pair<QStringList, QList<int>> aRow[] = {
        {{number(1234.5), number(-3.25), number(12.5), number(9.75), number(-1e6)}, {4, 1, 3, 2, 0}},
        {{"10", "*", "9", "2"}, {1, 3, 2, 0}},
        {{number(0.5), number(0.125), number(-0.5)}, {2, 1, 0}}};
    for (bool bMadeWhenAsked : {false, true}) {
        for (const auto& row : aRow) {
            const QStringList& listCell = row.first;
            TableModel::Rows rows;
            for (const QString& strCell : listCell) {
                rows.append(QVector<QString>{{}, strCell});
            }
            if (bMadeWhenAsked) {
                model.setCells(rows.size(), 2, [rows](int nRow, int nColumn) { return rows[nRow][nColumn]; });
            } else {
                model.setRows(rows);
            }
            sorted.sort(1, Qt::DescendingOrder);
            sorted.sort(1, Qt::AscendingOrder);
            QList<int> listPlace;
            for (int i = 0; i < sorted.rowCount(); ++i) {
                listPlace.append(sorted.mapToSource(sorted.index(i, 0)).row());
            }
            EXPECT_EQ(listPlace, row.second) << listCell.join(' ').toStdString();
            EXPECT_EQ(sorted.columnCount(), 2);
        }
    }
}

// The texts are made when they are asked for.
TEST(PeakTable, AsksForEachCellOfTheSortedColumnOnce)
{
    TableModel model;
    MySortFilterProxyModel sorted;
    sorted.setSourceModel(&model);
    model.setDefaultAlignment(130);
    sorted.sort(1, Qt::AscendingOrder);
    int nAsked = 0;
    model.setCells(5000, 26, [&nAsked](int nRow, int) {
        ++nAsked;
        return QString::number(nRow * 7 % 5000);
    });
    EXPECT_EQ(nAsked, 5000);
    EXPECT_EQ(sorted.index(2, 25).data().toString(), QStringLiteral("2"));
    EXPECT_FALSE(model.index(0, 26).isValid());
    EXPECT_FALSE(model.index(5000, 0).isValid());
    EXPECT_EQ(model.index(2, 1).data(Qt::TextAlignmentRole).toInt(), 130);
    model.setCells(0, 26, {});
    EXPECT_EQ(model.columnCount(), 0);
}

}  // namespace tessera
