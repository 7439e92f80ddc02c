// Which stages are done, stale or missing: after each run of a small series, and after each change behind it.
#include "reciprocal/cellcommit.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "workstate/stagestorun.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

using namespace tessera;

struct Series {
    DataSet data;
    WorkNumbers numbers;

    std::vector<StageStatus> status() const { return workStatus(data, numbers); }
    /// A letter a stage: D done, S stale, M missing.
    QString states() const
    {
        QString str;
        for (const StageStatus& stage : status()) {
            str += QLatin1Char("MDS"[int(stage.state)]);
        }
        return str;
    }
    QString reason(WorkStage stage) const { return status()[size_t(stage)].strReason; }
    QString steps() const { return stagesText(stagesToRun(status()), status()); }

    void hunt()
    {
        data.m_listPeakFrame.clear();
        int nID = 0;
        for (int nFrame = 0; nFrame < 3; ++nFrame) {
            QList<Peak3D> listPeak;
            for (int i = 0; i < 4; ++i) {
                Peak3D peak;
                peak.nFrame = nFrame;
                peak.nID = nID++;
                peak.dfX2D = 40 + 30 * i + nFrame;
                peak.dfY2D = 90 - 20 * i;
                peak.dfIPoint = peak.dfI2D = 10 + numbers.hunting.m_dfPeakThreshold + i;
                listPeak.append(peak);
            }
            data.m_listPeakFrame.append(listPeak);
        }
        data.m_peakMapping.reset();
        notePeaksMade(data, numbers.hunting);
    }
    void map()
    {
        CRunReport silent;
        ASSERT_TRUE(transformPeaksTo3D(data, numbers.mapping, silent));
        showPeaksIn3D(data, numbers.mapping);
    }
    void merge()
    {
        CRunReport silent;
        ASSERT_TRUE(peakReduction3D(data, numbers.merging, nullptr, silent).outcome.finished());
    }
    void findCell()
    {
        data.m_listCellFound = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
        updateUnitCell(data);
        noteCellMade(data);
    }
    void index()
    {
        data.m_listReflectionIndexed = data.m_listPeakMerged;
        data.m_listCellIndexed = data.m_listCell;
        noteIndexedMade(data, numbers.indexing.m_dfIndexThreshold);
    }
};

Series solved()
{
    Series series;
    series.data.m_strProjectDir = "/there";
    for (int i = 0; i < 3; ++i) {
        series.data.m_listFrameFile.append(QString::number(i));
        series.data.m_listOverallTilt.append(i);
    }
    series.data.m_dfRotationAxis = 39.5;
    EXPECT_EQ(series.states(), "MMDMMMMMM");
    EXPECT_EQ(series.steps(), "") << "that is the whole road";
    series.data.m_listShift = {{0, 0}, {1, 0}, {2, 0}};
    series.hunt();
    EXPECT_EQ(series.states(), "DDDMMMMMM");
    EXPECT_EQ(series.steps(), "Map, merge, search the cell and index");
    series.map();
    series.merge();
    EXPECT_EQ(series.states(), "DDDDDMMMM");
    series.findCell();
    series.index();
    series.data.m_made.geometry = series.data.m_made.integration = madeWithGeometry(series.data);
    EXPECT_EQ(series.states(), "DDDDDDDDD");
    EXPECT_EQ(series.steps(), "");
    return series;
}

struct Change {
    const char* pszName;
    std::function<void(Series&)> fnChange;
    const char* pszStates;
    WorkStage stage;
    const char* pszReason;  ///< of the stage's state
    const char* pszSteps;
};

void expectStale(std::initializer_list<Change> listChange)
{
    for (const Change& change : listChange) {
        SCOPED_TRACE(change.pszName);
        Series series = solved();
        change.fnChange(series);
        EXPECT_EQ(series.states(), change.pszStates);
        EXPECT_TRUE(series.reason(change.stage).contains(QString::fromUtf8(change.pszReason)))
            << qPrintable(series.reason(change.stage));
        EXPECT_EQ(series.steps(), change.pszSteps);
    }
}

TEST(WorkStatus, AChangeOfTheGeometryMakesStaleWhatStandsOnIt)
{
    expectStale({
        {"axis", [](Series& s) { s.data.m_dfRotationAxis += 0.3; }, "DDDSSSSSS", WorkStage::Merging,
         "the rotation axis was turned by 0.3° since",
         "Map, merge, search the cell, index, refine the geometry and integrate anew"},
        {"axis, mapped again",
         [](Series& s) {
             s.data.m_dfRotationAxis += 0.3;
             s.map();
         },
         "DDDDSSSSS", WorkStage::Cell, "the rotation axis was turned by 0.3° since",
         "Merge, search the cell, index, refine the geometry and integrate anew"},
        {"and back",
         [](Series& s) {
             s.data.m_dfRotationAxis += 0.25;
             s.map();
             s.data.m_dfRotationAxis -= 0.25;
             s.map();
         },
         "DDDDDDDDD", WorkStage::Merging, "reflections", ""},
        {"beam", [](Series& s) { s.data.m_dfCenterX += 1.5; }, "DDDSSSSSS", WorkStage::Mapping,
         "the direct beam was moved by 1.50 pixels since",
         "Map, merge, search the cell, index, refine the geometry and integrate anew"},
        {"shifts gone", [](Series& s) { s.data.m_listShift.clear(); }, "MDDSSSSSS", WorkStage::Drift,
         "the shifts are not evaluated", ""},
    });
}

TEST(WorkStatus, AChangeOfANumberMakesStaleWhatWasMadeWithIt)
{
    expectStale({
        {"threshold", [](Series& s) { s.numbers.hunting.m_dfPeakThreshold = 3; }, "DSDSSSSDD",
         WorkStage::Peaks, "the threshold was changed from 1.00 to 3.00 since",
         "Search the peaks, map, merge, search the cell and index anew"},
        {"mask", [](Series& s) { s.data.m_maskPeakHunting.listPolygon = {QPolygonF(QRectF(1, 1, 2, 2))}; },
         "DSDSSSSDD", WorkStage::Peaks, "the mask was changed since",
         "Search the peaks, map, merge, search the cell and index anew"},
        {"mask, and the mapping", [](Series& s) { s.data.m_maskPeakHunting.listPolygon = {QPolygonF(3)}; },
         "DSDSSSSDD", WorkStage::Mapping, "the mask was changed since",
         "Search the peaks, map, merge, search the cell and index anew"},
        {"hot pixels, and the merging",
         [](Series& s) {
             s.data.m_listHotPixel = {{3, 4}};
         },
         "DSDSSSSDD", WorkStage::Merging, "the list of hot pixels was changed since",
         "Search the peaks, map, merge, search the cell and index anew"},
        {"another frame, and the merging", [](Series& s) { s.data.m_listFrameFile.append("3"); }, "SSDSSSSDD",
         WorkStage::Merging, "there are peaks of 3 frames, and 4 frames", ""},
        {"distance", [](Series& s) { s.numbers.merging.m_dfMax2DDistance = 4; }, "DDDDSSSDD",
         WorkStage::Merging, "the distance on the frame was changed from 5.00 to 4.00 since",
         "Merge, search the cell and index anew"},
        {"a limit that the page holds as well",
         [](Series& s) {
             s.numbers.mapping.m_dfResolutionMax = std::numeric_limits<double>::infinity();
             s.map();
             s.merge();
             s.findCell();
             s.index();
             s.numbers.mapping.m_dfResolutionMax = 100;
         },
         "DDDDDDDDD", WorkStage::Merging, "reflections", ""},
        {"index threshold", [](Series& s) { s.numbers.indexing.m_dfIndexThreshold = 0.1; }, "DDDDDDSDD",
         WorkStage::Indexing, "the threshold was changed from 0.05 to 0.10 since", "Index anew"},
    });
}

TEST(WorkStatus, OtherDataMakeStaleWhatWasMadeOfTheFormer)
{
    expectStale({
        {"other peaks from a file",
         [](Series& s) {
             s.data.m_listPeakFrame[1][2].dfX2D += 1;
             s.map();
         },
         "DDDDSSSDD", WorkStage::Merging, "the peaks were searched or loaded anew since",
         "Merge, search the cell and index anew"},
        {"other indices",
         [](Series& s) {
             s.data.m_listReflectionIndexed.removeLast();
             s.numbers.indexing.m_dfIndexThreshold = 0.1;
         },
         "DDDDDDDDD", WorkStage::Indexing, "reflections have indices", ""},
        {"a cell by hand",
         [](Series& s) {
             s.data.m_listCellFound[0].x *= 2;
             updateUnitCell(s.data);
         },
         "DDDDDDSSS", WorkStage::Indexing, "the unit cell was changed since",
         "Index, refine the geometry and integrate anew"},
        {"another series", [](Series& s) { clearDataSet(s.data); }, "MMDMMMMMM", WorkStage::Peaks,
         "no peaks were searched", ""},
    });
}

TEST(WorkStatus, AChangeOfTheMappingInWords)
{
    PeakMapping then, now;
    EXPECT_EQ(mappingChange(then, now), "");
    then.dfRotationAxis = -179.9;
    now.dfRotationAxis = 179.9;
    EXPECT_EQ(mappingChange(then, now), "the rotation axis was turned by 0.2°");
    now.dfRotationAxis = -179.888;
    EXPECT_EQ(mappingChange(then, now), "the rotation axis was turned by 0.012°");
    then = now;
    then.listShift = {{0, 0}, {3, 4}};
    now.listShift = {{0, 0}, {0, 0}};
    now.dfWavelength = 0.0197;
    EXPECT_EQ(mappingChange(then, now),
              "the wavelength was changed from 0.000000 to 0.019700 Å and the shifts "
              "were changed by up to 5.00 pixels");
}

}  // namespace
