// The pages: that their controls hold the numbers that the driver computes with, and how some are operated.
#include "dataset/pagerounding.h"
#include "tests/window/windowtest.h"
#include "window/pages/pagecontrols.h"

namespace tessera {

namespace {

// Numbers on both sides of every limit, between the decimals, and far out.
const QVector<double> g_listNumber = {-1e9, -1000.005, -1.0049, -0.005, 0,      0.004999, 0.0251, 0.0625,
                                      0.44, 0.499,     2.345,   29.95,  99.996, 180.004,  1234.5, 1e9};

}  // namespace

class NumbersOfPages : public testing::Test {
protected:
    FramesPage m_frames;
    ShiftPage m_shift{{}};
    PeakSearchPage m_search;
    MergingPage m_merging;
    CellPage m_cell;
    ExtractionPage m_extracting;
    RefinementPage m_refining;
};

// The batch driver rounds parameters by a function of the core, the window by its spin boxes; a run must
// see the same numbers from both.
TEST_F(NumbersOfPages, AreThoseThatTheDriverComputesWith)
{
    DataSet data;
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;
    ExtractionParameters extraction;
    RefinementParameters refinement;
    const ParameterRecords records = {&data,     &hunting,    &mapping,    &merging,          &cell,
                                      &indexing, &extraction, &refinement, &data.m_distortion};
    QMap<const Parameter*, int> mapBoxes;
    const auto compare = [&](auto* pSpin) {
        const Parameter* pRow = parameterOfBox(pSpin);
        if (!pRow) {
            return;
        }
        ++mapBoxes[pRow];
        for (double dfNumber : g_listNumber) {
            pSpin->setValue(decltype(pSpin->value())(dfNumber));
            pRow->setValue(records, dfNumber);
            roundRecords(records);
            EXPECT_DOUBLE_EQ(pSpin->value(), pRow->value(records)) << pRow->pszTip << " from " << dfNumber;
        }
    };
    for (QWidget* pPage :
         QList<QWidget*>{&m_frames, &m_shift, &m_search, &m_merging, &m_cell, &m_extracting, &m_refining}) {
        for (QDoubleSpinBox* pSpin : pPage->findChildren<QDoubleSpinBox*>()) {
            compare(pSpin);
        }
        for (QSpinBox* pSpin : pPage->findChildren<QSpinBox*>()) {
            compare(pSpin);
        }
    }
    const Parameter& rowOfList = parameterOf(&IndexingParameters::m_nSpaceGroup);  // its page has a list
    for (const Parameter& row : parameterTable()) {
        EXPECT_EQ(mapBoxes[&row], &row == &rowOfList ? 0 : 1) << row.pszTip;
    }
}

TEST(Pages, CellPageSwapsItsWays)
{
    CellPage page;
    page.show();
    for (bool bManual : {false, true, false}) {
        (bManual ? page.m_pRadioCellManual : page.m_pRadioCellAuto)->click();
        EXPECT_EQ(page.m_pGroupAssignViewingDirection->isVisible(), bManual);
        EXPECT_EQ(page.m_pGroupCellRange->isVisible(), !bManual);
        EXPECT_EQ(page.m_pButtonSearchCell->isVisible(), !bManual);
    }
    page.m_pButtonTest->setChecked(true);
    page.m_pRadioSpaceReal->click();
    EXPECT_FALSE(page.m_pButtonTest->isChecked());
    EXPECT_TRUE(page.m_pRadioCellAuto->isChecked()) << "each choice stands by itself";
}

// The items carry a blank in front, which a plain validator of numbers refuses: then not even a digit
// could be taken away.
TEST(Pages, RotationStepsCanBeEditedFromEachItem)
{
    View3DPage page;
    QLineEdit* pEdit = page.m_pComboRotationStep->lineEdit();
    EXPECT_EQ(pEdit->text(), " 90");
    for (int i = 0; i < page.m_pComboRotationStep->count(); ++i) {
        page.m_pComboRotationStep->setCurrentIndex(i);
        const QString strItem = pEdit->text();
        EXPECT_TRUE(pEdit->hasAcceptableInput()) << strItem.toStdString();
        QTest::keyClick(pEdit, Qt::Key_End);
        QTest::keyClick(pEdit, Qt::Key_Backspace);
        EXPECT_EQ(pEdit->text(), strItem.chopped(1));
    }
    QTest::keyClicks(pEdit, "x");
    EXPECT_FALSE(pEdit->text().contains('x'));
}

}  // namespace tessera
