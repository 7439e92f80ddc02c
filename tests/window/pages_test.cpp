// The pages: what their controls show and give back, which of them are alive, and how they are operated.
#include "app/dataset/pagerounding.h"
#include "app/records/runparameters.h"
#include "reciprocal/pages/cellpage.h"
#include "reciprocal/pages/mergingpage.h"
#include "view3d/pages/view3dpage.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTest>
#include <QVector>

#include <cstdlib>

namespace {

// Numbers on both sides of every limit, between the decimals, and far out.
const QVector<double> g_listNumber = {-1e9, -1000.005, -1.0049, -0.005, 0,      0.004999, 0.0251, 0.0625,
                                      0.44, 0.499,     2.345,   29.95,  99.996, 180.004,  1234.5, 1e9};

}  // namespace

// The batch driver rounds parameters by a function of the core, the window by its spin boxes; a run must
// see the same numbers from both.
TEST(Pages, GiveBackTheNumbersThatTheDriverComputesWith)
{
    const MergingPage merging;
    const CellPage cell;
    MappingParameters mapping;
    PeakMergingParameters merge;
    CellHuntingParameters hunting;
    IndexingParameters indexing;
    const struct {
        const char* pName;
        QDoubleSpinBox* pSpin;
        double* pdf;
    } aRow[] = {{"resolution min", merging.m_pSpinResolutionMin, &mapping.m_dfResolutionMin},
                {"resolution max", merging.m_pSpinResolutionMax, &mapping.m_dfResolutionMax},
                {"intensity min", merging.m_pSpinIntensityMin, &mapping.m_dfIntensityMin},
                {"intensity max", merging.m_pSpinIntensityMax, &mapping.m_dfIntensityMax},
                {"3D distance", merging.m_pSpinMin3DDistance, &merge.m_dfMin3DDistance},
                {"2D distance", merging.m_pSpinMax2DDistance, &merge.m_dfMax2DDistance},
                {"2D length", merging.m_pSpinMin2DLength, &merge.m_dfMin2DLength},
                {"3D length", merging.m_pSpinMax3DLength, &merge.m_dfMax3DLength},
                {"cell min", cell.m_pSpinCellRangeMin, &hunting.m_dfCellRangeMin},
                {"cell max", cell.m_pSpinCellRangeMax, &hunting.m_dfCellRangeMax},
                {"threshold", cell.m_pSpinIndexThreshold, &indexing.m_dfIndexThreshold}};
    for (const auto& row : aRow) {
        for (double dfNumber : g_listNumber) {
            row.pSpin->setValue(dfNumber);
            *row.pdf = dfNumber;
            roundToPages(mapping);
            roundToPages(merge);
            roundToPages(hunting);
            roundToPages(indexing);
            EXPECT_DOUBLE_EQ(row.pSpin->value(), *row.pdf) << row.pName << " from " << dfNumber;
        }
    }
}

TEST(Pages, CellPageSwapsTheSearchForTheManualAssignment)
{
    CellPage page;
    page.show();
    for (bool bManual : {false, true, false}) {
        (bManual ? page.m_pRadioCellManual : page.m_pRadioCellAuto)->click();
        EXPECT_EQ(page.m_pGroupAssignViewingDirection->isVisible(), bManual);
        EXPECT_EQ(page.m_pGroupCellRange->isVisible(), !bManual);
        EXPECT_EQ(page.m_pButtonSearchCell->isVisible(), !bManual);
    }
    // Each choice stands by itself: the space of the matrix has radio buttons of its own.
    EXPECT_TRUE(page.m_pRadioSpaceReciprocal->isChecked());
    page.m_pRadioSpaceReal->click();
    EXPECT_TRUE(page.m_pRadioCellAuto->isChecked());
}

TEST(Pages, CellPageNamesTheAxesOfTheMatrixAndEndsATest)
{
    CellPage page;
    const auto texts = [&page] {
        QStringList listText;
        for (const QLabel* pLabel : page.findChildren<QLabel*>())
            if (pLabel->text().startsWith(QStringLiteral("<b>")))
                listText.append(pLabel->text());
        listText.sort();
        return listText;
    };
    EXPECT_EQ(texts().size(), 6);
    EXPECT_TRUE(texts().contains(QStringLiteral("<b><span style=\"color:green\">b*'</span></b>=")));
    EXPECT_TRUE(texts().contains(QStringLiteral("<b><span style=\"color:blue\">c*</span></b>")));
    page.m_pButtonTest->setChecked(true);
    page.m_pRadioSpaceReal->click();
    EXPECT_FALSE(page.m_pButtonTest->isChecked());
    EXPECT_EQ(texts(), QStringList({QStringLiteral("<b>a'</b> ="), QStringLiteral("<b>a</b>"),
                                    QStringLiteral("<b>b'</b> ="), QStringLiteral("<b>b</b>"),
                                    QStringLiteral("<b>c'</b> ="), QStringLiteral("<b>c</b>")}));
}

TEST(Pages, CellPageOffersEverySpaceGroupByItsNumber)
{
    const CellPage page;
    const QComboBox* pCombo = page.m_pComboReflectionGrouping;
    ASSERT_EQ(pCombo->count(), 230);
    EXPECT_EQ(pCombo->maxVisibleItems(), 30);
    for (int i = 0; i < pCombo->count(); ++i)
        EXPECT_EQ(pCombo->itemData(i).toInt(), i + 1);
    EXPECT_EQ(pCombo->itemText(0), QStringLiteral("  1  P 1"));
    EXPECT_EQ(pCombo->itemText(42), QStringLiteral(" 43  F d d 2"));
    EXPECT_EQ(pCombo->itemText(224), QStringLiteral("225  F m -3 m"));
}

// The items carry a blank in front, which a plain validator of numbers refuses: then not even a digit
// could be taken away.
TEST(Pages, RotationStepsCanBeEditedFromEachItem)
{
    View3DPage page;
    QLineEdit* pEdit = page.m_pComboRotationStep->lineEdit();
    EXPECT_EQ(pEdit->text(), QStringLiteral(" 90"));
    for (int i = 0; i < page.m_pComboRotationStep->count(); ++i) {
        page.m_pComboRotationStep->setCurrentIndex(i);
        const QString strItem = pEdit->text();
        EXPECT_TRUE(pEdit->hasAcceptableInput()) << qPrintable(strItem);
        QTest::keyClick(pEdit, Qt::Key_End);
        QTest::keyClick(pEdit, Qt::Key_Backspace);
        EXPECT_EQ(pEdit->text(), strItem.left(strItem.size() - 1));
    }
    QTest::keyClicks(pEdit, QStringLiteral("x"));
    EXPECT_FALSE(pEdit->text().contains(QLatin1Char('x')));
}

// Drawings in mid-tones read on a light and on a dark desktop: some of each icon stands out from both.
TEST(Icons, StandOutOnLightAndDarkDesktops)
{
    Q_INIT_RESOURCE(tessera);
    const QDir dir(QStringLiteral(":/images"));
    const QStringList listName = dir.entryList({QStringLiteral("*.png")}, QDir::Files);
    ASSERT_GE(listName.size(), 28);
    for (const QString& strName : listName) {
        if (strName.contains(QStringLiteral("splash")))
            continue;  // a picture with a ground of its own
        const QIcon icon(dir.filePath(strName));
        for (int nSize : {16, 32}) {
            const QImage image = icon.pixmap(nSize, nSize).toImage().convertToFormat(QImage::Format_ARGB32);
            for (int nDesktop : {239, 43}) {  // grey value behind the icon
                int nDistinct = 0;
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x) {
                        const QRgb rgb = image.pixel(x, y);
                        nDistinct += qAlpha(rgb) * std::abs(qGray(rgb) - nDesktop) > 255 * 50;
                    }
                EXPECT_GE(nDistinct, nSize * nSize / 16)
                    << qPrintable(strName) << ' ' << nSize << ' ' << nDesktop;
            }
        }
    }
}
