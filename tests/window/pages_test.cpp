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

// The numbers that users and their scripts know: not to be changed with the table by mistake.
TEST_F(NumbersOfPages, StandAsUsersKnowThem)
{
    const struct {
        const QDoubleSpinBox* pSpin;
        ParameterMember member;
        double dfMinimum, dfMaximum;
        int nDecimals;
        double dfStart;
        const char* pszSuffix;
    } aRow[] = {
        {m_frames.m_pWavelengthSpin, &DataSet::m_dfWavelength, 0, 10000, 6, 0.0251, " Å"},
        {m_frames.m_pPixelSizeSpin, &DataSet::m_dfPixelSize, 0, 10000, 6, 0.001, " Å⁻¹"},
        {m_frames.m_pRotationAxisSpin, &DataSet::m_dfRotationAxis, -180, 180, 1, 0, "°"},
        {m_frames.m_pTiltRelaxationSpin, &DataSet::m_dfTiltRelaxation, -180, 180, 1, 0, "°"},
        {m_shift.m_pCenterXSpin, &DataSet::m_dfCenterX, 0, 100000, 2, 0, ""},
        {m_shift.m_pCenterYSpin, &DataSet::m_dfCenterY, 0, 100000, 2, 0, ""},
        {m_merging.m_pSpinStretchAmplitude, &DataSet::m_dfStretchAmplitude, -1000, 1000, 2, 0, " %"},
        {m_merging.m_pSpinStretchAzimuth, &DataSet::m_dfStretchAzimuth, 0, 180, 2, 0, " °"},
        {m_search.m_pPeakRadiusSpin, &PeakHuntingParameters::m_dfPeakRadius, 0, 1000, 2, 5, " pix."},
        {m_search.m_pBackgroundRadiusSpin, &PeakHuntingParameters::m_dfBackgroundRadius, 0, 1000, 2, 10,
         " pix."},
        {m_search.m_pThresholdSpin, &PeakHuntingParameters::m_dfPeakThreshold, -100000, 1000000, 2, 1, ""},
        {m_search.m_pSmoothRadiusSpin, &PeakHuntingParameters::m_dfSmoothRadius, 0, 1000, 2, 0.5, " pix."},
        {m_search.m_pIntegrationRadiusSpin, &PeakHuntingParameters::m_dfIntegrationRadius, 0, 1000, 1, 15,
         " pix."},
        {m_search.m_pIntegrationBackgroundSpin, &PeakHuntingParameters::m_dfIntegrationBackground, 0, 1000, 1,
         3, " pix."},
        {m_merging.m_pSpinResolutionMin, &MappingParameters::m_dfResolutionMin, 0, 100, 2, 0, " Å⁻¹"},
        {m_merging.m_pSpinResolutionMax, &MappingParameters::m_dfResolutionMax, 0, 100, 2, 1, " Å⁻¹"},
        {m_merging.m_pSpinIntensityMin, &MappingParameters::m_dfIntensityMin, -100000, 1000000, 2, 0, ""},
        {m_merging.m_pSpinIntensityMax, &MappingParameters::m_dfIntensityMax, -100000, 1000000, 2, 32768, ""},
        {m_merging.m_pSpinMin3DDistance, &PeakMergingParameters::m_dfMin3DDistance, 0, 1000, 2, 10, " pix."},
        {m_merging.m_pSpinMax2DDistance, &PeakMergingParameters::m_dfMax2DDistance, 0, 1000, 2, 5, " pix."},
        {m_merging.m_pSpinMin2DLength, &PeakMergingParameters::m_dfMin2DLength, -1, 1000, 2, 0, " pix."},
        {m_merging.m_pSpinMax3DLength, &PeakMergingParameters::m_dfMax3DLength, 0, 1000, 2, 30, " pix."},
        {m_cell.m_pSpinCellRangeMin, &CellHuntingParameters::m_dfCellRangeMin, 1, 1000, 1, 3, " Å"},
        {m_cell.m_pSpinCellRangeMax, &CellHuntingParameters::m_dfCellRangeMax, 1, 1000, 1, 30, " Å"},
        {m_cell.m_pSpinIndexThreshold, &IndexingParameters::m_dfIndexThreshold, 0.01, 0.5, 2, 0.05, ""},
        {m_extracting.m_pSpinResolutionLimit, &ExtractionParameters::m_dfResolutionLimit, 0, 100, 1, 1,
         " Å⁻¹"},
        {m_refining.m_pSpinRefineIntensityLow, &RefinementParameters::m_dfRefineIntensityLow, -1e7, 1e7, 1,
         100, ""},
        {m_refining.m_pSpinRefineIntensityHigh, &RefinementParameters::m_dfRefineIntensityHigh, -1e7, 1e7, 1,
         32768, ""},
        {m_refining.m_pSpinRefineDStarLow, &RefinementParameters::m_dfRefineDStarLow, 0, 1000, 3, 1, " Å⁻¹"},
        {m_refining.m_pSpinRefineDStarHigh, &RefinementParameters::m_dfRefineDStarHigh, 0, 1000, 3, 2,
         " Å⁻¹"}};
    for (const auto& row : aRow) {
        const Parameter* pRow = parameterOfBox(row.pSpin);
        ASSERT_TRUE(pRow) << &row - aRow;
        EXPECT_TRUE(pRow->member == row.member) << pRow->pszTip;
        EXPECT_EQ(row.pSpin->minimum(), row.dfMinimum) << pRow->pszTip;
        EXPECT_EQ(row.pSpin->maximum(), row.dfMaximum) << pRow->pszTip;
        EXPECT_EQ(row.pSpin->decimals(), row.nDecimals) << pRow->pszTip;
        EXPECT_EQ(row.pSpin->value(), row.dfStart) << pRow->pszTip;
        EXPECT_EQ(row.pSpin->suffix(), QString(row.pszSuffix)) << pRow->pszTip;
    }
    const std::pair<const QSpinBox*, int> aPixels[] = {{m_extracting.m_pSpinWindowRadius, 10},
                                                       {m_extracting.m_pSpinBackgroundSize, 2}};
    for (const auto& [pSpin, nStart] : aPixels) {
        EXPECT_EQ(pSpin->minimum(), 0);
        EXPECT_EQ(pSpin->maximum(), 10000);
        EXPECT_EQ(pSpin->value(), nStart);
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
