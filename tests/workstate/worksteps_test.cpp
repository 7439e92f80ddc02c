// The steps of a user's work: what a difference is called, which state is in force, and what all of them
// hold.
#include "workstate/worksteps.h"
#include "dataset/parametertable.h"
#include "tests/printtexts.h"
#include "workstate/samework.h"
#include "workstate/workdifferences.h"

#include <gtest/gtest.h>

#include <QLocale>

#include <functional>
#include <limits>
#include <random>
#include <set>

namespace tessera {

namespace {

QList<QList<Peak3D>> peaks(int nFrames, int nPerFrame)
{
    QList<QList<Peak3D>> list;
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        list.append(QList<Peak3D>());
        for (int n = 0; n < nPerFrame; ++n) {
            Peak3D peak;
            peak.nFrame = nFrame;
            peak.nID = nFrame * nPerFrame + n;
            peak.dfX2D = n;
            list.last().append(peak);
        }
    }
    return list;
}

WorkState begun()
{
    WorkState state;
    state.series.m_strProjectName = "quartz";
    state.series.m_listFrameFile = QStringList{"a.mrc", "b.mrc"};
    state.series.m_listPeakFrame = peaks(2, 3);
    state.series.m_dfRotationAxis = 39.8;
    state.series.m_listCellFound = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.2f}};
    state.series.m_listCell = state.series.m_listCellFound;
    state.listRawGroup = {{"Unlabeled", {}, Qt::white}, {"Label1", {1, 2}, Qt::red}};
    return state;
}

struct Change {
    std::function<void(WorkState&)> fnChange;
    QString strName, strKey;  ///< of the step
};

void expectNamed(std::initializer_list<Change> listChange)
{
    QLocale::setDefault(QLocale(QLocale::English));
    const WorkState before = begun();
    for (const Change& change : listChange) {
        WorkState after = before;
        change.fnChange(after);
        const WorkDifferences found = differences(before, after);
        EXPECT_EQ(found.strName, change.strName);
        EXPECT_EQ(found.strKey, change.strKey) << qPrintable(change.strName);
        EXPECT_FALSE(found.bOtherSeries);
    }
}

}  // namespace

TEST(WorkDifferences, OfNumbersNameTheOneFurthestUpTheRoad)
{
    expectNamed({
        {[](WorkState&) {}, "", ""},
        {[](WorkState& s) { s.series.m_dfRotationAxis = 40.1; }, "Rotation axis 39.8° to 40.1°", "number 2"},
        {[](WorkState& s) {
             s.series.m_dfRotationAxis = 40.125;
             s.series.m_nAxisDecimals = 3;
             s.series.m_listPeakFrame[1][0].fX3D = 0.5f;  // which is mapped by it
         },
         "Rotation axis 39.8° to 40.125°", "number 2"},
        {[](WorkState& s) {
             s.series.m_dfCenterX = 100;
             s.hunting.m_dfPeakRadius = 2.5;
             s.mapping.m_bApplyStretching = true;
         },
         "Stretching switched on and 2 more", ""},
        {[](WorkState& s) { s.matTransformation.at(0, 1) = 0.5; }, "Matrix of the cell", "matrix"},
    });
}

TEST(WorkDifferences, OfDataNameWhatWasMade)
{
    expectNamed({
        {[](WorkState& s) {
             s.hunting.m_dfPeakRadius = 2.5;
             s.series.m_listPeakFrame = peaks(2, 700);
             s.series.m_listPeakMerged = peaks(1, 5)[0];
         },
         "Peaks: 1,400", ""},
        {[](WorkState& s) { s.series.m_listPeakFrame[1][0].dfIPoint = 7; }, "Peaks: 6", ""},
        {[](WorkState& s) { s.series.m_listPeakFrame[1][0].fX3D = 0.5f; }, "Peaks mapped anew", ""},
        {[](WorkState& s) {
             s.series.m_listPeakMerged = peaks(1, 5)[0];
             s.listMergedGroup = {{"Unlabeled", {}, Qt::white}};
         },
         "Reflections: 5", ""},
        {[](WorkState& s) {
             s.series.m_listHotPixel = QList<QPoint>{{1, 2}};
         },
         "Hot pixels: 1", ""},
        {[](WorkState& s) { s.series.m_maskPeakHunting.listPolygon.append(QPolygonF(QRectF(0, 0, 1, 1))); },
         "Areas of the mask: 1", ""},
        {[](WorkState& s) { s.pIntegration = std::make_shared<const IntegrationResult>(); }, "Integrated: 0",
         ""},
        // What follows from other things is no step.
        {[](WorkState& s) { s.series.m_vecPeakGroup.append(QVector<QList<int>>(3)); }, "", ""},
    });
}

TEST(WorkDifferences, OfCellsAndGroupsNameWhatBecameOfThem)
{
    expectNamed({
        {[](WorkState& s) {
             s.series.m_listCellFound[2] = {0, 0, 0.25f};
             s.series.m_listCell = s.series.m_listCellFound;
         },
         "Length of c* 0.2000 to 0.2500 Å⁻¹", "length 2"},
        {[](WorkState& s) {
             s.series.m_listCell[2] = {0, 0, 0.25f};
         },
         "Test: Cell 10.00 × 10.00 × 4.00 Å, 90.0°, 90.0°, 90.0°", ""},
        {[](WorkState& s) {
             s.series.m_listCellFound.clear();
             s.series.m_listCell.clear();
         },
         "No cell", ""},
        {[](WorkState& s) { s.listRawGroup[1].bVisible = false; }, "Groups: \"Label1\" hidden", ""},
        {[](WorkState& s) { s.listRawGroup[1].strLabel = "ice"; }, "Groups: \"Label1\" is now \"ice\"", ""},
        {[](WorkState& s) {
             s.listRawGroup.insert(1, {"ice", {0}, Qt::blue});
         },
         "Groups: new, \"ice\"", ""},
    });
}

TEST(WorkDifferences, KnowAnotherSeries)
{
    const WorkState before = begun();
    WorkState other = before;
    other.series.m_strProjectName = "garnet";
    EXPECT_TRUE(differences(before, other).bOtherSeries);
}

TEST(WorkDifferences, KnowEachNumberOfThePages)
{
    std::set<QString> setName;
    for (int nRow = 0; nRow < int(parameterTable().size()); ++nRow) {
        const WorkState before;
        WorkState after;
        DataSet dataSet;
        dataSet.takeSeries(after.series);
        const Parameter& row = parameterTable()[nRow];
        const ParameterRecords records = {&dataSet,          &after.hunting,     &after.mapping,
                                          &after.merging,    &after.cellHunting, &after.indexing,
                                          &after.extraction, &after.refinement,  &dataSet.m_distortion};
        row.setValue(records, row.value(records) + 1);
        after.series = dataSet;
        EXPECT_TRUE(differences(before, after).strName.startsWith(nameOfNumber(nRow) + ' ')) << nRow;
        EXPECT_TRUE(setName.insert(nameOfNumber(nRow)).second) << qPrintable(nameOfNumber(nRow));
    }
}

TEST(WorkDifferences, NumbersThatAreNoneDifferFromNothing)
{
    WorkState before = begun();
    before.series.m_dfPixelSize = before.series.m_listPeakFrame[0][0].dfIntFit =
        std::numeric_limits<double>::quiet_NaN();
    WorkState after = before;
    after.series.m_listPeakFrame[0][1].dfIntFit = 0;  // parts the lists
    EXPECT_FALSE(shareLists(before, after));
    EXPECT_FALSE(differences(before, after).isStep());
}

TEST(WorkSteps, HoldEachListOnceAndNoMoreThanTheirBound)
{
    const std::uint64_t nPeaks = 2 * 1000;
    const std::uint64_t nLeast = nPeaks * sizeof(Peak3D), nMost = nLeast * 5 / 4 + 20000;
    CWorkSteps steps(5 * nMost);
    WorkState state;
    state.series.m_listPeakFrame = peaks(2, 1000);
    steps.begin(state, "0");
    EXPECT_LT(steps.bytes(), 10000u);  // the lists are the user's own
    for (int n = 1; n <= 3; ++n) {     // numbers share all lists
        state.hunting.m_dfPeakRadius = n;
        steps.note(state, QString::number(n));
    }
    EXPECT_LT(steps.bytes(), 40000u);
    state.series.m_listPeakFrame = peaks(2, 1000);
    steps.note(state, "4");
    EXPECT_GT(steps.bytes(), nLeast);
    EXPECT_LT(steps.bytes(), nMost);
    EXPECT_EQ(steps.dropped(), 0);

    for (int n = 5; n < 40; ++n) {
        state.series.m_listPeakFrame = peaks(2, 1000);
        steps.note(state, QString::number(n));
        EXPECT_LE(steps.bytes(), steps.mostBytes());
        EXPECT_EQ(steps.count() + steps.dropped(), n + 1);
    }
    EXPECT_GE(steps.count(), 5);
    EXPECT_LE(steps.count(), 7);
    EXPECT_EQ(steps.name(steps.current()), "39");
    EXPECT_EQ(steps.name(0), QString::number(steps.dropped()));  // the oldest went

    // One state alone that is more than all may hold can be taken back still.
    state.series.m_listPeakFrame = peaks(2, 20000);
    steps.note(state, "large");
    state.series.m_listPeakFrame.clear();
    steps.note(state, "none");
    EXPECT_EQ(steps.count(), 2);
    EXPECT_EQ(steps.name(0), "large");
}

// Against a plain list of numbers: each state is known by one.
TEST(WorkSteps, GoBackAndForth)
{
    std::mt19937 random(20);
    const auto stateOf = [](int n) {
        WorkState state;
        state.hunting.m_dfPeakRadius = n;
        return state;
    };
    CWorkSteps steps(1u << 30);
    steps.begin(stateOf(0), "0");
    std::vector<int> listPlain = {0};
    size_t nPlain = 0;
    for (int n = 1; n < 500; ++n) {
        switch (random() % 5) {
            case 0:
                EXPECT_EQ(steps.goTo(int(nPlain) - 1), nPlain > 0);
                nPlain -= nPlain > 0;
                break;
            case 1:
                EXPECT_EQ(steps.goTo(int(nPlain) + 1), nPlain + 1 < listPlain.size());
                nPlain += nPlain + 1 < listPlain.size();
                break;
            case 2:
                if (nPlain > 0) {
                    steps.goOn(stateOf(n), QString::number(n));
                    listPlain.resize(nPlain + 1);
                    listPlain[nPlain] = n;
                }
                break;
            default:
                steps.note(stateOf(n), QString::number(n));
                listPlain.resize(nPlain + 1);
                listPlain.push_back(n);
                ++nPlain;
        }
        ASSERT_EQ(steps.count(), int(listPlain.size()));
        ASSERT_EQ(steps.current(), int(nPlain));
        for (int i = 0; i < steps.count(); ++i) {
            ASSERT_EQ(steps.state(i).hunting.m_dfPeakRadius, listPlain[i]);
        }
    }
}

}  // namespace tessera
