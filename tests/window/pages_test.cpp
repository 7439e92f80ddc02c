// The pages: that their controls hold the numbers that the driver computes with, and how some are operated.
#include "dataset/pagerounding.h"
#include "tests/window/windowtest.h"

#include <tuple>

namespace tessera {

namespace {

// Numbers on both sides of every limit, between the decimals, and far out.
const QVector<double> g_listNumber = {-1e9, -1000.005, -1.0049, -0.005, 0,      0.004999, 0.0251, 0.0625,
                                      0.44, 0.499,     2.345,   29.95,  99.996, 180.004,  1234.5, 1e9};

}  // namespace

// The batch driver rounds parameters by a function of the core, the window by its spin boxes; a run must
// see the same numbers from both.
TEST(Pages, GiveBackTheNumbersThatTheDriverComputesWith)
{
    const FramesPage frames;
    const PeakSearchPage search;
    const MergingPage merging;
    const CellPage cell;
    const ExtractionPage extracting;
    const RefinementPage refining;
    std::tuple<DataSet, PeakHuntingParameters, MappingParameters, PeakMergingParameters,
               CellHuntingParameters, IndexingParameters, ExtractionParameters, RefinementParameters>
        all;
    auto& [data, hunt, mapping, merge, hunting, indexing, extraction, refinement] = all;
    const std::pair<QDoubleSpinBox*, double*> aRow[] = {
        {frames.m_pWavelengthSpin, &data.m_dfWavelength},
        {frames.m_pPixelSizeSpin, &data.m_dfPixelSize},
        {frames.m_pRotationAxisSpin, &data.m_dfRotationAxis},
        {frames.m_pTiltRelaxationSpin, &data.m_dfTiltRelaxation},
        {merging.m_pSpinStretchAmplitude, &data.m_dfStretchAmplitude},
        {merging.m_pSpinStretchAzimuth, &data.m_dfStretchAzimuth},
        {search.m_pPeakRadiusSpin, &hunt.m_dfPeakRadius},
        {search.m_pBackgroundRadiusSpin, &hunt.m_dfBackgroundRadius},
        {search.m_pThresholdSpin, &hunt.m_dfPeakThreshold},
        {search.m_pIntegrationRadiusSpin, &hunt.m_dfIntegrationRadius},
        {search.m_pIntegrationBackgroundSpin, &hunt.m_dfIntegrationBackground},
        {merging.m_pSpinResolutionMin, &mapping.m_dfResolutionMin},
        {merging.m_pSpinResolutionMax, &mapping.m_dfResolutionMax},
        {merging.m_pSpinIntensityMin, &mapping.m_dfIntensityMin},
        {merging.m_pSpinIntensityMax, &mapping.m_dfIntensityMax},
        {merging.m_pSpinMin3DDistance, &merge.m_dfMin3DDistance},
        {merging.m_pSpinMax2DDistance, &merge.m_dfMax2DDistance},
        {merging.m_pSpinMin2DLength, &merge.m_dfMin2DLength},
        {merging.m_pSpinMax3DLength, &merge.m_dfMax3DLength},
        {cell.m_pSpinCellRangeMin, &hunting.m_dfCellRangeMin},
        {cell.m_pSpinCellRangeMax, &hunting.m_dfCellRangeMax},
        {extracting.m_pSpinResolutionLimit, &extraction.m_dfResolutionLimit},
        {refining.m_pSpinRefineIntensityLow, &refinement.m_dfRefineIntensityLow},
        {refining.m_pSpinRefineIntensityHigh, &refinement.m_dfRefineIntensityHigh},
        {refining.m_pSpinRefineDStarLow, &refinement.m_dfRefineDStarLow},
        {refining.m_pSpinRefineDStarHigh, &refinement.m_dfRefineDStarHigh},
        {cell.m_pSpinIndexThreshold, &indexing.m_dfIndexThreshold}};
    for (const auto& row : aRow)
        for (double dfNumber : g_listNumber) {
            row.first->setValue(dfNumber);
            *row.second = dfNumber;
            std::apply([](auto&... each) { (roundToPages(each), ...); }, all);
            EXPECT_DOUBLE_EQ(row.first->value(), *row.second) << &row - aRow << " from " << dfNumber;
        }
    for (int nNumber : {-5, 7, 20000}) {
        extracting.m_pSpinWindowRadius->setValue(extraction.m_nWindowRadius = nNumber);
        extracting.m_pSpinBackgroundSize->setValue(extraction.m_nBackgroundSize = nNumber);
        roundToPages(extraction);
        EXPECT_EQ(extracting.m_pSpinWindowRadius->value(), extraction.m_nWindowRadius);
        EXPECT_EQ(extracting.m_pSpinBackgroundSize->value(), extraction.m_nBackgroundSize);
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
